#include "util/string/fs_ref.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace skarnel {

OSStatus FSPathMakeRef(const char* path, FSRef* reference, bool* isDirectory) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path, nullptr), &std::free);
    struct stat status {};
    if (!resolved || stat(resolved.get(), &status) != 0) return kFileNotFoundErr;
    *reference = {resolved.get(), static_cast<std::uint64_t>(status.st_dev),
                  static_cast<std::uint64_t>(status.st_ino)};
    if (isDirectory != nullptr) *isDirectory = S_ISDIR(status.st_mode);
    return kNoErr;
}

OSStatus FSRefMakePath(const FSRef& reference, char* buffer, std::size_t bufferSize) {
    struct stat status {};
    if (reference.resolvedPath.empty() || stat(reference.resolvedPath.c_str(), &status) != 0 ||
        static_cast<std::uint64_t>(status.st_dev) != reference.device ||
        static_cast<std::uint64_t>(status.st_ino) != reference.inode)
        return kFileNotFoundErr;
    const std::size_t length = reference.resolvedPath.size() + 1;
    if (length > bufferSize) return kPathTooLongErr;
    std::memcpy(buffer, reference.resolvedPath.c_str(), length);
    return kNoErr;
}

}  // namespace skarnel
