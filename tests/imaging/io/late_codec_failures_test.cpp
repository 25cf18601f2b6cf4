// What readers do about a library that fails, lies or is missing: fakes/ stand in for those of JPEG
// XL and HEIF, and each test tells them what to do; most of the others are not there.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "imaging/io/color_profile.h"
#include "imaging/io/exif.h"
#include "imaging/io/fakes/told.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/late_codec.h"
#include "imaging/io/pictures.h"
#include "imaging/io/readers.h"
#include "imaging/io/upright_picture.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

constexpr std::string_view kMissing = "libskarnel-there-is-no-such";

/// One entry: orientation 6.
const Bytes kCameraBlock = {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 0x01, 0x12, 0,
                            3,   0,   0, 0,  1, 0, 6, 0, 0, 0, 0,    0,    0};

/// The libraries are found from the folder that the program stands in.
class LateCodecFailures : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(::chdir(FAKE_CODECS), 0); }
};

Result<io::SourcePicture> jxl(const std::string& told, std::string_view events) {
    const Told words(told);
    return io::readJpegXL(Bytes(events.begin(), events.end()), {});
}

Result<io::SourcePicture> heif(const std::string& told, const DecodeLimits& limits = {}) {
    const Told words(told);
    return io::readHeif(Bytes(1), limits);
}

Bytes bytesOf(io::SourcePicture& picture) {
    const MutablePixelView view = picture.pixels.view();
    return {view.bytes, view.bytes + 8};
}

struct Failure {
    const char* told;
    const char* events;  // of a JPEG XL
    ErrorCode code;
};

void PrintTo(const Failure& failure, std::ostream* out) {
    *out << '"' << failure.told << "\" " << failure.events;
}

TEST_F(LateCodecFailures, AJpegXLLibraryThatDoesAsItShouldGivesThePicture) {
    for (const std::string_view events : {"icofs", "icofbs", "bicofs", "iofs"}) {
        auto picture = jxl("alpha", events);
        ASSERT_TRUE(picture) << events;
        EXPECT_EQ(bytesOf(*picture), (Bytes{10, 20, 30, 40, 1, 2, 3, 255}));
        EXPECT_EQ(picture->alpha, io::Alpha::Straight);
        const bool hasColors = events.find('c') != events.npos;
        EXPECT_EQ(picture->profile, hasColors ? Bytes(4, 'p') : Bytes());
        const bool hasBlock = events.find('b') != events.npos;
        EXPECT_EQ(textProperty(picture->properties, "{TIFF}.Make"), hasBlock ? "Cam" : "");
    }
    const auto multiplied = jxl("alpha premultiplied", "icofs");
    ASSERT_TRUE(multiplied);
    EXPECT_EQ(multiplied->alpha, io::Alpha::Premultiplied);
    const auto opaque = jxl("", "icofs");
    ASSERT_TRUE(opaque);
    EXPECT_EQ(opaque->alpha, io::Alpha::Opaque);
}

