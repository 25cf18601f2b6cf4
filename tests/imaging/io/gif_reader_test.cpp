// GIF varieties, put together block by block.
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

TEST(GifReader, ReadsTheFirstFrameWithItsTransparentColour) {
    Bytes palette(768, 0);
    palette[3] = 100;
    palette[4] = 50;
    palette[5] = 20;
    Bytes indices(30 * 10, 0);
    indices[0] = 1;
    indices[299] = 1;
    const auto opaque = decoded(buildGif(30, 10, palette, indices));
    ASSERT_EQ(opaque.size(), 300U);
    EXPECT_EQ(opaque[0], (Rgba{100, 50, 20, 255}));
    EXPECT_EQ(opaque[1], (Rgba{0, 0, 0, 255}));
    EXPECT_EQ(opaque[299], (Rgba{100, 50, 20, 255}));
    const auto clear = decoded(buildGif(30, 10, palette, indices, 1));
    EXPECT_EQ(clear[0], (Rgba{0, 0, 0, 0}));
    EXPECT_EQ(clear[1], (Rgba{0, 0, 0, 255}));
}

TEST(GifReader, CutFilesAreRefused) {
    const Bytes file = buildGif(30, 10, Bytes(768, 7), Bytes(300, 5));
    EXPECT_TRUE(decodeImage(file));
    EXPECT_FALSE(decodeImage(ByteView(file).first(file.size() - 60)));
}

/// Indices of two bits as literals of three, a clearing code (4) before each two, so that the codes
/// never grow; the end is 5.
Bytes literals(const Bytes& indices) {
    std::vector<unsigned> codes;
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (i % 2 == 0) codes.push_back(4);
        codes.push_back(indices[i]);
    }
    codes.push_back(5);
    Bytes packed((codes.size() * 3 + 7) / 8);
    for (std::size_t bit = 0; bit < codes.size() * 3; ++bit) {
        if ((codes[bit / 3] >> bit % 3 & 1U) != 0)
            packed[bit / 8] |= static_cast<std::uint8_t>(1U << bit % 8);
    }
    ByteSink out(false);
    return out.u8(2).u8(packed.size()).raw(packed).u8(0).bytes;
}

Bytes oneAndTwo() {
    Bytes indices(2, 1);
    indices[1] = 2;
    return indices;
}

struct Frame {
    unsigned left = 0;
    unsigned top = 0;
    unsigned width = 2;
    unsigned height = 1;
    Bytes indices = oneAndTwo();
    Bytes colors = {};  // of its own: four of three bytes
    bool interlaced = false;

    Bytes build() const {
        ByteSink out(false);
        out.u8(0x2C).u16(left).u16(top).u16(width).u16(height);
        out.u8((colors.empty() ? 0U : 0x81U) | (interlaced ? 0x40U : 0U));
        return out.raw(colors).raw(literals(indices)).bytes;
    }
};

const Bytes kColors = {9, 9, 9, 10, 20, 30, 40, 50, 60, 70, 80, 90};
constexpr Rgba kOne = {10, 20, 30, 255}, kTwo = {40, 50, 60, 255}, kThree = {70, 80, 90, 255},
               kClear = {0, 0, 0, 0};

/// A canvas of a size with colours for all frames, or none, and its blocks.
Bytes gifOf(unsigned width, unsigned height, const Bytes& colors,
            const std::vector<Bytes>& blocks) {
    ByteSink out(false);
    out.text("GIF89a").u16(width).u16(height).u8(colors.empty() ? 0 : 0x81).u8(0).u8(0).raw(colors);
    for (const Bytes& block : blocks) out.raw(block);
    return out.u8(0x3B).bytes;
}

Bytes extension(unsigned kind, const Bytes& data) {
    return ByteSink(false).u8(0x21).u8(kind).u8(data.size()).raw(data).u8(0).bytes;
}

