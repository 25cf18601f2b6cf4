#include "util/image/scaling.h"

#include "util/image/focus.h"
#include "util/image/nice_scaling.h"
#include "util/image/pictures.h"

namespace skarnel {
namespace {

using namespace pictures;

/// An empty image of 1 x 1 points with square representations of these sizes.
NSImage withSquares(std::initializer_list<int> sides) {
    NSImage image = NSImage::initWithSize({1, 1});
    for (const int side : sides) image.addRepresentation(plainRepresentation(side, side, kRed));
    return image;
}

double widthOfBest(const NSImage& image, CGSize size) {
    return Scaling::bestRepresentationForSize(image, size)->size().width;
}

TEST(RepresentationOfSize, IsTheFirstOfExactlyThatSize) {
    NSImage image = withSquares({32, 16, 16});
    EXPECT_EQ(Scaling::representationOfSize(image, {16, 16}), image.representations()[1]);
    EXPECT_EQ(Scaling::representationOfSize(image, {16, 16.5}), nullptr);
    EXPECT_EQ(Scaling::representationOfSize(image, {16, 32}), nullptr);
}

TEST(RepresentationOfSize, ComparesPointsNotPixels) {
    NSImage image = withSquares({32});
    image.representations()[0]->setSize({16, 16});
    EXPECT_EQ(Scaling::representationOfSize(image, {32, 32}), nullptr);
    EXPECT_NE(Scaling::representationOfSize(image, {16, 16}), nullptr);
}

TEST(BestRepresentation, AnExactOneWins) {
    EXPECT_EQ(widthOfBest(withSquares({128, 64, 63}), {64, 64}), 64);
}

TEST(BestRepresentation, ALargerOneWinsOverSmallerOnesHoweverFar) {
    EXPECT_EQ(widthOfBest(withSquares({32, 128, 48}), {64, 64}), 128);
    EXPECT_EQ(widthOfBest(withSquares({63, 900}), {64, 64}), 900);
    EXPECT_EQ(widthOfBest(withSquares({900, 63}), {64, 64}), 900);
}

TEST(BestRepresentation, AmongLargerOnesTheNearestWins) {
    EXPECT_EQ(widthOfBest(withSquares({256, 128, 512}), {64, 64}), 128);
    EXPECT_EQ(widthOfBest(withSquares({128, 256}), {64, 64}), 128);
}

TEST(BestRepresentation, AmongSmallerOnesTheNearestWins) {
    EXPECT_EQ(widthOfBest(withSquares({32, 48}), {64, 64}), 48);
    EXPECT_EQ(widthOfBest(withSquares({48, 32}), {64, 64}), 48);
}

TEST(BestRepresentation, EquallyNearOnesKeepTheEarlier) {
    NSImage image = NSImage::initWithSize({1, 1});
    // min(64 - 48, 64 - 40) and min(64 - 40, 64 - 48) are both 16.
    image.addRepresentation(plainRepresentation(48, 40, kRed));
    image.addRepresentation(plainRepresentation(40, 48, kBlue));
    EXPECT_EQ(widthOfBest(image, {64, 64}), 48);
}

TEST(BestRepresentation, ComparesFloatsSoThatATinyDifferenceIsATie) {
    NSImage image = withSquares({48, 48});
    // 16 and 15.9999999 are the same float; 15.999 is another.
    image.representations()[1]->setSize({48.0000001, 48.0000001});
    EXPECT_EQ(widthOfBest(image, {64, 64}), 48);
    image.representations()[1]->setSize({48.001, 48.001});
    EXPECT_EQ(widthOfBest(image, {64, 64}), 48.001);
}

TEST(BestRepresentation, LargerOnOneSideCountsAsLarger) {
    NSImage image = NSImage::initWithSize({1, 1});
    image.addRepresentation(plainRepresentation(60, 60, kRed));   // 4
    image.addRepresentation(plainRepresentation(80, 10, kBlue));  // min(-16, 54) = -16
    EXPECT_EQ(widthOfBest(image, {64, 64}), 80);
}

TEST(BestRepresentation, OneThatMatchesOneSideIsReplacedByNone) {
    NSImage image = NSImage::initWithSize({1, 1});
    image.addRepresentation(plainRepresentation(64, 10, kRed));  // min(0, 54) = 0
    image.addRepresentation(
        plainRepresentation(70, 70, kBlue));  // -6: not nearer, and 0 is not > 0
    EXPECT_EQ(widthOfBest(image, {64, 64}), 64);
}

TEST(BestRepresentation, WhereNoneIsNearEnoughThePlatformChooses) {
    // The distance 65536 is no smaller than the one that the search starts with.
    NSImage image = withSquares({8, 16});
    EXPECT_EQ(widthOfBest(image, {65544.0 + 100, 65544.0 + 100}), 16);
    EXPECT_EQ(Scaling::bestRepresentationForSize(NSImage::initWithSize({4, 4}), {4, 4}), nullptr);
}

TEST(AdjustSize, TakesOnTheBestRepresentationsSize) {
    NSImage image = withSquares({32, 128});
    EXPECT_EQ(Scaling::adjustSizeToDrawAtSize(image, {64, 64}), (CGSize{128, 128}));
    EXPECT_EQ(image.size(), (CGSize{128, 128}));
}

TEST(AdjustSize, OfAnImageWithoutRepresentationsIsZero) {
    NSImage image = NSImage::initWithSize({4, 4});
    EXPECT_EQ(Scaling::adjustSizeToDrawAtSize(image, {64, 64}), (CGSize{0, 0}));
    EXPECT_EQ(image.size(), (CGSize{0, 0}));
}

TEST(CreateRepresentation, AddsOneOfTheSizeOnce) {
    NSImage image = plainImage(8, 8, kRed);
    EXPECT_TRUE(Scaling::createRepresentationOfSize(image, {4, 4}));
    ASSERT_EQ(image.representations().size(), 2U);
    const auto added = image.representations()[1];
    EXPECT_EQ(added->size(), (CGSize{4, 4}));
    EXPECT_EQ(pixelsOf(*added->bitmap()), std::vector<Pixel>(16, kRed));
    EXPECT_FALSE(Scaling::createRepresentationOfSize(image, {4, 4}));
    EXPECT_EQ(image.representations().size(), 2U);
    EXPECT_EQ(image.size(), (CGSize{8, 8})) << "the image's own size stays";
}

TEST(CreateRepresentation, FitsTheBestOneAndCentresIt) {
    NSImage image = plainImage(8, 4, kRed);
    ASSERT_TRUE(Scaling::createRepresentationOfSize(image, {4, 4}));
    const CGImage made = image.representations()[1]->bitmap().value();
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(pixelAt(made, x, 0), kClear);
        EXPECT_EQ(pixelAt(made, x, 1), kRed);
        EXPECT_EQ(pixelAt(made, x, 2), kRed);
        EXPECT_EQ(pixelAt(made, x, 3), kClear);
    }
}

TEST(CreateRepresentation, InterpolatesHigh) {
    NSImage image = imageOf(2, {kBlack, kWhite, kBlack, kWhite});
    const auto expected =
        NiceScaling::scaledImageToFitSize(image, {8, 8}, InterpolationQuality::High);
    ASSERT_TRUE(Scaling::createRepresentationOfSize(image, {8, 8}));
    EXPECT_EQ(pixelsOf(*image.representations()[1]->bitmap()), pixelsOf(*expected));
}

TEST(CreateRepresentation, OfAnImageWithoutRepresentationsAddsATransparentOne) {
    NSImage image = NSImage::initWithSize({4, 4});
    EXPECT_TRUE(Scaling::createRepresentationOfSize(image, {2, 3}));
    ASSERT_EQ(image.representations().size(), 1U);
    EXPECT_EQ(image.representations()[0]->size(), (CGSize{2, 3}));
    EXPECT_EQ(pixelsOf(*image.representations()[0]->bitmap()), std::vector<Pixel>(6, kClear));
}

TEST(CreateRepresentation, RaisesForASizeWithoutArea) {
    NSImage image = plainImage(8, 4, kRed);
    EXPECT_THROW(Scaling::createRepresentationOfSize(image, {0, 4}), NSException);
    EXPECT_EQ(image.representations().size(), 1U);
}

TEST(IconRepresentations, Are32And16UnflippedAndNotScaled) {
    NSImage image = plainImage(64, 64, kRed);
    image.setFlipped(true);
    image.setScalesWhenResized(true);
    EXPECT_TRUE(Scaling::createIconRepresentations(image));
    ASSERT_EQ(image.representations().size(), 3U);
    EXPECT_EQ(image.representations()[1]->size(), (CGSize{32, 32}));
    EXPECT_EQ(image.representations()[2]->size(), (CGSize{16, 16}));
    EXPECT_FALSE(image.isFlipped());
    EXPECT_FALSE(image.scalesWhenResized());
}

TEST(RemoveLarger, RemovesOnlyWhatIsLargerOnBothSides) {
    NSImage image = withSquares({64, 33, 32, 16});
    image.addRepresentation(plainRepresentation(64, 16, kBlue));
    image.addRepresentation(plainRepresentation(64, 32, kBlue));
    Scaling::removeRepresentationsLargerThanSize(image, {32, 32});
    std::vector<double> widths;
    for (const auto& each : image.representations()) widths.push_back(each->size().width);
    EXPECT_EQ(widths, (std::vector<double>{32, 16, 64, 64}));
}

TEST(Shrink, MakesTheRepresentationTakesTheSizeAndDropsTheLarger) {
    NSImage image = plainImage(8, 8, kRed);
    EXPECT_TRUE(Scaling::shrinkToSize(image, {4, 4}));
    EXPECT_EQ(image.size(), (CGSize{4, 4}));
    ASSERT_EQ(image.representations().size(), 1U);
    EXPECT_EQ(image.representations()[0]->size(), (CGSize{4, 4}));
    EXPECT_EQ(pixelsOf(image), std::vector<Pixel>(16, kRed));
    EXPECT_TRUE(Scaling::shrinkToSize(image, {4, 4})) << "also when there is nothing to make";
}

TEST(Duplicate, IsAShrunkUnflippedCopyAndLeavesTheImageAsItWas) {
    NSImage image = plainImage(8, 8, kRed);
    image.setFlipped(true);
    const NSImage duplicate = Scaling::duplicateOfSize(image, {4, 4});
    EXPECT_FALSE(duplicate.isSame(image));
    EXPECT_EQ(duplicate.size(), (CGSize{4, 4}));
    EXPECT_FALSE(duplicate.isFlipped());
    EXPECT_EQ(duplicate.representations().size(), 1U);
    EXPECT_EQ(image.size(), (CGSize{8, 8}));
    EXPECT_TRUE(image.isFlipped());
    EXPECT_EQ(image.representations().size(), 1U);
    EXPECT_EQ(image.representations()[0]->size(), (CGSize{8, 8}));
}

TEST(ScalingFilters, AnImageOfAFilterImageHasOneFilterRepresentation) {
    const NSImage image =
        Scaling::imageWithCIImage(CIImage::imageWithCGImage(plainBitmap(3, 2, kRed)));
    EXPECT_EQ(image.size(), (CGSize{3, 2}));
    ASSERT_EQ(image.representations().size(), 1U);
    EXPECT_NE(dynamic_cast<NSCIImageRep*>(image.representations()[0].get()), nullptr);
    EXPECT_EQ(pixelsOf(image), std::vector<Pixel>(6, kRed));
}

TEST(ScalingFilters, AFiltersOutputBecomesAnImage) {
    CIFilter filter = CIFilter::filterWithName("CIColorInvert").value();
    EXPECT_FALSE(Scaling::imageWithCIFilter(filter)) << "without an input there is no output";
    filter.setValue(CIImage::imageWithCGImage(plainBitmap(1, 1, kRed)), "inputImage");
    EXPECT_EQ(pixelAt(Scaling::imageWithCIFilter(filter).value(), 0, 0), (Pixel{0, 255, 255, 255}));
}

// The hue matrix of the web's filter effects at a quarter turn (cos 0, sin 1) sends red (1, 0, 0)
// to (0.213 - 0.213, 0.213 + 0.143, 0.213 - 0.787): 0, 0.356 * 255 = 90.78, 0.
constexpr Pixel kRedAtAQuarterTurn{0, 91, 0, 255};

TEST(AdjustHue, TurnsByTheFractionOfAWholeTurn) {
    const NSImage image = plainImage(1, 1, kRed);
    for (const float hue : {0.25F, 1.25F, -0.75F})
        EXPECT_EQ(pixelAt(Scaling::imageByAdjustingHue(image, hue).value(), 0, 0),
                  kRedAtAQuarterTurn)
            << hue;
}

TEST(AdjustHue, WholeTurnsChangeNothing) {
    const NSImage image = imageOf(2, {{10, 200, 30, 255}, {20, 30, 40, 100}});
    for (const float hue : {0.0F, 1.0F, -1.0F, 7.0F})
        EXPECT_EQ(pixelsOf(Scaling::imageByAdjustingHue(image, hue).value()), pixelsOf(image))
            << hue;
}

TEST(AdjustHue, BelowMinusOneTheAngleIsNegative) {
    // fmod(-1.25 + 1, 1) = -0.25: a quarter turn back. Red goes to (0.213 + 0.213, 0.213 - 0.143,
    // 0.213 + 0.787) = (0.426, 0.07, 1): 108.63, 17.85, 255.
    EXPECT_EQ(pixelAt(Scaling::imageByAdjustingHue(plainImage(1, 1, kRed), -1.25F).value(), 0, 0),
              (Pixel{109, 18, 255, 255}));
}

TEST(AdjustHue, ThenMultipliesTheSaturation) {
    const NSImage image = plainImage(1, 1, kRed);
    // Saturation 0 is the luminance, 0.213 of red: 54.3.
    EXPECT_EQ(pixelAt(Scaling::imageByAdjustingHue(image, 0.0F, 0.0F).value(), 0, 0),
              (Pixel{54, 54, 54, 255}));
    EXPECT_EQ(pixelAt(Scaling::imageByAdjustingHue(image, 0.0F, 1.0F).value(), 0, 0), kRed);
    EXPECT_EQ(pixelAt(Scaling::imageByAdjustingHue(image, 0.25F, 1.0F).value(), 0, 0),
              kRedAtAQuarterTurn);
    // Half of it: 0.213 + 0.787 / 2 = 0.6065 and 0.1065: 154.66, 27.16.
    EXPECT_EQ(pixelAt(Scaling::imageByAdjustingHue(image, 0.0F, 0.5F).value(), 0, 0),
              (Pixel{155, 27, 27, 255}));
}

TEST(AdjustHue, OfAnImageWithNothingToReadIsNone) {
    const NSImage empty = NSImage::initWithSize({4, 4});
    EXPECT_FALSE(Scaling::imageByAdjustingHue(empty, 0.5F));
    EXPECT_FALSE(Scaling::imageByAdjustingHue(empty, 0.5F, 1.0F));
}

}  // namespace
}  // namespace skarnel
