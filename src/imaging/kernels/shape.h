// The inner loop of shaping a reflection: one row stretched along x and faded by one factor, in
// whole numbers that give the very bytes of the double-precision formula.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace skarnel::kernels {

/// Where the columns of one row come from. Column x lies between the source pixels from[x] and
/// from[x] + 1, as far along as its weight says: for a fraction f of 1 the weight is the 16-bit
/// number Q with floor(d * Q / 65536) = floor(d * f) for every difference d in -255..255.
struct ShapeColumns {
    const std::int32_t* from;     // does not fall as x grows
    const std::uint32_t* weight;  // Q twice, in the low and the high 16 bits
};

/// What becomes of an interpolated byte t in a row. table[t] always holds; with
/// `hasMultiplier` it equals (t * whole + (t * fraction >> 16)) mod 256 for every t.
struct ShapeFactor {
    std::array<std::uint8_t, 256> table;
    bool hasMultiplier;
    std::uint16_t whole;
    std::uint16_t fraction;
};

/// Factors from here on have no multiplier; far beyond any that makes sense.
inline constexpr double kLargestMultiplied = 250;

/// The factor's table: the low 8 bits of each truncated product t * factor. Products above 255 wrap
/// around on purpose; what is no 32-bit number becomes 0. For a factor below 1 there always is a
/// multiplier (see exact_weight.h for the reason), unless a double product was rounded onto a
/// whole number.
ShapeFactor shapeFactor(double factor);

/// Target pixel x = table[first + floor((second - first) * f)] for each component, where first and
/// second are the source pixels from[x] and from[x] + 1. Of the source, readablePixels may be read;
/// after the last of these comes that one again. Source and target are disjoint.
void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels);

/// The same with a column in 32 bits: Q above, and below it the source pixel before the column,
/// which is therefore less than 65,536.
void shapePackedRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                    const std::uint32_t* columns, const ShapeFactor& factor, std::size_t pixels);

namespace scalar {
ShapeFactor shapeFactor(double factor);
void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels);
void shapePackedRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                    const std::uint32_t* columns, const ShapeFactor& factor, std::size_t pixels);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
ShapeFactor shapeFactor(double factor);
void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels);
void shapePackedRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                    const std::uint32_t* columns, const ShapeFactor& factor, std::size_t pixels);
}  // namespace vector
#endif

}  // namespace skarnel::kernels
