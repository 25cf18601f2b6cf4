// Small files that ask for the world are refused quickly and without much memory.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>

#include "imaging/io/file_builders.h"
#include "imaging/io/late_bombs.h"
#include "imaging/io/pictures.h"
#include "imaging/io/profile_files.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

/// A JPEG header of a size, progressive or not, followed by scans that hold next to nothing.
Bytes jpegBomb(unsigned width, unsigned height, int scans) {
    ByteSink out(true);
    out.u16(0xFFD8).u16(0xFFDB).u16(67).u8(0).raw(Bytes(64, 1));
    out.u16(0xFFC2).u16(17).u8(8).u16(height).u16(width).u8(3);
    for (unsigned c = 1; c <= 3; ++c) out.u8(c).u8(0x11).u8(0);
    // One code of one bit, for every kind of table.
    for (unsigned table : {0x00U, 0x10U}) out.u16(0xFFC4).u16(20).u8(table).u8(1).zeros(15).u8(0);
    for (int i = 0; i < scans; ++i) {
        out.u16(0xFFDA).u16(8).u8(1).u8(1).u8(0).u8(i == 0 ? 0 : 1).u8(i == 0 ? 0 : 63).u8(0).u8(0);
    }
    return out.u16(0xFFD9).bytes;
}

Bytes pngBomb(std::uint32_t width, std::uint32_t height) {
    return buildPng(width, height, 8, 6, {}, {});
}

Bytes pngOfProfile(const Bytes& profile) {
    const Bytes chunk = ByteSink(true).text("bomb").u8(0).u8(0).raw(zlibBytes(profile)).bytes;
    return buildPng(1, 1, 8, 2, {1, 2, 3}, {{"iCCP", chunk}});
}

/// One table of two points a side, named 20,000 times.
Bytes pngOfManyTables() {
    const std::vector<Bytes> tables(20000, tableElement(3, 3, std::vector<float>(24)));
    return pngOfProfile(profileOf({{"wtpt", whitePoint()}, {"D2B1", chainOf(3, 3, tables)}}));
}

/// A table of 255 x 255 x 255 colours of 15 inks, of which none is there.
Bytes pngOfMissingTable() {
    ByteSink table(true);
    table.text("mAB ").u32(0).u8(3).u8(15).u16(0).u32(32).zeros(8).u32(32).u32(0);
    table.raw(Bytes(3, 255)).zeros(13).u8(2).zeros(3);
    return pngOfProfile(profileOf({{"wtpt", whitePoint()}, {"A2B0", table.bytes}}));
}

/// A description in 40 million languages, of which one is there.
Bytes pngOfManyLanguages() {
    const Bytes name =
        ByteSink(true).text("mluc").u32(0).u32(40'000'000).u32(12).text("enUS").zeros(8).bytes;
    return pngOfProfile(profileOf({{"wtpt", whitePoint()}, {"desc", name}}));
}

/// A compressed comment that unpacks to 500 MB.
Bytes pngCommentBomb() {
    Bytes chunk = {'k', 0, 0};
    const Bytes packed = zlibBytes(Bytes(500 << 20, 'a'));
    chunk.insert(chunk.end(), packed.begin(), packed.end());
    return buildPng(1, 1, 8, 0, {7}, {{"zTXt", chunk}});
}

Bytes tiffBomb(std::uint32_t width, std::uint32_t height, std::uint32_t compression) {
    TiffBuilder tiff(1, 1, 2, {8, 8, 8});
    tiff.tags[259] = {compression};
    tiff.blocks = {{1, 2, 3}};
    Bytes file = tiff.build();
    // Width and height are SHORT in the builder; enlarge them in place.
    for (std::size_t i = 0; i + 12 <= file.size(); ++i) {
        if (file[i + 1] == 1 && (file[i] == 0 || file[i] == 1) && file[i + 2] == 3 &&
            file[i + 4] == 1) {
            const std::uint32_t side = file[i] == 0 ? width : height;
            file[i + 8] = static_cast<std::uint8_t>(side);
            file[i + 9] = static_cast<std::uint8_t>(side >> 8);
        }
    }
    return file;
}

/// One strip for each row, all of the same bytes, of pixels that have that many samples of 32 bits.
Bytes tiffOfSamples(std::uint32_t width, std::uint32_t height, std::uint32_t samples,
                    std::uint32_t compression, const Bytes& strip) {
    TiffBuilder tiff(width, height, 1, {32});
    tiff.tags[277] = {samples};
    tiff.tags[259] = {compression};
    tiff.tags[278] = {1};
    tiff.tags[273].assign(height, 0);
    tiff.tags[279].assign(height, static_cast<std::uint32_t>(strip.size()));
    tiff.profile = strip;
    Bytes file = tiff.build();
    const auto place = std::search(file.begin(), file.end(), strip.begin(), strip.end());
    tiff.tags[273].assign(height, static_cast<std::uint32_t>(place - file.begin()));
    return tiff.build();
}

