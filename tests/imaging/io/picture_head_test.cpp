// The decoders tell of the same files how large they are.
#include "imaging/io/picture_head.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "imaging/io/file_builders.h"
#include "imaging/io/image_io.h"
#include "imaging/io/pictures.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using testing::ByteSink;

/// Reads from these bytes, which must stay.
ReadAt readerOf(const Bytes& bytes) {
    return [&bytes](std::uint64_t place, std::span<std::uint8_t> target) -> std::size_t {
        if (place >= bytes.size()) return 0;
        const std::size_t count =
            std::min<std::size_t>(target.size(), bytes.size() - static_cast<std::size_t>(place));
        std::memcpy(target.data(), bytes.data() + place, count);
        return count;
    };
}

std::optional<HeadSize> headOf(const Bytes& bytes) {
    return sizeInHead(readerOf(bytes));
}

Bytes bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

CGImage pictureOf(int width, int height) {
    return CGImage(*PixelBuffer::zeroed(width, height));
}

TEST(PictureHead, TellsTheSizeOfEveryFormatThatIsWritten) {
    int formats = 0;
    for (const ImageType& type : imageTypes()) {
        if (!type.canWrite) continue;
        ++formats;
        for (const auto& [width, height] : {std::pair{1, 1}, {300, 70}, {257, 1000}}) {
            const auto bytes = encodeImage(pictureOf(width, height), type.identifier);
            ASSERT_TRUE(bytes);
            EXPECT_EQ(headOf(*bytes), (HeadSize{width, height})) << type.name;
        }
    }
    EXPECT_GE(formats, 6);
    const auto lossy =
        encodeImage(pictureOf(300, 70), kUTTypeWebP, {{std::string(kPropertyLossyQuality), 0.5}});
    EXPECT_EQ(headOf(*lossy), (HeadSize{300, 70}));
}

/// A side may differ where one is the other's rotation.
bool isSameOrTurned(HeadSize head, std::int64_t width, std::int64_t height) {
    return (head.width == width && head.height == height) ||
           (head.width == height && head.height == width);
}

/// Compares with the decoder for each picture of a folder; gives how many there were.
int compareFolder(const std::filesystem::path& folder) {
    int pictures = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const Bytes bytes = bytesOf(entry.path());
        const auto decoded = decodeImage(bytes, {1 << 22});
        if (!decoded) continue;
        const auto head = headOf(bytes);
        EXPECT_TRUE(head) << entry.path();
        if (!head) continue;
        ++pictures;
        const auto side = [&](std::string_view key) {
            return std::get<std::int64_t>(decoded->properties.find(key)->second);
        };
        const std::int64_t width = side(kPropertyPixelWidth);
        const std::int64_t height = side(kPropertyPixelHeight);
        // HEIF codes whole blocks, of which a part is shown.
        const bool isBlocks = decoded->type == kUTTypeHEIF || decoded->type == kUTTypeAVIF;
        const bool covers = head->width >= width && head->height >= height &&
                            head->width <= width + 64 && head->height <= height + 64;
        EXPECT_TRUE(isSameOrTurned(*head, width, height) || (isBlocks && covers))
            << entry.path() << ": " << head->width << " x " << head->height << ", decoded " << width
            << " x " << height;
    }
    return pictures;
}

TEST(PictureHead, AgreesWithTheDecodersOnAllKindsOfFiles) {
    for (const char* kind : {"jpeg", "png", "tiff", "bmp", "psd", "jp2", "webp"})
        EXPECT_GE(compareFolder(std::filesystem::path(FUZZ_SEEDS) / kind), 2) << kind;
    if (imageTypeWithIdentifier(kUTTypeGIF)->canRead) {
        EXPECT_GE(compareFolder(std::filesystem::path(FUZZ_SEEDS) / "gif"), 2);
    }
    compareFolder(LATE_FILES);
}

