// Sizes by hand; those with many digits by a script that rounds the ratio to a float.
#include "util/image/nice_scaling.h"

#include <stdexcept>

#include "util/image/focus.h"
#include "util/image/pictures.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

using namespace pictures;
using namespace NiceScaling;

struct SizeRow {
    CGSize source, target, expected;
};

class FitSize : public ::testing::TestWithParam<SizeRow> {};

TEST_P(FitSize, FollowsTheRule) {
    EXPECT_EQ(scaledSizeToFitSize(GetParam().source, GetParam().target), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FitSize,
    ::testing::Values(
        SizeRow{{200, 100}, {50, 50}, {50, 25}}, SizeRow{{200, 100}, {100, 20}, {100, 10}},
        SizeRow{{100, 200}, {50, 50}, {25, 50}}, SizeRow{{100, 100}, {80, 40}, {40, 40}},
        SizeRow{{100, 100}, {40, 80}, {40, 40}}, SizeRow{{100, 100}, {40, 40}, {40, 40}},
        // The ratio multiplies the other side of the target: no proportions kept.
        SizeRow{{200, 100}, {20, 100}, {20, 50}}, SizeRow{{100, 200}, {20, 100}, {10, 100}},
        SizeRow{{100, 200}, {100, 20}, {50, 20}},
        // Small sources are enlarged.
        SizeRow{{2, 1}, {50, 50}, {50, 25}},
        // 1/3 as a float is 0.3333333432674408.
        SizeRow{{3, 1}, {90, 90}, {90, 30.00000089406967}},
        SizeRow{{1, 3}, {90, 90}, {30.00000089406967, 90}}));

class CoverSize : public ::testing::TestWithParam<SizeRow> {};

TEST_P(CoverSize, FollowsTheRule) {
    EXPECT_EQ(scaledSizeToCoverSize(GetParam().source, GetParam().target), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, CoverSize,
                         ::testing::Values(SizeRow{{200, 100}, {50, 50}, {100, 50}},
                                           SizeRow{{100, 200}, {50, 50}, {50, 100}},
                                           SizeRow{{100, 100}, {80, 40}, {80, 80}},
                                           SizeRow{{100, 100}, {40, 80}, {80, 80}},
                                           SizeRow{{200, 100}, {100, 20}, {100, 50}},
                                           SizeRow{{200, 100}, {100, 50}, {100, 50}},
                                           SizeRow{{3, 1}, {90, 90}, {270, 90}},
                                           SizeRow{{1, 3}, {90, 90}, {90, 270}}));

TEST(NiceScalingSizes, OfAnImageAreThoseOfItsSize) {
    const NSImage image = plainImage(200, 100, kRed);
    EXPECT_EQ(scaledSizeToFitSize(image, {100, 20}), (CGSize{100, 10}));
    EXPECT_EQ(scaledSizeToCoverSize(image, {50, 50}), (CGSize{100, 50}));
}

TEST(CoverOrigin, FollowsTheTableOfAlignments) {
    // Overflow 50 x 30.
    const CGSize scaled{150, 130};
    const CGSize target{100, 100};
    const CGPoint table[] = {{-25, -15}, {-25, -30}, {0, -30}, {-50, -30}, {0, -15},
                             {-25, 0},   {0, 0},     {-50, 0}, {-50, -15}};
    for (std::int32_t align = 0; align <= 8; ++align)
        EXPECT_EQ(coverOrigin(scaled, target, align), table[align]) << align;
    for (std::int32_t align : {9, 10, 255, -1, INT32_MAX, INT32_MIN})
        EXPECT_EQ(coverOrigin(scaled, target, align), (CGPoint{0, 0})) << align;
}

TEST(FitImage, IsLetterboxedAndCentredInATransparentCanvas) {
    const NSImage scaled = scaledImageToFitSize(plainImage(4, 2, kRed), {4, 4}).value();
    EXPECT_EQ(scaled.size(), (CGSize{4, 4}));
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(pixelAt(scaled, x, 0), kClear);
        EXPECT_EQ(pixelAt(scaled, x, 1), kRed);
        EXPECT_EQ(pixelAt(scaled, x, 2), kRed);
        EXPECT_EQ(pixelAt(scaled, x, 3), kClear);
    }
}

TEST(FitImage, OfAPortraitSourceIsPillarboxed) {
    const NSImage scaled = scaledImageToFitSize(plainImage(2, 4, kRed), {4, 4}).value();
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(pixelAt(scaled, 0, y), kClear);
        EXPECT_EQ(pixelAt(scaled, 1, y), kRed);
        EXPECT_EQ(pixelAt(scaled, 2, y), kRed);
        EXPECT_EQ(pixelAt(scaled, 3, y), kClear);
    }
}

