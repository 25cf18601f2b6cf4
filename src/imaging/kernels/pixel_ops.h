// The inner loops of compositing on rows of premultiplied RGBA8 pixels.
//
// Every function has a scalar definition (namespace scalar) and, where the build has vector
// kernels, twins of equal bytes that are chosen when the program runs (see targets.h).
// `pixels` counts pixels; rows need no alignment. Source and target are identical or disjoint.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace skarnel::kernels {

/// R, G, B, A, premultiplied.
using Pixel = std::array<std::uint8_t, 4>;

/// round(a * b / 255), exact for all 65,536 pairs.
constexpr std::uint8_t multiply255(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t t = a * b + 128;
    return static_cast<std::uint8_t>((t + (t >> 8)) >> 8);
}

/// target = source + target * (255 - source alpha) / 255 for each component, saturating: a colour
/// above its alpha is not clamped, a sum above 255 is.
void overRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);

/// overRow with one colour for every pixel.
void overColorRow(std::uint8_t* target, Pixel color, std::size_t pixels);

/// Every pixel becomes the colour.
void fillRow(std::uint8_t* target, Pixel color, std::size_t pixels);

/// target = source * factor / 255 for each component.
void scaleRow(std::uint8_t* target, const std::uint8_t* source, std::uint8_t factor,
              std::size_t pixels);

/// target = source over the opaque ground, in the byte order B, G, R, 255 that screens have.
/// `target` and `source` do not overlap.
void flattenRow(std::uint8_t* target, const std::uint8_t* source, Pixel ground, std::size_t pixels);

/// Whether a pixel with alpha 0 has a colour byte that is not 0.
bool hasHiddenColours(const std::uint8_t* row, std::size_t pixels);

/// The same bytes as memcpy, by stores that pass the caches: for results larger than these.
void streamRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);

namespace scalar {
void overRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);
void overColorRow(std::uint8_t* target, Pixel color, std::size_t pixels);
void fillRow(std::uint8_t* target, Pixel color, std::size_t pixels);
void scaleRow(std::uint8_t* target, const std::uint8_t* source, std::uint8_t factor,
              std::size_t pixels);
void streamRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);
void flattenRow(std::uint8_t* target, const std::uint8_t* source, Pixel ground, std::size_t pixels);
bool hasHiddenColours(const std::uint8_t* row, std::size_t pixels);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
void overRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);
void overColorRow(std::uint8_t* target, Pixel color, std::size_t pixels);
void fillRow(std::uint8_t* target, Pixel color, std::size_t pixels);
void scaleRow(std::uint8_t* target, const std::uint8_t* source, std::uint8_t factor,
              std::size_t pixels);
void streamRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels);
void flattenRow(std::uint8_t* target, const std::uint8_t* source, Pixel ground, std::size_t pixels);
bool hasHiddenColours(const std::uint8_t* row, std::size_t pixels);
}  // namespace vector
#endif

}  // namespace skarnel::kernels