TEST(PictureHead, TellsTheSizeOfPhotoshopGifAndJpegXL) {
    ByteSink psd(true);
    psd.text("8BPS").u16(1).zeros(6).u16(3).u32(70).u32(300).u16(8).u16(3);
    EXPECT_EQ(headOf(psd.bytes), (HeadSize{300, 70}));
    ByteSink gif(false);
    gif.text("GIF89a").u16(300).u16(70).zeros(3);
    EXPECT_EQ(headOf(gif.bytes), (HeadSize{300, 70}));
    // The signature; then from the lowest bit: not small, 13 bits of height less one (0x3E7), no
    // ratio, 9 bits of width less one (0x0C7).
    const std::uint64_t bits = 0U | 1U << 1U | 0x3E7U << 3U | 0U << 16U | std::uint64_t{0} << 19U |
                               std::uint64_t{0xC7} << 21U;
    ByteSink jxl(false);
    jxl.u8(0xFF).u8(0x0A).u64(bits);
    EXPECT_EQ(headOf(jxl.bytes), (HeadSize{200, 1000}));
    // Small, a height of 8 * (4 + 1), the ratio 4 : 3 (number 3): 40 * 4 / 3 = 53.
    ByteSink small(false);
    small.u8(0xFF).u8(0x0A).u64(1U | 4U << 1U | 3U << 6U);
    EXPECT_EQ(headOf(small.bytes), (HeadSize{53, 40}));
}

