#include "render/shape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "imaging/test_images.h"
#include "oracle.h"
#include "render/reflection.h"

namespace skarnel {
namespace {

using test::imageOf;
using test::noiseImage;
using test::pixelAt;
using test::samePixels;
using test::solidImage;
namespace oracle = test::oracle;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::optional<CGImage> shaped(const CGImage& mirror, const oracle::Settings& s,
                              float perspectiveH = 100) {
    const auto image = PerspectiveCIImage(CIImage::imageWithCGImage(mirror), s.perspectiveW,
                                          perspectiveH, s.start, s.gradient, s.alpha);
    return image ? CIImageGetCGImage(*image) : std::nullopt;
}

void expectAsOracle(const CGImage& mirror, const oracle::Settings& s) {
    const std::vector<std::uint8_t> expected = oracle::shape(mirror.pixels(), s);
    const auto actual = shaped(mirror, s);
    ASSERT_EQ(actual.has_value(), !expected.empty());
    if (!actual) return;
    const int width = static_cast<int>(expected.size()) / 4 / mirror.height();
    EXPECT_TRUE(samePixels(*actual, imageOf(width, mirror.height(), expected)))
        << mirror.width() << " x " << mirror.height() << ", width " << s.perspectiveW << ", start "
        << s.start << ", gradient " << s.gradient << ", alpha " << s.alpha;
}

struct Case {
    const char* name;
    int width;
    int height;
    oracle::Settings settings;
};

class ShapeTable : public ::testing::TestWithParam<Case> {};

TEST_P(ShapeTable, IsByteForByteTheRowLoop) {
    const Case& c = GetParam();
    expectAsOracle(noiseImage(c.width, c.height, 7), c.settings);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ShapeTable,
    ::testing::Values(
        Case{"defaults", 40, 30, {}}, Case{"widened", 300, 50, {10, 0, 7, 200}},
        Case{"everything", 700, 31, {10, 10, 7, 200}},
        Case{"positionsBeyond256", 1500, 12, {10, 0, 7, 255}},
        Case{"fifths", 801, 9, {12.375F, 0, 0, 255}}, Case{"eighths", 257, 20, {40, 0, 0, 255}},
        Case{"rationalSteps", 201, 4, {0, 0, 0, 255}}, Case{"veryWide", 20, 9, {900, 0, 3, 255}},
        Case{"narrowed", 100, 30, {-10, 0, 7, 200}}, Case{"narrowedToOne", 31, 5, {-49, 0, 7, 200}},
        Case{"wrapsAbove255", 64, 20, {5, 0, 5, 700}},
        Case{"wrapsManyTimes", 20, 20, {0, 0, 7, 99999}},
        Case{"belowZeroOpacity", 20, 20, {5, 0, 7, -200}}, Case{"noOpacity", 9, 9, {5, 0, 7, 0}},
        Case{"uniform", 30, 20, {5, 0, 0, 200}},
        Case{"gradientBelowZero", 30, 20, {5, 20, -9, 200}},
        Case{"liftedRamp", 30, 40, {5, 30, 10, 255}},
        Case{"loweredRamp", 30, 40, {5, -30, 10, 255}}, Case{"oneColumn", 1, 10, {}},
        Case{"oneColumnWidened", 1, 10, {500, 0, 7, 200}},
        Case{"twoColumns", 2, 7, {33, 0, 7, 200}}, Case{"oneRow", 12, 1, {}},
        Case{"oneRowUniform", 12, 1, {10, 0, 0, 200}}, Case{"twoRows", 12, 2, {20, 0, 7, 200}},
        Case{"startIsNoNumber", 12, 5, {0, kNaN, 7, 200}},
        Case{"gradientIsNoNumber", 12, 5, {0, 0, kNaN, 200}},
        Case{"alphaIsNoNumber", 12, 5, {0, 0, 7, kNaN}},
        Case{"startIsInfinite", 12, 5, {0, kInfinity, 7, 200}},
        Case{"startIsMinusInfinite", 12, 5, {0, -kInfinity, 7, 200}},
        Case{"gradientIsInfinite", 12, 5, {0, 0, kInfinity, 200}},
        Case{"alphaIsInfinite", 12, 5, {0, 0, 7, kInfinity}},
        Case{"widthIsNoNumber", 12, 5, {kNaN, 0, 7, 200}}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(Shape, IsByteForByteTheRowLoopForSettingsAtRandom) {
    constexpr std::uint32_t kSeed = 20250;
    std::mt19937 random(kSeed);
    const auto between = [&](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int round = 0; round < 150; ++round) {
        const bool wide = round % 10 == 0;
        const int width = wide ? pick(256, 2500) : pick(1, 90);
        const int height = wide ? pick(1, 9) : pick(1, 40);
        oracle::Settings s{between(-60, 120), between(-50, 50), between(-2, 40), between(0, 600)};
        if (round % 3 == 0) s.perspectiveW = std::round(s.perspectiveW);
        if (round % 4 == 0) s.gradient = 0;  // full strength, so that every byte counts
        if (round % 4 == 0) s.alpha = 255;
        expectAsOracle(noiseImage(width, height, random()), s);
    }
}

// Two neighbouring columns with every pair of bytes, at every fraction that a stretch by five
// makes: the interpolation as a whole, 65,536 pairs.
TEST(Shape, EveryPairOfBytesIsInterpolatedAsInDoubles) {
    std::vector<std::uint8_t> bytes;
    for (int first = 0; first < 256; first += 2)
        for (int second = 0; second < 256; ++second)
            for (const int value : {first, second})
                for (int k = 0; k < 4; ++k)
                    bytes.push_back(static_cast<std::uint8_t>(value + (k == 1 ? 1 : 0)));
    const CGImage pairs = imageOf(2, 128 * 256, bytes);
    expectAsOracle(pairs, {200, 0, 0, 255});
}

// Worked out by hand: 300 columns widened by 10 percent gain 30 on each side.
TEST(Shape, TheWidthGrowsByTheInsetOnEachSide) {
    const auto size = ShapeSize::of(300, 200, 10, 100);
    ASSERT_TRUE(size);
    EXPECT_EQ(size->inset, 30);
    EXPECT_EQ(size->outWidth, 360);
    EXPECT_EQ(size->height, 200);
}

TEST(Shape, TheTopRowSpansThePictureAndTheBottomRowTheWholeWidth) {
    const auto result = shaped(solidImage(300, 60, {9, 9, 9, 255}), {10, 0, 0, 255});
    ASSERT_TRUE(result);
    EXPECT_EQ(pixelAt(*result, 29, 0)[3], 0);
    EXPECT_EQ(pixelAt(*result, 30, 0)[3], 255);
    EXPECT_EQ(pixelAt(*result, 330, 0)[3], 255);
    EXPECT_EQ(pixelAt(*result, 331, 0)[3], 0);
    EXPECT_EQ(pixelAt(*result, 0, 59)[3], 255);  // inset trunc(30 / 60) = 0
    EXPECT_EQ(pixelAt(*result, 359, 59)[3], 255);
}

TEST(Shape, TheDefaultsFadeFrom200ToNothing) {
    const auto result = shaped(solidImage(3, 11, {255, 255, 255, 255}), {});
    ASSERT_TRUE(result);
    EXPECT_EQ(pixelAt(*result, 0, 0)[3], 200);
    // base 0.5: powf(0.5, 0.7) = 0.615572, times 200 = 123.1
    EXPECT_EQ(pixelAt(*result, 0, 5)[3], 123);
    EXPECT_EQ(pixelAt(*result, 0, 10)[3], 0);
}

TEST(Shape, AlphaAbove255WrapsBrightPixelsToDarkOnes) {
    const auto result = shaped(solidImage(2, 5, {255, 100, 0, 255}), {0, 0, 0, 300});
    ASSERT_TRUE(result);
    // 255 * 300 / 255 = 300 -> 44; 100 * 300 / 255 = 117.6 -> 117.
    EXPECT_EQ(pixelAt(*result, 0, 0), (std::vector<int>{44, 117, 0, 44}));
}

TEST(Shape, OneRowIsTransparentUnlessTheGradientIsZero) {
    const CGImage row = solidImage(4, 1, {255, 255, 255, 255});
    EXPECT_EQ(pixelAt(*shaped(row, {0, 0, 7, 200}), 1, 0)[3], 0);
    EXPECT_EQ(pixelAt(*shaped(row, {0, 0, 0, 200}), 1, 0)[3], 200);
}

TEST(Shape, AZeroScaleOrAScaleBelowOneRowGivesNone) {
    const CGImage picture = noiseImage(8, 8, 1);
    EXPECT_FALSE(shaped(picture, {}, 0));
    EXPECT_FALSE(shaped(picture, {}, 12));  // 0.96 rows
    EXPECT_FALSE(shaped(picture, {}, kNaN));
    EXPECT_FALSE(shaped(picture, {}, kInfinity));
    EXPECT_TRUE(shaped(picture, {}, 13));
}

TEST(Shape, NoColumnGivesNone) {
    EXPECT_FALSE(shaped(noiseImage(8, 8, 1), {-50, 0, 7, 200}));
    EXPECT_FALSE(shaped(noiseImage(8, 8, 1), {-200, 0, 7, 200}));
}

TEST(Shape, SizesBeyond32BitsGiveNone) {
    EXPECT_FALSE(ShapeSize::of(1 << 30, 1, 100, 100));  // 2^30 + 2^31 columns
    const auto wide = ShapeSize::of(30000, 10000, 50, 100);
    ASSERT_TRUE(wide);
    EXPECT_FALSE(wide->fits());  // 60000 * 4 * 10000 = 2.4e9 bytes
    EXPECT_FALSE(ShapeSize::of(30000, 10000, 0, 200));
    EXPECT_TRUE(ShapeSize::of(20000, 20000, 0, 100)->fits());
}

TEST(Shape, AnInsetBeyond32BitsGivesNoneInsteadOfANarrowReflection) {
    for (const float width : {3e9F, -3e9F, 1e30F, kInfinity, -kInfinity})
        EXPECT_FALSE(ShapeSize::of(100, 100, width, 100)) << width;
    // 0.99 of a pixel is an inset of 0 all the same.
    EXPECT_EQ(ShapeSize::of(100, 100, -0.99F, 100)->outWidth, 100);
    EXPECT_EQ(ShapeSize::of(100, 100, kNaN, 100)->outWidth, 100);
}

// 12.3 * 99 = 1217.70007 in single precision; the last row's base is a hundredth of it over 99,
// and at gradient 10 the power is the base itself. In doubles the factor would be 0.0964705897.
TEST(Shape, TheLiftIsAProductInSinglePrecision) {
    EXPECT_EQ(rowFactor(99, 100, {12.3F, 10, 200}), 0.09647059721105239);
}

// The powers were computed to 40 digits apart from any library and rounded to single precision;
// each factor is that, times 200 in single, divided by 255 in double.
TEST(Shape, TheRowFactorsAreThesePowers) {
    struct Row {
        int index;
        int height;
        FadeParameters fade;
        float power;
    };
    for (const Row& row : {Row{0, 11, {0, 7, 200}, 1.0F}, Row{5, 11, {0, 7, 200}, 0x1.3b2c48p-1F},
                           Row{7, 11, {0, 7, 200}, 0x1.b8d80ap-2F},
                           Row{9, 11, {0, 7, 200}, 0x1.98a136p-3F}, Row{10, 11, {0, 7, 200}, 0.0F},
                           Row{5, 11, {0, 10, 200}, 0.5F}, Row{5, 11, {0, 20, 200}, 0.25F},
                           Row{10, 11, {25, 5, 200}, 0.5F}, Row{10, 11, {0, 0, 200}, 1.0F}}) {
        const double expected = static_cast<double>(row.power * 200.0F) / 255.0;
        EXPECT_EQ(rowFactor(row.index, row.height, row.fade), expected)
            << "row " << row.index << ", gradient " << row.fade.gradient;
    }
}

TEST(Shape, AFactorsMultiplierGivesItsTable) {
    int without = 0;
    for (int step = 0; step <= 4000; ++step) {
        const kernels::ShapeFactor factor = kernels::shapeFactor(step / 1000.0);
        for (unsigned t = 0; t < 256; ++t)
            ASSERT_EQ(factor.table[t], static_cast<std::uint8_t>(t * (step / 1000.0)));
        if (!factor.hasMultiplier) {
            ++without;
            continue;
        }
        for (unsigned t = 0; t < 256; ++t)
            ASSERT_EQ(factor.table[t], (t * factor.whole + ((t * factor.fraction) >> 16)) & 0xFF);
    }
    // Only rounding onto a whole number can leave a factor without one.
    EXPECT_LT(without, 40);
}

TEST(MapIndex, IsTheLineBetweenItsEndsAndMinusOneOutside) {
    EXPECT_EQ(map_index(3, 1, 5, 10, 20), 15.0);
    EXPECT_EQ(map_index(1, 1, 5, 10, 20), 10.0);
    EXPECT_EQ(map_index(5, 1, 5, 10, 20), 20.0);
    EXPECT_EQ(map_index(0.999, 1, 5, 10, 20), -1.0);
    EXPECT_EQ(map_index(5.001, 1, 5, 10, 20), -1.0);
}

TEST(LinearInterpolate, GoesByTheFractionAlone) {
    EXPECT_EQ(linear_interpolate(7.25, 100, 200), 125.0);
    EXPECT_EQ(linear_interpolate(7, 100, 200), 100.0);
    EXPECT_EQ(linear_interpolate(0.5, 200, 101), 150.5);
}

}  // namespace
}  // namespace skarnel
