#include "imaging/io/orientation.h"

#include <gtest/gtest.h>

#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

/// Pixels numbered row by row in their first byte.
PixelBuffer numbered(int width, int height) {
    auto buffer = PixelBuffer::zeroed(width, height);
    for (int i = 0; i < width * height; ++i) {
        buffer->view().row(i / width)[4 * (i % width)] = static_cast<std::uint8_t>(i);
    }
    return *std::move(buffer);
}

TEST(Orientation, NumbersOutsideOneToEightLeaveThePictureAlone) {
    for (const int orientation : {-1, 0, 1, 9, 1000}) {
        auto upright = io::turnUpright(numbered(3, 2), orientation);
        ASSERT_TRUE(upright);
        ASSERT_EQ(upright->width(), 3) << orientation;
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(upright->view().row(i / 3)[4 * (i % 3)], i) << orientation;
        }
    }
}

TEST(Orientation, AQuarterClockwiseBringsTheLeftColumnToTheTop) {
    // 0 1 2    3 0
    // 3 4 5    4 1
    //          5 2
    auto upright = io::turnUpright(numbered(3, 2), 6);
    ASSERT_TRUE(upright);
    ASSERT_EQ(upright->width(), 2);
    const std::vector<int> expected = {3, 0, 4, 1, 5, 2};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(upright->view().row(static_cast<int>(i / 2))[4 * (i % 2)], expected[i]);
    }
}

}  // namespace
}  // namespace skarnel
