#include "render/canvas.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "imaging/kernels/turn.h"
#include "imaging/readable.h"
#include "imaging/test_images.h"

namespace skarnel {
namespace {

struct Shape {
    int width, height;
    float perspectiveW, perspectiveH, offset;
};

/// The rows of a canvas in their reading order.
std::vector<int> readingOrder(const Shape& shape, int blockRows) {
    const CGImage picture = test::noiseImage(shape.width, shape.height, 1);
    const auto size =
        ShapeSize::of(shape.width, shape.height, shape.perspectiveW, shape.perspectiveH);
    const auto layout = CanvasLayout::of(shape.width, shape.height, *size, shape.offset);
    const auto rows = CanvasRows::create(picture.pixels(), *layout, *size, shape.perspectiveH < 0,
                                         {0, 7, 200}, std::nullopt);
    std::vector<int> order;
    rows->inReadingOrder(blockRows, [&](int row) { order.push_back(row); });
    return order;
}

TEST(Canvas, TheReadingOrderHasEveryBlockOnce) {
    // Heights: 2 * 40; 40 + 24 * 1.5; 40 - 20 with the reflection above the canvas; upright.
    const struct {
        Shape shape;
        int height;
    } canvases[] = {{{9, 40, 0, 100, 0}, 80},
                    {{9, 40, 10, 60, 50}, 76},
                    {{9, 40, 0, 100, -150}, 20},
                    {{9, 40, 0, -50, 0}, 60}};
    for (const auto& canvas : canvases)
        for (const int blockRows : {1, 7, 16, 100}) {
            std::vector<int> order = readingOrder(canvas.shape, blockRows);
            std::sort(order.begin(), order.end());
            std::vector<int> expected;
            for (int row = 0; row < canvas.height; row += blockRows) expected.push_back(row);
            EXPECT_EQ(order, expected) << canvas.height << " rows by " << blockRows;
        }
}

// Row y of the picture is mirrored in row 79 - y, or stands again in row 40 + y when upright.
TEST(Canvas, PictureAndReflectionReadTheSameRowsTogether) {
    for (const float perspectiveH : {100.0F, -100.0F}) {
        const std::vector<int> order = readingOrder({9, 40, 0, perspectiveH, 0}, 1);
        const auto placeOf = [&](int row) {
            return static_cast<int>(std::find(order.begin(), order.end(), row) - order.begin());
        };
        for (int y = 0; y < 40; ++y) {
            const int reflected = perspectiveH > 0 ? 79 - y : 40 + y;
            EXPECT_LE(std::abs(placeOf(y) - placeOf(reflected)), 1) << "row " << y;
        }
    }
}

CanvasRows canvasOf(const CGImage& picture, const Shape& shape,
                    std::optional<kernels::Pixel> background = std::nullopt) {
    const auto size =
        ShapeSize::of(shape.width, shape.height, shape.perspectiveW, shape.perspectiveH);
    const auto layout = CanvasLayout::of(shape.width, shape.height, *size, shape.offset);
    return *CanvasRows::create(picture.pixels(), *layout, *size, shape.perspectiveH < 0,
                               {0, 7, 200}, background);
}

// 20 pixels with a widening of 4 on each side: the reflection's rows 0 .. 7 begin at column
// trunc((8 - row) * 4 / 8) = 4, 3, 3, 2, 2, 1, 1, 0, and end at column 28 less as many, included.
// The canvas has trunc(8 + 1.2 * 8) = 17 rows, the reflection the last 8 of them.
TEST(Canvas, BesideThePictureColumnsBeginWithTheReflection) {
    const CGImage picture = test::noiseImage(20, 8, 1);
    const std::vector<int> left{16, 14, 12, 10};
    const std::vector<int> right{9, 10, 12, 14};
    std::vector<int> expected = left;
    expected.insert(expected.end(), 20, 0);
    expected.insert(expected.end(), right.begin(), right.end());
    EXPECT_EQ(canvasOf(picture, {20, 8, 20, 100, 20}).emptyRows(), expected);
}

TEST(Canvas, NothingIsKnownToBeEmptyOnABackgroundOrBelowAPictureAsWideAsTheCanvas) {
    const CGImage picture = test::noiseImage(20, 8, 1);
    EXPECT_TRUE(
        canvasOf(picture, {20, 8, 20, 100, 20}, kernels::Pixel{1, 2, 3, 255}).emptyRows().empty());
    EXPECT_TRUE(canvasOf(picture, {20, 8, 0, 100, 20}).emptyRows().empty());
    EXPECT_TRUE(canvasOf(picture, {20, 8, -20, 100, 20}).emptyRows().empty());
}

TEST(Canvas, EmptyRowsShowNothing) {
    const CGImage picture = test::solidImage(30, 40, {9, 9, 9, 255});
    for (const Shape& shape : {Shape{30, 40, 20, 100, 10}, Shape{30, 40, 50, 63, 4.3F},
                               Shape{30, 40, 15, -80, -30}, Shape{30, 40, 15, 80, -200}}) {
        CanvasRows rows = canvasOf(picture, shape);
        const std::vector<int> empty = rows.emptyRows();
        std::vector<std::uint8_t> row(4 * empty.size());
        const int last = *std::max_element(empty.begin(), empty.end());
        for (int y = 0; y < last; ++y) {
            rows.draw(y, row.data());
            for (std::size_t x = 0; x < empty.size(); ++x) {
                if (y < empty[x]) {
                    ASSERT_EQ(row[4 * x + 3], 0) << x << ", " << y;
                }
            }
        }
    }
}

// A reflection of 30 rows and a gap of 1.5: the picture begins half a row above the canvas, so that
// its last row on it is covered by half. The canvas is 48 pixels wide and the picture 40.
TEST(Canvas, RowsBetweenThePicturesAreGivenAsThose) {
    constexpr int kCount = 16;
    const CGImage picture = test::validNoise(40, 50, 1);
    const auto size = ShapeSize::of(40, 50, 10, 60);
    const auto layout = CanvasLayout::of(40, 50, *size, 5);
    auto rows =
        CanvasRows::create(picture.pixels(), *layout, *size, false, {0, 7, 200}, std::nullopt);
    ASSERT_TRUE(rows);
    const std::uint8_t* sources[kCount + 1];
    std::vector<std::uint8_t> drawn(4 * 48);
    for (int row = 0; row <= 49 - kCount; ++row) {
        const auto span = rows->pictureAlone(row, kCount, sources);
        ASSERT_TRUE(span) << row;
        EXPECT_EQ(span->first, 4);
        EXPECT_EQ(span->end, 44);
        EXPECT_EQ(span->belowWeight, kernels::kLerpUnit / 2);
        EXPECT_EQ(span->readablePixels, readablePixels(picture.pixels(), row + kCount));
        for (int i = 0; i <= kCount; ++i) ASSERT_EQ(sources[i], picture.pixels().row(row + i));
        rows->draw(row, drawn.data());
        for (int i = 0; i < 4 * 40; ++i)  // halves round up
            ASSERT_EQ(drawn[static_cast<std::size_t>(16 + i)],
                      (sources[0][i] + sources[1][i] + 1) / 2)
                << "row " << row << ", byte " << i;
    }
    EXPECT_FALSE(rows->pictureAlone(50 - kCount, kCount, sources));
    EXPECT_FALSE(rows->pictureAlone(49, 1, sources));
    // One row alone is drawn: whoever wants it whole can do nothing with two.
    EXPECT_EQ(rows->row(7, drawn.data()).bytes, drawn.data());
}

}  // namespace
}  // namespace skarnel
