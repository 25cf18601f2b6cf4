#include "util/walls/window_walls.h"

#include <elf.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
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

}  // namespace

std::vector<FileGrant> windowGrants(const std::vector<std::string>& programs,
                                    const std::string& root) {
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
    return grants;
}

FileAccess windowLoses(unsigned user, const std::string& root) {
    std::error_code error;
    const std::filesystem::directory_iterator listing(root, error);
    return user == 0 || error ? FileAccess::Execute : FileAccess::Execute | FileAccess::Change;
}

Result<void> raiseWindowWalls(const std::vector<std::string>& programs) {
    return restrictFileAccess(windowLoses(::geteuid()), windowGrants(programs));
}

}  // namespace skarnel
