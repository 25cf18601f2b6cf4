#include "textimaging/path_text.h"

namespace skarnel {

std::string lastPathComponent(std::string_view path) {
    const std::size_t end = path.find_last_not_of('/');
    if (end == std::string_view::npos) return path.empty() ? "" : "/";
    const std::size_t separator = path.find_last_of('/', end);
    const std::size_t start = separator == std::string_view::npos ? 0 : separator + 1;
    return std::string(path.substr(start, end + 1 - start));
}

std::string byAppendingPathComponent(std::string_view folder, std::string_view component) {
    const std::size_t end = folder.find_last_not_of('/');
    std::string path(folder.substr(0, end == std::string_view::npos ? 0 : end + 1));
    if (!folder.empty()) path += '/';
    path += component;
    return path;
}

}  // namespace skarnel
