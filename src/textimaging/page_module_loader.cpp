#include "textimaging/page_module_loader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <optional>

namespace skarnel {
namespace {

/// None where the system does not say; the current folder is no place to load programs from.
std::optional<std::string> folderOfProgram() {
    std::array<char, PATH_MAX> buffer;
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0) return std::nullopt;
    const std::string path(buffer.data(), static_cast<std::size_t>(length));
    return path.substr(0, path.rfind('/'));
}

}  // namespace

std::vector<std::string> pageModulePaths() {
    const char* chosen = std::getenv("SKARNEL_PAGE_MODULE");
    if (chosen != nullptr && *chosen != '\0') return {chosen};
    std::vector<std::string> paths;
    if (const auto folder = folderOfProgram())
        paths.push_back(*folder + "/../lib/skarnel/" + kPageModuleName);
    paths.push_back(std::string(SKARNEL_MODULE_FOLDER "/") + kPageModuleName);
    return paths;
}

Result<std::unique_ptr<PageModule>> loadPageModule(const PageModuleContext& context,
                                                   const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        if (access(path.c_str(), F_OK) != 0) continue;
        // Never unloaded: the renderer's libraries leave threads and exit handlers behind.
        void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (library == nullptr) return {ErrorCode::Failed, dlerror()};
        const auto open = reinterpret_cast<OpenPageModule>(dlsym(library, kOpenPageModuleSymbol));
        if (open == nullptr) return {ErrorCode::Failed, dlerror()};
        std::unique_ptr<PageModule> module(open(kPageModuleVersion, &context));
        if (module == nullptr) return {ErrorCode::Failed, "It is of another version"};
        return module;
    }
    return {ErrorCode::NotFound, "It is not installed"};
}

}  // namespace skarnel
