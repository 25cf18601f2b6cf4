// The BMP reader on files built by hand.
#include <gtest/gtest.h>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

std::vector<Rgba> decoded(const BmpBuilder& builder) {
    const auto picture = decodeImage(builder.build());
    EXPECT_TRUE(picture) << picture.error().message;
    return picture ? pixelsOf(picture->image) : std::vector<Rgba>();
}

// Blue, green, red, unused: colours 0 to 3.
const Bytes kPalette = {10, 20, 30, 0, 40, 50, 60, 0, 70, 80, 90, 0, 1, 2, 3, 0};
constexpr Rgba kColor0 = {30, 20, 10, 255}, kColor1 = {60, 50, 40, 255},
               kColor2 = {90, 80, 70, 255}, kColor3 = {3, 2, 1, 255}, kBlack = {0, 0, 0, 255};

BmpBuilder paletted(std::uint16_t bits, int width, int height, Bytes pixels) {
    BmpBuilder bmp;
    bmp.bits = bits;
    bmp.width = width;
    bmp.height = height;
    bmp.palette = kPalette;
    bmp.colors = bits == 1 ? 2 : 4;
    if (bits == 1) bmp.palette.resize(8);
    bmp.pixels = std::move(pixels);
    return bmp;
}

TEST(BmpReader, RowsRunFromTheBottomUnlessTheHeightIsNegative) {
    BmpBuilder bmp = paletted(8, 1, 2, {0, 0, 0, 0, 1, 0, 0, 0});
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{kColor1, kColor0}));
    bmp.height = -2;
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{kColor0, kColor1}));
}

TEST(BmpReader, IndicesOfOneFourAndEightBitsNameColours) {
    EXPECT_EQ(decoded(paletted(1, 3, 1, {0b01000000, 0, 0, 0})),
              (std::vector<Rgba>{kColor0, kColor1, kColor0}));
    EXPECT_EQ(decoded(paletted(4, 3, 1, {0x12, 0x30, 0, 0})),
              (std::vector<Rgba>{kColor1, kColor2, kColor3}));
    EXPECT_EQ(decoded(paletted(8, 2, 1, {3, 200, 0, 0})), (std::vector<Rgba>{kColor3, kBlack}));
}

TEST(BmpReader, TheOldHeaderHasThreeBytesAColour) {
    BmpBuilder bmp = paletted(1, 2, 1, {0b01000000, 0, 0, 0});
    bmp.headerBytes = 12;
    bmp.palette = {10, 20, 30, 40, 50, 60};
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{kColor0, kColor1}));
}

TEST(BmpReader, TwentyFourAndThirtyTwoBitsHoldBlueFirst) {
    BmpBuilder bmp;
    bmp.pixels = {1, 2, 3, 0};
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{{3, 2, 1, 255}}));
    bmp.bits = 32;
    bmp.pixels = {1, 2, 3, 0};
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{{3, 2, 1, 255}})) << "the fourth byte is padding";
}

TEST(BmpReader, SixteenBitsAreFiveEachUnlessMasksSayOtherwise) {
    BmpBuilder bmp;
    bmp.bits = 16;
    bmp.pixels = ByteSink(false).u16(0x7C00 | 16 << 5).u16(0).bytes;
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{{255, 132, 0, 255}}));  // 16 * 255 / 31 = 131.6
    bmp.compression = 3;
    bmp.masks = {0xF800, 0x07E0, 0x001F};
    bmp.pixels = ByteSink(false).u16(0xF800 | 32 << 5).u16(0).bytes;
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{{255, 130, 0, 255}}));  // 32 * 255 / 63 = 129.5
}

TEST(BmpReader, ALongHeaderMayHaveAlpha) {
    BmpBuilder bmp;
    bmp.headerBytes = 108;
    bmp.bits = 32;
    bmp.compression = 3;
    bmp.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    bmp.pixels = {20, 50, 100, 128};
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{{50, 25, 10, 128}}));
    bmp.headerBytes = 56;
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{{50, 25, 10, 128}}));
    bmp.masks[3] = 0;
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{{100, 50, 20, 255}}));
}

TEST(BmpReader, MasksWithGapsAreRefused) {
    BmpBuilder bmp;
    bmp.bits = 32;
    bmp.compression = 3;
    bmp.masks = {0xF0F000, 0xFF00, 0xFF};
    bmp.pixels = {1, 2, 3, 4};
    EXPECT_FALSE(decodeImage(bmp.build()));
}

TEST(BmpReader, RunsLiteralsMovesAndEndsBuildThePicture) {
    BmpBuilder bmp =
        paletted(8, 4, 3, {2, 1, 1, 2, 0, 0,          // 1 1 2 . , end of row
                           0, 3, 3, 2, 1, 0, 0, 0,    // 3 2 1 . as literals, padded
                           0, 2, 1, 0, 1, 3, 0, 1});  // one to the right, 3, end of the picture
    bmp.compression = 1;
    EXPECT_EQ(decoded(bmp),
              (std::vector<Rgba>{kColor0, kColor3, kColor0, kColor0, kColor3, kColor2, kColor1,
                                 kColor0, kColor1, kColor1, kColor2, kColor0}));
}

