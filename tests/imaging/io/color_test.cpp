// Profiles: pictures come out in sRGB.
#include <gtest/gtest.h>
#include <lcms2.h>
#include <lcms2_plugin.h>

#include "imaging/io/color_memory.h"
#include "imaging/io/color_profile.h"
#include "imaging/io/file_builders.h"
#include "imaging/io/jp2_files.h"
#include "imaging/io/pictures.h"
#include "imaging/io/profile_files.h"
#include "util/limited_to.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

Bytes saved(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

/// sRGB's primaries (ITU-R BT.709) with a pure power as curve; `swapped` exchanges red and green.
Bytes rgbProfile(double gamma, bool swapped = false) {
    const cmsCIExyY white = {0.3127, 0.3290, 1};
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    cmsCIExyYTRIPLE used = primaries;
    if (swapped) std::swap(used.Red, used.Green);
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    cmsToneCurve* curves[] = {curve, curve, curve};
    const Bytes bytes = saved(cmsCreateRGBProfile(&white, &used, curves));
    cmsFreeToneCurve(curve);
    return bytes;
}

Bytes greyProfile(double gamma) {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    const Bytes bytes = saved(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return bytes;
}

Rgba decodedWith(const Bytes& profile, const Rgba& straight) {
    BmpBuilder bmp;
    bmp.headerBytes = 124;
    bmp.bits = 32;
    bmp.compression = 3;
    bmp.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    bmp.pixels = {straight[2], straight[1], straight[0], straight[3]};
    bmp.profile = profile;
    const auto decoded = decodeImage(bmp.build());
    EXPECT_TRUE(decoded) << decoded.error().message;
    return decoded ? pixelAt(decoded->image, 0, 0) : Rgba{};
}

void expectNear(const Rgba& is, const Rgba& expected, int tolerance) {
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(is[k], expected[k], tolerance) << ::testing::PrintToString(is);
    }
}

TEST(Color, LinearLightIsBroughtToTheCurveOfSrgb) {
    // 128/255 = 0.502 of light: 1.055 * 0.502^(1/2.4) - 0.055 = 0.7367 -> 188.
    expectNear(decodedWith(rgbProfile(1.0), {128, 128, 128, 255}), {188, 188, 188, 255}, 1);
}

TEST(Color, ExchangedPrimariesExchangeColours) {
    expectNear(decodedWith(rgbProfile(2.2, true), {255, 0, 0, 255}), {0, 255, 0, 255}, 2);
}

TEST(Color, ConversionHappensBeforeAlphaIsMultipliedIn) {
    // Straight 128 becomes 188; 188 * 128 / 255 = 94.4. The other order would give 137.
    expectNear(decodedWith(rgbProfile(1.0), {128, 128, 128, 128}), {94, 94, 94, 128}, 1);
}

TEST(Color, SrgbLeavesEveryByteAlone) {
    const Bytes profile = saved(cmsCreate_sRGBProfile());
    for (int v = 0; v < 256; v += 5) {
        const auto b = static_cast<std::uint8_t>(v);
        const Rgba pixel = {b, static_cast<std::uint8_t>(255 - b), 77, 255};
        EXPECT_EQ(decodedWith(profile, pixel), pixel);
    }
}

TEST(Color, ADamagedOrForeignProfileCountsAsNone) {
    const Rgba pixel = {10, 20, 30, 255};
    EXPECT_EQ(decodedWith(Bytes(200, 7), pixel), pixel);
    EXPECT_EQ(decodedWith(greyProfile(1.0), pixel), pixel);
    Bytes cut = rgbProfile(1.0);
    cut.resize(cut.size() / 2);
    EXPECT_EQ(decodedWith(cut, pixel), pixel);
}

TEST(Color, GreyPicturesTakeGreyProfilesAndColouredOnes) {
    for (const Bytes& profile : {greyProfile(1.0), rgbProfile(1.0)}) {
        TiffBuilder tiff(1, 1, 1, {8});
        tiff.blocks = {{128}};
        tiff.profile = profile;
        const auto decoded = decodeImage(tiff.build());
        ASSERT_TRUE(decoded);
        expectNear(pixelAt(decoded->image, 0, 0), {188, 188, 188, 255}, 1);
    }
}

TEST(Color, PremultipliedPicturesAreDividedForTheConversion) {
    TiffBuilder tiff(1, 1, 2, {8, 8, 8, 8});
    tiff.tags[338] = {1};
    tiff.blocks = {{64, 64, 64, 128}};  // straight 127.5, in sRGB 188, times 128 / 255
    tiff.profile = rgbProfile(1.0);
    const auto decoded = decodeImage(tiff.build());
    ASSERT_TRUE(decoded);
    expectNear(pixelAt(decoded->image, 0, 0), {94, 94, 94, 128}, 1);
}

TEST(Color, AProfileInAJpegCountsAlsoWhenItIsCutIntoTwoMarkers) {
    // All pixels alike, so that compression leaves them alone; the profile's power of 1.0 brings
    // code 128 of light to round(255 * (1.055 * (128/255)^(1/2.4) - 0.055)) = 188.
    const CGImage image = picture(8, 8, std::vector<Rgba>(64, Rgba{128, 128, 128, 255}));
    const Bytes plain = *encodeImage(image, kUTTypeJPEG, {{"LossyCompressionQuality", 1.0}});
    ASSERT_NEAR(pixelAt(decodeImage(plain)->image, 4, 4)[0], 128, 1);
    const Bytes profile = rgbProfile(1.0);
    for (const std::size_t parts : {std::size_t{1}, std::size_t{2}}) {
        ByteSink markers(true);
        for (std::size_t part = 0; part < parts; ++part) {
            const auto from =
                profile.begin() + static_cast<std::ptrdiff_t>(profile.size() * part / parts);
            const auto to =
                profile.begin() + static_cast<std::ptrdiff_t>(profile.size() * (part + 1) / parts);
            const Bytes piece(from, to);
            markers.u16(0xFFE2).u16(2 + 14 + piece.size());
            markers.text(std::string_view("ICC_PROFILE\0", 12)).u8(part + 1).u8(parts).raw(piece);
        }
        Bytes file = plain;
        // Behind the start of the picture and the JFIF marker (2 + 18 bytes).
        file.insert(file.begin() + 20, markers.bytes.begin(), markers.bytes.end());
        const auto decoded = decodeImage(file);
        ASSERT_TRUE(decoded) << decoded.error().message;
        expectNear(pixelAt(decoded->image, 4, 4), {188, 188, 188, 255}, 2);
    }
}

TEST(Color, TheProfilesNameIsAmongTheProperties) {
    TiffBuilder tiff(1, 1, 1, {8});
    tiff.blocks = {{128}};
    tiff.profile = greyProfile(1.0);
    EXPECT_FALSE(textProperty(decodeImage(tiff.build())->properties, kPropertyProfileName).empty());
}

TEST(Color, MoreInkIsNeverLighter) {
    TiffBuilder tiff(256, 4, 5, {8, 8, 8, 8});
    Bytes strip;
    for (std::size_t ink = 0; ink < 4; ++ink) {
        for (int v = 0; v < 256; ++v) {
            Bytes pixel(4, 0);
            pixel[ink] = static_cast<std::uint8_t>(v);
            strip.insert(strip.end(), pixel.begin(), pixel.end());
        }
    }
    tiff.blocks = {strip};
    const auto decoded = decodeImage(tiff.build());
    ASSERT_TRUE(decoded);
    for (int ink = 0; ink < 4; ++ink) {
        for (int v = 1; v < 256; ++v) {
            const Rgba a = pixelAt(decoded->image, v - 1, ink);
            const Rgba b = pixelAt(decoded->image, v, ink);
            const double before = 0.21 * a[0] + 0.72 * a[1] + 0.07 * a[2];
            const double now = 0.21 * b[0] + 0.72 * b[1] + 0.07 * b[2];
            ASSERT_LE(now, before + 0.8) << ink << " " << v;
        }
    }
}

TEST(Color, WhatIsNoProfileHasNoName) {
    EXPECT_EQ(io::profileName({}), "");
    const Bytes junk(200, 7);
    EXPECT_EQ(io::profileName(junk), "");
}

TEST(Color, AProfileInAPngCounts) {
    const Bytes packed = zlibBytes(rgbProfile(1.0));
    const Bytes chunk = ByteSink(true).text("linear").u8(0).u8(0).raw(packed).bytes;
    const auto decoded = decodeImage(buildPng(1, 1, 8, 2, {128, 128, 128}, {{"iCCP", chunk}}));
    ASSERT_TRUE(decoded) << decoded.error().message;
    expectNear(pixelAt(decoded->image, 0, 0), {188, 188, 188, 255}, 1);
}

/// From linear light to XYZ: sRGB's primaries for white D50 (IEC 61966-2-1, Bradford).
Bytes lightToXyz() {
    return matrixElement(
        3, 3,
        {0.4361F, 0.3851F, 0.1431F, 0.2225F, 0.7169F, 0.0606F, 0.0139F, 0.0971F, 0.7141F, 0, 0, 0});
}

const Bytes kIdentity = curveOf({}, {formulaSegment(1)});

Bytes chainProfile(const std::vector<Bytes>& elements) {
    return profileOf({{"wtpt", whitePoint()}, {"D2B1", chainOf(3, 3, elements)}});
}

TEST(Color, AChainOfElementsIsApplied) {
    // Light of 128/255, as above, and of (128/255)^2 = 0.252, which is
    // 1.055 * 0.252^(1/2.4) - 0.055 = 0.539 -> 137.
    const Bytes sampled = curveOf(
        {0, 1}, {formulaSegment(1), sampledSegment({0.25F, 0.5F, 0.75F, 1}), formulaSegment(1)});
    // The corners of a cube, as they are.
    std::vector<float> corners;
    for (unsigned i = 0; i < 8; ++i) {
        for (const unsigned bit : {2U, 1U, 0U}) corners.push_back(i >> bit & 1U ? 1.0F : 0.0F);
    }
    const std::vector<std::pair<Bytes, int>> rows = {
        {curvesElement(3, kIdentity), 188},
        {curvesElement(3, curveOf({}, {formulaSegment(2)})), 137},
        {curvesElement(3, sampled), 188},
        {tableElement(3, 3, corners), 188}};
    for (const auto& [element, expected] : rows) {
        const Bytes profile = chainProfile({element, lightToXyz()});
        const auto v = static_cast<std::uint8_t>(expected);
        expectNear(decodedWith(profile, {128, 128, 128, 255}), {v, v, v, 255}, 1);
    }
}

TEST(Color, AChainThatIsABombCountsAsNone) {
    // 32 elements are applied, most of which are one; 33 or 3,000 are not.
    const auto chain = [](std::size_t count) {
        std::vector<Bytes> elements(count - 1,
                                    matrixElement(3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
        elements.push_back(lightToXyz());
        return chainProfile(elements);
    };
    const Rgba pixel = {128, 128, 128, 255};
    expectNear(decodedWith(chain(32), pixel), {188, 188, 188, 255}, 1);
    EXPECT_EQ(decodedWith(chain(33), pixel), pixel);
    EXPECT_EQ(decodedWith(chain(3000), pixel), pixel);
}

/// A scanner's table of `side` points a side, from three colours to Lab (ICC.1:2010, 10.9): the
/// lightness is the mean of the colours, of 255.
Bytes tableProfile(unsigned side) {
    ByteSink table(true);
    table.text("mft1").u32(0).u8(3).u8(3).u8(side).u8(0);
    for (int i = 0; i < 9; ++i) table.u32(i % 4 == 0 ? 0x10000 : 0);
    for (int curve = 0; curve < 3; ++curve) {
        for (int v = 0; v < 256; ++v) table.u8(v);
    }
    for (unsigned r = 0; r < side; ++r) {
        for (unsigned g = 0; g < side; ++g) {
            for (unsigned b = 0; b < side; ++b) {
                table.u8((r + g + b) * 255 / (3 * (side - 1))).u8(128).u8(128);
            }
        }
    }
    for (int curve = 0; curve < 3; ++curve) {
        for (int v = 0; v < 256; ++v) table.u8(v);
    }
    return profileOf({{"wtpt", whitePoint()}, {"A2B0", table.bytes}}, "RGB ", "Lab ");
}

TEST(Color, CurvesOfTheFourthVersionAreApplied) {
    // Three curves that change nothing (ICC.1:2010, 10.10): the picture's bytes are Lab, 128 for
    // a and b is 0, and lightness 50.2 is 119, see below.
    ByteSink curves(true);
    curves.text("mAB ").u32(0).u8(3).u8(3).u16(0).u32(32).zeros(16);
    for (int i = 0; i < 3; ++i) curves.text("curv").u32(0).u32(0);
    const Bytes profile =
        profileOf({{"wtpt", whitePoint()}, {"A2B0", curves.bytes}}, "RGB ", "Lab ");
    expectNear(decodedWith(profile, {128, 128, 128, 255}), {119, 119, 119, 255}, 1);
}

TEST(Color, ATableOfMoreThanAnyProfileNeedsCountsAsNone) {
    // Lightness 100 * 128 / 255 = 50.2 is ((50.2 + 16) / 116)^3 = 0.1858 of light, in sRGB
    // 1.055 * 0.1858^(1/2.4) - 0.055 = 0.468 -> 119. The larger table has 24 MB, of which the
    // library wants 48 five times.
    const Rgba pixel = {128, 128, 128, 255};
    expectNear(decodedWith(tableProfile(2), pixel), {119, 119, 119, 255}, 1);
    EXPECT_EQ(decodedWith(tableProfile(200), pixel), pixel);
    expectNear(decodedWith(tableProfile(2), pixel), {119, 119, 119, 255}, 1);
}

// 192 MB under one watch, given back or not; the smallest are granted all the same.
TEST(Color, WhatTheLibraryAsksForIsCounted) {
    constexpr cmsUInt32Number kSmall = 64 << 10;
    // Loads the library.
    ASSERT_EQ(io::profileName(Bytes(200, 7)), "");
    const auto granted = [](cmsUInt32Number size) {
        void* block = _cmsMalloc(nullptr, size);
        if (block != nullptr) _cmsFree(nullptr, block);
        return block != nullptr;
    };
    for (int twice = 0; twice < 2; ++twice) {
        const io::ColorMemoryWatch watch;
        for (int i = 0; i < 3; ++i) EXPECT_TRUE(granted(64 << 20));
        EXPECT_FALSE(watch.hasAskedTooMuch());
        void* small = _cmsMalloc(nullptr, 1);
        ASSERT_NE(small, nullptr);
        EXPECT_TRUE(watch.hasAskedTooMuch());
        EXPECT_FALSE(granted(kSmall + 1));
        EXPECT_TRUE(granted(kSmall));
        EXPECT_EQ(_cmsRealloc(nullptr, small, kSmall + 1), nullptr);
        small = _cmsRealloc(nullptr, small, kSmall);
        EXPECT_NE(small, nullptr);
        _cmsFree(nullptr, small);
        EXPECT_NO_THROW(watch.throwIfRefused()) << "there is memory";
    }
    EXPECT_TRUE(granted(kSmall + 1)) << "nobody watches";
}

TEST(Color, WhatTheSystemRefusesTheLibraryIsNotTakenForAProfileOfNoUse) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer has a malloc of its own";
#endif
    ASSERT_EQ(io::profileName(Bytes(200, 7)), "");  // loads the library
    constexpr cmsUInt32Number kLarge = 128 << 20;   // less than may be asked for
    const io::ColorMemoryWatch watch;
    {
        const test::LimitedTo little(RLIMIT_AS, kLarge / 2);
        EXPECT_EQ(_cmsMalloc(nullptr, kLarge), nullptr);
    }
    EXPECT_FALSE(watch.hasAskedTooMuch());
    EXPECT_THROW(watch.throwIfRefused(), std::bad_alloc);
}

TEST(Color, ANameOfMillionsOfLanguagesIsNone) {
    const auto named = [](std::uint32_t languages) {
        const Bytes name = ByteSink(true)
                               .text("mluc")
                               .u32(0)
                               .u32(languages)
                               .u32(12)
                               .text("enUS")
                               .u32(2)
                               .u32(28)
                               .u16('x')
                               .bytes;
        return profileOf({{"desc", name}});
    };
    EXPECT_EQ(io::profileName(named(1)), "x");
    EXPECT_EQ(io::profileName(named(30'000'000)), "");
}

TEST(Color, AProfileInAJpeg2000Counts) {
    const Bytes profile = rgbProfile(1.0);
    const Bytes box = jp2Box("colr", ByteSink(true).u8(2).u8(0).u8(0).raw(profile).bytes);
    const JpComponent half{{128}};
    const Bytes file = jp2FileOf(1, 1, 3, 0, codeStreamOf(1, 1, {half, half, half}), {box});
    const auto decoded = decodeImage(file);
    ASSERT_TRUE(decoded) << decoded.error().message;
    expectNear(pixelAt(decoded->image, 0, 0), {188, 188, 188, 255}, 1);
}

}  // namespace
}  // namespace skarnel
