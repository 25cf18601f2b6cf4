// The lossless form's header: 0x2F, then from the lowest bit on 14 bits of width - 1, 14 of height
// - 1, one that hints at alpha, 3 of the version.
#include <gtest/gtest.h>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

TEST(WebPReader, AlphaCountsAlsoWhereTheHeaderDoesNotHintAtIt) {
    const CGImage image = randomValidPicture(9, 7, 3);
    Bytes file = *encodeImage(image, kUTTypeWebP);
    // RIFF, size, WEBP, VP8L, size: the header begins at byte 20.
    constexpr std::size_t kHeader = 20;
    constexpr std::uint8_t kHint = 0x10;
    ASSERT_EQ(file[kHeader], 0x2F);
    ASSERT_EQ(file[kHeader + 4] & kHint, kHint);
    file[kHeader + 4] &= static_cast<std::uint8_t>(~kHint);
    const auto decoded = decodeImage(file);
    ASSERT_TRUE(decoded) << decoded.error().message;
    EXPECT_TRUE(samePixels(decoded->image, image));
    EXPECT_EQ(decoded->properties.at(std::string(kPropertyHasAlpha)),
              PropertyValue(std::int64_t{1}));
}

Bytes chunk(std::string_view type, const Bytes& data) {
    return ByteSink(false).text(type).u32(data.size()).raw(data).zeros(data.size() % 2).bytes;
}

ByteSink& put24(ByteSink& out, unsigned value) {
    return out.u16(value & 0xFFFFU).u8(value >> 16);
}

/// A container of a canvas around what our own writer made of a picture. Flags of the header: 2 an
/// animation, 8 EXIF.
Bytes extended(unsigned width, unsigned height, unsigned flags, const std::vector<Bytes>& chunks) {
    ByteSink header(false);
    put24(put24(header.u8(flags).zeros(3), width - 1), height - 1);
    ByteSink body(false);
    body.text("WEBP").raw(chunk("VP8X", header.bytes));
    for (const Bytes& each : chunks) body.raw(each);
    return ByteSink(false).text("RIFF").u32(body.bytes.size()).raw(body.bytes).bytes;
}

/// The picture's own chunk, behind "RIFF", the size and "WEBP".
Bytes pictureChunk(const CGImage& image, double quality = 1) {
    const Bytes file =
        *encodeImage(image, kUTTypeWebP, {{std::string(kPropertyLossyQuality), quality}});
    return Bytes(file.begin() + 12, file.end());
}

/// A frame whose corner lies at (left, top), which are even.
Bytes animationFrame(unsigned left, unsigned top, const CGImage& image) {
    ByteSink frame(false);
    put24(put24(frame, left / 2), top / 2);
    put24(put24(frame, static_cast<unsigned>(image.width() - 1)),
          static_cast<unsigned>(image.height() - 1));
    return chunk("ANMF", put24(frame, 100).u8(0).raw(pictureChunk(image)).bytes);
}

TEST(WebPReader, AFirstFrameThatDoesNotFillTheCanvasLeavesTheRestClear) {
    const Rgba red = {200, 0, 0, 255};
    const CGImage image = picture(1, 1, {red});
    const Bytes animation = chunk("ANIM", Bytes(6, 0));
    const auto decoded = decodeImage(extended(3, 2, 2, {animation, animationFrame(2, 0, image)}));
    ASSERT_TRUE(decoded) << decoded.error().message;
    const Rgba clear = {0, 0, 0, 0};
    EXPECT_EQ(pixelsOf(decoded->image),
              (std::vector<Rgba>{clear, clear, red, clear, clear, clear}));
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyHasAlpha), 1);
    const CGImage wide = picture(3, 1, {red, red, red});
    EXPECT_TRUE(decodeImage(extended(3, 2, 2, {animation, animationFrame(0, 0, wide)})));
    EXPECT_FALSE(decodeImage(extended(3, 2, 2, {animation, animationFrame(2, 0, wide)})))
        << "beyond the canvas";
    EXPECT_FALSE(decodeImage(extended(3, 2, 2, {animation}))) << "no frame";
}

TEST(WebPReader, ABlockOfTheCameraMayHaveTheMarkThatJpegPutsBefore) {
    const CGImage image = picture(2, 1, {{10, 20, 30, 255}, {40, 50, 60, 255}});
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
    Bytes marked = {'E', 'x', 'i', 'f', 0, 0};
    marked.insert(marked.end(), block.begin(), block.end());
    for (const Bytes& exif : {block, marked}) {
        const auto decoded =
            decodeImage(extended(2, 1, 8, {pictureChunk(image), chunk("EXIF", exif)}));
        ASSERT_TRUE(decoded) << decoded.error().message;
        EXPECT_EQ(pixelAt(decoded->image, 0, 0), (Rgba{40, 50, 60, 255}));
    }
    EXPECT_TRUE(decodeImage(extended(2, 1, 8, {pictureChunk(image), chunk("EXIF", {'E', 'x'})})));
}

TEST(WebPReader, OpaquePicturesHaveNoAlphaInEitherForm) {
    const CGImage image = picture(2, 1, {{10, 20, 30, 255}, {40, 50, 60, 255}});
    for (const double quality : {0.5, 1.0}) {
        const auto decoded = decodeImage(extended(2, 1, 0, {pictureChunk(image, quality)}));
        ASSERT_TRUE(decoded) << decoded.error().message;
        EXPECT_EQ(wholeProperty(decoded->properties, kPropertyHasAlpha), 0) << quality;
    }
}

}  // namespace
}  // namespace skarnel
