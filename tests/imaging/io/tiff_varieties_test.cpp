// Tags of TIFF in their rarer values, one at a time.
#include <gtest/gtest.h>

#include <bit>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

constexpr std::uint32_t kBlackIsZero = 1, kRgb = 2, kPalette = 3, kInks = 5, kYcc = 6;
constexpr std::uint16_t kCompression = 259, kInkSet = 332, kExtra = 338, kFormat = 339;

Result<DecodedImage> decodedImage(const TiffBuilder& builder) {
    return decodeImage(builder.build());
}

std::vector<Rgba> decoded(const TiffBuilder& builder) {
    const auto picture = decodedImage(builder);
    EXPECT_TRUE(picture) << picture.error().message;
    return picture ? pixelsOf(picture->image) : std::vector<Rgba>();
}

Rgba grey(std::uint8_t value) {
    return {value, value, value, 255};
}

TEST(TiffVarieties, SamplesOfUnstatedFormatAreWholeNumbers) {
    TiffBuilder tiff(2, 1, kBlackIsZero, {8});
    tiff.tags[kFormat] = {4};
    tiff.blocks = {{7, 200}};
    EXPECT_EQ(decoded(tiff), (std::vector<Rgba>{grey(7), grey(200)}));
}

TEST(TiffVarieties, NumbersThatHaveNoMeaningAsColoursAreRefused) {
    // Signed bytes are shown as they are by the library; the others it refuses, and so do we.
    for (const auto& [format, bits] :
         {std::pair{1U, 0U}, {3U, 16U}, {3U, 64U}, {5U, 64U}, {1U, 24U}}) {
        TiffBuilder tiff(1, 1, kBlackIsZero, {bits});
        tiff.tags[kFormat] = {format};
        tiff.blocks = {Bytes(8, 1)};
        EXPECT_FALSE(decodedImage(tiff)) << format << " of " << bits;
    }
}

TEST(TiffVarieties, MorePixelsThanAllowedAreRefused) {
    TiffBuilder tiff(2, 1, kBlackIsZero, {8});
    tiff.blocks = {{7, 200}};
    EXPECT_TRUE(decodeImage(tiff.build(), {2}));
    const auto picture = decodeImage(tiff.build(), {1});
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.error().code, ErrorCode::TooLarge);
}

TEST(TiffVarieties, APictureMayBeOneLargeTile) {
    constexpr std::uint32_t kTile = 6720;  // of 135 million bytes
    const Bytes packed = zlibBytes(Bytes(std::size_t{3} * kTile * kTile));
    const auto picture = [&](std::uint32_t side) {
        TiffBuilder tiff(side, side, kRgb, {8, 8, 8});
        tiff.tags[kCompression] = {8};
        tiff.tags[322] = tiff.tags[323] = {kTile};
        tiff.blocks = {packed};
        return decodeImage(tiff.build(), {.maxPixels = 50'000'000});
    };
    EXPECT_TRUE(picture(6700));
    // Smaller ones have no need of it.
    const auto refused = picture(3000);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ErrorCode::TooLarge);
}

TEST(TiffVarieties, FewerSamplesThanColoursAreRefused) {
    TiffBuilder tiff(1, 1, kRgb, {8, 8});
    tiff.blocks = {{1, 2}};
    EXPECT_FALSE(decodedImage(tiff));
}

TEST(TiffVarieties, AnExtraSampleThatIsNotThereIsNoAlpha) {
    TiffBuilder tiff(1, 1, kRgb, {8, 8, 8});
    tiff.tags[kExtra] = {2};
    tiff.blocks = {{100, 50, 20}};
    EXPECT_EQ(decoded(tiff), (std::vector<Rgba>{{100, 50, 20, 255}}));
}

TEST(TiffVarieties, PalettesHaveAtMostEightBits) {
    TiffBuilder tiff(1, 1, kPalette, {16});
    tiff.tags[320] = std::vector<std::uint32_t>(3U << 16, 999);
    tiff.blocks = {{0, 1}};
    EXPECT_FALSE(decodedImage(tiff));
    TiffBuilder floats(1, 1, kPalette, {8});
    floats.tags[320] = std::vector<std::uint32_t>(3U << 8, 999);
    floats.tags[kFormat] = {2};  // signed
    floats.blocks = {{1}};
    const auto picture = decodedImage(floats);
    // The library takes signed indices for indices: 999 of 65535 is 4 of 255.
    ASSERT_TRUE(picture) << picture.error().message;
    EXPECT_NEAR(pixelAt(picture->image, 0, 0)[0], 4, 1);
}

TEST(TiffVarieties, InksOfAnotherSetAreRefusedOrShownByTheLibrary) {
    TiffBuilder tiff(1, 1, kInks, {8, 8, 8, 8});
    tiff.tags[kInkSet] = {2};
    tiff.blocks = {{0, 0, 0, 0}};
    EXPECT_FALSE(decodedImage(tiff));
}

