#include "render/turn.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "imaging/column_turn.h"
#include "imaging/kernels/resample.h"
#include "imaging/test_images.h"
#include "render/reflection.h"

namespace skarnel {
namespace {

using test::noiseImage;
using test::pixelAt;
using test::samePixels;
using test::solidImage;
using test::validNoise;

void expectCorner(CGPoint corner, double x, double y) {
    EXPECT_EQ(corner.x, x);
    EXPECT_NEAR(corner.y, y, 5e-5);
}

/// Squeezes `picture`, which begins at pixel `first` of rows `whole` pixels wide, in both ways.
void expectSqueezedAlike(const ColumnTurn& turn, const CGImage& picture, int first, int whole) {
    const PixelView view = picture.pixels();
    auto drawnOut = turn.squeezedPicture();
    auto alone = turn.squeezedPicture();
    ASSERT_TRUE(drawnOut && alone);
    for (int y = 0; y < view.height; y += kernels::kBlockRows) {
        std::vector<std::vector<std::uint8_t>> rows;
        const std::uint8_t* wide[kernels::kBlockRows];
        const std::uint8_t* own[kernels::kBlockRows];
        for (int i = 0; i < turn.blockRows(y); ++i) {
            rows.emplace_back(4 * static_cast<std::size_t>(whole));
            std::memcpy(rows.back().data() + std::ptrdiff_t{4} * first, view.row(y + i),
                        4 * static_cast<std::size_t>(view.width));
            own[i] = view.row(y + i);
        }
        for (std::size_t i = 0; i < rows.size(); ++i) wide[i] = rows[i].data();
        turn.squeezeRows(y, wide, static_cast<std::size_t>(whole), *drawnOut);
        turn.squeezeSpans(y, {own, first, first + view.width, static_cast<std::size_t>(view.width)},
                          *alone);
    }
    for (int column = 0; column < turn.targetWidth(); ++column) {
        const std::ptrdiff_t at = 4 * column * drawnOut->columnStride;
        ASSERT_EQ(std::memcmp(drawnOut->bytes.get() + at, alone->bytes.get() + at,
                              4 * static_cast<std::size_t>(view.height)),
                  0)
            << "column " << column << ", picture from " << first << " of " << whole;
    }
}

/// The same for the rows between `picture`'s, which has one more.
void expectSqueezedAlikeBetweenRows(const ColumnTurn& turn, const CGImage& picture, int first,
                                    int whole, std::int16_t belowWeight) {
    const PixelView view = picture.pixels();
    const std::size_t bytes = 4 * static_cast<std::size_t>(view.width);
    const std::int16_t weights[] = {static_cast<std::int16_t>(kernels::kTapUnit - belowWeight),
                                    belowWeight};
    auto drawnOut = turn.squeezedPicture();
    auto between = turn.squeezedPicture();
    ASSERT_TRUE(drawnOut && between);
    for (int y = 0; y < view.height - 1; y += kernels::kBlockRows) {
        std::vector<std::vector<std::uint8_t>> rows;
        const std::uint8_t* wide[kernels::kBlockRows];
        const std::uint8_t* own[kernels::kBlockRows + 1] = {view.row(y)};
        for (int i = 0; i < turn.blockRows(y); ++i) {
            own[i + 1] = view.row(y + i + 1);
            rows.emplace_back(4 * static_cast<std::size_t>(whole));
            kernels::combineRows(rows.back().data() + std::ptrdiff_t{4} * first, own + i,
                                 {0, 2, weights}, bytes);
        }
        for (std::size_t i = 0; i < rows.size(); ++i) wide[i] = rows[i].data();
        turn.squeezeRows(y, wide, static_cast<std::size_t>(whole), *drawnOut);
        turn.squeezeSpans(y,
                          {own, first, first + view.width, static_cast<std::size_t>(view.width),
                           kernels::kAheadInRow, 2 * belowWeight},
                          *between);
    }
    for (int column = 0; column < turn.targetWidth(); ++column) {
        const std::ptrdiff_t at = 4 * column * drawnOut->columnStride;
        ASSERT_EQ(std::memcmp(drawnOut->bytes.get() + at, between->bytes.get() + at,
                              4 * static_cast<std::size_t>(view.height - 1)),
                  0)
            << "column " << column << ", picture from " << first << " of " << whole;
    }
}

TEST(Turn, AQuarterOfTheSliderMakesTheRightEdgeTall) {
    const Quad quad = turnCorners(400, 300, 25);
    expectCorner(quad.topLeft, 80, 240);
    expectCorner(quad.topRight, 320, 360);
    expectCorner(quad.bottomLeft, 80, 60);
    expectCorner(quad.bottomRight, 320, -60);
    const auto bitmap = turnedBitmap(quad);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->width, 240);
    EXPECT_EQ(bitmap->height, 420);
}

TEST(Turn, ATenthOfTheSliderFollowsTheSine) {
    const Quad quad = turnCorners(400, 300, 10);
    expectCorner(quad.topLeft, 47, 264.7329);
    expectCorner(quad.topRight, 353, 335.2671);
    expectCorner(quad.bottomLeft, 47, 35.2671);
    expectCorner(quad.bottomRight, 353, -35.2671);
}

// Worked out apart from the code: 0.2 * 333 = 66.5999985 in single precision, times the sine
// -0.95105654 = -63.3403587, where the product in doubles would round to -63.3403625. The inset
// 0.2 * 1694 * -0.156434 is 53 in single precision and 52.9999955 in doubles.
TEST(Turn, InsetAndShiftAreProductsInSinglePrecision) {
    EXPECT_EQ(turnCorners(1694, 100, 2.5F).topLeft.x, 53);
    const Quad quad = turnCorners(400, 333, 30);
    EXPECT_EQ(quad.bottomRight.y, -0x1.fab90ep+5);
    EXPECT_EQ(quad.bottomLeft.y, 0x1.fab90ep+5);
    EXPECT_EQ(quad.topLeft.y, 269.6596374511719);
    EXPECT_EQ(quad.topRight.y, 396.3403625488281);
}

TEST(Turn, TheSineRepeatsItself) {
    const Quad ten = turnCorners(400, 300, 10);
    const Quad forty = turnCorners(400, 300, 40);
    EXPECT_NEAR(ten.topLeft.y, forty.topLeft.y, 1e-3);
    EXPECT_EQ(ten.topLeft.x, forty.topLeft.x);
}

TEST(Turn, NothingMovesAt0And50And100) {
    const CGImage picture = noiseImage(123, 77, 1);
    for (const float value : {0.0F, 50.0F, 100.0F}) {
        const Quad quad = turnCorners(123, 77, value);
        EXPECT_EQ(quad.topLeft.x, 0);
        EXPECT_LT(std::abs(quad.bottomLeft.y), 1e-4);
        EXPECT_TRUE(samePixels(*perspectiveImage(picture, value), picture)) << value;
    }
    EXPECT_LT(std::abs(turnCorners(123, 77, 50).bottomLeft.y), 1e-13);
}

TEST(Turn, AQuarterAndThreeQuartersAreMirrorImages) {
    const CGImage left = *perspectiveImage(solidImage(60, 40, {50, 60, 70, 255}), 25);
    const CGImage right = *perspectiveImage(solidImage(60, 40, {50, 60, 70, 255}), 75);
    ASSERT_EQ(left.width(), right.width());
    ASSERT_EQ(left.height(), right.height());
    EXPECT_EQ(left.width(), 36);
    EXPECT_EQ(left.height(), 56);
    for (int y = 0; y < left.height(); ++y)
        for (int x = 0; x < left.width(); ++x)
            ASSERT_NEAR(pixelAt(left, x, y)[3], pixelAt(right, left.width() - 1 - x, y)[3], 1)
                << x << ' ' << y;
}

TEST(Turn, ANarrowCompositeNeverMovesInwards) {
    for (int v = 0; v <= 100; ++v)
        EXPECT_EQ(turnCorners(4, 300, static_cast<float>(v)).topLeft.x, 0) << v;
}

TEST(Turn, ATallNarrowCompositeShiftsWithoutMovingInwards) {
    const Quad quad = turnCorners(4, 1000, 10);
    EXPECT_EQ(quad.topLeft.x, 0);
    EXPECT_NEAR(quad.bottomLeft.y, 117.557, 1e-2);
    EXPECT_TRUE(perspectiveImage(noiseImage(4, 1000, 1), 10));
}

TEST(Turn, ValuesThatAreNoNumberGiveNone) {
    const CGImage picture = noiseImage(10, 10, 1);
    EXPECT_FALSE(perspectiveImage(picture, std::numeric_limits<float>::quiet_NaN()));
    EXPECT_FALSE(perspectiveImage(picture, std::numeric_limits<float>::infinity()));
}

/// Ideal bilinear sampling in doubles with clamped edges, through the general homography.
double idealSample(const CGImage& picture, const Homography& back, double x, double y, int k) {
    const CGPoint from = back.apply({x, y});
    const double u = std::clamp(from.x - 0.5, 0.0, picture.width() - 1.0);
    const double v = std::clamp(picture.height() - from.y - 0.5, 0.0, picture.height() - 1.0);
    const int u0 = static_cast<int>(u);
    const int v0 = static_cast<int>(v);
    const int u1 = std::min(u0 + 1, picture.width() - 1);
    const int v1 = std::min(v0 + 1, picture.height() - 1);
    const auto at = [&](int px, int py) {
        return static_cast<double>(picture.pixels().row(py)[4 * px + k]);
    };
    const double upper = at(u0, v0) + (at(u1, v0) - at(u0, v0)) * (u - u0);
    const double lower = at(u0, v1) + (at(u1, v1) - at(u0, v1)) * (u - u0);
    return upper + (lower - upper) * (v - v0);
}

TEST(Turn, InnerPixelsAreIdealBilinearSamplesWithinTheBound) {
    const CGImage picture = validNoise(90, 70, 5);
    for (const float value : {10.0F, 30.0F, 60.0F, 77.0F}) {
        const Quad quad = turnCorners(90, 70, value);
        const auto bitmap = turnedBitmap(quad);
        const auto back = homographyOntoQuad(90, 70, quad)->inverse();
        const CGImage turned = *perspectiveImage(picture, value);
        for (int row = 0; row < turned.height(); ++row)
            for (int column = 0; column < turned.width(); ++column) {
                const double x = bitmap->lowerLeft.x + column + 0.5;
                const double y = bitmap->lowerLeft.y + (turned.height() - 1 - row) + 0.5;
                const CGPoint from = back->apply({x, y});
                if (from.y < 1 || from.y > 69) continue;  // the slanted edges
                for (int k = 0; k < 4; ++k)
                    ASSERT_NEAR(pixelAt(turned, column, row)[static_cast<std::size_t>(k)],
                                idealSample(picture, *back, x, y, k), 1.1)
                        << column << ", " << row << " at " << value;
            }
    }
}

TEST(Turn, TheSidesAreFullyCoveredAndTheSlantedEdgesByTheirShare) {
    const CGImage turned = *perspectiveImage(solidImage(100, 100, {255, 255, 255, 255}), 30);
    for (int x = 0; x < turned.width(); ++x) {
        double sum = 0;
        for (int y = 0; y < turned.height(); ++y) sum += pixelAt(turned, x, y)[3];
        const Quad quad = turnCorners(100, 100, 30);
        const double t = (x + 0.5) / (quad.topRight.x - quad.topLeft.x);
        const double length = (1 - t) * (quad.topLeft.y - quad.bottomLeft.y) +
                              t * (quad.topRight.y - quad.bottomRight.y);
        EXPECT_NEAR(sum / 255, length, 0.02) << "column " << x;
    }
}

TEST(Turn, NoPixelIsBrighterThanThePictureAndColourKeepsBelowAlpha) {
    const CGImage turned = *perspectiveImage(solidImage(64, 64, {100, 100, 100, 128}), 40);
    for (int y = 0; y < turned.height(); ++y)
        for (int x = 0; x < turned.width(); ++x) {
            ASSERT_LE(pixelAt(turned, x, y)[0], 100);
            ASSERT_LE(pixelAt(turned, x, y)[0], pixelAt(turned, x, y)[3]);
        }
}

TEST(Turn, ASampleNeverWrapsToTheOtherSide) {
    // Left half red, right half green: no column of the outermost pixels holds the other colour.
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 50; ++x) {
            const bool left = x < 25;
            for (const int k : {left ? 255 : 0, left ? 0 : 255, 0, 255})
                bytes.push_back(static_cast<std::uint8_t>(k));
        }
    const CGImage turned = *perspectiveImage(test::imageOf(50, 50, bytes), 70);
    for (int y = 0; y < turned.height(); ++y) {
        EXPECT_EQ(pixelAt(turned, 0, y)[1], 0);
        EXPECT_EQ(pixelAt(turned, turned.width() - 1, y)[0], 0);
    }
}