/// A bilevel picture whose only strip is one of `side` pixels a side, in JBIG. Bits of a byte are
/// the other way round there.
Bytes tiffOfJbig(std::uint32_t side) {
    TiffBuilder tiff(16, 16, 0, {1});
    tiff.tags[259] = {34661};
    Bytes strip = ByteSink(true).u32(0x100).u32(side).u32(side).u32(side).u32(8).u16(0xFF02).bytes;
    for (std::uint8_t& byte : strip) {
        unsigned turned = 0;
        for (unsigned bit = 0; bit < 8; ++bit) turned |= (byte >> bit & 1U) << (7 - bit);
        byte = static_cast<std::uint8_t>(turned);
    }
    tiff.blocks = {strip};
    return tiff.build();
}

/// Directories that follow one another, the last back to the first where `loop`.
Bytes tiffOfDirectories(int count, bool loop) {
    ByteSink out(false);
    out.text("II").u16(42).u32(8);
    for (int i = 0; i < count; ++i) {
        const std::size_t next = out.bytes.size() + 2 + 12 + 4;
        out.u16(1).u16(256).u16(3).u32(1).u16(1).u16(0);
        out.u32(i + 1 < count ? next : loop ? 8 : 0);
    }
    return out.bytes;
}

Bytes jp2Bomb(std::uint32_t width, std::uint32_t height, unsigned components, std::uint32_t tile) {
    ByteSink out(true);
    out.u16(0xFF4F).u16(0xFF51).u16(38 + 3 * components).u16(0);
    out.u32(width).u32(height).u32(0).u32(0).u32(tile).u32(tile).u32(0).u32(0).u16(components);
    for (unsigned i = 0; i < components; ++i) out.u8(7).u8(1).u8(1);
    out.u16(0xFF52).u16(12).u8(0).u8(0).u16(1).u8(0).u8(5).u8(4).u8(4).u8(0).u8(1);
    out.u16(0xFF5C).u16(19).u8(0x40).zeros(16);
    out.u16(0xFF90).u16(10).u16(0).u32(14).u8(0).u8(1).u16(0xFF93);
    return out.u16(0xFFD9).bytes;
}

Bytes gifBomb() {
    Bytes file = buildGif(1, 1, Bytes(768, 7), {3});
    file[6] = file[7] = file[8] = file[9] = 0xFF;
    return file;
}

Bytes psdBomb(std::uint32_t side, bool big, std::uint16_t packing) {
    PsdBuilder psd;
    psd.big = big;
    psd.rows = {{1}, {2}, {3}};
    psd.packing = packing;
    Bytes file = psd.build();
    const Bytes number = ByteSink(true).u32(side).u32(side).bytes;
    std::copy(number.begin(), number.end(), file.begin() + 14);
    return file;
}

Bytes bmpBomb(std::int32_t side, std::uint32_t compression) {
    BmpBuilder bmp;
    bmp.width = bmp.height = side;
    bmp.bits = 8;
    bmp.compression = compression;
    bmp.palette = Bytes(1024, 1);
    bmp.pixels = {255, 1, 0, 1};
    return bmp.build();
}

/// One colour as a lossless WebP: a header and five codes of one symbol each.
Bytes webpOfOneColor(unsigned width, unsigned height) {
    std::vector<bool> bits;
    const auto put = [&bits](unsigned value, int count) {
        for (int i = 0; i < count; ++i) bits.push_back((value >> i & 1U) != 0);
    };
    put(0x2F, 8);
    put(width - 1, 14);
    put(height - 1, 14);
    put(0, 1);  // no alpha
    put(0, 3);  // version
    put(0, 3);  // no transform, no colour cache, no groups of codes
    // Simple code, one symbol, of one bit: 0.
    for (int i = 0; i < 5; ++i) put(1, 4);
    Bytes data((bits.size() + 15) / 16 * 2);
    for (std::size_t i = 0; i < bits.size(); ++i) {
        if (bits[i]) data[i / 8] |= static_cast<std::uint8_t>(1U << i % 8);
    }
    ByteSink out(false);
    out.text("RIFF").u32(12 + data.size()).text("WEBPVP8L").u32(data.size()).raw(data);
    return out.bytes;
}

/// 1 bit a pixel, which deflate packs a thousandfold.
Bytes pngOfOneColor(std::uint32_t side) {
    return buildPng(side, side, 1, 0, Bytes(std::size_t{side} * ((side + 7) / 8)));
}

Bytes psdOfOneColor(std::uint32_t side) {
    PsdBuilder psd;
    psd.width = psd.height = side;
    psd.depth = 1;
    psd.mode = 0;
    psd.packing = 2;
    psd.rows.assign(side, Bytes((side + 7) / 8));
    return psd.build();
}

