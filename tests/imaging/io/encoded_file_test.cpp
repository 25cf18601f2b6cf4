// Every file that an encoder makes passes, and none that is cut, of another size or of another
// type.
#include "imaging/io/encoded_file.h"

#include <gtest/gtest.h>

#include "imaging/io/animation.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

const std::string kRefusal = "The encoded picture is not of its format";

::testing::AssertionResult passes(const Bytes& file, std::string_view type, HeadSize size) {
    const auto checked = checkedFile(file, type, size);
    if (!checked) return ::testing::AssertionFailure() << checked.error().message;
    if (*checked != file) return ::testing::AssertionFailure() << "other bytes";
    return ::testing::AssertionSuccess();
}

/// Refused for what it is, not for another reason.
::testing::AssertionResult isRefused(const Bytes& file, std::string_view type, HeadSize size) {
    const auto checked = checkedFile(file, type, size);
    if (checked) return ::testing::AssertionFailure() << "passed with " << file.size() << " bytes";
    if (checked.error().code != ErrorCode::Failed || checked.error().message != kRefusal)
        return ::testing::AssertionFailure() << checked.error().message;
    return ::testing::AssertionSuccess();
}

std::vector<std::string_view> writtenTypes() {
    std::vector<std::string_view> types;
    for (const ImageType& type : imageTypes()) {
        if (type.canWrite) types.push_back(type.identifier);
    }
    return types;
}

CGImage opaquePicture(int width, int height) {
    Bytes bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 77);
    return *CGImage::copyOf({bytes.data(), width, height, std::ptrdiff_t{3} * width, 3});
}

/// Nothing asked for; losses and a resolution; each way of packing a TIFF.
std::vector<ImageProperties> variousProperties() {
    std::vector<ImageProperties> all = {
        {}, {{std::string(kPropertyLossyQuality), 0.4}, {std::string(kPropertyDpiWidth), 300.0}}};
    for (const std::int64_t packing : {1, 5, 8, 32773})
        all.push_back({{std::string(kPropertyTiffCompression), packing}});
    return all;
}

TEST(EncodedFile, EveryFileThatIsWrittenPasses) {
    for (const std::string_view type : writtenTypes()) {
        for (const auto& [width, height] : {std::pair{1, 1}, {3, 2}, {2, 5}, {257, 3}, {3, 257}}) {
            for (const CGImage& image :
                 {randomValidPicture(width, height, 7), opaquePicture(width, height)}) {
                for (const ImageProperties& properties : variousProperties()) {
                    const auto file = encodeImage(image, type, properties);
                    ASSERT_TRUE(file) << type << ": " << file.error().message;
                    EXPECT_TRUE(passes(*file, type, {width, height})) << type << " " << width;
                }
            }
        }
    }
}

/// Of more than one strip or chunk of pixels.
TEST(EncodedFile, ALargeFilePasses) {
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG}) {
        const auto file = encodeImage(randomValidPicture(701, 611, 3), type);
        ASSERT_TRUE(file) << type << ": " << file.error().message;
        EXPECT_TRUE(passes(*file, type, {701, 611})) << type;
    }
}

TEST(EncodedFile, OneThatIsCutAnywhereIsRefused) {
    for (const std::string_view type : writtenTypes()) {
        for (const ImageProperties& properties : variousProperties()) {
            const Bytes whole = *encodeImage(randomValidPicture(9, 7, 5), type, properties);
            for (std::size_t size = 0; size < whole.size(); ++size) {
                const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
                ASSERT_TRUE(isRefused(cut, type, {9, 7})) << type << " of " << whole.size();
            }
        }
    }
}

TEST(EncodedFile, OneOfAnotherSizeIsRefused) {
    for (const std::string_view type : writtenTypes()) {
        const Bytes file = *encodeImage(randomValidPicture(5, 3, 5), type);
        for (const HeadSize other : {HeadSize{3, 5}, {5, 4}, {4, 3}, {15, 1}, {0, 0}})
            EXPECT_TRUE(isRefused(file, type, other)) << type << " " << other.width;
    }
}

TEST(EncodedFile, OneOfAnotherTypeIsRefused) {
    for (const std::string_view type : writtenTypes()) {
        const Bytes file = *encodeImage(randomValidPicture(5, 3, 5), type);
        for (const std::string_view asked : writtenTypes())
            EXPECT_EQ(bool(passes(file, asked, {5, 3})), asked == type) << type << " " << asked;
        EXPECT_TRUE(isRefused({'x'}, type, {5, 3})) << type;
        EXPECT_TRUE(isRefused({}, type, {5, 3})) << type;
    }
}

