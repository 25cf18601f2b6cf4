#include "recipe/xmp_packet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "imaging/io/image_io.h"

namespace skarnel {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kPacket = "<x:xmpmeta>a recipe & more</x:xmpmeta>";

Bytes bytesOf(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

/// Signature and three empty-handed chunks; check sums of IHDR and IDAT are not looked at.
Bytes tinyPng() {
    return bytesOf(
        "\x89PNG\r\n\x1A\n"
        "\0\0\0\x0DIHDR\0\0\0\1\0\0\0\1\x08\0\0\0\0\0\0\0\0"
        "\0\0\0\0IDAT\0\0\0\0"
        "\0\0\0\0IEND\xAE\x42\x60\x82"sv);
}

/// Start, JFIF segment of 16 bytes, a start of scan, end.
Bytes tinyJpeg() {
    return bytesOf("\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0\xFF\xDA\0\2xyz\xFF\xD9"sv);
}

/// A directory of two entries, tags 256 and 33000, of either byte order and either form.
Bytes tinyTiff(bool little, bool big) {
    Bytes out = bytesOf(little ? "II"sv : "MM"sv);
    const auto put = [&](std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i) {
            const int shift = 8 * (little ? i : size - 1 - i);
            out.push_back(static_cast<std::uint8_t>(value >> shift));
        }
    };
    const int place = big ? 8 : 4;
    put(big ? 43 : 42, 2);
    if (big) put(8, 2), put(0, 2);
    put(out.size() + static_cast<std::size_t>(place), place);
    put(2, big ? 8 : 2);
    for (const std::uint64_t tag : {256U, 33000U}) {
        put(tag, 2), put(4, 2), put(1, place), put(tag, place);
    }
    put(0, place);
    return out;
}

struct Row {
    std::string name;
    Bytes file;
};

std::vector<Row> rows() {
    return {{"PNG", tinyPng()},
            {"JPEG", tinyJpeg()},
            {"TIFF II", tinyTiff(true, false)},
            {"TIFF MM", tinyTiff(false, false)},
            {"BigTIFF II", tinyTiff(true, true)},
            {"BigTIFF MM", tinyTiff(false, true)}};
}

TEST(XmpPacket, IsFoundWhereItWasPut) {
    for (const Row& row : rows()) {
        const auto with = withXmpPacket(row.file, kPacket);
        ASSERT_TRUE(with) << row.name << ": " << with.error().message;
        EXPECT_EQ(xmpPacketOf(*with), kPacket) << row.name;
    }
}

TEST(XmpPacket, AFileWithoutOneHasNone) {
    for (const Row& row : rows()) EXPECT_EQ(xmpPacketOf(row.file), std::nullopt) << row.name;
    EXPECT_EQ(xmpPacketOf({}), std::nullopt);
    EXPECT_EQ(xmpPacketOf(bytesOf("BM")), std::nullopt);
}

TEST(XmpPacket, StandsBehindTheHeaderOfAPng) {
    // 8 bytes of signature and 25 of the header come first; then length, type and the keyword.
    const Bytes with = *withXmpPacket(tinyPng(), kPacket);
    const Bytes plain = tinyPng();
    EXPECT_TRUE(std::equal(plain.begin(), plain.begin() + 33, with.begin()));
    EXPECT_EQ(std::string(with.begin() + 37, with.begin() + 58), "iTXtXML:com.adobe.xmp");
    EXPECT_EQ(with.size(), plain.size() + 12 + 22 + kPacket.size());
}

TEST(XmpPacket, StandsBehindTheFirstSegmentOfAJpeg) {
    // APP0 must come first: 2 + 2 + 16 bytes.
    const Bytes with = *withXmpPacket(tinyJpeg(), kPacket);
    EXPECT_EQ(std::string(with.begin() + 20, with.begin() + 22), "\xFF\xE1");
    // The length counts itself, the name with its zero, and the packet.
    EXPECT_EQ(with[22] * 256U + with[23], 2 + 29 + kPacket.size());
}

TEST(XmpPacket, KeepsTheEntriesOfATiffSorted) {
    const Bytes with = *withXmpPacket(tinyTiff(true, false), kPacket);
    const std::size_t directory = with[4] + 256U * with[5];
    EXPECT_EQ(with[directory], 3);
    std::vector<unsigned> tags;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t entry = directory + 2 + 12 * i;
        tags.push_back(with[entry] + 256U * with[entry + 1]);
    }
    EXPECT_EQ(tags, (std::vector<unsigned>{256, 700, 33000}));
}

TEST(XmpPacket, OfATiffBeginsAtAnEvenPlaceAndSoDoesItsDirectory) {
    for (const std::size_t filling : {0U, 1U}) {
        for (const std::size_t more : {0U, 1U}) {
            Bytes file = tinyTiff(true, false);
            file.resize(file.size() + filling);
            const std::string packet = std::string(kPacket) + std::string(more, '!');
            const Bytes with = *withXmpPacket(file, packet);
            EXPECT_EQ(xmpPacketOf(with), packet);
            const std::size_t directory = with[4] + 256U * with[5];
            EXPECT_EQ(directory % 2, 0U);
            EXPECT_EQ(with[directory + 2 + 12 + 8] % 2, 0) << "the packet's place";
        }
    }
}

