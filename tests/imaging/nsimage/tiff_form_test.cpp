#include "imaging/nsimage/tiff_form.h"

#include <gtest/gtest.h>

#include "imaging/cgcontext.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"
#include "imaging/nsimage/nsimage.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

NSImage imageOf(const CGImage& pixels) {
    NSImage image = NSImage::initWithSize({0, 0});
    image.addRepresentation(NSBitmapImageRep::initWithCGImage(pixels));
    return image;
}

void expectSameAsDetour(const NSImage& image) {
    const auto form = image.TIFFRepresentation();
    const auto direct = image.decodedTIFFRepresentation();
    ASSERT_TRUE(form);
    ASSERT_TRUE(direct);
    const auto detour = decodeImage(*form);
    ASSERT_TRUE(detour);
    EXPECT_TRUE(samePixels(direct->image, detour->image));
    EXPECT_EQ(direct->type, detour->type);
    EXPECT_EQ(direct->properties, detour->properties);
}

TEST(TiffForm, TheShortCutGivesTheBytesOfTheDetour) {
    expectSameAsDetour(imageOf(randomValidPicture(31, 17, 4)));
    expectSameAsDetour(imageOf(randomValidPicture(1, 1, 5)));
}

TEST(TiffForm, TheShortCutSharesValidPixels) {
    const CGImage pixels = randomValidPicture(9, 9, 4);
    EXPECT_TRUE(imageOf(pixels).decodedTIFFRepresentation()->image.isSame(pixels));
}

TEST(TiffForm, AKnockedOutPageReadBackHasNoGhostOfItsGround) {
    const NSImage image = imageOf(picture(3, 1, {{200, 100, 50, 0}, {0, 0, 0, 0}, {9, 9, 9, 255}}));
    expectSameAsDetour(image);
    EXPECT_EQ(pixelsOf(image.decodedTIFFRepresentation()->image),
              (std::vector<Rgba>{{0, 0, 0, 0}, {0, 0, 0, 0}, {9, 9, 9, 255}}));
}

/// The picture, drawn into a new context of twice its size, where `more` draws afterwards.
template <typename More>
NSImage drawn(const CGImage& pixels, More more) {
    auto context = CGContext::create(2 * pixels.width(), 2 * pixels.height());
    context->drawImage(pixels, {0, 0, 1.0 * pixels.width(), 1.0 * pixels.height()});
    more(*context);
    return imageOf(std::move(*context).takeImage());
}

void nothing(CGContext&) {}

TEST(TiffForm, WhatWasDrawnWithoutHiddenColoursNeedsNoSecondLook) {
    const NSImage image = drawn(randomValidPicture(40, 9, 6), nothing);
    EXPECT_TRUE(image.bitmap()->isKnownWithoutHiddenColours());
    expectSameAsDetour(image);
    EXPECT_TRUE(image.decodedTIFFRepresentation()->image.isSame(*image.bitmap()));
}

TEST(TiffForm, HiddenColoursThatWereDrawnAreSeen) {
    for (const int place : {0, 40, 79}) {
        std::vector<Rgba> pixels(80, {1, 2, 3, 255});
        pixels[static_cast<std::size_t>(place)] = {200, 100, 50, 0};
        const NSImage image = drawn(picture(40, 2, pixels), nothing);
        EXPECT_FALSE(image.bitmap()->isKnownWithoutHiddenColours()) << place;
        expectSameAsDetour(image);
        EXPECT_FALSE(samePixels(image.decodedTIFFRepresentation()->image, *image.bitmap()));
    }
}

