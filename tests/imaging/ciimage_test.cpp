#include "imaging/ciimage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "imaging/projection.h"
#include "test_images.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

using test::noiseImage;
using test::pixelAt;
using test::samePixels;
using test::solidImage;

std::optional<CIImage> transformed(const CGImage& image, const AffineTransform& transform) {
    auto filter = CIFilter::filterWithName("CIAffineTransform");
    filter->setValue(CIImage::imageWithCGImage(image), "inputImage");
    filter->setValue(transform, "inputTransform");
    return filter->outputImage();
}

CGImage wholeOf(const CIImage& image) {
    const CGRect extent = image.extent();
    return *image.rasterize(extent.origin(), static_cast<int>(extent.width),
                            static_cast<int>(extent.height));
}

TEST(CIImage, WrapsTheVeryPixels) {
    const CGImage image = noiseImage(4, 3, 1);
    const CIImage wrapped = CIImage::imageWithCGImage(image);
    EXPECT_EQ(wrapped.extent(), (CGRect{0, 0, 4, 3}));
    EXPECT_TRUE(wholeOf(wrapped).isSame(image));
}

TEST(CIImage, RasterizingAPartIsTransparentOutsideTheExtent) {
    const CGImage image = noiseImage(4, 4, 1);
    const auto part = CIImage::imageWithCGImage(image).rasterize({-1, -2}, 3, 3);
    ASSERT_TRUE(part);
    EXPECT_EQ(pixelAt(*part, 0, 0)[3], 0);
    EXPECT_EQ(pixelAt(*part, 1, 0), pixelAt(image, 0, 3));
    EXPECT_EQ(pixelAt(*part, 1, 1)[3], 0);
}

TEST(AffineFilter, FlipsAndWholeMovesCopyTheBytes) {
    const CGImage image = noiseImage(6, 5, 2);
    const auto flipped = transformed(
        image, AffineTransform::scale(-1, -1).then(AffineTransform::translation(40, -7)));
    EXPECT_EQ(flipped->extent(), (CGRect{34, -12, 6, 5}));
    const CGImage pixels = wholeOf(*flipped);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x) EXPECT_EQ(pixelAt(pixels, x, y), pixelAt(image, 5 - x, 4 - y));
}

TEST(AffineFilter, AQuarterTurnIsExact) {
    const CGImage image = noiseImage(6, 4, 2);
    const auto turned = transformed(image, AffineTransform::rotationByDegrees(90));
    EXPECT_EQ(turned->extent(), (CGRect{-4, 0, 4, 6}));
    const CGImage pixels = wholeOf(*turned);
    // Counter-clockwise: the picture's right edge becomes the top.
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(pixelAt(pixels, x, y), pixelAt(image, 5 - y, x));
}

TEST(AffineFilter, AVerticalScaleTakesAllRowsOntoAllRows) {
    // 10 rows at 77 percent are 7.7, truncated to 7; none of the rows is cut off.
    std::vector<std::uint8_t> rows;
    for (int y = 0; y < 10; ++y)
        rows.insert(rows.end(), {static_cast<std::uint8_t>(y == 0 || y == 9 ? 210 : 0), 0, 0, 255});
    const CGImage pixels =
        wholeOf(*transformed(test::imageOf(1, 10, rows), AffineTransform::scale(1, 0.77)));
    ASSERT_EQ(pixels.height(), 7);
    // A row holds 10 / 7 rows of the picture, so 0.7 of it is the outermost one.
    EXPECT_EQ(pixelAt(pixels, 0, 0)[0], 147);
    EXPECT_EQ(pixelAt(pixels, 0, 6)[0], 147);
    EXPECT_EQ(pixelAt(pixels, 0, 3)[0], 0);
}

TEST(AffineFilter, ASmallTurnKeepsTheColourInsideAndFadesTheEdge) {
    const auto turned =
        transformed(solidImage(40, 40, {80, 90, 100, 200}), AffineTransform::rotationByDegrees(20));
    const CGImage pixels = wholeOf(*turned);
    EXPECT_EQ(pixelAt(pixels, pixels.width() / 2, pixels.height() / 2),
              (std::vector<int>{80, 90, 100, 200}));
    EXPECT_EQ(pixelAt(pixels, 0, 0)[3], 0);
}

