#include "util/image/nsimage_extensions.h"

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>

#include "util/image/focus.h"
#include "util/image/nice_scaling.h"
#include "util/image/pictures.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;
using namespace pictures;
using namespace NSImageExtensions;

NSImage mixedImage() {
    return imageOf(2,
                   {{10, 20, 30, 255}, {1, 2, 3, 4}, kClear, {0, 0, 0, 1}, kWhite, {7, 7, 7, 7}});
}

TEST(GetCGImageRef, GivesTheBytesThatTheTIFFDetourGives) {
    const NSImage image = mixedImage();
    const CGImage direct = getCGImageRef(image).value();
    const auto detour = decodeImage(*image.TIFFRepresentation());
    ASSERT_TRUE(detour);
    EXPECT_EQ(pixelsOf(direct), pixelsOf(detour->image));
    EXPECT_EQ(pixelsOf(direct), pixelsOf(image)) << "the pixels are exact";
}

TEST(GetCGImageRef, HandsBackTheVeryPixelsWhereTheDetourWould) {
    const NSImage image = mixedImage();
    const auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(image.representations()[0]);
    EXPECT_EQ(getCGImageRef(image)->pixels().bytes, bitmap->bitmapData()) << "nothing is copied";
}

TEST(GetCGImageRef, ColourWithoutAlphaIsLostAsOnTheDetour) {
    // A knocked-out page has colour where its alpha is 0; a decoded picture has not.
    const NSImage image = imageOf(2, {{9, 9, 9, 0}, kRed});
    const CGImage direct = getCGImageRef(image).value();
    EXPECT_EQ(pixelsOf(direct), (std::vector<Pixel>{kClear, kRed}));
    EXPECT_EQ(pixelsOf(direct), pixelsOf(decodeImage(*image.TIFFRepresentation())->image));
}

TEST(GetCGImageRef, OfAnImageWithNothingToDrawIsNone) {
    EXPECT_FALSE(getCGImageRef(NSImage::initWithSize({4, 4})));
}

TEST(ScaleProportionally, MakesACanvasOfExactlyTheSizeAndCentresThePicture) {
    const NSImage wide = imageByScalingProportionallyToSize(plainImage(4, 2, kRed), {4, 4}).value();
    EXPECT_EQ(wide.size(), (CGSize{4, 4}));
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(pixelAt(wide, x, 0), kClear);
        EXPECT_EQ(pixelAt(wide, x, 1), kRed);
        EXPECT_EQ(pixelAt(wide, x, 2), kRed);
        EXPECT_EQ(pixelAt(wide, x, 3), kClear);
    }
    const NSImage tall = imageByScalingProportionallyToSize(plainImage(2, 4, kRed), {4, 4}).value();
    for (int y = 0; y < 4; ++y) {
        EXPECT_EQ(pixelAt(tall, 0, y), kClear);
        EXPECT_EQ(pixelAt(tall, 1, y), kRed);
        EXPECT_EQ(pixelAt(tall, 2, y), kRed);
        EXPECT_EQ(pixelAt(tall, 3, y), kClear);
    }
}

TEST(ScaleProportionally, OfItsOwnSizeCopiesTheBytes) {
    const NSImage image = mixedImage();
    const NSImage same = imageByScalingProportionallyToSize(image, {2, 3}).value();
    EXPECT_FALSE(same.isSame(image));
    EXPECT_EQ(pixelsOf(same), pixelsOf(image));
}

TEST(ScaleProportionally, EnlargesAndShrinks) {
    const NSImage larger =
        imageByScalingProportionallyToSize(plainImage(1, 1, kBlue), {5, 5}).value();
    EXPECT_EQ(pixelsOf(larger), std::vector<Pixel>(25, kBlue));
    // Area-correct: black and white columns average to grey.
    const NSImage stripes = imageOf(4, {kBlack, kWhite, kBlack, kWhite});
    const NSImage smaller = imageByScalingProportionallyToSize(stripes, {2, 0.5}).value();
    for (const Pixel& pixel : pixelsOf(smaller)) {
        EXPECT_NEAR(pixel.r, 127.5, 0.5);
        EXPECT_EQ(pixel.a, 255);
    }
}

