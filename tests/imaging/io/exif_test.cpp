// What a camera wrote: read, applied, and carried into the files that are written.
#include "imaging/io/exif.h"

#include <gtest/gtest.h>

#include <chrono>

#include "imaging/io/exif_block.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

/// A big-endian block: maker "Cam", orientation, 240 dots an inch, and below it the exposure time
/// 1/125, a maker's note and the stored width.
Bytes cameraBlock(unsigned orientation) {
    ByteSink out(true);
    out.text("MM").u16(42).u32(8).u16(6);
    out.u16(0x010F).u16(2).u32(4).text("Cam").u8(0);
    out.u16(0x0112).u16(3).u32(1).u16(orientation).u16(0);
    out.u16(0x011A).u16(5).u32(1).u32(86);
    out.u16(0x011B).u16(5).u32(1).u32(86);
    out.u16(0x0128).u16(3).u32(1).u16(2).u16(0);
    out.u16(0x8769).u16(4).u32(1).u32(94);
    out.u32(0);
    out.u32(240).u32(1);  // at 86
    out.u16(3);           // at 94
    out.u16(0x829A).u16(5).u32(1).u32(136);
    out.u16(0x927C).u16(7).u32(4).text("note");
    out.u16(0xA002).u16(4).u32(1).u32(4000);
    out.u32(0);
    return out.u32(1).u32(125).bytes;  // at 136
}

Bytes jpegWith(const Bytes& block, const CGImage& image) {
    Bytes file = *encodeImage(image, kUTTypeJPEG, {{std::string(kPropertyLossyQuality), 1.0}});
    ByteSink marker(true);
    marker.u16(0xFFE1).u16(2 + 6 + block.size()).text(std::string_view("Exif\0\0", 6)).raw(block);
    // In place of the JFIF marker (18 bytes), as cameras write it.
    file.erase(file.begin() + 2, file.begin() + 20);
    file.insert(file.begin() + 2, marker.bytes.begin(), marker.bytes.end());
    return file;
}

CGImage twoHalves() {
    // 32 x 16: left half black, right half white.
    std::vector<Rgba> pixels;
    for (int i = 0; i < 32 * 16; ++i) {
        const std::uint8_t v = i % 32 < 16 ? 0 : 255;
        pixels.push_back({v, v, v, 255});
    }
    return picture(32, 16, pixels);
}

TEST(Exif, BecomesEntriesOfTheDictionary) {
    ImageProperties properties;
    const io::ExifFacts facts = io::readExif(cameraBlock(6), properties);
    EXPECT_EQ(facts.orientation, 6);
    EXPECT_EQ(facts.dpiHorizontal, 240.0);
    EXPECT_EQ(textProperty(properties, "{TIFF}.Make"), "Cam");
    EXPECT_DOUBLE_EQ(numberProperty(properties, "{Exif}.ExposureTime"), 1.0 / 125);
    EXPECT_EQ(wholeProperty(properties, "{Exif}.PixelXDimension"), 4000);
    EXPECT_EQ(std::get<Bytes>(properties.find(kPropertyExifBlock)->second), cameraBlock(6));
}

TEST(Exif, OfNoUseAddsNothing) {
    for (const Bytes& block : {Bytes{}, Bytes{'I', 'I', 42, 0}, Bytes(100, 0), Bytes(100, 0xFF)}) {
        ImageProperties properties;
        EXPECT_EQ(io::readExif(block, properties).orientation, 1);
        EXPECT_TRUE(properties.empty());
    }
}

TEST(Exif, OfAJpegTurnsItUpright) {
    const auto decoded = decodeImage(jpegWith(cameraBlock(6), twoHalves()));
    ASSERT_TRUE(decoded) << decoded.error().message;
    // A quarter clockwise: the left half comes to lie on top.
    ASSERT_EQ(decoded->image.width(), 16);
    ASSERT_EQ(decoded->image.height(), 32);
    EXPECT_LT(pixelAt(decoded->image, 8, 4)[0], 10);
    EXPECT_GT(pixelAt(decoded->image, 8, 28)[0], 245);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyOrientation), 6);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyPixelWidth), 32);
    EXPECT_EQ(numberProperty(decoded->properties, kPropertyDpiWidth), 240.0);
}

TEST(Exif, IsMadeUprightForThePictureThatWasTurned) {
    ImageProperties properties;
    (void)io::readExif(cameraBlock(6), properties);
    setExifUpright(properties);
    EXPECT_EQ(wholeProperty(properties, "{TIFF}.Orientation"), 1);
    EXPECT_EQ(textProperty(properties, "{TIFF}.Make"), "Cam");
    EXPECT_DOUBLE_EQ(numberProperty(properties, "{Exif}.ExposureTime"), 1.0 / 125);
    EXPECT_EQ(properties.count("{Exif}.PixelXDimension"), 0U) << "no longer true";
    const io::ExifTree tree = io::exifTreeOf(properties);
    ASSERT_EQ(tree.exif.size(), 1U) << "no maker's note";
    EXPECT_EQ(tree.exif[0].tag, 0x829A);
    const ImageProperties once = properties;
    setExifUpright(properties);
    EXPECT_EQ(properties, once);
}