TEST(FitImage, LeavesTheSourceAsItWas) {
    const NSImage image = imageOf(2, {kRed, kBlue});
    const auto before = image.representations();
    (void)scaledImageToFitSize(image, {8, 8});
    EXPECT_EQ(image.size(), (CGSize{2, 1}));
    EXPECT_EQ(image.representations(), before);
}

TEST(FitImage, TheBoxIsWhiteWithABlackFrame) {
    // A transparent 6 x 4 source in 6 x 6, the ratio as a float: height 0.6666666865 * 6 =
    // 4.000000119, the rectangle from y 0.99999994 to 5.00000006. The frame's line covers half a
    // pixel on either side of its edge.
    const NSImage boxed =
        scaledImageToFitSize(plainImage(6, 4, kClear), {6, 6}, InterpolationQuality::High, Box::Yes)
            .value();
    EXPECT_EQ(pixelAt(boxed, 3, 2), kWhite);
    EXPECT_EQ(pixelAt(boxed, 3, 3), kWhite);
    for (int y : {0, 5}) {
        EXPECT_EQ(pixelAt(boxed, 3, y).r, 0) << "black alone, outside the white";
        EXPECT_NEAR(pixelAt(boxed, 3, y).a, 128, 1);
    }
    for (int y : {1, 4}) {
        EXPECT_EQ(pixelAt(boxed, 3, y).a, 255);
        EXPECT_NEAR(pixelAt(boxed, 3, y).r, 127, 1) << "half black over white";
    }
    // Left and right the outer half of the line lies outside the canvas.
    EXPECT_NEAR(pixelAt(boxed, 0, 2).r, 127, 1);
    EXPECT_NEAR(pixelAt(boxed, 5, 3).r, 127, 1);
}

TEST(FitImage, WithABoxThePictureLiesBetweenGroundAndFrame) {
    const NSImage boxed = scaledImageToFitSize(plainImage(4, 4, {128, 0, 0, 128}), {4, 4},
                                               InterpolationQuality::High, Box::Yes)
                              .value();
    // Half red over white: 128 + 127, 127, 127.
    EXPECT_EQ(pixelAt(boxed, 1, 1), (Pixel{255, 127, 127, 255}));
    // The frame covers half of the outermost pixels: 255 -> 127, 127 -> 63 or 64.
    EXPECT_NEAR(pixelAt(boxed, 0, 1).r, 127, 1);
    EXPECT_NEAR(pixelAt(boxed, 0, 1).g, 63, 1);
}

TEST(FitImage, WithoutABoxNothingIsAdded) {
    const NSImage plain =
        scaledImageToFitSize(plainImage(4, 4, kClear), {4, 4}, InterpolationQuality::High, Box::No)
            .value();
    EXPECT_EQ(pixelsOf(plain), std::vector<Pixel>(16, kClear));
}

TEST(FitImage, OfAnImageWithNothingToDrawIsATransparentCanvas) {
    const NSImage scaled = scaledImageToFitSize(NSImage::initWithSize({4, 2}), {2, 2}).value();
    EXPECT_EQ(pixelsOf(scaled), std::vector<Pixel>(4, kClear));
}

TEST(FitImage, TakesTheInterpolationThatIsAskedFor) {
    const NSImage image = imageOf(2, {kBlack, kWhite, kBlack, kWhite});
    const NSImage hard = scaledImageToFitSize(image, {4, 4}, InterpolationQuality::None).value();
    EXPECT_EQ(pixelAt(hard, 1, 1), kBlack);
    EXPECT_EQ(pixelAt(hard, 2, 1), kWhite);
    const NSImage soft = scaledImageToFitSize(image, {4, 4}).value();
    EXPECT_GT(pixelAt(soft, 1, 1).r, 0);
    EXPECT_LT(pixelAt(soft, 2, 1).r, 255);
    EXPECT_EQ(pixelsOf(soft),
              pixelsOf(scaledImageToFitSize(image, {4, 4}, InterpolationQuality::High).value()))
        << "high is what is taken when nothing is asked for";
}

TEST(FitImage, ATargetThatCannotBeDrawnIntoIsLoggedAndGivesNone) {
    ScopedLogCapture log;
    EXPECT_FALSE(scaledImageToFitSize(plainImage(2, 2, kRed), {0, 4}));
    EXPECT_EQ(log.text(),
              "Couldn't scale image Can't lock focus on an image without a positive width and "
              "height\n");
}

/// Two columns and two rows of one colour each, 4 x 2 pixels: red, green over blue, white.
NSImage quarters() {
    return imageOf(4, {kRed, kRed, kGreen, kGreen, kBlue, kBlue, kWhite, kWhite});
}

