// Reading whole files and streams, none of them endless.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "storage/file_system.h"
#include "util/log/result.h"

namespace skarnel {

/// Says by what a file begins with (at least 64 bytes, or all of a shorter one) how many bytes it
/// may have, or why it is not wanted at all.
using ReadLimit = std::function<Result<std::uint64_t>(std::span<const std::uint8_t> start)>;

/// All bytes of a regular file, or of a named pipe that somebody writes to within `kPipePatience`.
/// NotFound or CannotRead with the system's reason; CannotRead also for devices and for a regular
/// file that would have to be waited for, as some of the kernel's are; OutOfMemory when the bytes
/// do not fit into memory; TooLarge, for a regular file before the rest is read, when there are
/// more than the limit.
Result<std::vector<std::uint8_t>> readWholeFile(const std::string& path, const ReadLimit& limit,
                                                FileSystem& fileSystem = systemFileSystem());
Result<std::vector<std::uint8_t>> readWholeFile(const std::string& path, std::uint64_t maxBytes,
                                                FileSystem& fileSystem = systemFileSystem());

/// All bytes until the end of an open descriptor, which stays open and may be of any kind. Errors
/// as above.
Result<std::vector<std::uint8_t>> readDescriptor(int descriptor, const ReadLimit& limit,
                                                 FileSystem& fileSystem = systemFileSystem());
Result<std::vector<std::uint8_t>> readDescriptor(int descriptor, std::uint64_t maxBytes,
                                                 FileSystem& fileSystem = systemFileSystem());

}  // namespace skarnel