struct Look {
    const char* name;
    float width, height, offset, turn;
    bool background;
};

// The turn takes its canvas in pieces, a strip's columns at a time; the steps one by one turn the
// whole canvas.
TEST(Turn, RendersOfPiecesAreThoseOfAWholeCanvas) {
    const Look looks[] = {{"rows between the picture's", 10, 60, 5, 30, false},
                          {"picture rows alone", 10, 60, 0, 30, false},
                          {"resampled rows", 7, 63.3F, 4.7F, 81, false},
                          {"over a background", 12, 80, 10, 20, true},
                          {"overlapping", 5, 70, -20, 70, false},
                          {"narrower reflection", -20, 60, 5, 30, false},
                          {"flipped upright", 15, -50, 0, 12, false},
                          {"enlarged", 0, 190, 0, 30, false},
                          {"as tall as the picture", 30, 100, 0, 65, true}};
    for (const Look& look : looks)
        for (const int width : {40, 380, 900}) {
            const CGImage picture = validNoise(width, 110, 4);
            float turn = look.turn;
            const RenderInputReaders readers(
                [] { return 200.0F; },
                [&] {
                    return look.background ? std::optional(DeviceColor{0.2, 0.4, 0.9, 0.5})
                                           : std::nullopt;
                },
                [&] { return turn; });
            const auto render = [&](Drawing drawing) {
                return addReflectionToCGImage(picture, look.width, look.height, look.offset, 10, 7,
                                              readers, drawing);
            };
            const auto atOnce = render(Drawing::AtOnce);
            const auto whenRead = render(Drawing::WhenRead);
            turn = 50;
            const auto canvas = render(Drawing::AtOnce);
            ASSERT_TRUE(atOnce && whenRead && canvas) << look.name;
            const auto expected = perspectiveImage(canvas->image, look.turn);
            ASSERT_TRUE(expected) << look.name;
            EXPECT_TRUE(samePixels(atOnce->image, *expected)) << look.name << ' ' << width;
            EXPECT_TRUE(samePixels(whenRead->image, *expected)) << look.name << ' ' << width;
        }
}

