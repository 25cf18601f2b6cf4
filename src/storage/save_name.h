// The name that a save proposes for a picture that was opened.
#pragma once

#include <string>
#include <string_view>

namespace skarnel {

/// "<base> Reflection", where the base is the path's last component without its last extension:
/// the text from its last full stop on. Separators at the end of the path do not count. UTF-8.
std::string saveNameForPath(std::string_view path);

}  // namespace skarnel