TEST(GifReader, AFramesOwnColoursGoBeforeThoseOfAllFrames) {
    Frame frame;
    EXPECT_EQ(decoded(gifOf(2, 1, kColors, {frame.build()})), (std::vector<Rgba>{kOne, kTwo}));
    frame.colors = {0, 0, 0, 1, 2, 3, 4, 5, 6, 0, 0, 0};
    EXPECT_EQ(decoded(gifOf(2, 1, kColors, {frame.build()})),
              (std::vector<Rgba>{{1, 2, 3, 255}, {4, 5, 6, 255}}));
    EXPECT_EQ(decoded(gifOf(2, 1, {}, {Frame().build()})),
              (std::vector<Rgba>{{0, 0, 0, 255}, {0, 0, 0, 255}}))
        << "no colours anywhere";
}

TEST(GifReader, InterlacedRowsComeEveryEighthThenEveryFourthThenTheRest) {
    // Rows as they are stored: 0 8 | 4 | 2 6 | 1 3 5 7, of 9.
    Frame frame;
    frame.width = 1;
    frame.height = 9;
    frame.interlaced = true;
    frame.indices = {1, 2, 3, 1, 2, 3, 1, 2, 3};
    EXPECT_EQ(decoded(gifOf(1, 9, kColors, {frame.build()})),
              (std::vector<Rgba>{kOne, kThree, kOne, kOne, kThree, kTwo, kTwo, kThree, kTwo}));
}

TEST(GifReader, WhatAFrameDoesNotCoverIsClear) {
    Frame frame;
    frame.left = 1;
    EXPECT_EQ(decoded(gifOf(4, 1, kColors, {frame.build()})),
              (std::vector<Rgba>{kClear, kOne, kTwo, kClear}));
    EXPECT_EQ(decoded(gifOf(2, 2, kColors, {frame.build()})),
              (std::vector<Rgba>{kClear, kOne, kTwo, kClear, kClear, kClear}))
        << "a frame beyond the canvas enlarges it";
}

TEST(GifReader, CommentsAndBrokenControlsChangeNothing) {
    const Bytes frame = Frame().build();
    const std::vector<Rgba> expected = {kOne, kTwo};
    EXPECT_EQ(decoded(gifOf(2, 1, kColors, {extension(0xFE, {'h', 'i'}), frame})), expected);
    EXPECT_EQ(decoded(gifOf(2, 1, kColors, {extension(0xF9, {1, 0, 0}), frame})), expected)
        << "a control of three bytes";
    EXPECT_EQ(decoded(gifOf(2, 1, kColors, {extension(0xF9, {1, 0, 0, 2}), frame})),
              (std::vector<Rgba>{kOne, kClear}));
    EXPECT_EQ(decoded(gifOf(2, 1, kColors, {extension(0xF9, {0, 0, 0, 2}), frame})), expected)
        << "no transparency";
    EXPECT_EQ(decoded(gifOf(2, 1, kColors, {Bytes{0x21, 0xFE, 0}, frame})), expected)
        << "an empty comment";
}

TEST(GifReader, WithoutAFrameOrWithOneOfNoSizeThereIsNoPicture) {
    EXPECT_FALSE(decodeImage(gifOf(2, 1, kColors, {})));
    EXPECT_FALSE(decodeImage(gifOf(2, 1, kColors, {extension(0xFE, {'h', 'i'})})));
    EXPECT_FALSE(decodeImage(gifOf(2, 1, kColors, {Bytes{0x77}}))) << "no block at all";
    Frame flat;
    flat.height = 0;
    EXPECT_FALSE(decodeImage(gifOf(2, 1, kColors, {flat.build()})));
    Frame thin;
    thin.width = 0;
    EXPECT_FALSE(decodeImage(gifOf(2, 1, kColors, {thin.build()})));
}

TEST(GifReader, EveryPrefixIsAnErrorOrTheWholePicture) {
    Frame frame;
    frame.colors = kColors;
    const Bytes file = gifOf(
        2, 1, kColors, {extension(0xFE, {'h', 'i'}), extension(0xF9, {1, 0, 0, 0}), frame.build()});
    const auto whole = decodeImage(file);
    ASSERT_TRUE(whole);
    for (std::size_t size = 0; size < file.size(); ++size) {
        const auto cut = decodeImage(Bytes(file.begin(), file.begin() + static_cast<long>(size)));
        EXPECT_TRUE(!cut || samePixels(cut->image, whole->image)) << size;
    }
}

}  // namespace
}  // namespace skarnel
