#include "util/walls/helper_program.h"

#include <unistd.h>

#include <array>

namespace skarnel {

std::optional<std::string> findHelperProgram(std::string_view name) {
    std::array<char, 4096> self{};
    const ssize_t length = ::readlink("/proc/self/exe", self.data(), self.size() - 1);
    if (length <= 0) return std::nullopt;
    const std::string path(self.data(), static_cast<std::size_t>(length));
    const std::string folder = path.substr(0, path.find_last_of('/'));
    for (const char* place : {"/", "/../libexec/skarnel/", "/../lib/skarnel/"}) {
        std::string candidate = folder + place;
        candidate += name;
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    return std::nullopt;
}

}  // namespace skarnel
