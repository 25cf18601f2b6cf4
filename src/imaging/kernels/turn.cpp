#include "imaging/kernels/turn.h"

#include <algorithm>
#include <cstring>

#include "imaging/kernels/dispatch.h"
#include "imaging/kernels/pixel_ops.h"

namespace skarnel::kernels {
namespace scalar {

namespace {

/// A byte of a row that may lie between two rows of the picture.
std::uint8_t mixedByte(const std::uint8_t* const* rows, std::size_t at, int belowWeight) {
    return belowWeight == 0 ? rows[0][at] : lerpByte(rows[0][at], rows[1][at], belowWeight);
}

}  // namespace

void squeezeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                 std::size_t readablePixels, const SqueezeMap& map) {
    for (std::size_t x = 0; x < map.columns; ++x) {
        const auto at = static_cast<std::size_t>(map.from[x] - map.firstPixel);
        const std::size_t next = at + 1 < readablePixels ? at + 1 : at;
        const int weight = static_cast<int>(map.weight[x] & 0xFFFF);
        std::uint8_t* column =
            target.bytes + 4 * static_cast<std::ptrdiff_t>(x) * target.columnStride;
        for (int row = 0; row < target.rows; ++row)
            for (std::size_t k = 0; k < 4; ++k)
                *column++ =
                    lerpByte(mixedByte(sources + row, 4 * at + k, map.belowWeight),
                             mixedByte(sources + row, 4 * next + k, map.belowWeight), weight);
    }
}

void walkPixel(std::uint8_t* target, const ColumnWalk& walk, std::size_t column, int row) {
    const auto offset = static_cast<float>(row - walk.middleRow);
    const float product = offset * walk.step[column];
    const float position = std::min(std::max(walk.centre[column] + product, 0.0F), walk.last);
    const auto units = static_cast<std::int64_t>(position);
    const auto weight = static_cast<int>(units % kLerpUnit);
    const std::int32_t place = walk.ring.placeOf(static_cast<std::int32_t>(units / kLerpUnit));
    const std::uint8_t* first =
        walk.source + 4 * (static_cast<std::ptrdiff_t>(column) * walk.columnStride + place);
    for (int k = 0; k < 4; ++k) target[k] = lerpByte(first[k], first[k + 4], weight);
}

void walkColumns(const WalkTarget& target, const ColumnWalk& walk) {
    const ColumnCover& cover = walk.cover;
    for (int i = 0; i < target.rows; ++i)
        for (std::size_t x = 0; x < walk.columns; ++x) {
            const int y = target.firstRow + i;
            std::uint8_t* pixel = target.bytes + i * target.strideBytes + 4 * x;
            if (y < cover.begin[x] || y >= cover.end[x]) {
                std::memset(pixel, 0, 4);
                continue;
            }
            walkPixel(pixel, walk, x, y);
            if (y == cover.begin[x])
                scaleRow(pixel, pixel, cover.firstLevel[x], 1);
            else if (y == cover.end[x] - 1)
                scaleRow(pixel, pixel, cover.lastLevel[x], 1);
        }
}

}  // namespace scalar

void squeezeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                 std::size_t readablePixels, const SqueezeMap& map) {
    SKARNEL_RUN_KERNEL(squeezeRows, target, sources, readablePixels, map);
}

void walkColumns(const WalkTarget& target, const ColumnWalk& walk) {
    SKARNEL_RUN_KERNEL(walkColumns, target, walk);
}

}  // namespace skarnel::kernels
