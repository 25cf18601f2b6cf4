#include "storage/save_name.h"

namespace skarnel {

std::string saveNameForPath(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    std::string_view base = path.substr(path.rfind('/') + 1);  // npos + 1 is 0: no separator
    base = base.substr(0, base.rfind('.'));                    // npos: the whole component
    return std::string(base) + " Reflection";
}

}  // namespace skarnel