TEST(BmpReader, RunsOfFourBitsAlternateTwoColours) {
    BmpBuilder bmp = paletted(4, 5, 1, {3, 0x12, 0, 3, 0x30, 0x20, 0, 1});
    bmp.compression = 2;
    // The literal's third pixel lies outside the row.
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{kColor1, kColor2, kColor1, kColor3, kColor0}));
}

TEST(BmpReader, RunsBeyondTheRowOrThePictureAreCutOff) {
    BmpBuilder bmp = paletted(8, 2, 1, {9, 1, 0, 0, 9, 2, 0, 2, 255, 255, 1, 3, 0, 1});
    bmp.compression = 1;
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{kColor1, kColor1}));
}

TEST(BmpReader, MillionsOfMovesWithinARowLeadNowhere) {
    // 255 columns a move: 8,421,505 of them pass 2^31, after which a column would be negative.
    constexpr std::size_t kMoves = 8'421'600;
    const Bytes move = {0, 2, 255, 0};
    Bytes runs(4 * kMoves);
    for (std::size_t i = 0; i < runs.size(); ++i) runs[i] = move[i % 4];
    runs.insert(runs.end(), {1, 1, 0, 1});  // one pixel of colour 1, the end
    BmpBuilder bmp = paletted(8, 2, 1, std::move(runs));
    bmp.compression = 1;
    EXPECT_EQ(decoded(bmp), (std::vector<Rgba>{kColor0, kColor0}));
}

TEST(BmpReader, RunsWithoutAnEndAreDamage) {
    BmpBuilder bmp = paletted(8, 4, 3, {2, 1, 0, 0});
    bmp.compression = 1;
    EXPECT_FALSE(decodeImage(bmp.build()));
}

TEST(BmpReader, RefusesImpossibleHeaders) {
    struct Row {
        const char* name;
        void (*change)(BmpBuilder&);
    };
    for (const Row& row : {Row{"no width", [](BmpBuilder& b) { b.width = 0; }},
                           Row{"negative width", [](BmpBuilder& b) { b.width = -1; }},
                           Row{"no height", [](BmpBuilder& b) { b.height = 0; }},
                           Row{"least height", [](BmpBuilder& b) { b.height = INT32_MIN; }},
                           Row{"two bits", [](BmpBuilder& b) { b.bits = 2; }},
                           Row{"no bits", [](BmpBuilder& b) { b.bits = 0; }},
                           Row{"runs of 24 bits", [](BmpBuilder& b) { b.compression = 1; }},
                           Row{"a JPEG inside", [](BmpBuilder& b) { b.compression = 4; }},
                           Row{"a larger palette than indices",
                               [](BmpBuilder& b) {
                                   b.bits = 8;
                                   b.colors = 257;
                               }},
                           Row{"more rows than bytes", [](BmpBuilder& b) { b.height = 2; }},
                           Row{"header of 13", [](BmpBuilder& b) { b.headerBytes = 13; }},
                           Row{"header of 125", [](BmpBuilder& b) { b.headerBytes = 125; }}}) {
        BmpBuilder bmp;
        bmp.pixels = {1, 2, 3, 0};
        row.change(bmp);
        EXPECT_FALSE(decodeImage(bmp.build())) << row.name;
    }
}

TEST(BmpReader, APaletteThatTheFileCutsOffIsBlackFromThereOn) {
    // The place of the pixels is not stated, so that the palette may be of any length; the last
    // colour lacks a byte.
    BmpBuilder bmp = paletted(8, 2, 1, {1, 0});
    bmp.palette.clear();
    Bytes file = bmp.build();
    std::fill_n(file.begin() + 10, 4, std::uint8_t{0});
    // Colour 0 is the pixels themselves and what follows them: blue 1, green 0, red 9.
    file.insert(file.end(), {9, 0, 5});
    const auto picture = decodeImage(file);
    ASSERT_TRUE(picture) << picture.error().message;
    EXPECT_EQ(pixelsOf(picture->image), (std::vector<Rgba>{kBlack, {9, 0, 1, 255}}));
}

TEST(BmpReader, HeadersOfOs2MayEndAfterAnyField) {
    for (const std::uint32_t size : {16U, 20U, 24U, 32U, 36U, 64U}) {
        ByteSink out(false);
        out.text("BM").u32(0).u32(0).u32(14 + size);
        out.u32(size).u32(1).u32(1).u16(1).u16(24).zeros(size - 16);
        out.raw({1, 2, 3, 0});
        const auto picture = decodeImage(out.bytes);
        ASSERT_TRUE(picture) << size;
        EXPECT_EQ(pixelsOf(picture->image), (std::vector<Rgba>{{3, 2, 1, 255}})) << size;
    }
    // Compression 3 is a code of its own there.
    ByteSink out(false);
    out.text("BM").u32(0).u32(0).u32(14 + 64);
    out.u32(64).u32(1).u32(1).u16(1).u16(1).u32(3).zeros(44).raw({0x80, 0, 0, 0});
    const auto picture = decodeImage(out.bytes);
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.error().code, ErrorCode::Unsupported);
}

}  // namespace
}  // namespace skarnel
