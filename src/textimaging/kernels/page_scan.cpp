#include "textimaging/kernels/page_scan.h"

#include <cstring>

#include "imaging/kernels/dispatch.h"

namespace skarnel::kernels {
namespace scalar {
namespace {

bool isUsed(const std::uint8_t* pixel, const UsedRule& rule) {
    std::int32_t sum = 0;
    for (std::size_t k = 0; k < 4; ++k) {
        const int difference = int{rule.reference[k]} - pixel[k];
        sum += difference * difference;
    }
    return sum > rule.squaredLimit;
}

}  // namespace

void knockOutRow(std::uint8_t* target, const std::uint8_t* source, ScanPixel reference,
                 std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        const std::uint8_t* from = source + 4 * x;
        std::memcpy(target + 4 * x, from, 4);
        if (std::memcmp(from, reference.data(), 3) == 0) target[4 * x + 3] = 0;
    }
}

std::size_t firstUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels) {
    std::size_t x = 0;
    while (x < pixels && !isUsed(row + 4 * x, rule)) ++x;
    return x;
}

std::size_t endOfUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels) {
    std::size_t end = pixels;
    while (end > 0 && !isUsed(row + 4 * (end - 1), rule)) --end;
    return end;
}

}  // namespace scalar

void knockOutRow(std::uint8_t* target, const std::uint8_t* source, ScanPixel reference,
                 std::size_t pixels) {
    SKARNEL_RUN_KERNEL(knockOutRow, target, source, reference, pixels);
}

std::size_t firstUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels) {
    return SKARNEL_RUN_KERNEL(firstUsed, row, rule, pixels);
}

std::size_t endOfUsed(const std::uint8_t* row, const UsedRule& rule, std::size_t pixels) {
    return SKARNEL_RUN_KERNEL(endOfUsed, row, rule, pixels);
}

}  // namespace skarnel::kernels
