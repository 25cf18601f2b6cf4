#include "imaging/kernels/row_coding.h"

#include <algorithm>
#include <cstdlib>

#include "imaging/kernels/dispatch.h"

namespace skarnel::kernels {
namespace scalar {

void unpremultiplyRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i, source += 4, target += 4) {
        const unsigned alpha = source[3];
        for (std::size_t k = 0; k < 3; ++k) {
            const unsigned straight = alpha == 0 ? 0 : (source[k] * 255U + alpha / 2) / alpha;
            target[k] = static_cast<std::uint8_t>(std::min(straight, 255U));
        }
        target[3] = static_cast<std::uint8_t>(alpha);
    }
}

std::uint64_t subtractRow(std::uint8_t* difference, const std::uint8_t* row,
                          const std::uint8_t* other, std::size_t bytes) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        difference[i] = static_cast<std::uint8_t>(row[i] - other[i]);
        sum += static_cast<unsigned>(std::abs(static_cast<std::int8_t>(difference[i])));
    }
    return sum;
}

}  // namespace scalar

void unpremultiplyRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(unpremultiplyRow, target, source, pixels);
}

std::uint64_t subtractRow(std::uint8_t* difference, const std::uint8_t* row,
                          const std::uint8_t* other, std::size_t bytes) {
    return SKARNEL_RUN_KERNEL(subtractRow, difference, row, other, bytes);
}

}  // namespace skarnel::kernels
