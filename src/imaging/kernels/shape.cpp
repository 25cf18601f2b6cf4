#include "imaging/kernels/shape.h"

#include "imaging/kernels/dispatch.h"
#include "util/geometry/integers.h"

namespace skarnel::kernels {
namespace scalar {
namespace {

/// Looks for the 16-bit fraction that gives every entry: the factor's own, rounded down or up.
void findMultiplier(double factor, ShapeFactor& result) {
    result.hasMultiplier = false;
    result.whole = 0;
    result.fraction = 0;
    if (!(factor >= 0) || factor >= kLargestMultiplied) return;
    const auto whole = static_cast<std::uint32_t>(factor);
    const auto lower = static_cast<std::uint32_t>((factor - whole) * 65536);
    for (std::uint32_t fraction = lower; fraction <= lower + 1 && fraction < 65536; ++fraction) {
        bool same = true;
        for (std::uint32_t t = 0; t < 256; ++t)
            same = same && result.table[t] == ((t * whole + (t * fraction >> 16)) & 0xFF);
        if (!same) continue;
        result.hasMultiplier = true;
        result.whole = static_cast<std::uint16_t>(whole);
        result.fraction = static_cast<std::uint16_t>(fraction);
        return;
    }
}

/// The pixel between `at` and the next one.
void shapePixel(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                std::size_t at, std::uint32_t weight, const ShapeFactor& factor) {
    const std::uint8_t* first = source + 4 * at;
    const std::uint8_t* second = at + 1 < readablePixels ? first + 4 : first;
    for (std::size_t k = 0; k < 4; ++k) {
        const int step = ((second[k] - first[k]) * static_cast<std::int32_t>(weight)) >> 16;
        target[k] = factor.table[static_cast<std::size_t>(first[k] + step)];
    }
}

}  // namespace

ShapeFactor shapeFactor(double factor) {
    ShapeFactor result;
    for (int t = 0; t < 256; ++t) result.table[static_cast<std::size_t>(t)] = toLowByte(t * factor);
    findMultiplier(factor, result);
    return result;
}

void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x)
        shapePixel(target + 4 * x, source, readablePixels,
                   static_cast<std::size_t>(columns.from[x]), columns.weight[x] & 0xFFFF, factor);
}

void shapePackedRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                    const std::uint32_t* columns, const ShapeFactor& factor, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x)
        shapePixel(target + 4 * x, source, readablePixels, columns[x] & 0xFFFF, columns[x] >> 16,
                   factor);
}

}  // namespace scalar

ShapeFactor shapeFactor(double factor) {
    return SKARNEL_RUN_KERNEL(shapeFactor, factor);
}

void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(shapeRow, target, source, readablePixels, columns, factor, pixels);
}

void shapePackedRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                    const std::uint32_t* columns, const ShapeFactor& factor, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(shapePackedRow, target, source, readablePixels, columns, factor, pixels);
}

}  // namespace skarnel::kernels