TEST(XmpPacket, AJpegHasRoomForOneSegment) {
    // 65,535 bytes less two of the length and 29 of the name with its zero.
    EXPECT_TRUE(withXmpPacket(tinyJpeg(), std::string(65504, 'x')));
    const auto with = withXmpPacket(tinyJpeg(), std::string(65505, 'x'));
    ASSERT_FALSE(with);
    EXPECT_EQ(with.error().code, ErrorCode::TooLarge);
}

TEST(XmpPacket, OnlySegmentsWithALengthAreSteppedOver) {
    const Bytes packet = *withXmpPacket(bytesOf("\xFF\xD8"), kPacket);
    const std::string rest(packet.begin() + 2, packet.end());
    const struct {
        const char* name;
        std::string_view segment;
        bool isSteppedOver;
    } rows[] = {
        {"the first with a length", "\xFF\xC0\0\3x"sv, true},
        {"the last before those without", "\xFF\xCF\0\3x"sv, true},
        {"the first without", "\xFF\xD0\0\3x"sv, false},
        {"the last without", "\xFF\xD9\0\3x"sv, false},
        {"the scan", "\xFF\xDA\0\3x"sv, false},
        {"the one behind the scan", "\xFF\xDB\0\3x"sv, true},
        {"a comment", "\xFF\xFE\0\3x"sv, true},
        {"filling", "\xFF\xFF\0\3x"sv, false},
        {"below all", "\xFF\xBF\0\3x"sv, false},
        {"no mark", "\x12\xFE\0\3x"sv, false},
        {"nothing in it", "\xFF\xFE\0\2"sv, true},
        {"less than its own length", "\xFF\xFE\0\1"sv, false},
    };
    for (const auto& row : rows) {
        const Bytes file = bytesOf("\xFF\xD8" + std::string(row.segment) + rest);
        EXPECT_EQ(xmpPacketOf(file).has_value(), row.isSteppedOver) << row.name;
    }
    EXPECT_EQ(xmpPacketOf(bytesOf("\xFF\xD8\xFF\xFE\0\2"sv)), std::nullopt);
    EXPECT_EQ(xmpPacketOf(bytesOf("\xFF\xD8\xFF\xFE\0\7x"sv)), std::nullopt);
}

TEST(XmpPacket, OfATiffHasTheTypeOfBytesOrAnUnknownOneAndLiesWithinTheFile) {
    const Bytes with = *withXmpPacket(tinyTiff(true, false), kPacket);
    // Behind the count and the entry of tag 256: tag, type, length and place of the packet.
    const std::size_t entry = with[4] + 256U * with[5] + 2 + 12;
    const auto found = [&](std::size_t at, std::uint8_t value) {
        Bytes changed = with;
        changed[entry + at] = value;
        return xmpPacketOf(changed).has_value();
    };
    EXPECT_TRUE(found(2, 1));
    EXPECT_TRUE(found(2, 7));
    EXPECT_FALSE(found(2, 2)) << "text";
    EXPECT_TRUE(found(4, 5));
    EXPECT_FALSE(found(4, 4)) << "would stand in the entry itself";
    EXPECT_FALSE(found(4, 255)) << "longer than the file";
    EXPECT_FALSE(found(9, 255)) << "begins behind the file";
}

TEST(XmpPacket, OtherFormatsCannotCarryOne) {
    const auto with = withXmpPacket(bytesOf("BM......"), kPacket);
    ASSERT_FALSE(with);
    EXPECT_EQ(with.error().code, ErrorCode::Unsupported);
}

TEST(XmpPacket, ADamagedCheckSumInAPngHidesIt) {
    Bytes with = *withXmpPacket(tinyPng(), kPacket);
    with[60] ^= 1U;
    EXPECT_EQ(xmpPacketOf(with), std::nullopt);
}

TEST(XmpPacket, NoCutAndNoFlippedBitReadsBeyondTheFile) {
    for (const Row& row : rows()) {
        const Bytes with = *withXmpPacket(row.file, kPacket);
        for (std::size_t size = 0; size < with.size(); ++size) {
            const Bytes cut(with.begin(), with.begin() + static_cast<std::ptrdiff_t>(size));
            const auto packet = xmpPacketOf(cut);
            EXPECT_TRUE(!packet || packet == kPacket) << row.name << " " << size;
            (void)withXmpPacket(cut, kPacket);
        }
        for (std::size_t bit = 0; bit < 8 * with.size(); ++bit) {
            Bytes flipped = with;
            flipped[bit / 8] ^= static_cast<std::uint8_t>(1U << (bit % 8));
            (void)xmpPacketOf(flipped);
            (void)withXmpPacket(flipped, kPacket);
        }
    }
}

}  // namespace
}  // namespace skarnel
