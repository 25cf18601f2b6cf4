// The inner loops of a turn about a vertical axis, which keeps vertical lines vertical: first every
// row is resampled along x by one shared map, then every column along y by a map of its own.
#pragma once

#include <cstddef>
#include <cstdint>

namespace skarnel::kernels {

/// Weights of the second of two neighbours are fractions of this.
inline constexpr int kLerpUnit = 1 << 15;

/// first + round((second - first) * weight / kLerpUnit) for a weight of 0 .. kLerpUnit - 1; lies
/// between the two.
constexpr std::uint8_t lerpByte(int first, int second, int weight) {
    return static_cast<std::uint8_t>(first + (((second - first) * weight + kLerpUnit / 2) >> 15));
}

/// Target pixel x = lerp of the source pixels from[x] and from[x] + 1 by weight[x], for every
/// component. `weight` holds each weight twice, in the low and the high 16 bits. Of the
/// source, readablePixels may be read; after the last of these comes that one again. from[x] does
/// not fall as x grows.
void squeezeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                const std::int32_t* from, const std::uint32_t* weight, std::size_t pixels);

/// One row's way through the columns of an image.
struct ColumnWalk {
    const std::uint8_t* source;   // row 0 of column 0; one more row than lastRow + 1 is readable
    std::ptrdiff_t stridePixels;  // of the source
    const float* centre;          // each column's position where rowOffset is 0, in source rows
    const float* step;            // source rows for each row offset
    float rowOffset;
    float lastRow;  // positions are clamped to 0 .. lastRow
    bool stream;    // store past the caches, for targets that these would not hold
};

/// Target pixel x = lerp of the source rows floor(p) and floor(p) + 1 of column x, where
/// p = centre[x] + rowOffset * step[x] in single precision, product and sum rounded each.
void walkColumns(std::uint8_t* target, const ColumnWalk& walk, std::size_t begin, std::size_t end);

namespace scalar {
void squeezeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                const std::int32_t* from, const std::uint32_t* weight, std::size_t pixels);
void walkColumns(std::uint8_t* target, const ColumnWalk& walk, std::size_t begin, std::size_t end);
}  // namespace scalar

#if SKARNEL_VECTOR
namespace vector {
void squeezeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                const std::int32_t* from, const std::uint32_t* weight, std::size_t pixels);
void walkColumns(std::uint8_t* target, const ColumnWalk& walk, std::size_t begin, std::size_t end);
}  // namespace vector
#endif

}  // namespace skarnel::kernels