// Only a TIFF may have bytes that nothing refers to.
TEST(EncodedFile, OneThatGoesOnAfterItsEndIsRefused) {
    for (const std::string_view type : writtenTypes()) {
        if (type == kUTTypeTIFF) continue;
        Bytes file = *encodeImage(randomValidPicture(5, 3, 5), type);
        file.insert(file.end(), 2, 0);
        EXPECT_TRUE(isRefused(file, type, {5, 3})) << type;
    }
}

TEST(EncodedFile, AnErrorStaysTheErrorThatItIs) {
    const auto checked = checkedFile(Error{ErrorCode::TooLarge, "too large"}, kUTTypePNG, {1, 1});
    ASSERT_FALSE(checked);
    EXPECT_EQ(checked.error().code, ErrorCode::TooLarge);
    EXPECT_EQ(checked.error().message, "too large");
}

TEST(EncodedFile, AChunkThatReachesOverTheEndIsRefused) {
    Bytes png = *encodeImage(randomValidPicture(5, 3, 5), kUTTypePNG);
    ASSERT_TRUE(passes(png, kUTTypePNG, {5, 3}));
    png[33 + 3] = 200;  // the length of what follows the header: one byte so far
    EXPECT_TRUE(isRefused(png, kUTTypePNG, {5, 3}));
    Bytes webP = *encodeImage(randomValidPicture(5, 3, 5), kUTTypeWebP);
    ASSERT_TRUE(passes(webP, kUTTypeWebP, {5, 3}));
    webP[16] = static_cast<std::uint8_t>(webP[16] + 4);  // the length of the first chunk
    EXPECT_TRUE(isRefused(webP, kUTTypeWebP, {5, 3}));
}

TiffBuilder tiffOfTwoStrips() {
    TiffBuilder tiff(5, 3, 2, {8, 8, 8});
    tiff.tags[278] = {2};
    tiff.blocks = {Bytes(30, 1), Bytes(15, 2)};
    return tiff;
}

TEST(EncodedFile, ATiffOfEitherByteOrderAndFormPasses) {
    TiffBuilder tiff = tiffOfTwoStrips();
    for (const bool large : {false, true}) {
        for (const bool bigEndian : {false, true}) {
            tiff.bigTiff = large;
            tiff.bigEndian = bigEndian;
            EXPECT_TRUE(passes(tiff.build(), kUTTypeTIFF, {5, 3})) << large << bigEndian;
        }
    }
}

TEST(EncodedFile, ATiffWithoutStripsIsRefused) {
    TiffBuilder tiff = tiffOfTwoStrips();
    tiff.blocks.clear();
    EXPECT_TRUE(isRefused(tiff.build(), kUTTypeTIFF, {5, 3}));
}

TEST(EncodedFile, ATiffWithFewerLengthsThanStripsIsRefused) {
    TiffBuilder tiff = tiffOfTwoStrips();
    tiff.tags[273] = {8};  // three places, two lengths
    EXPECT_TRUE(isRefused(tiff.build(), kUTTypeTIFF, {5, 3}));
}

TEST(EncodedFile, ATiffWithAnEmptyStripIsRefused) {
    TiffBuilder tiff = tiffOfTwoStrips();
    tiff.blocks[1].clear();
    EXPECT_TRUE(isRefused(tiff.build(), kUTTypeTIFF, {5, 3}));
}

/// A small TIFF by hand, little-endian: 1 x 1 pixel, its strip the three bytes at 8.
struct HandMadeTiff {
    std::uint16_t placeType = 4;  // LONG
    std::uint32_t stripPlace = 8;
    std::uint16_t lengthType = 3;  // SHORT
    std::uint32_t stripLength = 3;
    std::uint16_t moreType = 1;  // BYTE; an entry that nobody reads
    std::uint32_t moreCount = 5;
    std::uint32_t morePlace = 8;  // five bytes from there on

    Bytes build() const {
        constexpr std::uint32_t kDirectory = 14;
        ByteSink out(false);
        out.text("II").u16(42).u32(kDirectory).zeros(6).u16(5);
        const auto entry = [&](int tag, int type, std::uint32_t count, std::uint32_t value) {
            out.u16(static_cast<std::uint64_t>(tag)).u16(static_cast<std::uint64_t>(type));
            out.u32(count).u32(value);
        };
        entry(256, 3, 1, 1);
        entry(257, 3, 1, 1);
        entry(273, placeType, 1, stripPlace);
        entry(279, lengthType, 1, stripLength);
        entry(700, moreType, moreCount, morePlace);
        return out.u32(0).bytes;
    }
};