TEST(ScaleProportionally, AFractionalSizeHasNoHalfCoveredEdge) {
    const NSImage scaled =
        imageByScalingProportionallyToSize(plainImage(40, 30, kRed), {26.4, 19.8}).value();
    EXPECT_EQ(scaled.size(), (CGSize{26.4, 19.8}));
    const CGImage bitmap = getCGImageRef(scaled).value();
    EXPECT_EQ(bitmap.width(), 26);
    EXPECT_EQ(bitmap.height(), 20);
    for (const Pixel& pixel : pixelsOf(bitmap)) EXPECT_EQ(pixel, kRed);
}

TEST(ScaleProportionally, OfNothingOrIntoNothingIsNone) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(imageByScalingProportionallyToSize(NSImage::initWithSize({4, 4}), {2, 2}));
    for (const CGSize size : {CGSize{0, 0}, CGSize{-1, 5}, CGSize{kNan, 5}, CGSize{1e12, 1e12}})
        EXPECT_FALSE(imageByScalingProportionallyToSize(plainImage(2, 2, kRed), size)) << size;
}

TEST(ScaleProportionally, LeavesTheSourceAsItWas) {
    const NSImage image = mixedImage();
    const auto before = image.representations();
    (void)imageByScalingProportionallyToSize(image, {20, 20});
    EXPECT_EQ(image.representations(), before);
    EXPECT_EQ(image.size(), (CGSize{2, 3}));
}

TEST(ScaleImage, CentresThePictureAndChangesTheReceiver) {
    NSImage image = plainImage(400, 200, kRed);
    const NSImage scaled = scaleImageToSize(image, {100, 100});
    EXPECT_EQ(scaled.size(), (CGSize{100, 100}));
    EXPECT_EQ(image.size(), (CGSize{100, 50}));
    EXPECT_TRUE(image.scalesWhenResized());
    // Composited at (0, 25): rows 25 to 74 from the top as well.
    EXPECT_EQ(pixelAt(scaled, 50, 24), kClear);
    EXPECT_EQ(pixelAt(scaled, 0, 25), kRed);
    EXPECT_EQ(pixelAt(scaled, 99, 74), kRed);
    EXPECT_EQ(pixelAt(scaled, 50, 75), kClear);
}

TEST(ScaleImage, OfAPortraitPictureLiesInTheMiddle) {
    NSImage image = plainImage(2, 4, kRed);
    const NSImage scaled = scaleImageToSize(image, {8, 8});
    EXPECT_EQ(image.size(), (CGSize{4, 8}));
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(pixelAt(scaled, x, y), x >= 2 && x < 6 ? kRed : kClear) << x << ' ' << y;
}

TEST(ScaleImage, InterpolatesLow) {
    const NSImage image = imageOf(2, {kBlack, kWhite, kBlack, kWhite});
    const auto expected =
        NiceScaling::scaledImageToFitSize(image, {8, 8}, InterpolationQuality::Low);
    EXPECT_EQ(pixelsOf(scaleImageToSize(image.copy(), {8, 8})), pixelsOf(*expected));
    EXPECT_NE(pixelAt(*expected, 3, 3), kBlack) << "it is softer than no interpolation";
}

TEST(ScaleImage, TheFactorIsAFloat) {
    NSImage image = plainImage(3, 3, kRed);
    (void)scaleImageToSize(image, {1, 1});
    // 3 * 0.3333333432674408.
    EXPECT_EQ(image.size(), (CGSize{1.0000000298023224, 1.0000000298023224}));
}

TEST(ScaleImage, ByAFactorScalesBothSides) {
    NSImage image = plainImage(4, 2, kRed);
    const NSImage scaled = scaleImage(image, 2.5F);
    EXPECT_EQ(scaled.size(), (CGSize{10, 5}));
    EXPECT_EQ(image.size(), (CGSize{10, 5}));
    EXPECT_EQ(pixelsOf(scaled), std::vector<Pixel>(50, kRed));
    NSImage other = plainImage(10, 10, kRed);
    // 0.1f is 0.10000000149011612.
    EXPECT_EQ(scaleImage(other, 0.1F).size(), (CGSize{1.0000000149011612, 1.0000000149011612}));
}

TEST(ScaleImage, RaisesForATargetWithoutArea) {
    EXPECT_THROW(scaleImageToSize(plainImage(2, 2, kRed), {0, 5}), NSException);
    EXPECT_THROW(scaleImage(plainImage(2, 2, kRed), 0.0F), NSException);
}

