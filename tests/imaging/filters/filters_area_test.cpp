// Expected weights from a script: exp(-i * i / (2 r * r)) over 3 r on either side, normed.
#include <limits>
#include <numeric>

#include "imaging/filters/filter_run.h"

namespace skarnel {
namespace {

using namespace filters;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

CIImage blurred(const CIImage& image, double radius) {
    return filterOn("CIGaussianBlur", image, {{"inputRadius", radius}}).outputImage().value();
}

TEST(GaussianBlur, SpreadsAnImpulseByItsWeights) {
    const CIImage dot = pictureOf(1, {255, 255, 255, 255});
    const CIImage out = blurred(dot, 0.5);
    EXPECT_EQ(out.extent(), (CGRect{-2, -2, 5, 5}));
    const Row samples = samplesOf(out, {-2, -2}, 5, 5);
    const int expected[5][5] = {
        {0, 0, 0, 0, 0}, {0, 3, 21, 3, 0}, {0, 21, 158, 21, 0}, {0, 3, 21, 3, 0}, {0, 0, 0, 0, 0}};
    for (std::size_t y = 0; y < 5; ++y)
        for (std::size_t x = 0; x < 5; ++x)
            for (std::size_t sample = 0; sample < 4; ++sample)
                EXPECT_EQ(samples[(y * 5 + x) * 4 + sample], expected[y][x]) << x << ' ' << y;
}

TEST(GaussianBlur, OfARadiusOfOneReachesThreePixels) {
    const CIImage out = blurred(pictureOf(1, {0, 0, 0, 255}), 1);
    EXPECT_EQ(out.extent(), (CGRect{-3, -3, 7, 7}));
    const Row middle = samplesOf(out, {-3, 0}, 7, 1);
    const int expected[7] = {0, 5, 25, 41, 25, 5, 0};
    for (std::size_t x = 0; x < 7; ++x) EXPECT_EQ(middle[4 * x + 3], expected[x]) << x;
}

TEST(GaussianBlur, KeepsTheMiddleOfAPlainArea) {
    Row samples;
    for (int pixel = 0; pixel < 9 * 9; ++pixel) samples.insert(samples.end(), {200, 100, 50, 255});
    const CIImage out = blurred(pictureOf(9, samples), 1);
    EXPECT_EQ(samplesOf(out, {3, 3}, 3, 3)[0], 200);
    EXPECT_EQ(samplesOf(out, {4, 4}, 1, 1), (Row{200, 100, 50, 255}));
}

TEST(GaussianBlur, TransparencyAddsNoColourOfItsOwn) {
    // A white edge stays white where it fades: colour equals alpha everywhere.
    Row samples;
    for (int pixel = 0; pixel < 16; ++pixel) samples.insert(samples.end(), {255, 255, 255, 255});
    const Row out = samplesOf(blurred(pictureOf(4, samples), 2), {-6, -6}, 16, 16);
    for (std::size_t at = 0; at < out.size(); at += 4) {
        ASSERT_EQ(out[at], out[at + 3]);
        ASSERT_EQ(out[at + 2], out[at + 3]);
    }
}

TEST(GaussianBlur, AnyPartComesOutAsInTheWhole) {
    Row samples;
    for (int pixel = 0; pixel < 25; ++pixel)
        samples.insert(samples.end(), {pixel * 7, pixel * 3, pixel, 255 - pixel});
    const CIImage out = blurred(pictureOf(5, samples), 1.3);
    const Row whole = samplesOf(out, {-4, -4}, 13, 13);
    for (int y = 0; y < 13; ++y)
        for (int x = 0; x < 13; ++x) {
            const Row one = samplesOf(out, {x - 4.0, 8.0 - y}, 1, 1);
            const auto at = whole.begin() + (y * 13 + x) * 4;
            ASSERT_EQ(one, Row(at, at + 4)) << x << ' ' << y;
        }
}

TEST(GaussianBlur, WithoutAPositiveRadiusIsTheVeryInput) {
    const CIImage image = pictureOf(1, {255, 0, 0, 255});
    EXPECT_TRUE(blurred(image, 0).isSame(image));
    EXPECT_TRUE(blurred(image, -3).isSame(image));
    EXPECT_FALSE(filterOn("CIGaussianBlur", image, {{"inputRadius", kNan}}).outputImage());
}

TEST(GaussianBlur, OfATinyRadiusKeepsThePicture) {
    // The squares of these are 0 as doubles.
    for (const double radius : {1e-170, 1e-300, 5e-324})
        EXPECT_EQ(samplesOf(blurred(pictureOf(1, {200, 100, 50, 255}), radius), {-1, 0}, 3, 1),
                  (Row{0, 0, 0, 0, 200, 100, 50, 255, 0, 0, 0, 0}))
            << radius;
}

TEST(GaussianBlur, HasARadiusOfTenUnlessSetOtherwise) {
    const CIImage out =
        filterOn("CIGaussianBlur", pictureOf(1, {0, 0, 0, 255})).outputImage().value();
    EXPECT_EQ(out.extent(), (CGRect{-30, -30, 61, 61}));
}

const Row kRow{10, 0, 0, 255, 20, 0, 0, 255, 30, 0, 0, 255};

CIImage cropped(const CGRect& rect) {
    return filterOn("CICrop", pictureOf(3, kRow), {{"inputRectangle", rect}}).outputImage().value();
}

TEST(Crop, KeepsWhatLiesInTheRectangle) {
    const CIImage out = cropped({1, 0, 1, 1});
    EXPECT_EQ(out.extent(), (CGRect{1, 0, 1, 1}));
    EXPECT_EQ(samplesOf(out, {0, 0}, 3, 1), (Row{0, 0, 0, 0, 20, 0, 0, 255, 0, 0, 0, 0}));
}

TEST(Crop, IsBoundedByThePicture) {
    EXPECT_EQ(cropped({-5, -5, 100, 100}).extent(), (CGRect{0, 0, 3, 1}));
    EXPECT_EQ(samplesOf(cropped({-5, -5, 100, 100}), {0, 0}, 3, 1), kRow);
}

TEST(Crop, AnEdgeInsideAPixelLeavesItsShare) {
    const Row out = samplesOf(cropped({0.5, 0, 1.5, 1}), {0, 0}, 3, 1);
    EXPECT_NEAR(out[3], 127.5, 0.5);
    EXPECT_EQ(out[7], 255);
    EXPECT_EQ(out[11], 0);
}

TEST(Crop, OutsideThePictureNothingIsLeft) {
    EXPECT_EQ(cropped({10, 10, 5, 5}).extent(), (CGRect{}));
    EXPECT_EQ(samplesOf(cropped({10, 10, 5, 5}), {0, 0}, 3, 1), Row(12, 0));
    EXPECT_EQ(cropped({1, 0, 0, 1}).extent().width, 0);
    EXPECT_EQ(samplesOf(cropped({1, 0, 0, 1}), {0, 0}, 3, 1), Row(12, 0));
}

TEST(Crop, Is300SquareUnlessSetOtherwise) {
    CIFilter filter = CIFilter::filterWithName("CICrop").value();
    filter.setDefaults();
    EXPECT_EQ(std::get<CGRect>(filter.valueForKey("inputRectangle").value()),
              (CGRect{0, 0, 300, 300}));
}

}  // namespace
}  // namespace skarnel
