#include "util/image/filter_images.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "util/image/focus.h"
#include "util/image/pictures.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;
using namespace pictures;

TEST(RotateFilterImage, OutsideOneTo359GivesBackTheVeryInput) {
    const CIImage image = CIImage::imageWithCGImage(plainBitmap(4, 2, kRed));
    for (const int degrees : {0, 360, -90, 400, -1, 361, 32767, -32768})
        EXPECT_TRUE(RotateCIImage(image, static_cast<std::int16_t>(degrees)).isSame(image))
            << degrees;
    for (const std::int16_t degrees : {std::int16_t{1}, std::int16_t{180}, std::int16_t{359}})
        EXPECT_FALSE(RotateCIImage(image, degrees).isSame(image)) << degrees;
}

void expectNear(CGRect rect, CGRect expected) {
    EXPECT_NEAR(rect.x, expected.x, 1e-9) << rect;
    EXPECT_NEAR(rect.y, expected.y, 1e-9) << rect;
    EXPECT_NEAR(rect.width, expected.width, 1e-9) << rect;
    EXPECT_NEAR(rect.height, expected.height, 1e-9) << rect;
}

TEST(RotateFilterImage, TurnsTheExtentCounterClockwiseAboutTheOrigin) {
    const CIImage image = CIImage::imageWithCGImage(plainBitmap(4, 2, kRed));
    expectNear(RotateCIImage(image, 90).extent(), {-2, 0, 2, 4});
    expectNear(RotateCIImage(image, 180).extent(), {-4, -2, 4, 2});
    expectNear(RotateCIImage(image, 270).extent(), {0, -4, 4 - 2.0, 4});
}

TEST(RotateFilterImage, AtAnAngleTheExtentIsTheBoundingBox) {
    // Corners of 4 x 2 at 30 degrees: x from -2 sin 30 = -1 to 4 cos 30 = 3.4641016, y from 0 to
    // 4 sin 30 + 2 cos 30 = 3.7320508.
    const CIImage image = CIImage::imageWithCGImage(plainBitmap(4, 2, kRed));
    const CGRect extent = RotateCIImage(image, 30).extent();
    EXPECT_NEAR(extent.x, -1, 1e-6);
    EXPECT_NEAR(extent.y, 0, 1e-6);
    EXPECT_NEAR(extent.maxX(), 3.4641016, 1e-6);
    EXPECT_NEAR(extent.maxY(), 3.7320508, 1e-6);
}

TEST(RotateImageObject, HasOneFilterRepresentationOfTheTurnedSize) {
    const NSImage turned = RotateNSImage(imageOf(2, {kRed, kBlue}), 90).value();
    EXPECT_EQ(turned.size(), (CGSize{1, 2}));
    ASSERT_EQ(turned.representations().size(), 1U);
    EXPECT_NE(dynamic_cast<NSCIImageRep*>(turned.representations()[0].get()), nullptr);
    EXPECT_EQ(pixelsOf(turned), (std::vector<Pixel>{kBlue, kRed}));
}

TEST(RotateImageObject, AQuarterHalfAndThreeQuarterTurnMoveEveryPixelExactly) {
    // 2 x 2 from the top: red green / blue white.
    const NSImage image = imageOf(2, {kRed, kGreen, kBlue, kWhite});
    EXPECT_EQ(pixelsOf(RotateNSImage(image, 90).value()),
              (std::vector<Pixel>{kGreen, kWhite, kRed, kBlue}));
    EXPECT_EQ(pixelsOf(RotateNSImage(image, 180).value()),
              (std::vector<Pixel>{kWhite, kBlue, kGreen, kRed}));
    EXPECT_EQ(pixelsOf(RotateNSImage(image, 270).value()),
              (std::vector<Pixel>{kBlue, kRed, kWhite, kGreen}));
}

TEST(RotateImageObject, ByNothingIsStillANewImage) {
    const NSImage image = imageOf(2, {kRed, kBlue});
    const NSImage turned = RotateNSImage(image, 0).value();
    EXPECT_FALSE(turned.isSame(image));
    EXPECT_EQ(pixelsOf(turned), pixelsOf(image));
}

TEST(RotateImageObject, OfNothingIsNone) {
    EXPECT_FALSE(RotateNSImage(NSImage::initWithSize({2, 2}), 90));
}

TEST(BitmapFromImage, IsTheFirstBitmapAmongTheRepresentations) {
    NSImage image = NSImage::initWithSize({2, 2});
    image.addRepresentation(filterRepresentation(2, 2, kRed));
    const auto first = plainRepresentation(1, 1, kBlue);
    image.addRepresentation(first);
    image.addRepresentation(plainRepresentation(2, 2, kGreen));
    EXPECT_EQ(BitmapImageRepFromNSImage(image), first);
}

TEST(BitmapFromImage, WithoutABitmapIsWhatTheImageShowsAtItsSize) {
    NSImage image = NSImage::initWithSize({4, 3});
    image.addRepresentation(filterRepresentation(2, 2, kRed));
    const auto bitmap = BitmapImageRepFromNSImage(image);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->size(), (CGSize{4, 3}));
    EXPECT_EQ(pixelsOf(*bitmap->bitmap()), std::vector<Pixel>(12, kRed));
    EXPECT_EQ(image.representations().size(), 1U) << "the image is not changed";
    EXPECT_EQ(FocusLock::current(), nullptr);
}

TEST(BitmapFromImage, OfAnEmptyImageIsTransparentOrRaises) {
    const auto bitmap = BitmapImageRepFromNSImage(NSImage::initWithSize({1, 1}));
    EXPECT_EQ(pixelsOf(*bitmap->bitmap()), std::vector<Pixel>{kClear});
    EXPECT_THROW(BitmapImageRepFromNSImage(NSImage::initWithSize({0, 0})), NSException);
}

class Resources : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "skarnel-bundle-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
        const Bytes data = encodeImage(plainBitmap(3, 2, kBlue), kUTTypePNG).operator*();
        for (const char* name : {"dot.name.png", "plain"}) {
            std::ofstream file(folder_ + "/" + name, std::ios::binary);
            file.write(reinterpret_cast<const char*>(data.data()),
                       static_cast<std::streamsize>(data.size()));
        }
        std::ofstream(folder_ + "/broken.png") << "no picture";
    }
    void TearDown() override { fs::remove_all(folder_); }
    std::string folder_;
};

TEST_F(Resources, AreDecodedByName) {
    const auto image = createImageWithName("dot.name.png", {folder_});
    ASSERT_TRUE(image);
    EXPECT_EQ(pixelsOf(*image), std::vector<Pixel>(6, kBlue));
    EXPECT_TRUE(createImageWithName("plain", {folder_})) << "a name may have no extension";
}

TEST_F(Resources, ThatAreMissingOrNoPicturesGiveNone) {
    EXPECT_FALSE(createImageWithName("none.png", {folder_}));
    EXPECT_FALSE(createImageWithName("broken.png", {folder_}));
    EXPECT_FALSE(createImageWithName("", {folder_}));
    EXPECT_FALSE(
        createImageWithName("../" + fs::path(folder_).filename().string() + "/plain", {folder_}));
    EXPECT_FALSE(createImageWithName("plain", {}));
}

TEST(FilterImageOf, HasThePicturesExtentAtTheOrigin) {
    const auto image = filterImageOf(plainImage(3, 2, kRed));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->extent(), (CGRect{0, 0, 3, 2}));
    EXPECT_FALSE(filterImageOf(NSImage::initWithSize({3, 2})));
}

}  // namespace
}  // namespace skarnel