TEST(RotateImage, TakesTheLowSixteenBitsOfTheAngle) {
    const NSImage image = imageOf(2, {kRed, kBlue});
    EXPECT_EQ(imageByRotatingByDegrees(image, 90)->size(), (CGSize{1, 2}));
    EXPECT_EQ(imageByRotatingByDegrees(image, 65536 + 90)->size(), (CGSize{1, 2}));
    EXPECT_EQ(imageByRotatingByDegrees(image, 65536)->size(), (CGSize{2, 1}));
    EXPECT_EQ(imageByRotatingByDegrees(image, 40000)->size(), (CGSize{2, 1})) << "-25536";
}

class TemporaryRotation : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "skarnel-rotate-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { fs::remove_all(folder_); }
    std::string folder_;
};

TEST_F(TemporaryRotation, WritesTheRotatedTIFFUnderTheFilesName) {
    const NSImage image = imageOf(2, {kRed, kBlue});
    const auto path = temporaryImageByRotatingByDegrees(image, 90, "/a/b/photo.jpg", folder_);
    EXPECT_EQ(path, folder_ + "/photo.jpg");
    auto decoded = decodeImageFile(*path);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->type, kUTTypeTIFF);
    // Counter-clockwise: what was right is on top.
    EXPECT_EQ(pixelsOf(decoded->image), (std::vector<Pixel>{kBlue, kRed}));
}

TEST_F(TemporaryRotation, OverwritesAndJoinsByOneSeparator) {
    std::ofstream(folder_ + "/x.tiff") << "old";
    const auto path =
        temporaryImageByRotatingByDegrees(plainImage(1, 1, kRed), 0, "x.tiff", folder_ + "/");
    EXPECT_EQ(path, folder_ + "/x.tiff");
    EXPECT_TRUE(decodeImageFile(*path));
    EXPECT_EQ(temporaryImageByRotatingByDegrees(plainImage(1, 1, kRed), 0, "/a/name//", folder_),
              folder_ + "/name");
}

TEST_F(TemporaryRotation, AFailedWriteStillNamesThePath) {
    EXPECT_EQ(temporaryImageByRotatingByDegrees(plainImage(1, 1, kRed), 5, "p", folder_ + "/none"),
              folder_ + "/none/p");
}

TEST_F(TemporaryRotation, TheFolderIsTheFixedOneUnlessGiven) {
    if (fs::exists("/Users/dunmoke")) GTEST_SKIP() << "would write into somebody's folder";
    EXPECT_EQ(temporaryImageByRotatingByDegrees(plainImage(1, 1, kRed), 5, "/a/b/photo.jpg"),
              "/Users/dunmoke/Desktop/temp/photo.jpg");
}

TEST_F(TemporaryRotation, OfAnImageWithNothingToReadIsNone) {
    EXPECT_EQ(temporaryImageByRotatingByDegrees(NSImage::initWithSize({1, 1}), 5, "p", folder_),
              std::nullopt);
}

TEST(FilteredImage, IsSeenThroughTheFilterWithItsDefaults) {
    const NSImage inverted = imageWithCIFilter(plainImage(2, 1, kRed), "CIColorInvert").value();
    EXPECT_EQ(inverted.size(), (CGSize{2, 1}));
    EXPECT_EQ(pixelsOf(inverted), std::vector<Pixel>(2, {0, 255, 255, 255}));
    EXPECT_NE(dynamic_cast<NSCIImageRep*>(inverted.representations()[0].get()), nullptr);
    EXPECT_EQ(pixelsOf(imageWithCIFilter(plainImage(1, 1, kRed), "CIHueAdjust").value()),
              std::vector<Pixel>{kRed});
}

TEST(FilteredImage, IsNoneForAnUnknownFilterOrAnImageWithNothingToRead) {
    EXPECT_FALSE(imageWithCIFilter(plainImage(1, 1, kRed), "CINoSuchFilter"));
    EXPECT_FALSE(imageWithCIFilter(NSImage::initWithSize({1, 1}), "CIColorInvert"));
}

TEST(FilteredImage, OfAFilterImageHasItsSize) {
    const NSImage image = imageWithCIImage(CIImage::imageWithCGImage(plainBitmap(3, 2, kBlue)));
    EXPECT_EQ(image.size(), (CGSize{3, 2}));
    EXPECT_EQ(pixelsOf(image), std::vector<Pixel>(6, kBlue));
}

}  // namespace
}  // namespace skarnel
