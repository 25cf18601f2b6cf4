#include "imaging/nsimage/nsimage.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

std::shared_ptr<NSImageRep> bitmapRep(int width, int height, Rgba color = {1, 2, 3, 255}) {
    const std::vector<Rgba> pixels(static_cast<std::size_t>(width * height), color);
    return NSBitmapImageRep::initWithCGImage(picture(width, height, pixels));
}

/// A file in a directory of its own that is gone with the object.
class TemporaryFile {
  public:
    TemporaryFile(const std::string& name, const Bytes& bytes) {
        std::string pattern = (std::filesystem::temp_directory_path() / "nsimageXXXXXX").string();
        folder_ = ::mkdtemp(pattern.data());
        path_ = folder_ / name;
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    ~TemporaryFile() { std::filesystem::remove_all(folder_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    std::string path() const { return path_.string(); }

  private:
    std::filesystem::path folder_;
    std::filesystem::path path_;
};

TEST(NSImage, OfAFileHasOnePointAPixelWhateverItsResolution) {
    const TemporaryFile file("a.png", *encodeImage(randomValidPicture(6, 4, 1), kUTTypePNG,
                                                   {{std::string(kPropertyDpiWidth), 300.0}}));
    const auto image = NSImage::initByReferencingFile(file.path());
    ASSERT_TRUE(image);
    EXPECT_FALSE(image->readError());
    EXPECT_TRUE(image->isValid());
    EXPECT_EQ(image->size(), (CGSize{6, 4}));
    EXPECT_NEAR(numberProperty(image->properties(), kPropertyDpiWidth), 300, 0.02);
}

TEST(NSImage, OfAFileThatIsNotThereIsNone) {
    EXPECT_FALSE(NSImage::initByReferencingFile("/nonexistent/picture.png"));
    EXPECT_FALSE(NSImage::initByReferencingFile(""));
}

TEST(NSImage, OfAFileThatCannotBeDecodedHasNoSize) {
    const TemporaryFile file("a.png", {'n', 'o', ' ', 'p', 'i', 'c', 't', 'u', 'r', 'e'});
    const auto image = NSImage::initByReferencingFile(file.path());
    ASSERT_TRUE(image);
    EXPECT_FALSE(image->isValid());
    EXPECT_EQ(image->size(), (CGSize{0, 0}));
    EXPECT_TRUE(image->representations().empty());
    EXPECT_EQ(image->bestRepresentationForDevice(), nullptr);
    EXPECT_FALSE(image->bitmap());
    EXPECT_FALSE(image->TIFFRepresentation());
    EXPECT_FALSE(image->decodedTIFFRepresentation());
    ASSERT_TRUE(image->readError());
    EXPECT_EQ(image->readError()->code, ErrorCode::UnknownFormat);
    EXPECT_EQ(image->copy().readError()->code, ErrorCode::UnknownFormat);
}

TEST(NSImage, ReadsItsFileAtFirstNeedAndOnlyThen) {
    const TemporaryFile file("a.png", *encodeImage(randomValidPicture(6, 4, 1), kUTTypePNG));
    const auto image = NSImage::initByReferencingFile(file.path());
    ASSERT_TRUE(image);
    const Bytes other = *encodeImage(randomValidPicture(3, 2, 1), kUTTypePNG);
    std::ofstream(file.path(), std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(other.data()),
               static_cast<std::streamsize>(other.size()));
    EXPECT_EQ(image->size(), (CGSize{3, 2}));
    std::filesystem::remove(file.path());
    EXPECT_TRUE(image->bitmap());
}

TEST(NSImage, OfDataDecodesAtOnce) {
    EXPECT_FALSE(NSImage::initWithData(ByteView()));
    const auto image = NSImage::initWithData(*encodeImage(randomValidPicture(5, 3, 1), kUTTypeBMP));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), (CGSize{5, 3}));
    EXPECT_EQ(image->representations().size(), 1U);
}

TEST(NSImage, TakesTheSizeOfItsRepresentationWhereNoneWasSet) {
    NSImage image = NSImage::initWithSize({0, 0});
    EXPECT_FALSE(image.isValid());
    image.addRepresentation(bitmapRep(8, 5));
    EXPECT_TRUE(image.isValid());
    EXPECT_EQ(image.size(), (CGSize{8, 5}));
    image.setSize({4, 2.5});
    EXPECT_EQ(image.size(), (CGSize{4, 2.5}));
}

TEST(NSImage, CopiesAreOtherObjectsThatShareRepresentations) {
    NSImage image = NSImage::initWithSize({8, 5});
    image.addRepresentation(bitmapRep(8, 5));
    image.setFlipped(true);
    image.setScalesWhenResized(true);
    image.setCacheMode(3);
    NSImage copy = image.copy();
    EXPECT_FALSE(copy.isSame(image));
    EXPECT_EQ(copy.representations(), image.representations());
    EXPECT_TRUE(copy.isFlipped());
    EXPECT_TRUE(copy.scalesWhenResized());
    EXPECT_EQ(copy.cacheMode(), 3);
    copy.removeRepresentation(copy.representations().front());
    copy.setSize({1, 1});
    EXPECT_EQ(image.representations().size(), 1U);
    EXPECT_EQ(image.size(), (CGSize{8, 5}));
    const NSImage handle = image;
    EXPECT_TRUE(handle.isSame(image));
}

TEST(NSImage, TheBestRepresentationForTheDeviceHasTheMostPixels) {
    NSImage image = NSImage::initWithSize({8, 8});
    const auto small = bitmapRep(8, 8);
    const auto large = bitmapRep(20, 10);
    const auto equal = bitmapRep(10, 20);
    large->setSize({2, 2});  // points do not count
    for (const auto& rep : {small, large, equal}) image.addRepresentation(rep);
    EXPECT_EQ(image.bestRepresentationForDevice(), large);
}

TEST(NSImage, BitmapSharesThePixelsOfARepresentationOfItsSize) {
    NSImage image = NSImage::initWithSize({8, 8});
    const auto exact = bitmapRep(8, 8);
    image.addRepresentation(bitmapRep(16, 16));
    image.addRepresentation(exact);
    const auto bitmap = image.bitmap();
    ASSERT_TRUE(bitmap);
    EXPECT_TRUE(bitmap->isSame(*exact->bitmap()));
}

TEST(NSImage, BitmapOfAnotherSizeIsResampledToTheNearestWholePixels) {
    NSImage image = NSImage::initWithSize({3.5, 2.4});
    image.addRepresentation(bitmapRep(8, 8, {9, 8, 7, 255}));
    const auto bitmap = image.bitmap();
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->width(), 4);
    EXPECT_EQ(bitmap->height(), 2);
    EXPECT_EQ(pixelAt(*bitmap, 1, 1), (Rgba{9, 8, 7, 255}));
    image.setSize({0.2, 0.2});
    EXPECT_EQ(image.bitmap()->width(), 1);
    EXPECT_EQ(image.bitmap()->height(), 1);
}

