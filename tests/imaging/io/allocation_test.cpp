// The k-th allocation fails, for every k: reading and writing end with an error or the right
// picture, and give back all they took.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "imaging/io/exif.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"
#include "imaging/io/readers.h"
#include "imaging/io/upright_picture.h"
#include "imaging/io/vp8l_writer.h"
#include "imaging/pixel_memory.h"
#include "memory/refuse_each.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

/// What libtiff loses of its directories: see the writer's own words on closing an unfinished file.
constexpr long kLostByLibtiff = 15;

/// A block with a maker's name, the time of exposure and a title in UTF-16.
Bytes cameraBlock() {
    ByteSink out(true);
    out.text("MM").u16(42).u32(8).u16(3);
    out.u16(0x010F).u16(2).u32(12).u32(50);  // the maker: 12 characters behind the directory
    out.u16(0x8769).u16(4).u32(1).u32(62);   // the camera's own directory
    out.u16(0x9C9B).u16(1).u32(4).text({"a\0b\0", 4}).u32(0);
    out.text("Some camera").u8(0);
    out.u16(1).u16(0x829A).u16(5).u32(1).u32(80).u32(0);
    return out.u32(1).u32(250).bytes;
}

/// The libraries of these formats do not check all of their own allocations. They work in the
/// helper program, where such a crash is an error like any other.
bool crashesByItself(std::string_view type) {
    return type == kUTTypeJPEG2000 || type == kUTTypeWebP;
}

class Allocation : public ::testing::TestWithParam<Refusal> {
  protected:
    void SetUp() override {
        if (!canRefuseMemory()) GTEST_SKIP() << "a sanitizer has a malloc of its own";
        setIdlePixelMemoryLimit(0);  // what was given back earlier would do without a request
    }
};

struct Row {
    const char* name;
    ImageProperties properties;
};

ImageProperties with(std::string_view key, PropertyValue value) {
    return {{std::string(key), std::move(value)}};
}

/// What makes the writers take different ways.
std::vector<Row> writerRows() {
    return {{"plain", {}},
            {"resolution", with(kPropertyDpiWidth, 300.0)},
            {"level", with(kPropertyCompressionLevel, 6.0)},
            {"uncompressed", with(kPropertyTiffCompression, std::int64_t{1})},
            {"deflate", with(kPropertyTiffCompression, std::int64_t{8})},
            {"PackBits", with(kPropertyTiffCompression, std::int64_t{32773})},
            {"deflate with a level",
             {{std::string(kPropertyTiffCompression), std::int64_t{8}},
              {std::string(kPropertyCompressionLevel), 6.0}}},
            {"camera", with(kPropertyExifBlock, cameraBlock())}};
}

TEST_P(Allocation, ThatFailsInAWriterGivesACleanError) {
    const CGImage image = randomValidPicture(21, 17, 3);
    for (const ImageType& type : imageTypes()) {
        if (!type.canWrite) continue;
        for (const auto& [row, properties] : writerRows()) {
            if (crashesByItself(type.identifier) && std::string_view(row) != "camera") continue;
            // Without a helper program these would end this one.
            if (crashesByItself(type.identifier) && !decoderWalls().front().stands) continue;
            SCOPED_TRACE(row);
            const Bytes expected = *encodeImage(image, type.identifier, properties);
            // No writer does without anything: what it has no memory for, it says.
            const auto write = [&] {
                const auto bytes = encodeImage(image, type.identifier, properties);
                return !bytes || *bytes == expected;
            };
            const bool libtiff = type.identifier == kUTTypeTIFF;
            refuseEach(std::string(type.name), GetParam(), write, libtiff ? kLostByLibtiff : 0);
        }
    }
}

/// encodeImage takes it for large pictures alone, which would take too long here.
TEST_P(Allocation, ThatFailsInOurLosslessWebPGivesACleanError) {
    const CGImage image = randomValidPicture(21, 37, 3);
    const ImageProperties properties = with(kPropertyExifBlock, cameraBlock());
    const Bytes expected = *io::writeLosslessWebP(image, properties);
    refuseEach("lossless WebP", GetParam(), [&] {
        try {
            const auto bytes = io::writeLosslessWebP(image, properties);
            return !bytes || *bytes == expected;
        } catch (const std::bad_alloc&) {
            return true;
        }
    });
}

/// Those that can be read in the program itself. libtiff ends it over requests that it does not
/// check, as the libraries of the formats above do.
std::vector<std::pair<std::string, Bytes>> filesReadHere() {
    std::vector<std::pair<std::string, Bytes>> files;
    const CGImage image = randomValidPicture(21, 17, 3);
    for (const ImageType& type : imageTypes()) {
        if (!type.canWrite || crashesByItself(type.identifier) || type.identifier == kUTTypeTIFF)
            continue;
        files.emplace_back(type.name, *encodeImage(image, type.identifier));
    }
    PsdBuilder psd;
    psd.width = 3;
    psd.packing = 2;
    psd.rows.assign(3, Bytes{1, 2, 3});
    files.emplace_back("Photoshop", psd.build());
    files.emplace_back("interlaced PNG", interlacedPng(1, 1, {0, 7}));
    if (imageTypeWithIdentifier(kUTTypeGIF)->canRead)
        files.emplace_back("GIF", buildGif(3, 2, Bytes(768, 9), Bytes(6, 3), 2));
    return files;
}

