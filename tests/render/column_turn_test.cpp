#include "imaging/column_turn.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "imaging/test_images.h"

namespace skarnel {
namespace {

using test::noiseImage;
using test::samePixels;

TEST(ColumnTurn, RefusesQuadsWithoutUprightSides) {
    EXPECT_FALSE(ColumnTurn::plan(10, 10, {{0, 10}, {10, 10}, {1, 0}, {10, 0}}, {0, 0}, 10, 10));
    EXPECT_FALSE(ColumnTurn::plan(10, 10, {{0, 0}, {10, 0}, {0, 10}, {10, 10}}, {0, 0}, 10, 10));
    EXPECT_TRUE(ColumnTurn::plan(10, 10, {{0, 10}, {10, 10}, {0, 0}, {10, 0}}, {0, 0}, 10, 10));
}

/// One pass after the other, with the whole squeezed picture in between.
CGImage turnedInTwoPasses(const CGImage& picture, const ColumnTurn& turn, int height) {
    const PixelView view = picture.pixels();
    auto squeezed = *turn.squeezedPicture();
    for (int y = 0; y < view.height; y += kernels::kBlockRows) {
        const std::uint8_t* rows[kernels::kBlockRows];
        for (int i = 0; i < turn.blockRows(y); ++i) rows[i] = view.row(y + i);
        turn.squeezeRows(y, rows, static_cast<std::size_t>(view.width), squeezed);
    }
    auto target = *PixelBuffer::uninitialized(turn.targetWidth(), height);
    turn.walkRows(squeezed, 0, target.view());
    return CGImage(std::move(target));
}

struct TurnShape {
    const char* name;
    int width, height;
    double inset, rise;  // of the width and of the height
    int below;           // rows of the target below the quad's lower edge
};

TEST(Turn, StripsHaveTheBytesOfTwoPasses) {
    const TurnShape shapes[] = {{"one pixel", 1, 1, 0, 0.1, 0},
                                {"one row", 300, 1, 0.1, 0.1, 0},
                                {"flat", 700, 15, 0.1, 0.2, 0},
                                {"one strip", 255, 90, 0, -0.2, 0},
                                {"two strips", 340, 120, 0.12, 0.2, 0},
                                {"five strips", 1400, 333, 0.05, -0.19, 0},
                                {"a tall one", 290, 3000, 0, 0.2, 0},
                                {"a very tall one", 20, 70'000, 0.1, 0.2, 0},
                                {"shrunk to a third", 900, 900, 0.33, -0.3, 0},
                                {"cut off below", 600, 400, 0.1, 0.2, -150}};
    for (const TurnShape& shape : shapes) {
        const CGImage picture = noiseImage(shape.width, shape.height, 8);
        const double in = std::floor(shape.inset * shape.width);
        const double rise = shape.rise * shape.height;
        const Quad quad{{in, shape.height + rise},
                        {shape.width - in, shape.height - rise},
                        {in, -rise},
                        {shape.width - in, rise}};
        const CGPoint lowerLeft{in, -std::abs(rise) - shape.below};
        const int width = std::max(1, shape.width - 2 * static_cast<int>(in));
        const int height =
            std::max(1, static_cast<int>(shape.height + 2 * std::abs(rise)) + shape.below);
        const auto turn =
            ColumnTurn::plan(shape.width, shape.height, quad, lowerLeft, width, height);
        ASSERT_TRUE(turn) << shape.name;
        const auto strips = drawColumnTurn(picture, quad, lowerLeft, width, height);
        ASSERT_TRUE(strips) << shape.name;
        EXPECT_TRUE(samePixels(*strips, turnedInTwoPasses(picture, *turn, height))) << shape.name;
    }
}

/// Above which row each column of a picture is transparent: beside an opaque middle both sides are,
/// on the left less and less from row to row, on the right down to the end.
std::vector<int> cornersAbove(int width, int height) {
    std::vector<int> rows(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x) {
        if (x < width / 4) rows[static_cast<std::size_t>(x)] = height - 60 - x;
        if (x >= 3 * width / 4) rows[static_cast<std::size_t>(x)] = height;
    }
    return rows;
}

CGImage withCornersCleared(const CGImage& picture, const std::vector<int>& emptyRows) {
    auto buffer = *PixelBuffer::uninitialized(picture.width(), picture.height());
    for (int y = 0; y < picture.height(); ++y) {
        std::uint8_t* row = buffer.view().row(y);
        std::memcpy(row, picture.pixels().row(y), 4 * emptyRows.size());
        for (std::size_t x = 0; x < emptyRows.size(); ++x)
            if (y < emptyRows[x]) std::memset(row + 4 * x, 0, 4);
    }
    return CGImage(std::move(buffer));
}

/// In two passes like turnedInTwoPasses, but where whole blocks have nothing beside the middle only
/// that is squeezed; what is not comes as `poison`.
CGImage turnedWithoutCorners(const CGImage& picture, const ColumnTurn& turn, int height,
                             std::uint8_t poison) {
    const PixelView view = picture.pixels();
    const int first = view.width / 4;
    const int end = 3 * view.width / 4;
    auto squeezed = *turn.squeezedPicture();
    std::memset(squeezed.bytes.get(), poison,
                static_cast<std::size_t>(4 * turn.targetWidth() * squeezed.columnStride));
    for (int y = 0; y < view.height; y += kernels::kBlockRows) {
        const bool isMiddle = y + kernels::kBlockRows <= view.height - 60 - first;
        const std::uint8_t* rows[kernels::kBlockRows];
        for (int i = 0; i < turn.blockRows(y); ++i)
            rows[i] = view.row(y + i) + (isMiddle ? std::ptrdiff_t{4} * first : 0);
        if (isMiddle)
            turn.squeezeSpans(y, {rows, first, end, static_cast<std::size_t>(end - first)},
                              squeezed);
        else
            turn.squeezeRows(y, rows, static_cast<std::size_t>(view.width), squeezed);
    }
    auto target = *PixelBuffer::uninitialized(turn.targetWidth(), height);
    turn.walkRows(squeezed, 0, target.view());
    return CGImage(std::move(target));
}

TEST(ColumnTurn, WhatIsLeftOutWouldHaveBeenTransparent) {
    const struct {
        const char* name;
        double rise;  // of the height
        int height;   // of the target, for a picture of 480 rows
    } shapes[] = {{"right side small", 0.19, 480},
                  {"left side small", -0.19, 480},
                  {"shrunk to a fifth", 0.1, 96},
                  {"enlarged", 0.15, 1100},
                  {"one band", 0, 16}};
    constexpr int kWidth = 320;
    constexpr int kHeight = 480;
    const std::vector<int> empty = cornersAbove(kWidth, kHeight);
    const CGImage picture = withCornersCleared(noiseImage(kWidth, kHeight, 3), empty);
    for (const auto& shape : shapes)
        for (const int width : {9, 150, 320}) {
            const double rise = shape.rise * shape.height;
            const Quad quad{{0, shape.height + rise},
                            {1.0 * width, shape.height - rise},
                            {0, -rise},
                            {1.0 * width, rise}};
            const int height = static_cast<int>(shape.height + 2 * std::abs(rise));
            auto turn =
                *ColumnTurn::plan(kWidth, kHeight, quad, {0, -std::abs(rise)}, width, height);
            const CGImage expected = turnedInTwoPasses(picture, turn, height);
            turn.leaveOut(empty);
            EXPECT_TRUE(samePixels(turnedWithoutCorners(picture, turn, height, 0xA5), expected))
                << shape.name << ", " << width << " wide";
        }
}

}  // namespace
}  // namespace skarnel