TEST_F(LateCodecFailures, AJpegXLLibraryThatFailsIsAnErrorOfItsOwnKind) {
    constexpr auto kDamaged = ErrorCode::Damaged;
    for (const Failure& row : {
             Failure{"no-decoder", "icofs", ErrorCode::OutOfMemory},
             Failure{"subscribe-fails", "icofs", kDamaged},
             Failure{"orientation-fails", "icofs", kDamaged},
             Failure{"input-fails", "icofs", kDamaged},
             Failure{"info-fails", "icofs", kDamaged},
             Failure{"extra=1 channel-fails", "icofs", kDamaged},
             Failure{"extra=9", "icofs", ErrorCode::Unsupported},
             Failure{"extra=1 black", "icofs", ErrorCode::Unsupported},
             Failure{"room-fails", "icofs", kDamaged},
             Failure{"room=9", "icofs", kDamaged},
             Failure{"output-fails", "icofs", kDamaged},
             Failure{"width=100000001", "icofs", ErrorCode::TooLarge},
             Failure{"width=0", "icofs", kDamaged},
             Failure{"counting-subscribe-fails", "icofs", kDamaged},
             Failure{"coalescing-fails", "icofs", kDamaged},
             Failure{"counting-input-fails", "icofs", kDamaged},
             Failure{"counting-info-fails", "icofs", kDamaged},
             Failure{"layer-fails", "ilcofs", kDamaged},
             // Events in an order that no library should report.
             Failure{"", "s", kDamaged},
             Failure{"", "fs", kDamaged},
             Failure{"", "icos", kDamaged},
             Failure{"", "cs", kDamaged},
             Failure{"", "os", kDamaged},
             Failure{"", "ico", kDamaged},
             Failure{"", "", kDamaged},
         }) {
        const auto picture = jxl(row.told, row.events);
        ASSERT_FALSE(picture) << ::testing::PrintToString(row);
        EXPECT_EQ(picture.error().code, row.code) << ::testing::PrintToString(row);
    }
}

// 4,194,304 pixels and 60 for each of the file's bytes, here the events, beside the picture's
// own two. Each layer costs a quarter of the picture besides; one of the picture's size is free.
TEST_F(LateCodecFailures, LayersOfAJpegXLAreCountedUntilTheFirstPictureIsShown) {
    struct Row {
        const char* told;
        const char* events;
        bool opens;
    };
    for (const Row& row : {
             Row{"layer-width=4194666", "ilcofs", true},
             Row{"layer-width=4194667", "ilcofs", false},
             Row{"layer-width=2097363", "illcofs", true},
             Row{"layer-width=2097364", "illcofs", false},
             Row{"layer-width=2097364 animated", "illcofs", true},
             Row{"layer-width=2097364 last", "illcofs", true},
             Row{"layer-width=4294967295 layer-height=4294967295", "ilcofs", false},
             // 875,000 a layer, of which 4,375,000 are free.
             Row{"layer-width=0 width=3500 height=1000", "illlllllllcofs", true},
             Row{"layer-width=0 width=3500 height=1000", "illllllllllcofs", false},
         }) {
        const auto picture = jxl(row.told, row.events);
        ASSERT_EQ(static_cast<bool>(picture), row.opens) << row.told << " " << row.events;
        if (row.opens) continue;
        EXPECT_EQ(picture.error().code, ErrorCode::TooLarge) << row.told;
    }
}

// The same for the picture itself, with 2,000 a byte, unless the user has named a number.
TEST_F(LateCodecFailures, AJpegXLOfFewBytesIsBelievedFourMillionPixels) {
    const auto open = [](const char* told, const DecodeLimits& limits) {
        const Told words(told);
        const std::string_view events = "icofs";
        DecodeLimits ofFile = limits;
        ofFile.fileBytes = events.size();
        return io::readJpegXL(Bytes(events.begin(), events.end()), ofFile);
    };
    EXPECT_TRUE(open("width=2048 height=2048", {}));
    const auto refused = open("width=2049 height=2048", {});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ErrorCode::TooLarge);
    EXPECT_TRUE(open("width=2049 height=2048", {9'000'000, 9'000'000}));
}

