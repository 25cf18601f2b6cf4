/// Finds the files that a program reads at run time.
#include "util/resources/resource_path.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace skarnel {

namespace fs = std::filesystem;

std::vector<std::string> resourceFolders() {
    std::vector<std::string> folders;
    if (const char* chosen = std::getenv("SKARNEL_RESOURCES");
        chosen != nullptr && *chosen != '\0') {
        folders.emplace_back(chosen);
    }
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        folders.push_back((program.parent_path().parent_path() / "share" / "skarnel").string());
    }
    folders.emplace_back(SKARNEL_INSTALLED_RESOURCES);
    return folders;
}

std::optional<std::string> findResource(std::string_view name,
                                        const std::vector<std::string>& folders) {
    const fs::path relative(name);
    const bool leadsOut =
        std::find(relative.begin(), relative.end(), fs::path("..")) != relative.end();
    if (name.empty() || relative.is_absolute() || leadsOut) {
        return std::nullopt;
    }
    for (const std::string& folder : folders) {
        const fs::path candidate = fs::path(folder) / relative;
        std::error_code error;
        if (fs::is_regular_file(candidate, error)) {
            return candidate.string();
        }
    }
    return std::nullopt;
}

std::optional<std::string> findResource(std::string_view name) {
    return findResource(name, resourceFolders());
}

}  // namespace skarnel
