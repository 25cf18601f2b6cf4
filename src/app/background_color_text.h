// The 7-character HTML text of an RGB colour.
#pragma once

#include <string>

namespace skarnel {

/// "#RRGGBB" in uppercase hexadecimal. Each component is narrowed to a float, multiplied by 255 in
/// single precision and truncated, never rounded: 0.5 gives 7F. Components are nominally 0..1; the
/// text has 7 characters whatever they are.
std::string colorTextOfRGB(double red, double green, double blue);

}  // namespace skarnel
