// A number as the settings' text fields show it after a reset.
#pragma once

#include <string>

namespace skarnel {

/// As printf's "%f" in the C locale, whatever the process's locale: six decimals after a full stop.
std::string floatText(float value);

}  // namespace skarnel