TEST(NSImage, WithoutPositiveSizeHasNoBitmap) {
    NSImage image = NSImage::initWithSize({-3, 4});
    image.addRepresentation(bitmapRep(8, 8));
    EXPECT_FALSE(image.bitmap());
}

TEST(NSImage, ItsTiffFormKeepsThePixelsOfItsRepresentationWhenItsSizeIsChanged) {
    NSImage image = NSImage::initWithSize({0, 0});
    image.addRepresentation(bitmapRep(8, 6));
    image.setSize({4, 3});
    const auto form = image.TIFFRepresentation();
    ASSERT_TRUE(form);
    EXPECT_EQ(decodeImage(*form)->image.width(), 8);
}

TEST(NSBitmapImageRep, DescribesItsPixels) {
    const auto rep =
        NSBitmapImageRep::initWithData(*encodeImage(randomValidPicture(5, 3, 1), kUTTypeTIFF));
    ASSERT_NE(rep, nullptr);
    EXPECT_EQ(rep->pixelsWide(), 5);
    EXPECT_EQ(rep->pixelsHigh(), 3);
    EXPECT_EQ(rep->samplesPerPixel(), 4);
    EXPECT_TRUE(rep->hasAlpha());
    EXPECT_EQ(rep->bytesPerRow(), 20U);
    EXPECT_EQ(rep->size(), (CGSize{5, 3}));
    EXPECT_EQ(NSBitmapImageRep::initWithData(ByteView()), nullptr);
}

TEST(NSBitmapImageRep, MayHaveThreePackedSamples) {
    const std::shared_ptr<std::uint8_t> bytes(new std::uint8_t[6]{255, 0, 0, 0, 0, 255},
                                              std::default_delete<std::uint8_t[]>());
    const NSBitmapImageRep rep(*CGImage::share(bytes, 2, 1, 6, 3));
    EXPECT_EQ(rep.samplesPerPixel(), 3);
    EXPECT_FALSE(rep.hasAlpha());
    EXPECT_EQ(rep.bitmapData()[5], 255);
}

TEST(NSCIImageRep, HasTheExtentsSizeAndDrawsIt) {
    const CGImage source = picture(2, 1, {{10, 20, 30, 255}, {40, 50, 60, 255}});
    const NSCIImageRep rep(CIImage::imageWithCGImage(source));
    EXPECT_EQ(rep.size(), (CGSize{2, 1}));
    const auto bitmap = rep.bitmap();
    ASSERT_TRUE(bitmap);
    EXPECT_TRUE(samePixels(*bitmap, source));
}

}  // namespace
}  // namespace skarnel
