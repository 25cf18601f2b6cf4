// Temporary files that an ended program could not remove any more: their names, and their removal.
#pragma once

#include <string>
#include <string_view>

#include "storage/file_system.h"

namespace skarnel {

/// A fresh name for a temporary file in `folder`: hidden, random, the same length for any target.
std::string temporaryFilePath(std::string_view folder);

/// True for the last component of what `temporaryFilePath` makes.
bool isTemporaryFileName(std::string_view name);

/// Removes from `folder` the temporary files whose writer is gone: those of the same user on which
/// nobody holds the lock that a living writer holds. Whatever cannot be read is left alone.
void removeLeftOvers(const std::string& folder, FileSystem& fileSystem = systemFileSystem());

/// The same on a thread that nobody waits for, not even the end of the process: the folder may lie
/// on a disk that hangs. Where no thread or no memory is to be had all stays as it is.
void removeLeftOversApart(std::string folder, FileSystem& fileSystem = systemFileSystem());

/// As `removeLeftOvers`, at most once for each folder in the life of the process, so that a run
/// over a thousand files lists their folder once.
void removeLeftOversOnce(const std::string& folder, FileSystem& fileSystem);

}  // namespace skarnel
