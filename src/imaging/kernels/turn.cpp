#include "imaging/kernels/turn.h"

#include <algorithm>

#include "imaging/kernels/dispatch.h"

namespace skarnel::kernels {
namespace scalar {

void squeezeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                const std::int32_t* from, const std::uint32_t* weight, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        const auto at = static_cast<std::size_t>(from[x]);
        const std::uint8_t* first = source + 4 * at;
        const std::uint8_t* second = at + 1 < readablePixels ? first + 4 : first;
        const int w = static_cast<int>(weight[x] & 0xFFFF);
        for (std::size_t k = 0; k < 4; ++k) target[4 * x + k] = lerpByte(first[k], second[k], w);
    }
}

void walkColumns(std::uint8_t* target, const ColumnWalk& walk, std::size_t begin, std::size_t end) {
    for (std::size_t x = begin; x < end; ++x) {
        const float product = walk.rowOffset * walk.step[x];
        const float position = std::min(std::max(walk.centre[x] + product, 0.0F), walk.lastRow);
        const auto row = static_cast<std::int32_t>(position);
        const float fraction = position - static_cast<float>(row);
        const auto weight = static_cast<int>(fraction * static_cast<float>(kLerpUnit));
        const std::uint8_t* first =
            walk.source + 4 * (row * walk.stridePixels + static_cast<std::ptrdiff_t>(x));
        const std::uint8_t* second = first + 4 * walk.stridePixels;
        for (std::size_t k = 0; k < 4; ++k)
            target[4 * x + k] = lerpByte(first[k], second[k], weight);
    }
}

}  // namespace scalar

void squeezeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                const std::int32_t* from, const std::uint32_t* weight, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(squeezeRow, target, source, readablePixels, from, weight, pixels);
}

void walkColumns(std::uint8_t* target, const ColumnWalk& walk, std::size_t begin, std::size_t end) {
    SKARNEL_RUN_KERNEL(walkColumns, target, walk, begin, end);
}

}  // namespace skarnel::kernels