TEST(CoverImage, KeepsThePartThatTheAlignmentNames) {
    // 4 x 2 covers 2 x 2 at its own size: the overflow is 2 x 0.
    const auto kept = [](std::int32_t align) {
        const NSImage image =
            scaledImageToCoverSize(quarters(), {2, 2}, InterpolationQuality::High, Box::No, align)
                .value();
        EXPECT_EQ(image.size(), (CGSize{2, 2}));
        return pixelsOf(image);
    };
    const std::vector<Pixel> left{kRed, kRed, kBlue, kBlue};
    const std::vector<Pixel> middle{kRed, kGreen, kBlue, kWhite};
    const std::vector<Pixel> right{kGreen, kGreen, kWhite, kWhite};
    for (std::int32_t align : {0, 1, 5}) EXPECT_EQ(kept(align), middle) << align;
    for (std::int32_t align : {2, 4, 6, 9, -1}) EXPECT_EQ(kept(align), left) << align;
    for (std::int32_t align : {3, 7, 8}) EXPECT_EQ(kept(align), right) << align;
}

TEST(CoverImage, KeepsRowsByTheAlignmentToo) {
    const NSImage tall = imageOf(1, {kRed, kGreen, kBlue});
    const auto kept = [&tall](std::int32_t align) {
        return pixelAt(
            scaledImageToCoverSize(tall, {1, 1}, InterpolationQuality::High, Box::No, align)
                .value(),
            0, 0);
    };
    for (std::int32_t align : {1, 2, 3}) EXPECT_EQ(kept(align), kRed) << align;
    for (std::int32_t align : {0, 4, 8}) EXPECT_EQ(kept(align), kGreen) << align;
    for (std::int32_t align : {5, 6, 7, 9}) EXPECT_EQ(kept(align), kBlue) << align;
}

TEST(CoverImage, IsCentredWithoutABoxUnlessAskedOtherwise) {
    EXPECT_EQ(pixelsOf(scaledImageToCoverSize(quarters(), {2, 2}).value()),
              (std::vector<Pixel>{kRed, kGreen, kBlue, kWhite}));
}

TEST(CoverImage, TheBoxFramesTheCanvasAndHasNoGround) {
    const NSImage boxed = scaledImageToCoverSize(plainImage(8, 4, kClear), {4, 4},
                                                 InterpolationQuality::High, Box::Yes)
                              .value();
    for (int at = 1; at < 3; ++at) {
        EXPECT_NEAR(pixelAt(boxed, at, 0).a, 128, 1);
        EXPECT_NEAR(pixelAt(boxed, at, 3).a, 128, 1);
        EXPECT_NEAR(pixelAt(boxed, 0, at).a, 128, 1);
        EXPECT_NEAR(pixelAt(boxed, 3, at).a, 128, 1);
        EXPECT_EQ(pixelAt(boxed, at, 0).r, 0);
        EXPECT_EQ(pixelAt(boxed, at, at), kClear);
    }
}

TEST(CoverImage, ATargetThatCannotBeDrawnIntoIsLoggedAndGivesNone) {
    ScopedLogCapture log;
    EXPECT_FALSE(scaledImageToCoverSize(plainImage(2, 2, kRed), {4, -1}));
    EXPECT_EQ(log.text().substr(0, 21), "Couldn't scale image ");
}

/// A representation that raises when it is drawn.
template <typename Exception>
class RaisingRepresentation final : public NSImageRep {
  public:
    explicit RaisingRepresentation(const Exception& raised) : NSImageRep({2, 2}), raised_(raised) {}
    std::optional<CGImage> bitmap() const override { throw raised_; }

  private:
    Exception raised_;
};

template <typename Exception>
NSImage imageRaising(const Exception& raised) {
    NSImage image = NSImage::initWithSize({2, 2});
    image.addRepresentation(std::make_shared<RaisingRepresentation<Exception>>(raised));
    return image;
}

TEST(NiceScalingGuard, ThePlatformsExceptionInTheMiddleOfTheDrawingIsLoggedAndGivesNone) {
    const NSImage image = imageRaising(NSException("NSAnyException", "No pixels"));
    ScopedLogCapture log;
    EXPECT_FALSE(scaledImageToFitSize(image, {4, 4}));
    EXPECT_FALSE(scaledImageToCoverSize(image, {4, 4}));
    EXPECT_EQ(log.text(), "Couldn't scale image No pixels\nCouldn't scale image No pixels\n");
}

TEST(NiceScalingGuard, AnyOtherExceptionPassesOnWithoutALine) {
    // The platform's is one of these, too: a guard that is a class too wide would stop both.
    const NSImage image = imageRaising(std::runtime_error("something else"));
    ScopedLogCapture log;
    EXPECT_THROW(scaledImageToFitSize(image, {4, 4}), std::runtime_error);
    EXPECT_THROW(scaledImageToCoverSize(image, {4, 4}), std::runtime_error);
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(FocusLock::current(), nullptr);
}

}  // namespace
}  // namespace skarnel
