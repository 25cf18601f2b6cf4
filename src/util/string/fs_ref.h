// References to files and folders that exist, and paths made from them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace skarnel {

/// An opaque handle of an existing item. On POSIX it holds the item's resolved absolute path and
/// its device and inode, so that a path that has come to name another item is not taken for it.
struct FSRef {
    std::string resolvedPath;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    friend bool operator==(const FSRef&, const FSRef&) = default;
};

/// Status codes of the file manager; 0 is success.
using OSStatus = std::int32_t;
inline constexpr OSStatus kNoErr = 0;
inline constexpr OSStatus kFileNotFoundErr = -43;
inline constexpr OSStatus kPathTooLongErr = -2110;

/// Fills the reference with the existing item that the UTF-8 path names, symbolic links followed; a
/// relative path starts at the working directory. `isDirectory`, if not null, is set as well. On
/// failure nothing is changed.
OSStatus FSPathMakeRef(const char* path, FSRef* reference, bool* isDirectory);

/// Writes the item's absolute path with its final zero byte. kFileNotFoundErr when the item is no
/// longer there, kPathTooLongErr when the buffer cannot hold it.
OSStatus FSRefMakePath(const FSRef& reference, char* buffer, std::size_t bufferSize);

}  // namespace skarnel
