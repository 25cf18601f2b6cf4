// Pictures for tests, and comparing them pixel by pixel.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <random>
#include <vector>

#include "imaging/cgimage.h"

namespace skarnel::test {

/// A picture from its bytes, top row first, R G B A.
inline CGImage imageOf(int width, int height, const std::vector<std::uint8_t>& bytes) {
    EXPECT_EQ(bytes.size(), std::size_t{4} * static_cast<std::size_t>(width * height));
    return *CGImage::copyOf({bytes.data(), width, height, std::ptrdiff_t{4} * width, 4});
}

/// Every byte at random: colours above their alpha too, which no step may mind.
inline CGImage noiseImage(int width, int height, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(std::size_t{4} * static_cast<std::size_t>(width) *
                                    static_cast<std::size_t>(height));
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return imageOf(width, height, bytes);
}

/// Noise whose pixels are valid premultiplied ones.
inline CGImage validNoise(int width, int height, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < width * height; ++i) {
        const auto alpha = static_cast<std::uint8_t>(random());
        for (int k = 0; k < 3; ++k)
            bytes.push_back(static_cast<std::uint8_t>(random() % (alpha + 1U)));
        bytes.push_back(alpha);
    }
    return imageOf(width, height, bytes);
}

inline CGImage solidImage(int width, int height, std::initializer_list<std::uint8_t> pixel) {
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < width * height; ++i) bytes.insert(bytes.end(), pixel);
    return imageOf(width, height, bytes);
}

inline std::vector<int> pixelAt(const CGImage& image, int x, int y) {
    const std::uint8_t* p = image.pixels().row(y) + std::ptrdiff_t{4} * x;
    return {p[0], p[1], p[2], p[3]};
}

/// Names the first differing pixel.
inline ::testing::AssertionResult samePixels(const CGImage& actual, const CGImage& expected) {
    if (actual.width() != expected.width() || actual.height() != expected.height())
        return ::testing::AssertionFailure()
               << actual.width() << " x " << actual.height() << " instead of " << expected.width()
               << " x " << expected.height();
    for (int y = 0; y < actual.height(); ++y)
        for (int x = 0; x < actual.width(); ++x)
            if (pixelAt(actual, x, y) != pixelAt(expected, x, y))
                return ::testing::AssertionFailure()
                       << "at (" << x << ", " << y
                       << "): " << ::testing::PrintToString(pixelAt(actual, x, y)) << " instead of "
                       << ::testing::PrintToString(pixelAt(expected, x, y));
    return ::testing::AssertionSuccess();
}

/// The largest difference of two bytes at one place; sizes must match.
inline int largestDifference(const CGImage& a, const CGImage& b) {
    EXPECT_EQ(a.width(), b.width());
    EXPECT_EQ(a.height(), b.height());
    int largest = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int i = 0; i < 4 * a.width(); ++i)
            largest = std::max(largest, std::abs(a.pixels().row(y)[i] - b.pixels().row(y)[i]));
    return largest;
}

}  // namespace skarnel::test
