#include "app/float_text.h"

#include <array>
#include <charconv>
#include <limits>

namespace skarnel {

std::string floatText(float value) {
    // Sign, all integer digits of the largest float, the full stop and the decimals.
    std::array<char, std::numeric_limits<float>::max_exponent10 + 16> text{};
    constexpr int kDecimals = 6;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), double{value},
                                            std::chars_format::fixed, kDecimals);
    return {text.data(), error == std::errc{} ? end : text.data()};
}

}  // namespace skarnel
