#include "imaging/kernels/resample.h"

#include "imaging/kernels/dispatch.h"

namespace skarnel::kernels {
namespace scalar {

void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) {
        std::int32_t sum = kTapUnit / 2;
        for (int j = 0; j < taps.count; ++j) sum += rows[j][i] * taps.weights[j];
        target[i] = static_cast<std::uint8_t>(sum / kTapUnit);
    }
}

void combineColumns(std::uint8_t* target, const std::uint8_t* source,
                    [[maybe_unused]] std::size_t sourcePixels, const Taps* taps,
                    std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        const std::uint8_t* from = source + std::ptrdiff_t{4} * taps[x].first;
        for (std::size_t k = 0; k < 4; ++k) {
            std::int32_t sum = kTapUnit / 2;
            for (int j = 0; j < taps[x].count; ++j)
                sum += from[static_cast<std::size_t>(4 * j) + k] * taps[x].weights[j];
            target[4 * x + k] = static_cast<std::uint8_t>(sum / kTapUnit);
        }
    }
}

void combinePackedColumns(std::uint8_t* target, const std::uint8_t* source,
                          const PackedTaps& taps) {
    for (std::size_t x = 0; x < taps.samples; ++x)
        for (std::size_t k = 0; k < 4; ++k) {
            std::int32_t sum = kTapUnit / 2;
            for (std::size_t j = 0; j < 4 * taps.groups; ++j) {
                const std::size_t group = j / 4;
                const std::size_t pixel = static_cast<std::size_t>(taps.first[x]) + j;
                sum += source[4 * pixel + k] * taps.weights[4 * (group * taps.samples + x) + j % 4];
            }
            target[4 * x + k] = static_cast<std::uint8_t>(sum / kTapUnit);
        }
}

}  // namespace scalar

void combinePackedColumns(std::uint8_t* target, const std::uint8_t* source,
                          const PackedTaps& taps) {
    SKARNEL_RUN_KERNEL(combinePackedColumns, target, source, taps);
}

void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes) {
    SKARNEL_RUN_KERNEL(combineRows, target, rows, taps, bytes);
}

void combineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(combineColumns, target, source, sourcePixels, taps, pixels);
}

}  // namespace skarnel::kernels
