// Every variety of TIFF that is read directly, from files built by hand.
#include <gtest/gtest.h>

#include <bit>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

constexpr std::uint32_t kWhiteIsZero = 0, kBlackIsZero = 1, kRgb = 2, kPalette = 3, kInks = 5;

std::vector<Rgba> decoded(const TiffBuilder& builder) {
    const auto picture = decodeImage(builder.build());
    EXPECT_TRUE(picture) << picture.error().message;
    return picture ? pixelsOf(picture->image) : std::vector<Rgba>();
}

Rgba grey(std::uint8_t value) {
    return {value, value, value, 255};
}

TEST(TiffReader, GreysOfFewBitsAreScaledToTheFullRange) {
    TiffBuilder one(3, 1, kBlackIsZero, {1});
    one.blocks = {{0b10100000}};
    EXPECT_EQ(decoded(one), (std::vector<Rgba>{grey(255), grey(0), grey(255)}));
    TiffBuilder two(4, 1, kBlackIsZero, {2});
    two.blocks = {{0b00011011}};
    EXPECT_EQ(decoded(two), (std::vector<Rgba>{grey(0), grey(85), grey(170), grey(255)}));
    TiffBuilder four(2, 1, kBlackIsZero, {4});
    four.blocks = {{0x3F}};
    EXPECT_EQ(decoded(four), (std::vector<Rgba>{grey(51), grey(255)}));
    // 12 bits, three bytes for two samples: 0x800 of 0xFFF is 127.53.
    TiffBuilder twelve(2, 1, kBlackIsZero, {12});
    twelve.blocks = {{0x80, 0x0F, 0xFF}};
    EXPECT_EQ(decoded(twelve), (std::vector<Rgba>{grey(128), grey(255)}));
}

TEST(TiffReader, WhiteIsZeroIsTurnedRound) {
    TiffBuilder tiff(2, 1, kWhiteIsZero, {8});
    tiff.blocks = {{0, 200}};
    EXPECT_EQ(decoded(tiff), (std::vector<Rgba>{grey(255), grey(55)}));
}

TEST(TiffReader, SixteenAndThirtyTwoBitsAreRoundedInBothByteOrders) {
    for (const bool big : {false, true}) {
        TiffBuilder sixteen(2, 1, kBlackIsZero, {16});
        sixteen.bigEndian = big;
        // 0x80C0 / 257 = 128.25; 0x8181 = 129 * 257 + 136 -> 129.53.
        sixteen.blocks = {ByteSink(big).u16(0x80C0).u16(0x8209).bytes};
        EXPECT_EQ(decoded(sixteen), (std::vector<Rgba>{grey(128), grey(130)}));
        TiffBuilder thirtyTwo(2, 1, kBlackIsZero, {32});
        thirtyTwo.bigEndian = big;
        thirtyTwo.blocks = {ByteSink(big).u32(0xFFFFFFFF).u32(0x40404040).bytes};
        EXPECT_EQ(decoded(thirtyTwo), (std::vector<Rgba>{grey(255), grey(64)}));
    }
}

TEST(TiffReader, FloatsAreTakenFromZeroToOne) {
    TiffBuilder tiff(4, 1, kBlackIsZero, {32});
    tiff.tags[339] = {3};
    ByteSink samples(false);
    for (const float value : {0.5F, 7.0F, -1.0F, std::bit_cast<float>(0x7FC00000U)}) {
        samples.u32(std::bit_cast<std::uint32_t>(value));
    }
    tiff.blocks = {samples.bytes};
    EXPECT_EQ(decoded(tiff), (std::vector<Rgba>{grey(128), grey(255), grey(0), grey(0)}));
}

TEST(TiffReader, PalettesOfSixteenAndOfEightBitsGiveTheSameColours) {
    for (const std::uint32_t scale : {257U, 1U}) {
        TiffBuilder tiff(2, 1, kPalette, {4});
        std::vector<std::uint32_t> map(48, 0);
        map[2] = 10 * scale;       // red of colour 2
        map[16 + 2] = 20 * scale;  // green
        map[32 + 2] = 255 * scale;
        tiff.tags[320] = map;
        tiff.blocks = {{0x20}};
        EXPECT_EQ(decoded(tiff), (std::vector<Rgba>{{10, 20, 255, 255}, {0, 0, 0, 255}})) << scale;
    }
}

