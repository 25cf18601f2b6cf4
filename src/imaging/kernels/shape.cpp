#include "imaging/kernels/shape.h"

#include "imaging/kernels/dispatch.h"

namespace skarnel::kernels {
namespace scalar {

void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        const auto at = static_cast<std::size_t>(columns.from[x]);
        const std::uint8_t* first = source + 4 * at;
        const std::uint8_t* second = at + 1 < sourcePixels ? first + 4 : first;
        const auto weight = static_cast<std::int32_t>(columns.weight[x] & 0xFFFF);
        for (std::size_t k = 0; k < 4; ++k) {
            const int shifted = first[k] + (((second[k] - first[k]) * weight) >> 16);
            target[4 * x + k] = factor.table[static_cast<std::size_t>(shifted)];
        }
    }
}

}  // namespace scalar

void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(shapeRow, target, source, sourcePixels, columns, factor, pixels);
}

}  // namespace skarnel::kernels
