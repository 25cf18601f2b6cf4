// JPEG 2000 varieties that our own writer does not make.
#include <gtest/gtest.h>

#include "imaging/io/jp2_files.h"
#include "imaging/io/pictures.h"
#include "imaging/io/readers.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

std::vector<Rgba> decoded(const Bytes& file) {
    const auto picture = decodeImage(file);
    EXPECT_TRUE(picture) << picture.error().message;
    return picture ? pixelsOf(picture->image) : std::vector<Rgba>();
}

constexpr unsigned kSrgb = 16, kGray = 17, kSycc = 18, kCmyk = 12, kUnstated = 0;

TEST(Jp2Reader, ABareCodeStreamOfOneComponentIsGrey) {
    const Bytes file = codeStreamOf(2, 1, {{{7, 200}}});
    EXPECT_EQ(decoded(file), (std::vector<Rgba>{{7, 7, 7, 255}, {200, 200, 200, 255}}));
    EXPECT_EQ(textProperty(decodeImage(file)->properties, kPropertyColorModel), "Gray");
}

TEST(Jp2Reader, ASecondOrFourthComponentThatNothingIsSaidOfIsAlpha) {
    // 100 * 128 / 255 = 50.2.
    EXPECT_EQ(decoded(codeStreamOf(1, 1, {{{100}}, {{128}}})),
              (std::vector<Rgba>{{50, 50, 50, 128}}));
    EXPECT_EQ(decoded(codeStreamOf(1, 1, {{{100}}, {{50}}, {{20}}, {{128}}})),
              (std::vector<Rgba>{{50, 25, 10, 128}}));
}

TEST(Jp2Reader, DefinedAlphaMayBeMultipliedInAlready) {
    const Bytes stream = codeStreamOf(1, 1, {{{100}}, {{50}}, {{20}}, {{128}}});
    const auto with = [&](unsigned alpha) {
        return decoded(jp2FileOf(1, 1, 4, kSrgb, stream, {channelDefinitions({0, 0, 0, alpha})}));
    };
    EXPECT_EQ(with(1), (std::vector<Rgba>{{50, 25, 10, 128}}));
    EXPECT_EQ(with(2), (std::vector<Rgba>{{100, 50, 20, 128}}));
}

TEST(Jp2Reader, AlphaMayStandBeforeTheColoursThatItLeavesOver) {
    // Of two components the first is alpha: the other cannot be told from it, and is passed over.
    const Bytes stream = codeStreamOf(1, 1, {{{128}}, {{100}}});
    const Bytes definitions =
        jp2Box("cdef", ByteSink(true).u16(2).u16(0).u16(1).u16(0).u16(1).u16(0).u16(1).bytes);
    const auto picture = decodeImage(jp2FileOf(1, 1, 2, kGray, stream, {definitions}));
    ASSERT_TRUE(picture) << picture.error().message;
    EXPECT_EQ(wholeProperty(picture->properties, kPropertyHasAlpha), 1);
}

TEST(Jp2Reader, DepthsAndSignsAreScaledToBytes) {
    // 12 bits: 2048 * 255 / 4095 = 127.5. Signed: -128 is black, 127 white.
    EXPECT_EQ(decoded(codeStreamOf(2, 1, {{{2048, 4095}, 12}})),
              (std::vector<Rgba>{{128, 128, 128, 255}, {255, 255, 255, 255}}));
    EXPECT_EQ(decoded(codeStreamOf(3, 1, {{{-128, 0, 127}, 8, true}})),
              (std::vector<Rgba>{{0, 0, 0, 255}, {128, 128, 128, 255}, {255, 255, 255, 255}}));
}

TEST(Jp2Reader, LumaAndChromaBecomeColours) {
    // ITU-R BT.601: R = Y + 1.402 * 40 = 156.1, B = Y + 1.772 * 20 = 135.4,
    // G = Y - 0.344136 * 20 - 0.714136 * 40 = 64.6.
    const Bytes stream = codeStreamOf(1, 1, {{{100}}, {{148}}, {{168}}});
    EXPECT_EQ(decoded(jp2FileOf(1, 1, 3, kSycc, stream)), (std::vector<Rgba>{{156, 65, 135, 255}}));
    EXPECT_EQ(decoded(jp2FileOf(1, 1, 3, kSrgb, stream)),
              (std::vector<Rgba>{{100, 148, 168, 255}}));
}

TEST(Jp2Reader, SubsampledComponentsAreSpreadAndTakenForChromaUnlessTheFileSaysSrgb) {
    const std::vector<Rgba> ycc = {{156, 65, 135, 255}, {156, 65, 135, 255}};
    const JpComponent luma{{100, 100}};
    // Half as many columns, then half as many rows.
    const Bytes columns = codeStreamOf(2, 1, {luma, {{148}, 8, false, 2}, {{168}, 8, false, 2}});
    const Bytes rows = codeStreamOf(1, 2, {luma, {{148}, 8, false, 1, 2}, {{168}, 8, false, 1, 2}});
    EXPECT_EQ(decoded(jp2FileOf(2, 1, 3, kUnstated, columns)), ycc);
    EXPECT_EQ(decoded(columns), ycc);
    EXPECT_EQ(decoded(rows), ycc);
    EXPECT_EQ(decoded(jp2FileOf(2, 1, 3, kSrgb, columns)),
              (std::vector<Rgba>{{100, 148, 168, 255}, {100, 148, 168, 255}}));
}