/// Fax coding: a row like the one above it, or white at first, is one bit.
Bytes tiffOfOneColor(std::uint32_t side) {
    TiffBuilder tiff(side, side, 0, {1});
    tiff.tags[259] = {4};
    tiff.blocks = {Bytes((side + 7) / 8, 0xFF)};
    return tiff.build();
}

/// A canvas with one pixel on it.
Bytes gifOfOnePixel(unsigned side) {
    Bytes file = buildGif(1, 1, Bytes(768, 7), {3});
    file[6] = file[8] = static_cast<std::uint8_t>(side);
    file[7] = file[9] = static_cast<std::uint8_t>(side >> 8);
    return file;
}

/// Runs that end at once, and as much behind them as the reader asks for.
Bytes bmpOfNoRuns(std::int32_t side) {
    BmpBuilder bmp;
    bmp.width = bmp.height = side;
    bmp.bits = 8;
    bmp.compression = 1;
    bmp.palette = Bytes(1024, 1);
    bmp.pixels = Bytes(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) / 4000);
    bmp.pixels[1] = 1;
    return bmp.build();
}

struct Bomb {
    const char* name;
    Bytes (*make)();
};

class Bombs : public ::testing::TestWithParam<Bomb> {};

long peakKilobytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word != "VmHWM:") continue;
        long value = 0;
        status >> value;
        return value;
    }
    return 0;
}

enum class Reason { Any, Size };

