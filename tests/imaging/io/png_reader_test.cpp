// PNG varieties that our own writer does not make.
#include <gtest/gtest.h>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

std::vector<Rgba> decoded(const Bytes& file) {
    const auto picture = decodeImage(file);
    EXPECT_TRUE(picture) << picture.error().message;
    return picture ? pixelsOf(picture->image) : std::vector<Rgba>();
}

TEST(PngReader, PalettesMayBeTransparent) {
    const Bytes file =
        buildPng(3, 1, 2, 3, {0b00011000},
                 {{"PLTE", {10, 20, 30, 100, 50, 20, 7, 8, 9}}, {"tRNS", {255, 128}}});
    EXPECT_EQ(decoded(file),
              (std::vector<Rgba>{{10, 20, 30, 255}, {50, 25, 10, 128}, {7, 8, 9, 255}}));
}

TEST(PngReader, GreysOfFewBitsMayHaveATransparentValue) {
    EXPECT_EQ(decoded(buildPng(2, 1, 1, 0, {0b01000000})),
              (std::vector<Rgba>{{0, 0, 0, 255}, {255, 255, 255, 255}}));
    EXPECT_EQ(decoded(buildPng(2, 1, 4, 0, {0x1F}, {{"tRNS", {0, 1}}})),
              (std::vector<Rgba>{{0, 0, 0, 0}, {255, 255, 255, 255}}));
}

TEST(PngReader, SixteenBitsAreRounded) {
    // 0x80C0 / 257 = 128.25; 0x8209 / 257 = 129.53.
    EXPECT_EQ(decoded(buildPng(1, 1, 16, 2, {0x80, 0xC0, 0x82, 0x09, 0xFF, 0xFF})),
              (std::vector<Rgba>{{128, 130, 255, 255}}));
    EXPECT_EQ(decoded(buildPng(1, 1, 16, 4, {0xFF, 0xFF, 0, 0})),
              (std::vector<Rgba>{{0, 0, 0, 0}}));
}

TEST(PngReader, GammaAndChromaticitiesDoNotChangePixels) {
    const Bytes gamma = ByteSink(true).u32(100000).bytes;
    const Bytes chromaticities = ByteSink(true)
                                     .u32(31270)
                                     .u32(32900)
                                     .u32(70000)
                                     .u32(30000)
                                     .u32(20000)
                                     .u32(70000)
                                     .u32(15000)
                                     .u32(6000)
                                     .bytes;
    EXPECT_EQ(
        decoded(buildPng(1, 1, 8, 2, {100, 50, 20}, {{"gAMA", gamma}, {"cHRM", chromaticities}})),
        (std::vector<Rgba>{{100, 50, 20, 255}}));
}

TEST(PngReader, AnOrientationAfterThePixelsTurnsThemToo) {
    // One entry: orientation 3, half a turn.
    const Bytes block = ByteSink(true)
                            .text("MM")
                            .u16(42)
                            .u32(8)
                            .u16(1)
                            .u16(0x0112)
                            .u16(3)
                            .u32(1)
                            .u16(3)
                            .u16(0)
                            .u32(0)
                            .bytes;
    const Bytes rows = {10, 20, 30, 40, 50, 60};
    const Bytes early = buildPng(2, 1, 8, 2, rows, {{"eXIf", block}});
    Bytes late = buildPng(2, 1, 8, 2, rows);
    constexpr long kHeadBytes = 33;  // the signature and IHDR
    constexpr long kEndBytes = 12;   // IEND
    const auto chunkBytes = static_cast<long>(early.size() - late.size());
    late.insert(late.end() - kEndBytes, early.begin() + kHeadBytes,
                early.begin() + kHeadBytes + chunkBytes);
    const std::vector<Rgba> turned = {{40, 50, 60, 255}, {10, 20, 30, 255}};
    EXPECT_EQ(decoded(early), turned);
    EXPECT_EQ(decoded(late), turned);
}

TEST(PngReader, ReadsTheResolutionOnlyWhereItsUnitIsKnown) {
    auto dpi = [](unsigned unit) {
        const Bytes chunk = ByteSink(true).u32(11811).u32(3937).u8(unit).bytes;
        const auto picture = decodeImage(buildPng(1, 1, 8, 0, {7}, {{"pHYs", chunk}}));
        return numberProperty(picture->properties, kPropertyDpiWidth);
    };
    EXPECT_NEAR(dpi(1), 300.0, 0.01);
    EXPECT_EQ(dpi(0), -1);
}

TEST(PngReader, DamageIsRefused) {
    Bytes file = buildPng(4, 4, 8, 0, Bytes(16, 9));
    Bytes broken = file;
    broken[file.size() - 20] ^= 1;  // inside the check of the pixels
    EXPECT_FALSE(decodeImage(broken));
    EXPECT_FALSE(decodeImage(ByteView(file).first(file.size() - 12))) << "no end";
    EXPECT_FALSE(decodeImage(buildPng(4, 4, 8, 0, Bytes(12, 9)))) << "a row too few";
}

// Of 2 x 2 pixels the passes are the first pixel, the second of the first row, the second row; each
// row begins with its filter, 0.
TEST(PngReader, InterlacedRowsAreHadAllAtOnceAndMustBeWhole) {
    const auto grey = [](std::uint8_t v) { return Rgba{v, v, v, 255}; };
    EXPECT_EQ(decoded(interlacedPng(2, 2, {0, 1, 0, 2, 0, 3, 4})),
              (std::vector<Rgba>{grey(1), grey(2), grey(3), grey(4)}));
    EXPECT_FALSE(decodeImage(interlacedPng(2, 2, {0, 1, 0, 2})));
    Bytes cutBehindThePixels = interlacedPng(2, 2, {0, 1, 0, 2, 0, 3, 4});
    // A chunk before the end that has to be known, and is not.
    const Bytes data = ByteSink(true).text("NONE").bytes;
    const Bytes chunk =
        ByteSink(true).u32(0).raw(data).u32(crc32(0, data.data(), data.size())).bytes;
    cutBehindThePixels.insert(cutBehindThePixels.end() - 12, chunk.begin(), chunk.end());
    EXPECT_FALSE(decodeImage(cutBehindThePixels));
}

}  // namespace
}  // namespace skarnel
