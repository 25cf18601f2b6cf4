#include "util/walls/window_walls.h"

#include <elf.h>
#include <link.h>
#include <pwd.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string_view>

namespace skarnel {
namespace {

constexpr std::array<std::string_view, 10> kSystemFolders{"bin",   "boot",   "etc",  "lib", "lib32",
                                                          "lib64", "libx32", "sbin", "sys", "usr"};

bool isSystemFolder(const std::string& name) {
    return std::find(kSystemFolders.begin(), kSystemFolders.end(), name) != kSystemFolders.end();
}

/// The dynamic loader of this program, from its own program headers: the kernel opens it for
/// execution whenever one of our helpers starts. Empty for a static program.
std::string dynamicLoader() {
    std::string path;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* out) {
            for (int i = 0; i < info->dlpi_phnum; ++i) {
                const ElfW(Phdr)& header = info->dlpi_phdr[i];
                if (header.p_type != PT_INTERP) continue;
                *static_cast<std::string*>(out) =
                    reinterpret_cast<const char*>(info->dlpi_addr + header.p_vaddr);
                return 1;
            }
            return 1;  // the first object is the program itself
        },
        &path);
    return path;
}

/// The folder as the kernel knows it, or the nearest above that is there; empty where it lies in no
/// folder of the system's, or is one of those itself, or may not be written.
std::filesystem::path ownAmongTheSystems(std::filesystem::path folder,
                                         const std::filesystem::path& root) {
    if (!folder.is_absolute()) return {};
    std::error_code error;
    while (!std::filesystem::exists(folder, error) && folder.has_relative_path())
        folder = folder.parent_path();
    folder = std::filesystem::canonical(folder, error);
    const auto inRoot = folder.lexically_relative(root);
    const auto depth = std::distance(inRoot.begin(), inRoot.end());
    if (error || depth < 2 || !isSystemFolder(inRoot.begin()->string())) return {};
    return ::access(folder.c_str(), W_OK) == 0 ? folder : std::filesystem::path();
}

}  // namespace

std::vector<std::string> ownFolders() {
    std::vector<std::string> folders;
    if (const passwd* account = ::getpwuid(::geteuid()); account != nullptr)
        folders.emplace_back(account->pw_dir);
    for (const char* name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
        if (const char* folder = std::getenv(name); folder != nullptr) folders.emplace_back(folder);
    }
    return folders;
}

std::vector<FileGrant> windowGrants(const std::vector<std::string>& programs,
                                    const std::vector<std::string>& own, const std::string& root) {
    std::vector<FileGrant> grants;
    for (const std::string& program : programs) grants.push_back({program, FileAccess::Execute});
    if (const std::string loader = dynamicLoader(); !loader.empty()) {
        grants.push_back({loader, FileAccess::Execute});
    }
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(root, ignored)) {
        if (isSystemFolder(entry.path().filename())) continue;
        grants.push_back({entry.path(), FileAccess::Change});
    }
    grants.push_back({std::filesystem::path(root) / "usr/local", FileAccess::Change});
    for (const std::string& folder : own) {
        if (const auto place = ownAmongTheSystems(folder, root); !place.empty())
            grants.push_back({place, FileAccess::Change});
    }
    return grants;
}

FileAccess windowLoses(unsigned user, const std::string& root) {
    std::error_code error;
    const std::filesystem::directory_iterator listing(root, error);
    return user == 0 || error ? FileAccess::Execute : FileAccess::Execute | FileAccess::Change;
}

Result<void> raiseWindowWalls(const std::vector<std::string>& programs) {
    return restrictFileAccess(windowLoses(::geteuid()), windowGrants(programs, ownFolders()));
}

}  // namespace skarnel
