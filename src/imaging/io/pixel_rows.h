// Row arithmetic of reading and writing: multiplying alpha in and out.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "imaging/cgimage.h"

namespace skarnel::io {

/// round(c * a / 255), the form whose error is zero for all 65,536 pairs.
constexpr std::uint8_t multiply255(unsigned c, unsigned a) {
    const unsigned t = c * a + 128;
    return static_cast<std::uint8_t>((t + (t >> 8)) >> 8);
}

/// round(c * 255 / a), at most 255; 0 where a is 0. multiply255 takes it back to c for c <= a.
constexpr std::uint8_t divide255(unsigned c, unsigned a) {
    if (a == 0) return 0;
    const unsigned straight = (c * 255 + a / 2) / a;
    return static_cast<std::uint8_t>(straight > 255 ? 255 : straight);
}

/// In place over `count` RGBA pixels. A pixel whose alpha is 0 becomes all zeros.
void premultiplyRow(std::uint8_t* pixels, std::size_t count);

/// In place: colours become 0 where alpha is 0, nothing else changes.
void clearTransparentRow(std::uint8_t* pixels, std::size_t count);

/// In place: what shows over white becomes premultiplied, c - (255 - a), at least 0.
void removeWhiteRow(std::uint8_t* pixels, std::size_t count);

/// From premultiplied to straight; the rows may be the same.
void unpremultiplyRow(const std::uint8_t* source, std::uint8_t* target, std::size_t count);

/// Straight RGB without alpha, from premultiplied RGBA laid over an opaque colour.
void flattenRow(const std::uint8_t* source, std::uint8_t* targetRgb, std::size_t count,
                const std::array<std::uint8_t, 3>& matte);

/// Whether every pixel's alpha is 255; true for three samples.
bool isOpaque(PixelView pixels);

}  // namespace skarnel::io
