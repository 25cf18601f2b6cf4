#include "imaging/kernels/pixel_ops.h"

#include <algorithm>
#include <cstring>

#include "imaging/kernels/dispatch.h"

namespace skarnel::kernels {
namespace scalar {
namespace {

std::uint8_t saturatingSum(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::min(a + b, 255));
}

}  // namespace

void overRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i, target += 4, source += 4) {
        const std::uint32_t rest = 255U - source[3];
        for (int k = 0; k < 4; ++k)
            target[k] = saturatingSum(source[k], multiply255(target[k], rest));
    }
}

void overColorRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) overRow(target + 4 * i, color.data(), 1);
}

void fillRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) std::memcpy(target + 4 * i, color.data(), 4);
}

void scaleRow(std::uint8_t* target, const std::uint8_t* source, std::uint8_t factor,
              std::size_t pixels) {
    for (std::size_t i = 0; i < 4 * pixels; ++i) target[i] = multiply255(source[i], factor);
}

void streamRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    if (pixels > 0) std::memcpy(target, source, 4 * pixels);
}

void flattenRow(std::uint8_t* target, const std::uint8_t* source, Pixel ground,
                std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i, target += 4, source += 4) {
        Pixel mixed = ground;
        overRow(mixed.data(), source, 1);
        const Pixel shown{mixed[2], mixed[1], mixed[0], 255};
        std::memcpy(target, shown.data(), 4);
    }
}

bool hasHiddenColours(const std::uint8_t* row, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i, row += 4) {
        if (row[3] == 0 && (row[0] | row[1] | row[2]) != 0) return true;
    }
    return false;
}

}  // namespace scalar

bool hasHiddenColours(const std::uint8_t* row, std::size_t pixels) {
    return SKARNEL_RUN_KERNEL(hasHiddenColours, row, pixels);
}

void flattenRow(std::uint8_t* target, const std::uint8_t* source, Pixel ground,
                std::size_t pixels) {
    SKARNEL_RUN_KERNEL(flattenRow, target, source, ground, pixels);
}

void overRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(overRow, target, source, pixels);
}

void overColorRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(overColorRow, target, color, pixels);
}

void fillRow(std::uint8_t* target, Pixel color, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(fillRow, target, color, pixels);
}

void scaleRow(std::uint8_t* target, const std::uint8_t* source, std::uint8_t factor,
              std::size_t pixels) {
    SKARNEL_RUN_KERNEL(scaleRow, target, source, factor, pixels);
}

void streamRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    SKARNEL_RUN_KERNEL(streamRow, target, source, pixels);
}

}  // namespace skarnel::kernels