TEST_P(Allocation, ThatFailsInAReaderGivesACleanError) {
    for (const auto& [name, file] : filesReadHere()) {
        const auto expected = decodeImage(file);
        ASSERT_TRUE(expected) << name;
        refuseEach(name, GetParam(), [&] {
            const auto decoded = decodeImage(file);
            // The comparison allocates nothing.
            if (!decoded) return true;
            const PixelView is = decoded->image.pixels();
            const PixelView was = expected->image.pixels();
            return is.width == was.width && is.height == was.height &&
                   std::equal(is.bytes, is.bytes + is.strideBytes * is.height, was.bytes);
        });
    }
}

/// One entry: orientation 3, half a turn.
Bytes halfTurn() {
    ByteSink out(true);
    out.text("MM").u16(42).u32(8).u16(1);
    return out.u16(0x0112).u16(3).u32(1).u16(3).u16(0).u32(0).bytes;
}

/// The smallest profile that libpng takes for one: a head of 128 bytes and a list of no entries. A
/// chunk as short as with a short name it does not look at.
constexpr std::size_t kProfileBytes = 132;
Bytes profileChunk() {
    ByteSink profile(true);
    profile.u32(kProfileBytes).zeros(8).text("mntrRGB XYZ ").zeros(12).text("acsp");
    profile.zeros(kProfileBytes - profile.bytes.size());
    return ByteSink(true)
        .text(std::string(79, 'p'))
        .u8(0)
        .u8(0)
        .raw(zlibBytes(profile.bytes))
        .bytes;
}

/// The library leaves out a chunk that it has no memory for, and would say nothing.
TEST_P(Allocation, ThatFailsInAPngNeitherLeavesItUnturnedNorTakesItsColours) {
    const Bytes file = buildPng(2, 1, 8, 2, {10, 20, 30, 40, 50, 60},
                                {{"iCCP", profileChunk()}, {"eXIf", halfTurn()}});
    const auto whole = io::readPng(file, {});
    ASSERT_TRUE(whole);
    ASSERT_EQ(whole->orientation, 3);
    ASSERT_EQ(whole->profile.size(), kProfileBytes);
    long incomplete = 0;
    refuseEach("PNG", GetParam(), [&] {
        try {
            const auto picture = io::readPng(file, {});
            if (picture)
                return picture->orientation == 3 && picture->profile.size() == kProfileBytes;
            if (picture.error().code == ErrorCode::OutOfMemory) ++incomplete;
            return true;
        } catch (const std::bad_alloc&) {
            return true;
        }
    });
    EXPECT_GT(incomplete, 0);
}

/// The library checks these requests, the first that it makes: for the stream and for the codec.
TEST_P(Allocation, ThatFailsBeforeAJpeg2000IsLookedAtGivesACleanError) {
    const Bytes file = *encodeImage(randomValidPicture(3, 2, 3), kUTTypeJPEG2000);
    ASSERT_TRUE(io::readJpeg2000(file, {}));
    for (long request = 0; request < 3; ++request) {
        refuseMemory(request, GetParam());
        auto code = ErrorCode::OutOfMemory;  // which nobody has the memory to say from then on
        try {
            const auto picture = io::readJpeg2000(file, {});
            code = picture ? ErrorCode::Failed : picture.error().code;
        } catch (const std::bad_alloc&) {
        }
        allowMemory();
        EXPECT_EQ(code, ErrorCode::OutOfMemory) << request;
    }
}

TEST_P(Allocation, ThatFailsWhileAPictureIsTurnedGivesACleanError) {
    refuseEach("turn", GetParam(), [] {
        try {
            auto pixels = PixelBuffer::zeroed(3, 2);
            if (!pixels) return true;
            io::SourcePicture picture(*std::move(pixels));
            picture.orientation = 6;
            const auto upright = io::finishPicture(std::move(picture), kUTTypePNG);
            return !upright || (upright->image.width() == 2 && upright->image.height() == 3);
        } catch (const std::bad_alloc&) {
            return true;
        }
    });
}

/// Without them the picture might not be turned, and nobody would know.
TEST_P(Allocation, ThatFailsWhileACamerasFactsAreReadIsNotTakenForNone) {
    const Bytes block = cameraBlock();
    ImageProperties properties;
    io::readExif(block, properties);
    ASSERT_FALSE(properties.empty());
    const ImageProperties all = properties;
    refuseEach("EXIF", GetParam(), [&] {
        ImageProperties some;
        try {
            io::readExif(block, some);
        } catch (const std::bad_alloc&) {
            return true;
        }
        return some == all;
    });
}

INSTANTIATE_TEST_SUITE_P(Once_AndFromThenOn, Allocation,
                         ::testing::Values(Refusal::Once, Refusal::FromThenOn),
                         [](const auto& row) { return nameOf(row.param); });

}  // namespace
}  // namespace skarnel