TEST(TiffVarieties, AJpegOfLumaAndChromaInsideIsConvertedByItsOwnCodec) {
    const std::vector<Rgba> pixels(256, Rgba{100, 50, 20, 255});
    const Bytes jpeg =
        *encodeImage(picture(16, 16, pixels), kUTTypeJPEG, {{"LossyCompressionQuality", 1.0}});
    TiffBuilder tiff(16, 16, kYcc, {8, 8, 8});
    tiff.tags[kCompression] = {7};
    // The sampling that the JPEG's frame header states: of the first component, across and down.
    std::size_t frame = 0;
    while (jpeg[frame] != 0xFF || (jpeg[frame + 1] & 0xFD) != 0xC0) ++frame;
    const unsigned sampling = jpeg[frame + 11];
    tiff.tags[530] = {sampling >> 4, sampling & 15U};
    tiff.blocks = {jpeg};
    const auto picture = decodedImage(tiff);
    ASSERT_TRUE(picture) << picture.error().message;
    const Rgba pixel = pixelAt(picture->image, 8, 8);
    for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(pixel[k], pixels[0][k], 2);
}

TEST(TiffVarieties, LumaAndChromaWithoutAJpegAreTheLibrarys) {
    TiffBuilder tiff(2, 2, kYcc, {8, 8, 8});
    tiff.tags[530] = {1, 1};
    tiff.blocks = {{100, 128, 128, 100, 128, 128, 100, 128, 128, 100, 128, 128}};
    EXPECT_EQ(decoded(tiff), (std::vector<Rgba>(4, grey(100))));
    tiff.tags[284] = {2};  // in planes
    tiff.blocks = {Bytes(4, 100), Bytes(4, 128), Bytes(4, 128)};
    const auto planes = decodedImage(tiff);
    if (planes) {
        EXPECT_EQ(pixelsOf(planes->image), (std::vector<Rgba>(4, grey(100))));
    }
    // A JPEG in planes is not converted by its codec.
    tiff.tags[kCompression] = {7};
    tiff.blocks = {Bytes(4, 1), Bytes(4, 1), Bytes(4, 1)};
    EXPECT_FALSE(decodedImage(tiff));
}

TEST(TiffVarieties, ACompressedPictureInOneLargeStripIsReadRowByRow) {
    // 5 MB unpacked. Uncompressed strips of that size the library cuts up itself.
    constexpr std::uint32_t kSide = 1300;
    TiffBuilder tiff(kSide, kSide, kRgb, {8, 8, 8});
    tiff.tags[kCompression] = {8};
    Bytes strip(std::size_t{3} * kSide * kSide);
    for (std::size_t i = 0; i < strip.size(); ++i)
        strip[i] = static_cast<std::uint8_t>(i / 3 % kSide + i / (3 * kSide));
    const Bytes packed = zlibBytes(strip);
    tiff.blocks = {packed};
    const auto picture = decodedImage(tiff);
    ASSERT_TRUE(picture) << picture.error().message;
    // Column 700 of row 900: 1600 modulo 256.
    EXPECT_EQ(pixelAt(picture->image, 700, 900), (Rgba{64, 64, 64, 255}));
    tiff.blocks = {Bytes(packed.begin(), packed.end() - static_cast<long>(packed.size() / 2))};
    EXPECT_FALSE(decodedImage(tiff)) << "half of it";
}