// The same canvas rows twice: drawn out with what is transparent beside the picture, and as the
// picture's own rows or those between which they lie.
TEST(Turn, RowsOfThePictureAloneAreSqueezedAsWhenDrawnOut) {
    for (const int height : {1, 15, 16, 37})
        for (const int width : {1, 2, 3, 40, 130})
            for (const int first : {0, 1, 17, 80})
                for (const int beyond : {0, 1, 50})
                    for (const float inset : {0.0F, 0.15F, 0.45F}) {
                        const CGImage picture = noiseImage(width, height, 5);
                        const int whole = first + width + beyond;
                        const double in = std::floor(inset * static_cast<float>(whole));
                        const Quad quad{{in, 1.1 * height},
                                        {whole - in, 0.9 * height},
                                        {in, -0.1 * height},
                                        {whole - in, 0.1 * height}};
                        const auto turn = ColumnTurn::plan(
                            whole, height, quad, {in, -0.1 * height},
                            std::max(1, whole - 2 * static_cast<int>(in)), 2 + height);
                        ASSERT_TRUE(turn);
                        expectSqueezedAlike(*turn, picture, first, whole);
                        const auto weight = static_cast<std::int16_t>(1 + 60 * whole);
                        expectSqueezedAlikeBetweenRows(*turn, noiseImage(width, height + 1, 6),
                                                       first, whole, weight);
                    }
}

}  // namespace
}  // namespace skarnel