TEST(TiffReader, ColoursMayBeInterleavedOrInPlanesInStripsOrTiles) {
    // 3 x 2 pixels whose samples tell their place: 10 x + 100 y + channel.
    auto sample = [](int x, int y, int c) {
        return static_cast<std::uint8_t>(10 * x + 100 * y + c);
    };
    std::vector<Rgba> expected;
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x)
            expected.push_back({sample(x, y, 0), sample(x, y, 1), sample(x, y, 2), 255});
    }
    for (const bool planes : {false, true}) {
        for (const bool tiles : {false, true}) {
            TiffBuilder tiff(3, 2, kRgb, {8, 8, 8});
            tiff.tags[284] = {planes ? 2U : 1U};
            tiff.tags[278] = {1};
            if (tiles) tiff.tags[322] = tiff.tags[323] = {16};
            for (int plane = 0; plane < (planes ? 3 : 1); ++plane) {
                Bytes tile;
                for (int y = 0; y < (tiles ? 16 : 2); ++y) {
                    Bytes row;
                    for (int x = 0; x < (tiles ? 16 : 3); ++x) {
                        for (int c = 0; c < (planes ? 1 : 3); ++c) {
                            row.push_back(x < 3 && y < 2 ? sample(x, y, planes ? plane : c) : 99);
                        }
                    }
                    if (tiles)
                        tile.insert(tile.end(), row.begin(), row.end());
                    else
                        tiff.blocks.push_back(row);
                }
                if (tiles) tiff.blocks.push_back(tile);
            }
            EXPECT_EQ(decoded(tiff), expected) << planes << tiles;
        }
    }
}

TEST(TiffReader, PicturesInOneLargeStripAreReadRowByRow) {
    // 5 MB in one strip, above the size that is read at once.
    constexpr int kWidth = 1300, kHeight = 1300;
    TiffBuilder tiff(kWidth, kHeight, kRgb, {8, 8, 8});
    Bytes strip(3 * kWidth * kHeight);
    for (std::size_t i = 0; i < strip.size(); ++i)
        strip[i] = static_cast<std::uint8_t>(i * 7 + i / 3900);
    tiff.blocks = {strip};
    const auto picture = decodeImage(tiff.build());
    ASSERT_TRUE(picture) << picture.error().message;
    for (const std::size_t at : {std::size_t{0}, std::size_t{1299}, std::size_t{1300 * 700 + 11},
                                 std::size_t{1300 * 1300 - 1}}) {
        EXPECT_EQ(
            pixelAt(picture->image, static_cast<int>(at % kWidth), static_cast<int>(at / kWidth)),
            (Rgba{strip[3 * at], strip[3 * at + 1], strip[3 * at + 2], 255}));
    }
}

TEST(TiffReader, AlphaCountsAsItsTagSays) {
    auto with = [](std::vector<std::uint32_t> extra) {
        TiffBuilder tiff(1, 1, kRgb, {8, 8, 8, 8});
        if (!extra.empty()) tiff.tags[338] = extra;
        tiff.blocks = {{100, 50, 20, 128}};
        return decoded(tiff).at(0);
    };
    EXPECT_EQ(with({1}), (Rgba{100, 50, 20, 128}));  // multiplied already
    // 100 * 128 / 255 = 50.2, 50 * 128 / 255 = 25.1, 20 * 128 / 255 = 10.04.
    EXPECT_EQ(with({2}), (Rgba{50, 25, 10, 128}));
    EXPECT_EQ(with({0}), (Rgba{100, 50, 20, 255}));  // of unstated meaning: no transparency
    EXPECT_EQ(with({}), (Rgba{100, 50, 20, 255}));
}

TEST(TiffReader, GreyMayHaveAlpha) {
    TiffBuilder tiff(1, 1, kBlackIsZero, {8, 8});
    tiff.tags[338] = {2};
    tiff.blocks = {{100, 128}};
    EXPECT_EQ(decoded(tiff), (std::vector<Rgba>{{50, 50, 50, 128}}));
}

TEST(TiffReader, InksWithoutAProfileLookLikePrint) {
    TiffBuilder tiff(6, 1, kInks, {8, 8, 8, 8});
    tiff.blocks = {
        {0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 0, 0, 0, 0, 255, 255, 255, 255, 255}};
    const auto pixels = decoded(tiff);
    ASSERT_EQ(pixels.size(), 6U);
    for (std::size_t k = 0; k < 3; ++k) EXPECT_GE(pixels[0][k], 253) << "paper is white";
    EXPECT_LT(pixels[1][0], 80);  // cyan
    EXPECT_GT(pixels[1][2], 180);
    EXPECT_GT(pixels[2][0], 180);  // magenta
    EXPECT_LT(pixels[2][1], 80);
    EXPECT_GT(pixels[3][1], 200);  // yellow
    EXPECT_LT(pixels[3][2], 80);
    EXPECT_LT(pixels[4][0], 60);  // black
    for (std::size_t k = 0; k < 3; ++k) EXPECT_LE(pixels[5][k], 6) << "all inks are black";
}

