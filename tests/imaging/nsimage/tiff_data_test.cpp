#include "imaging/nsimage/tiff_data.h"

#include <gtest/gtest.h>

#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

NSImage imageOf(const CGImage& pixels) {
    NSImage image = NSImage::initWithSize({0, 0});
    image.addRepresentation(NSBitmapImageRep::initWithCGImage(pixels));
    return image;
}

TEST(TIFFData, SaysOfItselfWhatItsBytesSay) {
    const Bytes photo = *encodeImage(randomValidPicture(12, 7, 1), kUTTypeJPEG,
                                     {{std::string(kPropertyDpiWidth), 300.0}});
    const auto data = TIFFData::initWithImage(*NSImage::initWithData(photo));
    ASSERT_TRUE(data);
    const auto read = decodeImage(*data->bytes());
    const auto direct = data->decoded();
    ASSERT_TRUE(read);
    ASSERT_TRUE(direct);
    EXPECT_TRUE(samePixels(direct->image, read->image));
    EXPECT_EQ(direct->properties, read->properties);
    EXPECT_EQ(direct->type, read->type);
}

TEST(TIFFData, NeitherEncodesNorDecodesAPhotoToSayIt) {
    const CGImage pixels = randomValidPicture(12, 7, 1);
    EXPECT_TRUE(TIFFData::initWithImage(imageOf(pixels))->decoded()->image.isSame(pixels));
}

TEST(TIFFData, IsNotToBeHadOfAnImageWithoutAnything) {
    EXPECT_FALSE(TIFFData::initWithImage(NSImage::initWithSize({5, 5})));
}

TEST(TIFFData, DoesNotShowWhatBecomesOfTheImage) {
    NSImage image = imageOf(randomValidPicture(12, 7, 1));
    const auto data = TIFFData::initWithImage(image);
    image.removeRepresentation(image.representations().front());
    ASSERT_TRUE(data->bytes());
    EXPECT_EQ(decodeImage(*data->bytes())->image.width(), 12);
}

}  // namespace
}  // namespace skarnel
