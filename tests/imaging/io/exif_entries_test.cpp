// Entries of every type and directory of EXIF, one by one.
#include <gtest/gtest.h>

#include "imaging/io/exif.h"
#include "imaging/io/exif_block.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

constexpr unsigned kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kUndefined = 7,
                   kSignedRational = 10;
constexpr unsigned kExif = 0x8769, kGps = 0x8825;

struct Entry {
    unsigned tag;
    unsigned type;
    unsigned count;
    Bytes value;  // of the block's byte order
};

/// One directory at `offset`, its long values behind it.
Bytes directory(const std::vector<Entry>& entries, std::size_t offset, bool big) {
    ByteSink table(big);
    ByteSink values(big);
    table.u16(entries.size());
    for (const Entry& entry : entries) {
        table.u16(entry.tag).u16(entry.type).u32(entry.count);
        if (entry.value.size() <= 4) {
            table.raw(entry.value).zeros(4 - entry.value.size());
        } else {
            table.u32(offset + 2 + 12 * entries.size() + 4 + values.bytes.size());
            values.raw(entry.value);
        }
    }
    return table.u32(0).raw(values.bytes).bytes;
}

/// A block whose main directory names that of the camera and that of the place, where they have
/// entries.
Bytes block(std::vector<Entry> main, const std::vector<Entry>& exif = {},
            const std::vector<Entry>& gps = {}, bool big = false) {
    constexpr std::size_t kStart = 8;
    const std::size_t named = (exif.empty() ? 0U : 1U) + (gps.empty() ? 0U : 1U);
    std::size_t next = kStart + directory(main, 0, big).size() + 12 * named;
    Bytes further;
    for (const auto& [tag, entries] : {std::pair{kExif, exif}, {kGps, gps}}) {
        if (entries.empty()) continue;
        main.push_back({tag, kLong, 1, ByteSink(big).u32(next).bytes});
        const Bytes part = directory(entries, next, big);
        further.insert(further.end(), part.begin(), part.end());
        next += part.size();
    }
    ByteSink out(big);
    out.text(big ? "MM" : "II").u16(42).u32(kStart);
    return out.raw(directory(main, kStart, big)).raw(further).bytes;
}

Bytes number16(unsigned value) {
    return ByteSink(false).u16(value).bytes;
}

Bytes number32(std::uint64_t value) {
    return ByteSink(false).u32(value).bytes;
}

Bytes fraction(std::uint64_t numerator, std::uint64_t denominator) {
    return ByteSink(false).u32(numerator).u32(denominator).bytes;
}

ImageProperties propertiesOf(const Bytes& bytes) {
    ImageProperties properties;
    (void)io::readExif(bytes, properties);
    return properties;
}

