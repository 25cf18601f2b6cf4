// Rows as picture files take them: the definitions by hand, and the twins on every target.
#include "imaging/kernels/row_coding.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "imaging/kernels/targets.h"

namespace skarnel::kernels {
namespace {

using Row = std::vector<std::uint8_t>;

constexpr std::size_t kMaxPixels = 130;
constexpr std::uint8_t kSentinel = 0xA5;

Row noise(std::size_t size, std::uint32_t seed) {
    std::mt19937 random(seed);
    Row bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

/// Mostly opaque, as pictures are, with stretches that are not.
Row pixelNoise(std::size_t pixels, std::uint32_t seed) {
    Row bytes = noise(4 * pixels, seed);
    for (std::size_t i = 0; i < pixels; ++i) {
        if (i % 40 < 30) bytes[4 * i + 3] = 255;
        if (i % 40 == 35) bytes[4 * i + 3] = 0;
    }
    return bytes;
}

/// All pairs of a colour and an alpha, and what long division makes of them.
TEST(UnpremultiplyRow, IsExactForAllPairsOnEveryTarget) {
    Row source;
    Row expected;
    for (int alpha = 0; alpha < 256; ++alpha) {
        for (int color = 0; color < 256; ++color) {
            int straight = 0;
            // Twice the exact value is 510 c / a; the nearest whole number, half upwards.
            while (alpha > 0 && straight < 255 && (2 * straight + 1) * alpha <= 510 * color) {
                ++straight;
            }
            // Halves of an odd alpha do not occur: a / 2 is rounded down there.
            const auto c = static_cast<std::uint8_t>(color);
            const auto a = static_cast<std::uint8_t>(alpha);
            const auto s = static_cast<std::uint8_t>(straight);
            source.insert(source.end(), {c, static_cast<std::uint8_t>(255 - color), c, a});
            expected.insert(expected.end(), {s, 0, s, a});
        }
    }
    for (int alpha = 0; alpha < 256; ++alpha) {
        const std::size_t row = static_cast<std::size_t>(alpha) * 1024;
        for (std::size_t color = 0; color < 256; ++color) {
            expected[row + 4 * color + 1] = expected[row + 4 * (255 - color)];
        }
    }
    Row defined(source.size());
    scalar::unpremultiplyRow(defined.data(), source.data(), source.size() / 4);
    EXPECT_EQ(defined, expected);
    for (const Target target : supportedTargets()) {
        const ScopedTarget only(target);
        Row actual(source.size());
        unpremultiplyRow(actual.data(), source.data(), source.size() / 4);
        EXPECT_EQ(actual, expected) << targetName(target);
        actual = source;
        unpremultiplyRow(actual.data(), actual.data(), actual.size() / 4);
        EXPECT_EQ(actual, expected) << targetName(target) << ", in place";
    }
}

TEST(UnpremultiplyRow, IsTheSameOnEveryTargetAtEveryWidthAndPlace) {
    for (std::size_t pixels = 0; pixels <= kMaxPixels; ++pixels) {
        const Row source = pixelNoise(pixels, static_cast<std::uint32_t>(pixels));
        Row expected(4 * pixels);
        scalar::unpremultiplyRow(expected.data(), source.data(), pixels);
        for (const Target target : supportedTargets()) {
            const ScopedTarget only(target);
            for (const std::size_t misalign : {0, 1, 4, 63}) {
                Row actual(misalign + 4 * pixels + 64, kSentinel);
                unpremultiplyRow(actual.data() + misalign, source.data(), pixels);
                const auto start = actual.begin() + static_cast<std::ptrdiff_t>(misalign);
                const auto end = start + static_cast<std::ptrdiff_t>(4 * pixels);
                ASSERT_EQ(Row(start, end), expected) << targetName(target) << ", " << pixels;
                ASSERT_EQ(Row(end, actual.end()), Row(64, kSentinel)) << targetName(target);
            }
        }
    }
}

TEST(SubtractRow, TakesDifferencesAsSignedBytes) {
    const Row row = {5, 0, 128, 255, 7};
    const Row other = {3, 1, 0, 0, 7};
    Row defined(5);
    EXPECT_EQ(scalar::subtractRow(defined.data(), row.data(), other.data(), 5), 132U);
    EXPECT_EQ(defined, (Row{2, 255, 128, 255, 0}));
    for (const Target target : supportedTargets()) {
        const ScopedTarget only(target);
        Row difference(5);
        // 2, -1, -128, -1 and 0.
        EXPECT_EQ(subtractRow(difference.data(), row.data(), other.data(), 5), 132U);
        EXPECT_EQ(difference, (Row{2, 255, 128, 255, 0}));
    }
}

TEST(SubtractRow, IsTheSameOnEveryTargetAtEveryWidthAndPlace) {
    for (std::size_t size = 0; size <= 4 * kMaxPixels; ++size) {
        const Row row = noise(size, 1);
        for (const std::size_t misalign : {0, 1, 4, 63}) {
            const Row other = noise(size + misalign, 2);
            Row expected(size);
            const std::uint64_t sum =
                scalar::subtractRow(expected.data(), row.data(), other.data() + misalign, size);
            for (const Target target : supportedTargets()) {
                const ScopedTarget only(target);
                Row actual(misalign + size + 64, kSentinel);
                const std::uint64_t actualSum = subtractRow(actual.data() + misalign, row.data(),
                                                            other.data() + misalign, size);
                const auto start = actual.begin() + static_cast<std::ptrdiff_t>(misalign);
                const auto end = start + static_cast<std::ptrdiff_t>(size);
                ASSERT_EQ(actualSum, sum) << targetName(target) << ", " << size;
                ASSERT_EQ(Row(start, end), expected) << targetName(target) << ", " << size;
                ASSERT_EQ(Row(end, actual.end()), Row(64, kSentinel)) << targetName(target);
            }
        }
    }
}

TEST(SubtractRow, AddsUpMoreThanALaneOfSmallSumsCouldHold) {
    // 128 a byte over a million bytes.
    const Row row(1 << 20, 128);
    const Row other(1 << 20, 0);
    for (const Target target : supportedTargets()) {
        const ScopedTarget only(target);
        Row difference(row.size());
        EXPECT_EQ(subtractRow(difference.data(), row.data(), other.data(), row.size()),
                  std::uint64_t{128} << 20);
    }
}

}  // namespace
}  // namespace skarnel::kernels