TEST(TiffVarieties, TilesLargerThanAnyPictureNeedsAreRefused) {
    // 40,000 x 40,000 bytes: 1.6 GB for a tile.
    TiffBuilder tiff(1, 1, kBlackIsZero, {8});
    tiff.tags[322] = tiff.tags[323] = {40'000};
    tiff.blocks = {{1}};
    EXPECT_FALSE(decodedImage(tiff));
}

TEST(TiffVarieties, WhatUnpacksToMoreThanItsPixelsAndBytesAccountForIsTooLarge) {
    // A spare of 64 MB, 24 bytes a pixel, and 1,032 for each byte of the file: 50 x 40 pixels of
    // eight bits may have 33,578 samples and some more.
    const auto errorOf = [](std::uint32_t samples, std::size_t fileBytes) {
        TiffBuilder tiff(50, 40, kBlackIsZero, {8});
        tiff.tags[277] = {samples};
        tiff.blocks = {Bytes(fileBytes)};
        const auto picture = decodedImage(tiff);
        return picture ? std::optional<ErrorCode>() : picture.error().code;
    };
    EXPECT_EQ(errorOf(33'560, 100), ErrorCode::Damaged) << "the samples are not there";
    EXPECT_EQ(errorOf(34'500, 100), ErrorCode::TooLarge);
    EXPECT_EQ(errorOf(34'500, 3'000), ErrorCode::Damaged) << "3 MB more";
    // Of five planes at most, all of which count.
    TiffBuilder planes(2000, 2000, kRgb, {8, 8, 8, 8, 8, 8});
    planes.tags[284] = {2};
    planes.blocks.assign(6, Bytes(4'000'000, 9));
    EXPECT_EQ(decoded(planes).front(), (Rgba{9, 9, 9, 255}));
}

TEST(TiffVarieties, ManyBandsOpenWhereTheFileHasThem) {
    TiffBuilder tiff(20, 10, kBlackIsZero, std::vector<std::uint32_t>(200, 16));
    Bytes bands(std::size_t{20} * 10 * 200 * 2, 0x80);
    tiff.blocks = {bands};
    EXPECT_EQ(decoded(tiff).front(), grey(128));
}

TEST(TiffVarieties, JbigIsNotUnpacked) {
    TiffBuilder tiff(16, 16, 0, {1});
    tiff.tags[kCompression] = {34661};
    tiff.blocks = {Bytes(22)};
    const auto picture = decodedImage(tiff);
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.error().code, ErrorCode::Unsupported);
}

TEST(TiffVarieties, TilesThatEndEarlyOrHaveNoSizeAreRefused) {
    TiffBuilder tiff(20, 20, kBlackIsZero, {8});
    tiff.tags[322] = tiff.tags[323] = {16};
    tiff.tags[kCompression] = {8};
    tiff.blocks.assign(4, zlibBytes(Bytes(256, 7)));
    EXPECT_TRUE(decodedImage(tiff));
    tiff.blocks[3] = zlibBytes(Bytes(255, 7));
    EXPECT_FALSE(decodedImage(tiff));
    tiff.blocks[3] = tiff.blocks[0];
    tiff.tags[322] = {0};
    EXPECT_FALSE(decodedImage(tiff));
    tiff.tags[322] = {16};
    tiff.tags[323] = {0};
    EXPECT_FALSE(decodedImage(tiff));
}

TEST(TiffVarieties, APaletteThatIsMissingIsRefused) {
    TiffBuilder tiff(1, 1, kPalette, {4});
    tiff.blocks = {{0x10}};
    EXPECT_FALSE(decodedImage(tiff));
}

/// The file with resolutions, whose tags stand behind all of the builder's: the directory is
/// written anew at the end.
Bytes withResolution(unsigned unit, bool hasHorizontal, bool hasVertical) {
    ByteSink out(false);
    out.text("II").u16(42).u32(24);
    out.u32(300).u32(1).u32(150).u32(1);  // at 8 and 16
    const unsigned count =
        9U + (hasHorizontal ? 1U : 0U) + (hasVertical ? 1U : 0U) + (unit != 0 ? 1U : 0U);
    out.u16(count);
    const auto number = [&out](unsigned tag, unsigned value) {
        out.u16(tag).u16(3).u32(1).u16(value).u16(0);
    };
    number(256, 1);
    number(257, 1);
    number(258, 8);
    number(259, 1);
    number(262, kBlackIsZero);
    number(273, 8);  // the picture's one byte: 300 modulo 256
    number(277, 1);
    number(278, 1);
    number(279, 1);
    if (hasHorizontal) out.u16(282).u16(5).u32(1).u32(8);
    if (hasVertical) out.u16(283).u16(5).u32(1).u32(16);
    if (unit != 0) number(296, unit);
    return out.u32(0).bytes;
}

TEST(TiffVarieties, TheResolutionNeedsBothDirectionsAndAUnit) {
    const auto dpi = [](unsigned unit, bool hasHorizontal, bool hasVertical) {
        const auto picture = decodeImage(withResolution(unit, hasHorizontal, hasVertical));
        EXPECT_TRUE(picture) << picture.error().message;
        EXPECT_EQ(pixelAt(picture->image, 0, 0), grey(44));
        return std::pair(numberProperty(picture->properties, kPropertyDpiWidth),
                         numberProperty(picture->properties, kPropertyDpiHeight));
    };
    const std::pair none(-1.0, -1.0);
    EXPECT_EQ(dpi(0, true, true), std::pair(300.0, 150.0)) << "inches unless said otherwise";
    EXPECT_EQ(dpi(2, true, true), std::pair(300.0, 150.0));
    EXPECT_EQ(dpi(3, true, true), std::pair(762.0, 381.0));
    EXPECT_EQ(dpi(1, true, true), none);
    EXPECT_EQ(dpi(2, true, false), none);
    EXPECT_EQ(dpi(2, false, true), none);
    EXPECT_EQ(dpi(2, false, false), none);
}

TEST(TiffVarieties, ADirectoryBeyondTheEndIsRefused) {
    TiffBuilder tiff(1, 1, kBlackIsZero, {8});
    tiff.blocks = {{1}};
    Bytes file = tiff.build();
    file[6] = 0xFF;  // the third byte of the directory's place
    EXPECT_FALSE(decodeImage(file));
}

}  // namespace
}  // namespace skarnel