TEST_F(LateCodecFailures, WhatBelongsToTheJpegXLButIsNotItsPixelsMayFail) {
    struct Row {
        const char* told;
        const char* events;
        bool hasProfile;
        bool hasBlock;
    };
    for (const Row& row : {
             Row{"extra=1", "icofbs", true, true}, Row{"profile-size-fails", "icofbs", false, true},
             Row{"profile=4194305", "icofbs", false, true},
             Row{"profile-fails", "icofbs", false, true},
             Row{"box-type-fails", "icofbs", true, false}, Row{"other-box", "icofbs", true, false},
             Row{"box-fails", "icofbs", true, false}, Row{"far-block", "icofbs", true, false},
             Row{"box=3", "icofbs", true, false},
             Row{"", "icofbms", true, false},  // the box is longer than the room for it
             Row{"", "icofb", true, false},    // damage behind the pixels
             Row{"", "icofbbs", true, true},   // of two boxes the first counts
         }) {
        const auto picture = jxl(row.told, row.events);
        ASSERT_TRUE(picture) << row.told << " " << row.events;
        EXPECT_EQ(!picture->profile.empty(), row.hasProfile) << row.told;
        EXPECT_EQ(textProperty(picture->properties, "{TIFF}.Make"), row.hasBlock ? "Cam" : "")
            << row.told << " " << row.events;
    }
}

TEST_F(LateCodecFailures, AHeifLibraryThatDoesAsItShouldGivesThePicture) {
    auto picture = heif("alpha");
    ASSERT_TRUE(picture);
    EXPECT_EQ(bytesOf(*picture), (Bytes{10, 20, 30, 40, 1, 2, 3, 255}));
    EXPECT_EQ(picture->alpha, io::Alpha::Straight);
    EXPECT_EQ(textProperty(picture->properties, "{TIFF}.Make"), "Cam");
    EXPECT_EQ(wholeProperty(picture->properties, kPropertyDepth), 8);
    EXPECT_TRUE(picture->profile.empty()) << "sRGB needs none";
    EXPECT_EQ(heif("alpha premultiplied")->alpha, io::Alpha::Premultiplied);
    EXPECT_EQ(heif("")->alpha, io::Alpha::Opaque);
    EXPECT_EQ(wholeProperty(heif("depth=-1")->properties, kPropertyDepth), 8) << "unknown";
    EXPECT_EQ(wholeProperty(heif("depth=10")->properties, kPropertyDepth), 10);
}

TEST_F(LateCodecFailures, AHeifLibraryThatFailsIsAnErrorOfItsOwnKind) {
    // Codes of the library: 2 damage, 3 an unsupported file, 4 an unsupported feature, 6 memory,
    // 7 a decoder, 11 a plug-in that cannot be loaded.
    for (const auto& [told, code] : {
             std::pair{"no-context", ErrorCode::OutOfMemory},
             std::pair{"read=2", ErrorCode::Damaged},
             std::pair{"read=3", ErrorCode::Unsupported},
             std::pair{"primary=4", ErrorCode::Unsupported},
             std::pair{"primary=2", ErrorCode::Damaged},
             std::pair{"stated=100000001", ErrorCode::TooLarge},
             std::pair{"item=2", ErrorCode::Damaged},
             std::pair{"no-options", ErrorCode::OutOfMemory},
             std::pair{"decode=6", ErrorCode::OutOfMemory},
             std::pair{"decode=7", ErrorCode::Damaged},
             std::pair{"decode=11", ErrorCode::Unsupported},
             std::pair{"no-plane", ErrorCode::Damaged},
             std::pair{"stride=7", ErrorCode::Damaged},
             std::pair{"width=100000001", ErrorCode::TooLarge},
             std::pair{"width=0", ErrorCode::Damaged},
             std::pair{"coded-height=0", ErrorCode::Damaged},
         }) {
        const auto picture = heif(told);
        ASSERT_FALSE(picture) << told;
        EXPECT_EQ(picture.error().code, code) << told;
    }
    const auto grown = heif("coded-height=3", {5});
    ASSERT_FALSE(grown) << "two by three coded where the container says two by one";
    EXPECT_EQ(grown.error().code, ErrorCode::TooLarge);
}

