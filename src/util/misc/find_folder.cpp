#include "util/misc/find_folder.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>

#include "util/string/nsstring_extensions.h"

namespace skarnel {
namespace {

std::string homeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
    std::array<char, 16384> buffer;
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->pw_dir : "";
}

/// Empty when the user has no home.
std::string dataHome() {
    // A relative path is to be ignored, as the freedesktop base directories have it.
    if (const char* given = std::getenv("XDG_DATA_HOME"); given != nullptr && *given == '/')
        return given;
    const std::string home = homeFolder();
    return home.empty() ? home : home + "/.local/share";
}

void makeFolderWithParents(const std::string& path) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos;
         end = path.find('/', end + 1))
        mkdir(path.substr(0, end).c_str(), 0700);
    mkdir(path.c_str(), 0700);
}

}  // namespace

OSStatus FSFindFolder(std::int16_t domain, std::uint32_t folderType, bool createFolder,
                      FSRef* reference) {
    if (domain != kUserDomain || folderType != kApplicationSupportFolderType)
        return kFileNotFoundErr;
    const std::string path = dataHome();
    if (path.empty()) return kFileNotFoundErr;
    // Whatever goes wrong here shows when the folder is looked up.
    if (createFolder) makeFolderWithParents(path);
    FSRef found;
    bool isDirectory = false;
    const OSStatus status = FSPathMakeRef(path.c_str(), &found, &isDirectory);
    if (status != kNoErr) return status;
    if (!isDirectory) return kFileNotFoundErr;
    *reference = found;
    return kNoErr;
}

std::optional<NSString> GetObjectDisplayName(const FSRef& reference) {
    std::array<char, 4098> path;
    if (FSRefMakePath(reference, path.data(), path.size()) != kNoErr) return std::nullopt;
    return NSString::stringWithUTF8Lossy(path.data()).lastPathComponent();
}

bool GetOurApplicationSupportFolder(FSRef& /*reference*/) {
    FSRef folder;
    if (FSFindFolder(kUserDomain, kApplicationSupportFolderType, true, &folder) != kNoErr)
        return false;
    return NSStringExtensions::stringWithFSRef(&folder).has_value();
}

}  // namespace skarnel