TEST(PictureHead, FindsADirectoryAtTheEndOfALargeTiff) {
    ByteSink tiff(true);
    tiff.text("MM").u16(43).u16(8).u16(0).u64(5000).zeros(5000 - 16);
    tiff.u64(2).u16(256).u16(4).u64(1).u32(70'000).u32(0).u16(257).u16(3).u64(1).u16(9).zeros(6);
    EXPECT_EQ(headOf(tiff.bytes), (HeadSize{70'000, 9}));
}

TEST(PictureHead, OfALargeTiffMayHaveSidesOfEightBytes) {
    const auto tiff = [](std::uint64_t width) {
        ByteSink out(true);
        out.text("MM").u16(43).u16(8).u16(0).u64(16);
        out.u64(2).u16(256).u16(16).u64(1).u64(width).u16(257).u16(16).u64(1).u64(9);
        return out.bytes;
    };
    EXPECT_EQ(headOf(tiff(70'000)), (HeadSize{70'000, 9}));
    EXPECT_FALSE(headOf(tiff(~std::uint64_t{0})));
}

TEST(PictureHead, OfAJpegStandsInItsFrameAlone) {
    ByteSink start(true);
    start.u16(0xFFD8);
    // Tables of Huffman codes, of an extension, of arithmetic conditions; a comment.
    for (const unsigned marker : {0xFFC4U, 0xFFC8U, 0xFFCCU, 0xFFFEU})
        start.u16(marker).u16(4).u16(0x0909);
    ByteSink frame = start;
    frame.u16(0xFFC2).u16(11).u8(8).u16(70).u16(300);
    EXPECT_EQ(headOf(frame.bytes), (HeadSize{300, 70}));
    // A marker that is none, a length that cannot be, and rows before their frame.
    for (const unsigned marker : {0xFF01U, 0xFFDAU}) {
        ByteSink other = start;
        other.u16(marker).u16(marker == 0xFF01U ? 1 : 4).u16(0);
        EXPECT_FALSE(headOf(other.bytes)) << marker;
    }
}

/// The sizes behind two markers, a length and the capabilities: 310 - 10 by 75 - 5.
Bytes codestream2000() {
    ByteSink out(true);
    return out.u16(0xFF4F).u16(0xFF51).u16(41).u16(0).u32(310).u32(75).u32(10).u32(5).bytes;
}

Bytes jp2With(const Bytes& boxes) {
    ByteSink out(true);
    out.u32(12).text("jP  ").u32(0x0D0A870A).u32(20).text("ftypjp2 ").u32(0).text("jp2 ");
    return out.raw(boxes).bytes;
}

TEST(PictureHead, OfAJpeg2000IsFoundBehindBoxesOfEveryLength) {
    const Bytes stream = codestream2000();
    EXPECT_EQ(headOf(stream), (HeadSize{300, 70}));
    const std::size_t all = stream.size();
    const auto sink = [] { return ByteSink(true); };
    const Bytes skipped = sink().u32(1).text("free").u64(20).u32(7).bytes;
    const Bytes rows[] = {
        sink().u32(8 + all).text("jp2c").raw(stream).bytes,
        sink().u32(0).text("jp2c").raw(stream).bytes,
        sink().raw(skipped).u32(1).text("jp2c").u64(16 + all).raw(stream).bytes,
    };
    for (const Bytes& row : rows) EXPECT_EQ(headOf(jp2With(row)), (HeadSize{300, 70}));
    const Bytes none[] = {
        {},
        sink().u32(7).text("free").bytes,               // shorter than its own head
        sink().u32(1).text("free").u64(15).bytes,       // the same of a long one
        sink().u32(1).text("jp2c").u32(0).bytes,        // cut in its length
        sink().u32(0).text("free").raw(stream).bytes,   // to the end of the file
        sink().u32(0).text("jp2c").u32(0).u16(0).bytes  // cut before its numbers
    };
    for (const Bytes& row : none) EXPECT_FALSE(headOf(jp2With(row)));
}

TEST(PictureHead, OfHeifIsTheLargestOfItsSizes) {
    const auto box = [](std::string_view type, const Bytes& contents) {
        return ByteSink(true).u32(8 + contents.size()).text(type).raw(contents).bytes;
    };
    const auto ispe = [&](unsigned width, unsigned height) {
        return box("ispe", ByteSink(true).u32(0).u32(width).u32(height).bytes);
    };
    const auto heif = [&](const Bytes& boxes) {
        ByteSink out(true);
        return out.raw(box("ftyp", ByteSink(true).text("heic").u32(0).bytes)).raw(boxes).bytes;
    };
    const auto described = [&](const Bytes& sizes) {
        const Bytes inner = box("iprp", box("ipco", sizes));
        return heif(box("meta", ByteSink(true).u32(0).raw(inner).bytes));
    };
    const auto sizes = [&](std::initializer_list<std::pair<unsigned, unsigned>> all) {
        ByteSink out(true);
        out.raw(box("colr", {1})).u32(1).text("free").u64(20).u32(0);
        for (const auto& [width, height] : all) out.raw(ispe(width, height));
        out.u32(0).text("free");  // to the end
        return described(out.bytes);
    };
    EXPECT_EQ(headOf(sizes({{64, 64}, {300, 70}, {0, 9}, {32, 32}})), (HeadSize{300, 70}));
    const Bytes cut = ByteSink(true).raw(ispe(300, 70)).u32(999).text("free").bytes;
    EXPECT_EQ(headOf(described(cut)), (HeadSize{300, 70}));
    // A box of a long size.
    const Bytes wide =
        ByteSink(true).u32(1).text("ispe").u64(28).u32(0).u32(300).u32(70).raw(ispe(9, 8)).bytes;
    EXPECT_EQ(headOf(described(wide)), (HeadSize{300, 70}));
    EXPECT_FALSE(headOf(sizes({{0, 9}})));
    EXPECT_FALSE(headOf(heif(box("free", {}))));
    EXPECT_FALSE(headOf(heif(box("meta", ByteSink(true).u32(0).bytes))));
}

/// Three sizes, of which item 7 has the second and item 9 the third; the numbers of items and
/// properties are long or short.
Bytes heifWithPrimary(std::uint32_t item, bool longItems, bool longNumbers) {
    const auto box = [](std::string_view type, const Bytes& contents) {
        return ByteSink(true).u32(8 + contents.size()).text(type).raw(contents).bytes;
    };
    const auto addItem = [=](ByteSink& out, std::uint32_t value) {
        if (longItems) {
            out.u32(value);
        } else {
            out.u16(value);
        }
    };
    const auto addNumber = [=](ByteSink& out, std::uint32_t value) {
        if (longNumbers) {
            out.u16(value);
        } else {
            out.u8(value);
        }
    };
    ByteSink sizes(true);
    for (const unsigned side : {500U, 30U, 70U}) {
        sizes.raw(box("ispe", ByteSink(true).u32(0).u32(side).u32(side + 1).bytes));
        sizes.raw(box("colr", {1}));
    }
    ByteSink uses(true);
    uses.u32((longItems ? 1U << 24U : 0U) | (longNumbers ? 1U : 0U)).u32(2);
    for (const auto& [of, number] : {std::pair{7U, 3U}, {9U, 5U}}) {
        addItem(uses, of);
        uses.u8(2);
        // One that a reader must know, and one without a size.
        addNumber(uses, number | (longNumbers ? 0x8000U : 0x80U));
        addNumber(uses, 2);
    }
    ByteSink primary(true);
    primary.u32(longItems ? 1U << 24U : 0U);
    addItem(primary, item);
    const Bytes properties = box(
        "iprp", ByteSink(true).raw(box("ipco", sizes.bytes)).raw(box("ipma", uses.bytes)).bytes);
    ByteSink meta(true);
    meta.u32(0).raw(box("pitm", primary.bytes)).raw(properties);
    return ByteSink(true).raw(box("ftyp", {})).raw(box("meta", meta.bytes)).bytes;
}

TEST(PictureHead, OfThePrimaryItemIsTheSizeThatItHas) {
    for (const bool longItems : {false, true}) {
        for (const bool longNumbers : {false, true}) {
            const auto sizeOf = [&](std::uint32_t item) {
                const Bytes file = heifWithPrimary(item, longItems, longNumbers);
                return sizeOfPrimaryItem(readerOf(file));
            };
            EXPECT_EQ(sizeOf(7), (HeadSize{30, 31}));
            EXPECT_EQ(sizeOf(9), (HeadSize{70, 71}));
            EXPECT_FALSE(sizeOf(8));
        }
    }
}

TEST(PictureHead, OfThePrimaryItemIsFoundInTheSecondListOfProperties) {
    const auto box = [](std::string_view type, const Bytes& contents) {
        return ByteSink(true).u32(8 + contents.size()).text(type).raw(contents).bytes;
    };
    const Bytes kinds = box("ipco", box("ispe", ByteSink(true).u32(0).u32(30).u32(31).bytes));
    const auto list = [&](unsigned item) {
        return box("ipma", ByteSink(true).u32(0).u32(1).u16(item).u8(1).u8(1).bytes);
    };
    ByteSink meta(true);
    meta.u32(0).raw(box("pitm", ByteSink(true).u32(0).u16(9).bytes));
    meta.raw(box("iprp", ByteSink(true).raw(kinds).raw(list(7)).raw(list(9)).bytes));
    const Bytes file = ByteSink(true).raw(box("ftyp", {})).raw(box("meta", meta.bytes)).bytes;
    EXPECT_EQ(sizeOfPrimaryItem(readerOf(file)), (HeadSize{30, 31}));
}

TEST(PictureHead, OfThePrimaryItemIsFoundInAFewReadsHoweverOftenItsPropertiesAreNamed) {
    const auto box = [](std::string_view type, const Bytes& contents) {
        return ByteSink(true).u32(8 + contents.size()).text(type).raw(contents).bytes;
    };
    const Bytes size = box("ispe", ByteSink(true).u32(0).u32(30).u32(31).bytes);
    ByteSink uses(true);
    uses.u32(0).u32(400);
    for (int entry = 0; entry < 400; ++entry) {
        uses.u16(9).u8(250);
        for (int i = 0; i < 250; ++i) uses.u8(1);
    }
    ByteSink properties(true);
    properties.raw(box("ipco", size));
    for (int list = 0; list < 40; ++list) properties.raw(box("ipma", uses.bytes));
    ByteSink meta(true);
    meta.u32(0).raw(box("pitm", ByteSink(true).u32(0).u16(9).bytes));
    meta.raw(box("iprp", properties.bytes));
    const Bytes file = ByteSink(true).raw(box("ftyp", {})).raw(box("meta", meta.bytes)).bytes;
    std::size_t bytesRead = 0;
    const ReadAt read = readerOf(file);
    const auto found = sizeOfPrimaryItem([&](std::uint64_t place, std::span<std::uint8_t> target) {
        const std::size_t count = read(place, target);
        bytesRead += count;
        return count;
    });
    EXPECT_EQ(found, (HeadSize{30, 31}));
    EXPECT_LT(bytesRead, 300'000U) << "of " << file.size();
}

TEST(PictureHead, OfThePrimaryItemNothingIsReadBehindWhatItsBoxIsIn) {
    const auto box = [](std::string_view type, const Bytes& contents) {
        return ByteSink(true).u32(8 + contents.size()).text(type).raw(contents).bytes;
    };
    const Bytes size = box("ispe", ByteSink(true).u32(0).u32(30).u32(31).bytes);
    for (const std::uint32_t length : {0U, 99U}) {
        // The head of the last box goes on behind the properties.
        const Bytes properties = ByteSink(true).raw(box("ipco", size)).u32(length).text("ip").bytes;
        ByteSink meta(true);
        meta.u32(0).raw(box("pitm", ByteSink(true).u32(0).u16(9).bytes));
        meta.raw(box("iprp", properties)).text("ma").u32(0).u32(1).u16(9).u8(1).u8(1);
        const Bytes file = ByteSink(true).raw(box("ftyp", {})).raw(box("meta", meta.bytes)).bytes;
        EXPECT_FALSE(sizeOfPrimaryItem(readerOf(file))) << length;
    }
}

TEST(PictureHead, OfThePrimaryItemIsNoneWhereTheFileIsCut) {
    const Bytes file = heifWithPrimary(9, false, false);
    for (std::size_t size = 0; size + 3 < file.size(); ++size) {
        const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(sizeOfPrimaryItem(readerOf(cut))) << size;
    }
}

TEST(PictureHead, OfJpegXLIsFoundInItsBoxesWholeOrInParts) {
    // Small, a height of 8 * (4 + 1), the ratio 4 : 3.
    const Bytes stream = ByteSink(false).u8(0xFF).u8(0x0A).u64(1U | 4U << 1U | 3U << 6U).bytes;
    const auto file = [](std::string_view type, const Bytes& contents) {
        ByteSink out(true);
        out.u32(12).text("JXL ").u32(0x0D0A870A);
        return out.u32(8 + contents.size()).text(type).raw(contents).bytes;
    };
    EXPECT_EQ(headOf(file("jxlc", stream)), (HeadSize{53, 40}));
    EXPECT_EQ(headOf(file("jxlp", ByteSink(true).u32(0).raw(stream).bytes)), (HeadSize{53, 40}));
    EXPECT_FALSE(headOf(file("jxlc", ByteSink(true).u32(0).raw(stream).bytes)));
    EXPECT_FALSE(headOf(file("free", stream)));
    // The first box counts, and no byte behind it: 1 x 1 is what zeros say.
    const Bytes part = ByteSink(true).u32(0).raw(stream).bytes;
    const Bytes second = ByteSink(true).u32(18).text("jxlc").u16(0xFF0A).u64(0).bytes;
    Bytes both = file("jxlp", part);
    both.insert(both.end(), second.begin(), second.end());
    EXPECT_EQ(headOf(both), (HeadSize{53, 40}));
    Bytes cut = file("jxlp", ByteSink(true).u32(0).u16(0xFF0A).bytes);
    cut.insert(cut.end(), 16, 0xFF);
    EXPECT_EQ(headOf(cut), (HeadSize{1, 1}));
    EXPECT_FALSE(headOf(file("jxlp", ByteSink(true).u32(0).bytes)));
    Bytes half = file("jxlc", Bytes{0xFF});  // the second byte of its mark is behind it
    half.insert(half.end(), stream.begin() + 1, stream.end());
    EXPECT_FALSE(headOf(half));
}

TEST(PictureHead, OfALossyWebPThatIsCutIsNone) {
    ByteSink webp(false);
    webp.text("RIFF").u32(30).text("WEBPVP8 ").u32(18).zeros(6).u16(300);
    EXPECT_FALSE(headOf(webp.bytes));
    EXPECT_EQ(headOf(webp.u16(70).bytes), (HeadSize{300, 70}));
}

TEST(PictureHead, WhatIsCutOffTellsNothingAndIsReadNoFurther) {
    for (const ImageType& type : imageTypes()) {
        if (!type.canWrite) continue;
        const Bytes whole = *encodeImage(pictureOf(300, 70), type.identifier);
        bool isKnown = false;
        for (std::size_t size = 0; size < std::min<std::size_t>(whole.size(), 700); ++size) {
            const auto head = headOf({whole.begin(), whole.begin() + static_cast<long>(size)});
            // From some length on the size is told, and before that no other.
            EXPECT_FALSE(isKnown && !head) << type.name << " " << size;
            EXPECT_EQ(head.value_or(HeadSize{300, 70}), (HeadSize{300, 70}))
                << type.name << " " << size;
            isKnown = head.has_value();
        }
    }
}

TEST(PictureHead, EndlessBoxesAndSegmentsEnd) {
    int reads = 0;
    const auto tell = [&](std::string_view start, std::string_view then) {
        return sizeInHead([&, start, then](std::uint64_t place, std::span<std::uint8_t> target) {
            ++reads;
            const std::string_view text = place == 0 ? start : then;
            for (std::size_t i = 0; i < target.size(); ++i)
                target[i] = static_cast<std::uint8_t>(i < text.size() ? text[i] : 0);
            return target.size();
        });
    };
    using namespace std::string_view_literals;
    EXPECT_FALSE(tell("\xFF\xD8\xFF\xE0"sv, "\xFF\xE0\0\2"sv));
    EXPECT_FALSE(tell("\xFF\xD8\xFF\xE0"sv, "\xFF\xFF"sv));
    EXPECT_FALSE(
        tell("\0\0\0\x20"
             "ftypheic"sv,
             "\0\0\0\x08skip"sv));
    EXPECT_FALSE(tell("II\x2A\0\x08\0\0\0"sv, "\xFF\xFF"sv));
    EXPECT_LT(reads, 5000);
}

TEST(PictureHead, SidesThatNoDecoderTakesAreNone) {
    for (const auto& [width, height] :
         {std::pair{0U, 5U}, {5U, 0U}, {0x80000000U, 5U}, {5U, 0x80000000U}}) {
        ByteSink png(true);
        png.text("\x89PNG\r\n\x1A\n").u32(13).text("IHDR").u32(width).u32(height);
        EXPECT_FALSE(headOf(png.bytes)) << width << " x " << height;
    }
}

TEST(PictureHead, OfAFileIsReadFromIt) {
    const std::filesystem::path path = std::filesystem::path(LATE_FILES) / "plain.jxl";
    EXPECT_EQ(sizeInHeadOfFile(path), (HeadSize{5, 3}));
    EXPECT_FALSE(sizeInHeadOfFile(path.string() + ".missing"));
    EXPECT_FALSE(sizeInHeadOfFile(LATE_FILES));
    // A directory at a place that no file has.
    const test::TemporaryFolder folder;
    const std::string far = folder / "far.tif";
    const Bytes bytes =
        ByteSink(true).text("MM").u16(43).u16(8).u16(0).u64(~std::uint64_t{0}).bytes;
    std::ofstream(far, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<long>(bytes.size()));
    EXPECT_FALSE(sizeInHeadOfFile(far));
}

}  // namespace
}  // namespace skarnel