TEST(ExifEntries, NumbersOfEveryTypeAreNumbers) {
    const ImageProperties properties =
        propertiesOf(block({}, {{0x8827, kShort, 1, number16(400)},
                                {0xA002, kLong, 1, number32(4'000'000'000)},
                                {0x829A, kRational, 1, fraction(1, 8)},
                                {0x829D, kRational, 1, fraction(8, 4)},
                                {0x9204, kSignedRational, 1, fraction(0xFFFFFFFF, 4)}}));
    EXPECT_EQ(wholeProperty(properties, "{Exif}.ISOSpeedRatings"), 400);
    EXPECT_EQ(wholeProperty(properties, "{Exif}.PixelXDimension"), 4'000'000'000);
    EXPECT_EQ(numberProperty(properties, "{Exif}.ExposureTime"), 0.125);
    EXPECT_EQ(wholeProperty(properties, "{Exif}.FNumber"), 2) << "a whole one";
    EXPECT_EQ(numberProperty(properties, "{Exif}.ExposureBiasValue"), -0.25);
}

TEST(ExifEntries, WhatIsNoOneNumberIsTheLibrarysText) {
    const ImageProperties properties =
        propertiesOf(block({}, {{0x829A, kRational, 1, fraction(1, 0)},
                                {0x9204, kSignedRational, 1, fraction(1, 0)},
                                {0x9214, kShort, 2, ByteSink(false).u16(5).u16(6).bytes},
                                {0x9000, kUndefined, 4, {'0', '2', '3', '0'}}}));
    EXPECT_EQ(numberProperty(properties, "{Exif}.ExposureTime"), -1) << "divided by nothing";
    EXPECT_EQ(numberProperty(properties, "{Exif}.ExposureBiasValue"), -1);
    EXPECT_FALSE(textProperty(properties, "{Exif}.SubjectArea").empty());
    EXPECT_FALSE(textProperty(properties, "{Exif}.ExifVersion").empty());
}

TEST(ExifEntries, MakersNotesAndTagsWithoutANameAreLeftOut) {
    const ImageProperties properties =
        propertiesOf(block({{0x010F, kAscii, 4, {'C', 'a', 'm', 0}}, {0xFE77, kShort, 1, {1, 0}}},
                           {{0x927C, kUndefined, 4, {'n', 'o', 't', 'e'}}}));
    EXPECT_EQ(properties.size(), 2U) << "the maker and the block itself";
    EXPECT_EQ(textProperty(properties, "{TIFF}.Make"), "Cam");
}

TEST(ExifEntries, TheCompressionIsThatOfTheFileAndNotTheCameras) {
    const Bytes bytes = block({{0x0103, kShort, 1, number16(6)}, {0x0112, kShort, 1, {1, 0}}});
    EXPECT_EQ(propertiesOf(bytes).count(kPropertyTiffCompression), 0U);
    ImageProperties properties = {{std::string(kPropertyTiffCompression), std::int64_t{5}},
                                  {std::string(kPropertyDpiWidth), 300.0}};
    (void)io::readExif(bytes, properties);
    EXPECT_EQ(wholeProperty(properties, kPropertyTiffCompression), 5);
    EXPECT_EQ(wholeProperty(properties, "{TIFF}.Orientation"), 1);
    setExifUpright(properties);
    EXPECT_EQ(wholeProperty(properties, kPropertyTiffCompression), 5);
    EXPECT_EQ(numberProperty(properties, kPropertyDpiWidth), 300.0);
}

TEST(ExifEntries, AnOrientationThatIsNoneStandsForUpright) {
    for (const auto& [stored, expected] :
         {std::pair{0U, 1}, {1U, 1}, {8U, 8}, {9U, 1}, {65535U, 1}}) {
        ImageProperties properties;
        const Bytes bytes = block({{0x0112, kShort, 1, number16(stored)}});
        EXPECT_EQ(io::readExif(bytes, properties).orientation, expected) << stored;
    }
}

TEST(ExifEntries, ResolutionsMayBeOfCentimetres) {
    for (const auto& [unit, expected] : {std::pair{2U, 100.0}, {3U, 254.0}}) {
        ImageProperties properties;
        const io::ExifFacts facts = io::readExif(block({{0x011A, kRational, 1, fraction(100, 1)},
                                                        {0x011B, kRational, 1, fraction(100, 1)},
                                                        {0x0128, kShort, 1, number16(unit)}}),
                                                 properties);
        EXPECT_DOUBLE_EQ(facts.dpiHorizontal, expected);
        EXPECT_DOUBLE_EQ(facts.dpiVertical, expected);
    }
}

TEST(ExifEntries, ABlockTooLongForAMarkerIsNotRead) {
    Bytes bytes = block({{0x0112, kShort, 1, number16(6)}});
    ImageProperties properties;
    bytes.resize(65527);
    EXPECT_EQ(io::readExif(bytes, properties).orientation, 6);
    bytes.resize(65528);
    EXPECT_EQ(io::readExif(bytes, properties).orientation, 1);
}

/// Camera, place and an odd number of bytes, in both byte orders.
Bytes fullBlock(bool big) {
    const auto half = [big](unsigned value) { return ByteSink(big).u16(value).bytes; };
    ByteSink place(big);
    for (const unsigned part : {48U, 1U, 12U, 1U, 30U, 2U}) place.u32(part);
    return block(
        {{0x010F, kAscii, 7, {'C', 'a', 'm', 'e', 'r', 'a', 0}}, {0x0100, kShort, 1, half(4000)}},
        {{0x9101, kUndefined, 5, {1, 2, 3, 4, 5}}, {0xA001, kShort, 1, half(0xFFFF)}},
        {{0x0000, kByte, 4, {2, 3, 0, 0}}, {0x0002, kRational, 3, place.bytes}}, big);
}

TEST(ExifEntries, PlacesAndOddValuesAreKeptAndColoursBecomeSrgb) {
    for (const bool big : {false, true}) {
        const io::ExifTree read = io::readExifTree(fullBlock(big));
        const io::ExifTree tree = io::readExifTree(io::writeExifBlock(read, std::nullopt));
        ASSERT_EQ(tree.main.size(), 1U) << "not the stored width";
        EXPECT_EQ(tree.main[0].value, (Bytes{'C', 'a', 'm', 'e', 'r', 'a', 0}));
        ASSERT_EQ(tree.exif.size(), 2U);
        EXPECT_EQ(tree.exif[0].value, (Bytes{1, 2, 3, 4, 5}));
        EXPECT_EQ(tree.exif[1].value, (Bytes{1, 0})) << "sRGB";
        ASSERT_EQ(tree.gps.size(), 2U);
        EXPECT_EQ(tree.gps[0].value, (Bytes{2, 3, 0, 0}));
        ByteSink place(false);
        for (const unsigned part : {48U, 1U, 12U, 1U, 30U, 2U}) place.u32(part);
        EXPECT_EQ(tree.gps[1].value, place.bytes);
    }
}

TEST(ExifEntries, APlaceAloneIsATreeToo) {
    const io::ExifTree tree = io::readExifTree(block({}, {}, {{0x0000, kByte, 4, {2, 3, 0, 0}}}));
    EXPECT_FALSE(tree.empty());
    const io::ExifTree again = io::readExifTree(io::writeExifBlock(tree, std::nullopt));
    EXPECT_TRUE(again.main.empty());
    EXPECT_TRUE(again.exif.empty());
    ASSERT_EQ(again.gps.size(), 1U);
    ImageProperties properties = propertiesOf(fullBlock(false));
    EXPECT_EQ(properties.count("{GPS}.GPSLatitude"), 1U);
    setExifUpright(properties);
    EXPECT_EQ(properties.count("{GPS}.GPSLatitude"), 1U) << "written anew";
}

TEST(ExifEntries, ADirectoryNamedByAnythingButAnOffsetIsPassedOver) {
    // A SHORT, two LONGs, and the offset type that TIFF calls IFD.
    for (const auto& [type, count, kept] :
         {std::tuple{kShort, 1U, 0U}, {kLong, 2U, 0U}, {13U, 1U, 1U}}) {
        Bytes bytes = block({}, {{0x8827, kShort, 1, number16(400)}});
        // The only entry of the main directory begins at 10: tag, type, count.
        bytes[12] = static_cast<std::uint8_t>(type);
        bytes[14] = static_cast<std::uint8_t>(count);
        EXPECT_EQ(io::readExifTree(bytes).exif.size(), kept) << type;
    }
}

TEST(ExifEntries, EveryPrefixGivesNoMoreThanTheWhole) {
    const Bytes whole = fullBlock(false);
    const std::size_t entries = io::readExifTree(whole).exif.size();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_LE(io::readExifTree(cut).exif.size(), entries);
        (void)propertiesOf(cut);
    }
}

TEST(ExifEntries, ResolutionsAreWrittenAsFractionsOfAMillionOrWhole) {
    const auto written = [](double value) {
        const Bytes bytes = io::writeExifBlock({}, io::Resolution{value, value});
        ImageProperties properties;
        return io::readExif(bytes, properties).dpiHorizontal;
    };
    EXPECT_EQ(written(299.9994), 299.9994);
    EXPECT_EQ(written(4000), 4000);
    EXPECT_EQ(written(4000.4), 4000);
    EXPECT_EQ(written(1e12), 4294967295.0);
}

TEST(ExifEntries, OnlyTheFirstOfTwoPlacesCountsAndNoValueIsLongerThanAMarker) {
    Bytes bytes = block({}, {{0x9286, kUndefined, 60001, Bytes(60001, 'x')}},
                        {{0x0000, kByte, 4, {2, 3, 0, 0}}});
    EXPECT_TRUE(io::readExifTree(bytes).exif.empty());
    EXPECT_FALSE(io::readExifTree(block({}, {{0x8827, kShort, 1, {1, 0}}})).empty());
    // Both entries of the main directory name the place now: the first is the camera's, at 10.
    bytes[10] = kGps & 0xFFU;
    bytes[11] = kGps >> 8U;
    const io::ExifTree tree = io::readExifTree(bytes);
    EXPECT_TRUE(tree.gps.empty()) << "the camera's directory, whose only value is too long";
}

}  // namespace
}  // namespace skarnel