TEST(AffineFilter, AScaleOfZeroLeavesNothing) {
    EXPECT_EQ(transformed(noiseImage(4, 4, 1), AffineTransform::scale(1, 0))->extent().height, 0);
}

TEST(PerspectiveFilter, MapsCornersToCorners) {
    const Quad quad{{3, 50}, {70, 60}, {-4, 2}, {64, -9}};
    const auto forward = homographyOntoQuad(20, 10, quad);
    ASSERT_TRUE(forward);
    const auto expectAt = [](CGPoint actual, CGPoint expected) {
        EXPECT_NEAR(actual.x, expected.x, 1e-9);
        EXPECT_NEAR(actual.y, expected.y, 1e-9);
    };
    expectAt(forward->apply({0, 0}), quad.bottomLeft);
    expectAt(forward->apply({20, 0}), quad.bottomRight);
    expectAt(forward->apply({0, 10}), quad.topLeft);
    expectAt(forward->apply({20, 10}), quad.topRight);
    const auto back = forward->inverse();
    expectAt(back->apply(forward->apply({7, 3})), {7, 3});
}

TEST(PerspectiveFilter, AGeneralQuadrilateralIsFilledWithoutAFringe) {
    auto filter = CIFilter::filterWithName("CIPerspectiveTransform");
    filter->setDefaults();
    filter->setValue(CIImage::imageWithCGImage(solidImage(30, 20, {60, 60, 60, 120})),
                     "inputImage");
    filter->setValue(CGPoint{5, 40}, "inputTopLeft");
    filter->setValue(CGPoint{60, 50}, "inputTopRight");
    filter->setValue(CGPoint{0, 0}, "inputBottomLeft");
    filter->setValue(CGPoint{50, 5}, "inputBottomRight");
    const auto output = filter->outputImage();
    ASSERT_TRUE(output);
    EXPECT_EQ(output->extent(), (CGRect{0, 0, 60, 50}));
    const CGImage pixels = wholeOf(*output);
    EXPECT_EQ(pixelAt(pixels, 28, 26), (std::vector<int>{60, 60, 60, 120}));
    for (int y = 0; y < 50; ++y)
        for (int x = 0; x < 60; ++x) ASSERT_LE(pixelAt(pixels, x, y)[0], 60);
}

TEST(PerspectiveFilter, ADentedOrEmptyQuadrilateralGivesNone) {
    auto filter = CIFilter::filterWithName("CIPerspectiveTransform");
    filter->setDefaults();
    EXPECT_FALSE(filter->outputImage());  // no picture yet
    filter->setValue(CIImage::imageWithCGImage(noiseImage(3, 3, 1)), "inputImage");
    EXPECT_TRUE(filter->outputImage());
    filter->setValue(CGPoint{155, 153}, "inputTopLeft");
    EXPECT_FALSE(filter->outputImage());
    filter->setValue(CGPoint{std::nan(""), 0}, "inputTopLeft");
    EXPECT_FALSE(filter->outputImage());
}

TEST(CIFilter, KnowsItsNamesKeysAndTypes) {
    EXPECT_FALSE(CIFilter::filterWithName("CINoSuchFilter"));
    const auto names = CIFilter::filterNames();
    EXPECT_NE(std::find(names.begin(), names.end(), "CIAffineTransform"), names.end());
    auto filter = CIFilter::filterWithName("CIAffineTransform");
    EXPECT_FALSE(filter->valueForKey("inputTransform"));
    filter->setDefaults();
    EXPECT_EQ(std::get<AffineTransform>(*filter->valueForKey("inputTransform")), AffineTransform{});
    const ScopedLogCapture log;
    filter->setValue(1.0, "inputTransform");
    filter->setValue(1.0, "inputNothing");
    EXPECT_EQ(std::count(log.text().begin(), log.text().end(), '\n'), 2);
    EXPECT_EQ(std::get<AffineTransform>(*filter->valueForKey("inputTransform")), AffineTransform{});
}

}  // namespace
}  // namespace skarnel