TEST(Exif, IsCarriedByEveryFormatThatHasAPlaceForIt) {
    const auto source = decodeImage(jpegWith(cameraBlock(6), twoHalves()));
    ASSERT_TRUE(source);
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG, kUTTypeWebP}) {
        const auto bytes = encodeImage(source->image, type, source->properties);
        ASSERT_TRUE(bytes) << type;
        const auto back = decodeImage(*bytes);
        ASSERT_TRUE(back) << type;
        EXPECT_EQ(back->image.width(), 16) << type << ": turned twice";
        EXPECT_EQ(textProperty(back->properties, "{TIFF}.Make"), "Cam") << type;
        EXPECT_DOUBLE_EQ(numberProperty(back->properties, "{Exif}.ExposureTime"), 1.0 / 125)
            << type;
        EXPECT_NEAR(numberProperty(back->properties, kPropertyDpiWidth), 240.0, 0.02) << type;
    }
}

TEST(ExifBlock, DirectoriesThatPointNowhereGiveLess) {
    const Bytes good = cameraBlock(1);
    for (std::size_t size = 0; size < good.size(); ++size) {
        (void)io::readExifTree(ByteView(good).first(size));
    }
    Bytes looped = good;
    looped[8 + 2 + 5 * 12 + 11] = 8;  // the directory below points at the first
    const io::ExifTree tree = io::readExifTree(looped);
    EXPECT_EQ(tree.main.size(), 1U);
    EXPECT_TRUE(io::readExifTree(Bytes{'M', 'I', 0, 42, 0, 0, 0, 8}).empty());
}

/// Little-endian: a main directory that names the directory after it 400 times, which has 400
/// entries of the same 60,000 bytes.
Bytes overlappingBlock() {
    constexpr unsigned kEntries = 400;
    constexpr std::uint32_t kExif = 8 + 2 + 12 * kEntries + 4;
    constexpr std::uint32_t kBlockBytes = 65000;
    constexpr std::uint32_t kValueBytes = 60000;
    constexpr std::uint32_t kValue = kBlockBytes - kValueBytes;
    ByteSink out(false);
    out.text("II").u16(42).u32(8).u16(kEntries);
    for (unsigned i = 0; i < kEntries; ++i) out.u16(0x8769).u16(4).u32(1).u32(kExif);
    out.u32(0).u16(kEntries);
    for (unsigned i = 0; i < kEntries; ++i) out.u16(0x9000 + i).u16(7).u32(kValueBytes).u32(kValue);
    out.zeros(kBlockBytes - out.bytes.size());
    return out.bytes;
}

TEST(ExifBlock, TakesNoMoreBytesOfValuesThanTheBlockHas) {
    const Bytes block = overlappingBlock();
    const auto start = std::chrono::steady_clock::now();
    const io::ExifTree tree = io::readExifTree(block);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    std::size_t taken = 0;
    for (const io::ExifField& field : tree.exif) taken += field.value.size();
    EXPECT_GE(taken, 60000U) << "one value is honest";
    EXPECT_LE(taken, block.size());
}

TEST(ExifBlock, ReadsADirectoryThatIsNamedTwiceOnce) {
    ByteSink out(false);
    out.text("II").u16(42).u32(8).u16(2);
    out.u16(0x8769).u16(4).u32(1).u32(38);
    out.u16(0x8769).u16(4).u32(1).u32(56);
    out.u32(0);
    out.u16(1).u16(0x8822).u16(3).u32(1).u16(2).u16(0).u32(0);  // at 38: a program of exposure
    out.u16(1).u16(0x9207).u16(3).u32(1).u16(5).u16(0).u32(0);  // at 56: a mode of metering
    const io::ExifTree tree = io::readExifTree(out.bytes);
    ASSERT_EQ(tree.exif.size(), 1U);
    EXPECT_EQ(tree.exif[0].tag, 0x8822);
}

TEST(ExifBlock, WritesWhatItRead) {
    const io::ExifTree tree = io::readExifTree(cameraBlock(3));
    const io::ExifTree again = io::readExifTree(io::writeExifBlock(tree, std::nullopt));
    ASSERT_EQ(again.main.size(), 1U);
    EXPECT_EQ(again.main[0].value, (Bytes{'C', 'a', 'm', 0}));
    ASSERT_EQ(again.exif.size(), 1U);
    EXPECT_EQ(again.exif[0].value, (Bytes{1, 0, 0, 0, 125, 0, 0, 0}));
    EXPECT_TRUE(io::writeExifBlock({}, std::nullopt).empty());
}

}  // namespace
}  // namespace skarnel