TEST(EncodedFile, ATiffThatRefersToNothingOutsidePasses) {
    const Bytes file = HandMadeTiff{}.build();
    ASSERT_EQ(file.size(), 14U + 2 + 5 * 12 + 4);
    EXPECT_TRUE(passes(file, kUTTypeTIFF, {1, 1}));
    // Up to the very end, and of a length in four bytes.
    EXPECT_TRUE(
        passes(HandMadeTiff{.stripPlace = 77, .lengthType = 4}.build(), kUTTypeTIFF, {1, 1}));
    EXPECT_TRUE(passes(HandMadeTiff{.morePlace = 75}.build(), kUTTypeTIFF, {1, 1}));
}

TEST(EncodedFile, ATiffThatRefersToWhatIsOutsideIsRefused) {
    const std::pair<const char*, HandMadeTiff> rows[] = {
        {"strip over the end", {.stripPlace = 78}},
        {"strip behind the end", {.stripPlace = 81}},
        {"strip without end", {.lengthType = 4, .stripLength = 0xFFFFFFFF}},
        {"values over the end", {.morePlace = 76}},
        {"values behind the end", {.morePlace = 0xFFFFFFFF}},
        {"more values than bytes", {.moreCount = 0xFFFFFFFF}},
        {"values of no type", {.moreType = 0}},
        {"values of a type to come", {.moreType = 19}},
    };
    for (const auto& [name, tiff] : rows)
        EXPECT_TRUE(isRefused(tiff.build(), kUTTypeTIFF, {1, 1})) << name;
}

/// The large form may give its places in eight bytes.
TEST(EncodedFile, ALargeTiffWithWidePlacesIsFollowed) {
    const auto build = [](std::uint64_t stripPlace) {
        ByteSink out(true);
        out.text("MM").u16(43).u16(8).u16(0).u64(24).zeros(8).u64(4);
        out.u16(256).u16(4).u64(1).u32(1).u32(0);
        out.u16(257).u16(4).u64(1).u32(1).u32(0);
        out.u16(273).u16(16).u64(1).u64(stripPlace);
        out.u16(279).u16(16).u64(1).u64(3);
        return out.u64(0).bytes;
    };
    EXPECT_TRUE(passes(build(16), kUTTypeTIFF, {1, 1}));
    EXPECT_TRUE(isRefused(build(std::uint64_t{1} << 40U), kUTTypeTIFF, {1, 1}));
    EXPECT_TRUE(isRefused(build(~std::uint64_t{0}), kUTTypeTIFF, {1, 1}));
}

TEST(EncodedFile, AnimationsPassAndAreRefusedWhenTheyAreCut) {
    for (const std::string_view type : {kUTTypePNG, kUTTypeWebP}) {
        for (const auto& [width, height] : {std::pair{1, 1}, {7, 5}}) {
            for (const int frames : {1, 3}) {
                const auto encoder = AnimationEncoder::create(type, width, height, 40);
                ASSERT_NE(encoder, nullptr);
                for (int i = 0; i < frames; ++i) {
                    const CGImage frame =
                        randomValidPicture(width, height, static_cast<unsigned>(i));
                    const auto encoded = encoder->encode(frame, nullptr);
                    ASSERT_TRUE(encoded) << encoded.error().message;
                    ASSERT_TRUE(encoder->add(*encoded));
                }
                const auto whole = encoder->finish();
                ASSERT_TRUE(whole) << type << ": " << whole.error().message;
                for (std::size_t size = 0; size < whole->size(); ++size) {
                    const Bytes cut(whole->begin(),
                                    whole->begin() + static_cast<std::ptrdiff_t>(size));
                    ASSERT_TRUE(isRefused(cut, type, {width, height})) << type << frames;
                }
            }
        }
    }
}

TEST(EncodedFile, WhatIsMadeOfAFileKeepsItsTypeAndSize) {
    const Bytes small = *encodeImage(randomValidPicture(5, 3, 5), kUTTypePNG);
    const Bytes other = *encodeImage(randomValidPicture(5, 4, 5), kUTTypePNG);
    const Bytes bmp = *encodeImage(randomValidPicture(5, 3, 5), kUTTypeBMP);
    const Bytes cut(small.begin(), small.end() - 1);
    EXPECT_TRUE(checkedAddition(small, small));
    for (const auto& [name, made, from] : {std::tuple{"size", other, small},
                                           {"type", bmp, small},
                                           {"end", cut, small},
                                           {"no picture before", small, Bytes{'x'}},
                                           {"no size before", small, Bytes{0xFF, 0xD8, 0xFF}}}) {
        const auto checked = checkedAddition(made, from);
        ASSERT_FALSE(checked) << name;
        EXPECT_EQ(checked.error().message, kRefusal) << name;
    }
    EXPECT_EQ(checkedAddition(Error{ErrorCode::TooLarge, ""}, small).error().code,
              ErrorCode::TooLarge);
}

}  // namespace
}  // namespace skarnel
