#include "cli/preview.h"

#include <gtest/gtest.h>

#include "cli/pictures.h"

namespace skarnel::cli {
namespace {

PixelSize fitted(PixelSize picture, PixelSize box) {
    const auto result = shrinkToFit(test::gradientPicture(picture.width, picture.height), box);
    return result ? PixelSize{result->width(), result->height()} : PixelSize{};
}

TEST(Preview, ShrinksByOneFactorForBothSides) {
    EXPECT_EQ(fitted({400, 300}, {80, 60}), (PixelSize{80, 60}));
    EXPECT_EQ(fitted({400, 300}, {80, 30}), (PixelSize{40, 30}));
    EXPECT_EQ(fitted({300, 400}, {60, 1000}), (PixelSize{60, 80}));
}

TEST(Preview, NeverEnlarges) {
    const CGImage picture = test::gradientPicture(40, 30);
    const auto result = shrinkToFit(picture, {800, 600});
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->isSame(picture));
}

TEST(Preview, LeavesAtLeastOnePixel) {
    EXPECT_EQ(fitted({1000, 2}, {10, 10}), (PixelSize{10, 1}));
}

}  // namespace
}  // namespace skarnel::cli
