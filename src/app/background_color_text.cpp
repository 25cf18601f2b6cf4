#include "app/background_color_text.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "util/geometry/integers.h"

namespace skarnel {

namespace {

constexpr std::size_t kTextLength = 7;

unsigned colorByte(double component) {
    return static_cast<unsigned>(toInt32(static_cast<float>(component) * 255.0F));
}

}  // namespace

std::string colorTextOfRGB(double red, double green, double blue) {
    // Each print goes over what the one before left behind its place, and is cut off at the end of
    // the buffer: a component out of range may spoil digits but never the length.
    std::array<char, kTextLength + 1> text{};
    std::snprintf(text.data(), text.size(), "#%2X", colorByte(red));
    std::snprintf(text.data() + 3, text.size() - 3, "%2X", colorByte(green));
    std::snprintf(text.data() + 5, text.size() - 5, "%2X", colorByte(blue));
    std::replace(text.begin() + 1, text.begin() + kTextLength, ' ', '0');
    return {text.data(), kTextLength};
}

}  // namespace skarnel