TEST(TiffForm, WhatCameAfterTheFirstDrawingIsLookedAt) {
    const CGImage valid = randomValidPicture(40, 9, 6);
    const CGImage hidden = picture(1, 1, {{9, 8, 7, 0}});
    const NSImage drawnOver = drawn(valid, [&](CGContext& context) {
        context.setCompositeOperation(CompositeOperation::Copy);
        context.drawImage(hidden, {70, 10, 1, 1});
    });
    expectSameAsDetour(drawnOver);
    EXPECT_FALSE(samePixels(drawnOver.decodedTIFFRepresentation()->image, *drawnOver.bitmap()));
    const NSImage written =
        drawn(valid, [](CGContext& context) { context.pixels().row(0)[0] = 77; });
    expectSameAsDetour(written);
    EXPECT_FALSE(samePixels(written.decodedTIFFRepresentation()->image, *written.bitmap()));
}

TEST(TiffForm, ThreePackedSamplesBecomeFour) {
    const std::shared_ptr<std::uint8_t> bytes(new std::uint8_t[6]{255, 0, 0, 0, 0, 255},
                                              std::default_delete<std::uint8_t[]>());
    const NSImage image = imageOf(*CGImage::share(bytes, 2, 1, 6, 3));
    expectSameAsDetour(image);
    EXPECT_EQ(image.decodedTIFFRepresentation()->image.bitsPerPixel(), 32);
}

TEST(TiffForm, PaddedRowsArePacked) {
    const std::shared_ptr<std::uint8_t> bytes(
        new std::uint8_t[24]{1, 2, 3, 255, 4, 5, 6, 255, 99, 99, 99, 99,
                             7, 8, 9, 255, 1, 1, 1, 255, 99, 99, 99, 99},
        std::default_delete<std::uint8_t[]>());
    const NSImage image = imageOf(*CGImage::share(bytes, 2, 2, 12, 4));
    expectSameAsDetour(image);
    EXPECT_EQ(image.decodedTIFFRepresentation()->image.bytesPerRow(), 8U);
}

TEST(TiffForm, CarriesThePropertiesOfTheFileUpright) {
    const Bytes file = *encodeImage(randomValidPicture(4, 4, 1), kUTTypeJPEG,
                                    {{std::string(kPropertyDpiWidth), 300.0}});
    const auto image = NSImage::initWithData(file);
    ASSERT_TRUE(image);
    expectSameAsDetour(*image);
    const auto decoded = image->decodedTIFFRepresentation();
    EXPECT_EQ(decoded->type, kUTTypeTIFF);
    EXPECT_EQ(numberProperty(decoded->properties, kPropertyDpiWidth), 300.0);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyOrientation), 1);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyTiffCompression), 1);
}

TEST(TiffForm, CarriesWhatTheCameraWrote) {
    ByteSink block(true);
    block.text("MM").u16(42).u32(8).u16(2);
    block.u16(0x010F).u16(2).u32(4).text("Cam").u8(0);
    block.u16(0x0112).u16(3).u32(1).u16(6).u16(0).u32(0);
    ImageProperties properties;
    properties.emplace(kPropertyExifBlock, block.bytes);
    const auto image =
        NSImage::initWithData(*encodeImage(randomValidPicture(4, 3, 1), kUTTypePNG, properties));
    ASSERT_TRUE(image);
    expectSameAsDetour(*image);
    EXPECT_EQ(textProperty(image->decodedTIFFRepresentation()->properties, "{TIFF}.Make"), "Cam");
}

TEST(TiffForm, UprightPropertiesForgetHowTheFileLay) {
    ImageProperties properties;
    properties.emplace(kPropertyOrientation, std::int64_t{6});
    properties.emplace(kPropertyPixelWidth, std::int64_t{4});
    properties.emplace(kPropertyPixelHeight, std::int64_t{3});
    properties.emplace(kPropertyProfileName, std::string("Some Profile"));
    const auto upright = uprightProperties(randomValidPicture(3, 4, 1), properties);
    EXPECT_EQ(wholeProperty(upright, kPropertyOrientation), 1);
    EXPECT_EQ(wholeProperty(upright, kPropertyPixelWidth), 3);
    EXPECT_EQ(wholeProperty(upright, kPropertyPixelHeight), 4);
    EXPECT_EQ(upright.count(kPropertyProfileName), 0U);
}

}  // namespace
}  // namespace skarnel