/// Decodes in a child, whose peak of memory is its own: exit 0 when the file was refused, 1 when
/// it opened, 2 when it took more than 300 MB, 3 when it took more than 2 seconds, 4 when it was
/// refused for another reason than the one that is expected.
int refuse(const Bytes& file, Reason reason = Reason::Any) {
    const pid_t child = ::fork();
    if (child == 0) {
        std::ofstream("/proc/self/clear_refs") << 5;  // the peak starts from here
        const long before = peakKilobytes();
        const auto start = std::chrono::steady_clock::now();
        const auto decoded = decodeImage(file);
        const auto time = std::chrono::steady_clock::now() - start;
        if (peakKilobytes() - before > 300 * 1024) ::_exit(2);
        if (time > std::chrono::seconds(2)) ::_exit(3);
        const bool ofSize = !decoded && decoded.error().code == ErrorCode::TooLarge &&
                            decoded.error().message.find("--max-pixels") != std::string::npos;
        if (reason == Reason::Size && !decoded && !ofSize) ::_exit(4);
        ::_exit(decoded ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + status;
}

TEST_P(Bombs, IsRefusedQuicklyAndInLittleMemory) {
    EXPECT_EQ(refuse(GetParam().make()), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Files, Bombs,
    ::testing::Values(
        Bomb{"JpegOf65500", [] { return jpegBomb(65500, 65500, 1); }},
        Bomb{"JpegOf3000Scans", [] { return jpegBomb(14000, 14000, 3000); }},
        Bomb{"JpegOf3000ScansSmall", [] { return jpegBomb(8, 8, 3000); }},
        Bomb{"JpegCutAfterItsHeader", [] { return jpegBomb(20000, 20000, 0); }},
        Bomb{"PngOf65500", [] { return pngBomb(65500, 65500); }},
        Bomb{"PngOf20000WithoutRows", [] { return pngBomb(20000, 20000); }},
        Bomb{"TiffOf65500", [] { return tiffBomb(65500, 65500, 1); }},
        Bomb{"TiffOf20000Raw", [] { return tiffBomb(20000, 20000, 1); }},
        Bomb{"TiffOf20000Lzw", [] { return tiffBomb(20000, 20000, 5); }},
        Bomb{"TiffOf20000Deflate", [] { return tiffBomb(20000, 20000, 8); }},
        Bomb{"TiffOf100000Directories", [] { return tiffOfDirectories(100000, false); }},
        Bomb{"TiffWithALoop", [] { return tiffOfDirectories(3, true); }},
        // A row of 4 GB; 47 GB in rows of the same 16 MB.
        Bomb{"TiffOf65535Samples", [] { return tiffOfSamples(16000, 1, 65535, 1, Bytes(100)); }},
        Bomb{"TiffOf3000RowsThatAreOne",
             [] { return tiffOfSamples(60, 3000, 65535, 8, zlibBytes(Bytes(15'728'400))); }},
        Bomb{"TiffOfJbig", [] { return tiffOfJbig(150'000); }},
        Bomb{"Jpeg2000Of65500", [] { return jp2Bomb(65500, 65500, 3, 65500); }},
        Bomb{"Jpeg2000OfManyComponents", [] { return jp2Bomb(64, 64, 16384, 64); }},
        Bomb{"Jpeg2000OfManyTiles", [] { return jp2Bomb(9000, 9000, 3, 1); }},
        Bomb{"Jpeg2000OfOneTile", [] { return jp2Bomb(9900, 9900, 3, 9900); }},
        Bomb{"GifOf65535", [] { return gifBomb(); }},
        Bomb{"PsdOf30000", [] { return psdBomb(30000, false, 0); }},
        Bomb{"PsdOf20000Runs", [] { return psdBomb(20000, false, 1); }},
        Bomb{"PsdOf20000Zip", [] { return psdBomb(20000, false, 2); }},
        Bomb{"PsbOf300000", [] { return psdBomb(300000, true, 1); }},
        Bomb{"BmpOf65500", [] { return bmpBomb(65500, 0); }},
        Bomb{"BmpOf20000Raw", [] { return bmpBomb(20000, 0); }},
        Bomb{"BmpOf20000Runs", [] { return bmpBomb(20000, 1); }}),
    [](const auto& row) { return std::string(row.param.name); });

class WholeBombs : public ::testing::TestWithParam<Bomb> {};

TEST_P(WholeBombs, AreRefusedForTheirSize) {
    EXPECT_EQ(refuse(GetParam().make(), Reason::Size), 0);
}

std::vector<Bomb> wholeBombs() {
    std::vector<Bomb> all = {{"WebP", [] { return webpOfOneColor(16383, 16383); }},
                             {"Png", [] { return pngOfOneColor(12000); }},
                             {"Psd", [] { return psdOfOneColor(12000); }},
                             {"TiffOfFaxRows", [] { return tiffOfOneColor(20000); }},
                             {"BmpOfRuns", [] { return bmpOfNoRuns(20000); }}};
    if (imageTypeWithIdentifier(kUTTypeGIF)->canRead) {
        all.push_back({"Gif", [] { return gifOfOnePixel(20000); }});
    }
    return all;
}

// Nothing is wrong with these files but that a few bytes stand for hundreds of megabytes.
INSTANTIATE_TEST_SUITE_P(Files, WholeBombs, ::testing::ValuesIn(wholeBombs()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(WholeBombs, AreNothingButPictures) {
    // The same files, small: what is refused above is refused for its size alone.
    std::vector<Bytes> files = {webpOfOneColor(160, 160), pngOfOneColor(160), psdOfOneColor(160),
                                tiffOfOneColor(160), bmpOfNoRuns(160)};
    if (imageTypeWithIdentifier(kUTTypeGIF)->canRead) files.push_back(gifOfOnePixel(160));
    for (std::size_t i = 0; i < files.size(); ++i) {
        const auto decoded = decodeImage(files[i]);
        ASSERT_TRUE(decoded) << i << ": " << decoded.error().message;
        EXPECT_EQ(decoded->image.width(), 160) << i;
    }
}

TEST(WholeBombs, AreOpenedForWhoAllowsThem) {
    // 1600 x 1600 pixels ask for 1280 bytes.
    const Bytes file = webpOfOneColor(1600, 1600);
    EXPECT_TRUE(decodeImage(file)) << "not many pixels are taken on trust";
    EXPECT_FALSE(decodeImage(file, {3'000'000, 1'000'000}));
    EXPECT_TRUE(decodeImage(file, {3'000'000, 3'000'000}));
}

TEST(Bombs, OfFormatsThatAreLoadedLateAreRefused) {
    for (const std::uint32_t side : {20000U, 65500U}) {
        // In this process: their libraries start threads, which do not survive a fork.
        EXPECT_FALSE(decodeImage(jxlHeader(side))) << side;
        EXPECT_FALSE(decodeImage(withSide("alpha.heic", side))) << side;
        EXPECT_FALSE(decodeImage(withSide("p3.avif", side))) << side;
    }
}

TEST(Bombs, ACommentThatUnpacksToMuchIsNotUnpacked) {
    const int result = refuse(pngCommentBomb());
    EXPECT_TRUE(result == 0 || result == 1) << result;
}

TEST(Bombs, InProfilesLeaveThePictureWithoutOne) {
    EXPECT_EQ(refuse(pngOfManyTables()), 1);
    EXPECT_EQ(refuse(pngOfMissingTable()), 1);
    EXPECT_EQ(refuse(pngOfManyLanguages()), 1);
}

TEST(Bombs, TheLimitOfPixelsIsKeptToThePixel) {
    const Bytes file = *encodeImage(randomValidPicture(30, 20, 1), kUTTypePNG);
    EXPECT_TRUE(decodeImage(file, {600}));
    const auto over = decodeImage(file, {599});
    ASSERT_FALSE(over);
    EXPECT_EQ(over.error().code, ErrorCode::TooLarge);
    EXPECT_NE(over.error().message.find("30 x 20"), std::string::npos) << over.error().message;
}

}  // namespace
}  // namespace skarnel