TEST(Jp2Reader, ThePictureMayBeginAnywhereOnTheGrid) {
    EXPECT_EQ(decoded(codeStreamOf(2, 2, {{{1, 2, 3, 4}}}, 5, 3)),
              (std::vector<Rgba>{{1, 1, 1, 255}, {2, 2, 2, 255}, {3, 3, 3, 255}, {4, 4, 4, 255}}));
}

TEST(Jp2Reader, InksLookLikePrintWithAndWithoutAlpha) {
    const JpComponent none{{0, 0}}, cyan{{0, 255}};
    const auto pixels =
        decoded(jp2FileOf(2, 1, 4, kCmyk, codeStreamOf(2, 1, {cyan, none, none, none})));
    ASSERT_EQ(pixels.size(), 2U);
    EXPECT_GE(pixels[0][0], 253) << "paper";
    EXPECT_LT(pixels[1][0], 80) << "cyan";
    EXPECT_GT(pixels[1][2], 180);
    const Bytes file =
        jp2FileOf(2, 1, 5, kCmyk, codeStreamOf(2, 1, {none, none, none, none, {{0, 255}}}),
                  {channelDefinitions({0, 0, 0, 0, 1})});
    const auto clear = decoded(file);
    EXPECT_EQ(clear.at(0), (Rgba{0, 0, 0, 0}));
    EXPECT_EQ(clear.at(1)[3], 255);
    EXPECT_GE(clear.at(1)[0], 253);
    EXPECT_EQ(textProperty(decodeImage(file)->properties, kPropertyColorModel), "CMYK");
}

TEST(Jp2Reader, FewerThanFourComponentsAreNoInks) {
    const Bytes file = jp2FileOf(1, 1, 3, kCmyk, codeStreamOf(1, 1, {{{1}}, {{2}}, {{3}}}));
    EXPECT_EQ(decoded(file), (std::vector<Rgba>{{1, 2, 3, 255}}));
}

TEST(Jp2Reader, MoreComponentsThanAPictureHasAreRefused) {
    const auto picture = decodeImage(codeStreamOf(1, 1, std::vector<JpComponent>(6, {{1}})));
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.error().code, ErrorCode::Unsupported);
}

/// A palette of one colour of `bits`, over a picture of one component.
Bytes paletted(unsigned bits) {
    ByteSink palette(true);
    palette.u16(1).u8(3);
    for (int i = 0; i < 3; ++i) palette.u8(bits - 1);
    const std::size_t entryBytes = (bits + 7) / 8;
    for (unsigned i = 1; i <= 3; ++i) palette.zeros(entryBytes - 1).u8(10 * i);
    ByteSink map(true);
    for (unsigned i = 0; i < 3; ++i) map.u16(0).u8(1).u8(i);
    return jp2FileOf(1, 1, 1, kSrgb, codeStreamOf(1, 1, {{{0}}}),
                     {jp2Box("pclr", palette.bytes), jp2Box("cmap", map.bytes)});
}

TEST(Jp2Reader, PalettesNameColours) {
    EXPECT_EQ(decoded(paletted(8)), (std::vector<Rgba>{{10, 20, 30, 255}}));
}

TEST(Jp2Reader, APaletteDeeperThanNumbersIsRefused) {
    EXPECT_FALSE(decodeImage(paletted(32)));
}

TEST(Jp2Reader, AComponentWithoutSamplesIsRefused) {
    // Sampled every 255 pixels, none of which lies within the picture: from 1 to 3 of the grid.
    Bytes stream = codeStreamOf(2, 1, {{{1, 2}}, {{1, 2}}, {{1, 2}}}, 1, 0);
    constexpr std::size_t kLastSampling = 42 + 2 * 3 + 1;  // of the third component, in SIZ
    ASSERT_EQ(stream[kLastSampling], 1);
    stream[kLastSampling] = 255;
    EXPECT_FALSE(decodeImage(stream));
}

TEST(Jp2Reader, BoxesOfOtherKindsArePassedOverAndMustBeWhole) {
    const Bytes stream = codeStreamOf(1, 1, {{{7}}});
    const std::vector<Rgba> expected = {{7, 7, 7, 255}};
    // Longer than what the library reads ahead, so that the rest is skipped in the file.
    const Bytes large = jp2Box("free", Bytes(std::size_t{3} << 20));
    EXPECT_EQ(decoded(jp2FileOf(1, 1, 1, kGray, stream, {}, {large})), expected);
    Bytes cut = jp2FileOf(1, 1, 1, kGray, stream, {}, {jp2Box("free", Bytes(9))});
    const std::size_t tail = jp2Box("jp2c", stream).size() + 9 + 8;
    cut.resize(cut.size() - tail + 12);  // the box's head and four of its nine bytes
    EXPECT_FALSE(decodeImage(cut));
}

TEST(Jp2Reader, MorePixelsThanAllowedAreRefused) {
    const auto picture = decodeImage(codeStreamOf(2, 1, {{{1, 2}}}), {1});
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.error().code, ErrorCode::TooLarge);
}

TEST(Jp2Reader, BytesTooFewForAnyFileAreRefused) {
    for (const Bytes& bytes : {Bytes{}, Bytes{0xFF}, Bytes{0xFF, 0x4F}, Bytes{0xFF, 0x51}}) {
        const auto picture = io::readJpeg2000(bytes, {});
        ASSERT_FALSE(picture);
        EXPECT_EQ(picture.error().code, ErrorCode::Damaged);
    }
}

}  // namespace
}  // namespace skarnel