TEST_F(LateCodecFailures, AHeifOfFewBytesMayHaveFourMillionPixelsOrAsManyAsAreAskedFor) {
    const auto isTooLarge = [](const std::string& told, const DecodeLimits& limits) {
        const auto picture = heif(told, limits);
        return !picture && picture.error().code == ErrorCode::TooLarge;
    };
    DecodeLimits limits;
    limits.fileBytes = 100;
    EXPECT_FALSE(isTooLarge("width=4194304", limits));
    EXPECT_TRUE(isTooLarge("width=4194305", limits));
    for (const std::int64_t asked : {5'000'000, 64'000'000, 100'000'000}) {
        limits.maxUnprovenPixels = asked;
        EXPECT_FALSE(isTooLarge("width=4194305", limits)) << asked;
    }
    limits.maxUnprovenPixels = 1'000'000;
    EXPECT_TRUE(isTooLarge("width=1000001", limits));
}

TEST_F(LateCodecFailures, AHeifThatWouldCostTooMuchIsDamagedBeforeItIsDecoded) {
    const Told words("");
    const auto box = [](std::string_view type, const Bytes& content) {
        return ByteSink(true).u32(8 + content.size()).text(type).raw(content).bytes;
    };
    const auto withSide = [&](std::uint32_t side) {
        const Bytes size = box("ispe", ByteSink(true).u32(0).u32(side).u32(side).bytes);
        const Bytes use = ByteSink(true).u32(0).u32(1).u16(1).u8(1).u8(1).bytes;
        const Bytes both = ByteSink(true).raw(box("ipco", size)).raw(box("ipma", use)).bytes;
        return box("meta", ByteSink(true).u32(0).raw(box("iprp", both)).bytes);
    };
    // The library says that the picture has two pixels: eight million are granted to its parts.
    EXPECT_TRUE(io::readHeif(withSide(2828), {}));
    const auto tooLarge = io::readHeif(withSide(2829), {});
    ASSERT_FALSE(tooLarge);
    EXPECT_EQ(tooLarge.error().code, ErrorCode::Damaged);
    const auto twoHeads = io::readHeif(ByteSink(true).raw(withSide(9)).raw(withSide(9)).bytes, {});
    ASSERT_FALSE(twoHeads);
    EXPECT_EQ(twoHeads.error().code, ErrorCode::Damaged);
    // A thousand items: what is said of them may have half a megabyte.
    const auto withTable = [&](std::size_t bytes) {
        ByteSink infos(true);
        infos.u32(1U << 24U).u32(1000);
        for (int i = 0; i < 1000; ++i) infos.raw(box("infe", {}));
        const std::size_t others = infos.bytes.size();
        return box("meta", ByteSink(true)
                               .u32(0)
                               .raw(box("iinf", infos.bytes))
                               .raw(box("iloc", Bytes(bytes - others)))
                               .bytes);
    };
    EXPECT_TRUE(io::readHeif(withTable(500'000), {}));
    const auto tangled = io::readHeif(withTable(500'001), {});
    ASSERT_FALSE(tangled);
    EXPECT_EQ(tangled.error().code, ErrorCode::Damaged);
}

TEST_F(LateCodecFailures, ABlockOfAHeifThatCannotBeHadIsDoneWithout) {
    for (const char* told :
         {"no-block", "block=3", "block=1048577", "block-fails=2", "far-block", "block=4"}) {
        const auto picture = heif(told);
        ASSERT_TRUE(picture) << told;
        EXPECT_EQ(textProperty(picture->properties, "{TIFF}.Make"), "") << told;
    }
}

TEST_F(LateCodecFailures, TheColoursOfAHeifAreItsProfileOrElseWhatItNames) {
    const Bytes raw(4, 'p');
    EXPECT_EQ(heif("profile=4")->profile, raw);
    EXPECT_EQ(heif("profile=4 profile-fails=2")->profile, Bytes());
    EXPECT_EQ(heif("profile=4194305")->profile, Bytes()) << "above 4 MB";
    EXPECT_EQ(heif("nclx-fails=2")->profile, Bytes());
    EXPECT_EQ(heif("no-nclx")->profile, Bytes());
    // The numbers are those of ITU-T H.273: primaries 1 are BT.709's, 2 unstated, 9 BT.2020's;
    // curves 4 and 5 are the powers of 2.2 and 2.8, 8 is linear.
    EXPECT_EQ(heif("primaries=2")->profile, Bytes());
    using io::RgbCurve;
    for (const auto& [number, curve] :
         {std::pair{8, RgbCurve::Linear}, {4, RgbCurve::Gamma22}, {5, RgbCurve::Gamma28}}) {
        const std::string told = "curve=" + std::to_string(number);
        EXPECT_EQ(heif(told)->profile, io::makeRgbProfile({}, curve)) << told;
    }
    const io::RgbPrimaries exchanged = {
        {0.3127F, 0.3290F}, {0.30F, 0.60F}, {0.64F, 0.33F}, {0.15F, 0.06F}};
    EXPECT_EQ(heif("primaries=9")->profile, io::makeRgbProfile(exchanged, RgbCurve::Srgb));
}

/// In a process of its own, since a library that has been looked for is not looked for again.
TEST(MissingLateCodecDeathTest, IsToldByItsName) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto missing = [] {
        if (::chdir("/") != 0) return 1;
        ImageProperties properties;
        if (io::readExif(kCameraBlock, properties).orientation != 1 || !properties.empty())
            return 6;
        const auto first = io::readJpegXL(Bytes{'s'}, {});
        if (first || first.error().code != ErrorCode::Unsupported) return 2;
        if (first.error().message.find("fake_jxl") == std::string::npos) return 3;
        const auto second = io::readHeif(Bytes(1), {});
        if (second || second.error().code != ErrorCode::Unsupported) return 4;
        return second.error().message.find("fake_heif") == std::string::npos ? 5 : 0;
    };
    EXPECT_EXIT(std::exit(missing()), ::testing::ExitedWithCode(0), "");
}

TEST_F(LateCodecFailures, AFormatWhoseLibraryIsMissingIsUnsupported) {
    ImageProperties properties;
    EXPECT_EQ(io::readExif(kCameraBlock, properties).orientation, 6) << "this one is there";
    using Reader = Result<io::SourcePicture> (*)(ByteView, const DecodeLimits&);
    for (const Reader reader :
         {io::readJpeg, io::readPng, io::readTiff, io::readJpeg2000, io::readWebP, io::readGif}) {
        const auto picture = reader(Bytes(20), {});
        ASSERT_FALSE(picture);
        EXPECT_EQ(picture.error().code, ErrorCode::Unsupported);
        EXPECT_NE(picture.error().message.find(kMissing), std::string::npos);
    }
    PsdBuilder psd;
    psd.rows = {{1}, {2}, {3}};
    EXPECT_TRUE(io::readPsd(psd.build(), {})) << "needs none";
    psd.packing = 2;
    EXPECT_FALSE(io::readPsd(psd.build(), {})) << "packed as ZIP";
}

TEST_F(LateCodecFailures, InksWithoutALibraryForColoursAreAnError) {
    PsdBuilder inks;
    inks.mode = 4;
    inks.rows = {{1}, {2}, {3}, {4}};
    const auto picture = io::openUpright(inks.build(), {});
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.error().code, ErrorCode::OutOfMemory);
}

TEST(MissingColors, LeaveAPictureAsItIsUnlessItIsInInks) {
    const Bytes profile(200, 7);
    EXPECT_EQ(io::profileName(profile), "");
    EXPECT_TRUE(io::makeRgbProfile({}, io::RgbCurve::Srgb).empty());
    io::SourcePicture picture(*PixelBuffer::zeroed(2, 1));
    picture.profile = profile;
    EXPECT_TRUE(io::ColorConversion::prepare(picture));
    picture.samples = io::Samples::Cmyk;
    EXPECT_FALSE(io::ColorConversion::prepare(picture));
}

}  // namespace
}  // namespace skarnel
