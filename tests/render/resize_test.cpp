#include "render/resize.h"

#include <gtest/gtest.h>

#include <vector>

namespace skarnel {
namespace {

/// An opaque grey picture whose rows are `strideBytes` long.
CGImage greyPicture(int width, int height, std::size_t strideBytes, int samples = 4) {
    const auto bytes = std::make_shared<std::vector<std::uint8_t>>(
        strideBytes * static_cast<std::size_t>(height), std::uint8_t{128});
    for (int y = 0; samples == 4 && y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            (*bytes)[static_cast<std::size_t>(y) * strideBytes + static_cast<std::size_t>(x) * 4 +
                     3] = 255;
        }
    }
    return *CGImage::share({bytes, bytes->data()}, width, height, strideBytes, samples);
}

TEST(ResizeCGImage, ToASmallerSizeKeepsTheSourcesStride) {
    const auto small = resizeCGImageToWidthAndHeight(greyPicture(10, 8, 48), 5, 20);
    ASSERT_TRUE(small.has_value());
    EXPECT_EQ(small->width(), 5);
    EXPECT_EQ(small->height(), 20);
    EXPECT_EQ(small->bytesPerRow(), 48U);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 5; ++x) {
            const std::uint8_t* pixel = small->pixels().row(y) + std::ptrdiff_t{4} * x;
            EXPECT_EQ(pixel[0], 128) << x << "," << y;
            EXPECT_EQ(pixel[3], 255) << x << "," << y;
        }
    }
}

TEST(ResizeCGImage, AWidthThatFillsTheStrideFitsAndOneMoreDoesNot) {
    const CGImage padded = greyPicture(10, 8, 48);
    EXPECT_TRUE(resizeCGImageToWidthAndHeight(padded, 12, 8).has_value());
    EXPECT_FALSE(resizeCGImageToWidthAndHeight(padded, 13, 8).has_value());
}

TEST(ResizeCGImage, ASideBelowOneGivesNone) {
    const CGImage picture = greyPicture(10, 8, 40);
    EXPECT_FALSE(resizeCGImageToWidthAndHeight(picture, 0, 8).has_value());
    EXPECT_FALSE(resizeCGImageToWidthAndHeight(picture, -1, 8).has_value());
    EXPECT_FALSE(resizeCGImageToWidthAndHeight(picture, 5, 0).has_value());
    EXPECT_FALSE(resizeCGImageToWidthAndHeight(picture, 5, -8).has_value());
}

TEST(ResizeCGImage, ASourceWithoutAlphaGivesNone) {
    EXPECT_FALSE(resizeCGImageToWidthAndHeight(greyPicture(10, 8, 40, 3), 5, 4).has_value());
}

TEST(ResizeCGImage, ToAHeightScalesTheWidthAlongAndTruncatesIt) {
    const CGImage picture = greyPicture(10, 8, 40);
    // 10 * (4 / 8) = 5; 10 * (3 / 8) = 3.75.
    EXPECT_EQ(resizeCGImageToHeight(picture, 4)->width(), 5);
    EXPECT_EQ(resizeCGImageToHeight(picture, 3)->width(), 3);
    EXPECT_EQ(resizeCGImageToHeight(picture, 3)->height(), 3);
    // Larger than the source: the wider row does not fit in its stride.
    EXPECT_FALSE(resizeCGImageToHeight(picture, 16).has_value());
    EXPECT_FALSE(resizeCGImageToHeight(picture, 0).has_value());
}

TEST(ResizeCGImage, ToAHeightDividesInSinglePrecision) {
    // 1 / 3 in single precision is 0.3333333433, and 3 times that rounds to 1 exactly; so does
    // 41 / 82 * 82. 7 / 25 is 0.2800000011920929 and 25 times that is 7 after rounding.
    EXPECT_EQ(resizeCGImageToHeight(greyPicture(3, 3, 12), 1)->width(), 1);
    EXPECT_EQ(resizeCGImageToHeight(greyPicture(25, 25, 100), 7)->width(), 7);
}

}  // namespace
}  // namespace skarnel