TEST(TiffReader, InksMayHaveAlpha) {
    TiffBuilder tiff(2, 1, kInks, {8, 8, 8, 8, 8});
    tiff.tags[338] = {2};
    tiff.blocks = {{0, 0, 0, 0, 0, 0, 0, 0, 0, 255}};
    const auto pixels = decoded(tiff);
    EXPECT_EQ(pixels.at(0), (Rgba{0, 0, 0, 0}));
    EXPECT_EQ(pixels.at(1)[3], 255);
    EXPECT_GE(pixels.at(1)[0], 253);
}

TEST(TiffReader, BigTiffIsRead) {
    TiffBuilder tiff(2, 1, kBlackIsZero, {8});
    tiff.bigTiff = true;
    tiff.blocks = {{7, 9}};
    EXPECT_EQ(decoded(tiff), (std::vector<Rgba>{grey(7), grey(9)}));
}

TEST(TiffReader, AllEightOrientationsStandUpright) {
    // Stored as   1 2 3    and shown as EXIF has it.
    //             4 5 6
    const std::vector<std::vector<std::uint8_t>> shown = {
        {1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}, {6, 5, 4, 3, 2, 1}, {4, 5, 6, 1, 2, 3},
        {1, 4, 2, 5, 3, 6}, {4, 1, 5, 2, 6, 3}, {6, 3, 5, 2, 4, 1}, {3, 6, 2, 5, 1, 4}};
    for (std::uint32_t orientation = 1; orientation <= 8; ++orientation) {
        TiffBuilder tiff(3, 2, kBlackIsZero, {8});
        tiff.tags[274] = {orientation};
        tiff.blocks = {{1, 2, 3, 4, 5, 6}};
        const auto picture = decodeImage(tiff.build());
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->image.width(), orientation < 5 ? 3 : 2) << orientation;
        std::vector<std::uint8_t> is;
        for (const Rgba& pixel : pixelsOf(picture->image)) is.push_back(pixel[0]);
        EXPECT_EQ(is, shown[orientation - 1]) << orientation;
        EXPECT_EQ(wholeProperty(picture->properties, kPropertyOrientation), orientation);
        EXPECT_EQ(wholeProperty(picture->properties, kPropertyPixelWidth), 3);
    }
    TiffBuilder strange(3, 2, kBlackIsZero, {8});
    strange.tags[274] = {9};
    strange.blocks = {{1, 2, 3, 4, 5, 6}};
    EXPECT_EQ(decoded(strange).at(0), grey(1));
}

TEST(TiffReader, DescribesWhatItRead) {
    TiffBuilder tiff(1, 1, kInks, {8, 8, 8, 8});
    tiff.blocks = {{0, 0, 0, 0}};
    const auto picture = decodeImage(tiff.build());
    EXPECT_EQ(textProperty(picture->properties, kPropertyColorModel), "CMYK");
    TiffBuilder deep(1, 1, kBlackIsZero, {16});
    deep.blocks = {{0, 0}};
    const auto second = decodeImage(deep.build());
    EXPECT_EQ(textProperty(second->properties, kPropertyColorModel), "Gray");
    EXPECT_EQ(wholeProperty(second->properties, kPropertyDepth), 16);
    EXPECT_EQ(wholeProperty(second->properties, kPropertyHasAlpha), 0);
}

TEST(TiffReader, AShortStripIsDamage) {
    for (const std::uint32_t compression : {1U, 8U}) {
        TiffBuilder tiff(40, 40, kBlackIsZero, {8});
        tiff.tags[259] = {compression};
        tiff.blocks = {compression == 1 ? Bytes(300, 7) : zlibBytes(Bytes(1599, 7))};
        const auto picture = decodeImage(tiff.build());
        ASSERT_FALSE(picture) << compression;
        EXPECT_EQ(picture.error().code, ErrorCode::Damaged);
        tiff.blocks = {compression == 1 ? Bytes(1600, 7) : zlibBytes(Bytes(1600, 7))};
        EXPECT_TRUE(decodeImage(tiff.build())) << compression;
    }
}

}  // namespace
}  // namespace skarnel
