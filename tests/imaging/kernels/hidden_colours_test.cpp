// Pixels that nobody sees: looking for colours under alpha 0, and laying nothing over a ground.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "imaging/kernels/pixel_ops.h"
#include "imaging/kernels/targets.h"

namespace skarnel::kernels {
namespace {

constexpr std::size_t kMaxPixels = 130;

std::vector<Target> everyTarget() {
    std::vector<Target> targets = supportedTargets();
    targets.push_back(kScalarTarget);
    return targets;
}

/// Rows without a hidden colour that come as near to one as they can.
std::vector<std::uint8_t> innocentRow(std::size_t pixels) {
    constexpr std::uint8_t kPixels[4][4] = {
        {0, 0, 0, 0}, {255, 255, 255, 1}, {0, 0, 0, 255}, {255, 255, 255, 128}};
    std::vector<std::uint8_t> row(4 * pixels);
    for (std::size_t x = 0; x < pixels; ++x) std::memcpy(&row[4 * x], kPixels[x % 4], 4);
    return row;
}

TEST(HiddenColours, AreFoundWhereverTheyAre) {
    for (const Target target : everyTarget()) {
        const ScopedTarget only(target);
        for (std::size_t pixels = 0; pixels <= kMaxPixels; ++pixels) {
            auto row = innocentRow(pixels);
            ASSERT_FALSE(hasHiddenColours(row.data(), pixels))
                << targetName(target) << ", " << pixels;
            for (std::size_t x = 0; x < pixels; x += 1 + x / 40) {
                for (std::size_t k = 0; k < 3; ++k) {
                    auto other = row;
                    std::memset(&other[4 * x], 0, 4);
                    other[4 * x + k] = k == 1 ? 255 : 1;
                    ASSERT_TRUE(hasHiddenColours(other.data(), pixels))
                        << targetName(target) << ", pixel " << x << " of " << pixels;
                }
            }
        }
    }
}

TEST(HiddenColours, BrightestOneIsFound) {
    for (const Target target : everyTarget()) {
        const ScopedTarget only(target);
        std::vector<std::uint8_t> row(4 * kMaxPixels, 0);
        std::memset(&row[4 * 77], 255, 3);
        EXPECT_TRUE(hasHiddenColours(row.data(), kMaxPixels)) << targetName(target);
    }
}

/// Over nothing the ground is what is seen, to the bit; a colour without alpha still counts.
TEST(HiddenColours, RunsOfNothingShowTheGround) {
    for (const Target target : everyTarget()) {
        const ScopedTarget only(target);
        std::vector<std::uint8_t> source(4 * kMaxPixels, 0);
        source[4 * 70] = 9;
        std::vector<std::uint8_t> shown(4 * kMaxPixels, 0x5A);
        flattenRow(shown.data(), source.data(), {200, 100, 7, 255}, kMaxPixels);
        for (std::size_t x = 0; x < kMaxPixels; ++x) {
            const std::vector<int> expected{7, 100, x == 70 ? 209 : 200, 255};
            const std::vector<int> actual(shown.begin() + static_cast<std::ptrdiff_t>(4 * x),
                                          shown.begin() + static_cast<std::ptrdiff_t>(4 * x + 4));
            ASSERT_EQ(actual, expected) << targetName(target) << ", pixel " << x;
        }
    }
}

}  // namespace
}  // namespace skarnel::kernels
