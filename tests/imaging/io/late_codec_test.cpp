// JPEG XL, HEIF and AVIF. The files were made by data/make_late_files.cpp, whose pictures follow
// a formula: red 40x + 10, green 70y + 20, blue 200, alpha 255 or 255 - 50x; 5 x 3 pixels.
#include "imaging/io/late_codec.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "imaging/io/color_profile.h"
#include "imaging/io/pictures.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__clang__)
// These two forget some of their memory over damaged files; the process that decodes ends anyway.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libheif\nleak:libdav1d\n";
}
#endif

namespace skarnel {
namespace {

using namespace skarnel::testing;

Bytes dataFile(const std::string& name) {
    std::ifstream file(std::string(LATE_FILES "/") + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Rgba straightPixel(int x, int y) {
    return {static_cast<std::uint8_t>(40 * x + 10), static_cast<std::uint8_t>(70 * y + 20), 200,
            255};
}

/// c * a / 255 to the nearest, as the premultiplied picture has it.
Rgba premultipliedPixel(int x, int y) {
    Rgba pixel = straightPixel(x, y);
    const int a = 255 - 50 * x;
    for (std::size_t k = 0; k < 3; ++k) {
        pixel[k] = static_cast<std::uint8_t>((pixel[k] * a + 127) / 255);
    }
    pixel[3] = static_cast<std::uint8_t>(a);
    return pixel;
}

/// The formula over `width` x `height`, the codes repeating after 5 columns and 3 rows.
template <typename PixelAt>
void expectPixels(const CGImage& image, int width, int height, int tolerance, PixelAt expected) {
    ASSERT_EQ(image.width(), width);
    ASSERT_EQ(image.height(), height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgba is = pixelAt(image, x, y);
            const Rgba should = expected(x, y);
            for (std::size_t k = 0; k < 4; ++k) {
                ASSERT_NEAR(is[k], should[k], tolerance) << x << ", " << y << ", sample " << k;
            }
        }
    }
}

const char* typeOf(const std::string& name) {
    return name.ends_with(".jxl")    ? kUTTypeJPEGXL.data()
           : name.ends_with(".avif") ? kUTTypeAVIF.data()
                                     : kUTTypeHEIF.data();
}

/// Skips where this build or this machine lacks the codec, and decodes otherwise.
#define DECODE_OR_SKIP(decoded, name)                                \
    if (!imageTypeWithIdentifier(typeOf(name))->canRead) {           \
        GTEST_SKIP() << "built without " << typeOf(name);            \
    }                                                                \
    const auto decoded = decodeImage(dataFile(name));                \
    ASSERT_TRUE(decoded) << name << ": " << decoded.error().message; \
    EXPECT_EQ(decoded->type, typeOf(name))

/// AVIF keeps colours as luma and chroma, which costs a step where they are rounded.
int toleranceOf(const std::string& name) {
    return name.ends_with(".jxl") ? 0 : 1;
}

class Lossless : public ::testing::TestWithParam<const char*> {};

TEST_P(Lossless, PicturesComeOutAsTheyWentIn) {
    const std::string name = std::string("plain.") + GetParam();
    DECODE_OR_SKIP(decoded, name);
    expectPixels(decoded->image, 5, 3, toleranceOf(name), straightPixel);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyPixelWidth), 5);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyPixelHeight), 3);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyDepth), 8);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyHasAlpha), 0);
    EXPECT_EQ(textProperty(decoded->properties, kPropertyColorModel), "RGB");
}

TEST_P(Lossless, AlphaIsMultipliedIn) {
    const std::string name = std::string("alpha.") + GetParam();
    DECODE_OR_SKIP(decoded, name);
    // One step of rounding is left to the order of the division.
    expectPixels(decoded->image, 5, 3, 1, premultipliedPixel);
    EXPECT_EQ(wholeProperty(decoded->properties, kPropertyHasAlpha), 1);
}

TEST_P(Lossless, TheFormatsOwnTurnCountsAndNotThatOfExif) {
    const std::string name = std::string("turned.") + GetParam();
    DECODE_OR_SKIP(decoded, name);
    // A quarter clockwise: (x, y) of the upright picture was column y of row 2 - x.
    expectPixels(decoded->image, 3, 5, toleranceOf(name),
                 [](int x, int y) { return straightPixel(y, 2 - x); });
    EXPECT_EQ(textProperty(decoded->properties, "{TIFF}.Make"), "Cam");
    EXPECT_EQ(numberProperty(decoded->properties, kPropertyDpiWidth), 240.0);
}

TEST_P(Lossless, NamedPrimariesAreBroughtToSrgb) {
    const std::string name = std::string("p3.") + GetParam();
    DECODE_OR_SKIP(decoded, name);
    // In floating point: the codes as light of SMPTE EG 432-1 under D65, as light of sRGB.
    auto toLight = [](double code) {
        const double v = code / 255;
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    auto toCode = [](double light) {
        if (light <= 0) return 0.0;
        const double v =
            light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
        return std::min(255.0, 255 * v);
    };
    // Display P3 to sRGB, both D65 (the product of the two sets of primaries).
    constexpr double kMatrix[3][3] = {{1.22494018, -0.22494018, 0},
                                      {-0.04205695, 1.04205695, 0},
                                      {-0.01963755, -0.07863605, 1.09827360}};
    // Near black one step of a primary is three steps of the other.
    expectPixels(decoded->image, 5, 3, 2 + 2 * toleranceOf(name), [&](int x, int y) {
        const Rgba code = straightPixel(x, y);
        Rgba out{0, 0, 0, 255};
        for (std::size_t row = 0; row < 3; ++row) {
            double light = 0;
            for (std::size_t k = 0; k < 3; ++k) light += kMatrix[row][k] * toLight(code[k]);
            out[row] = static_cast<std::uint8_t>(std::lround(toCode(light)));
        }
        return out;
    });
}

INSTANTIATE_TEST_SUITE_P(LateCodec, Lossless, ::testing::Values("jxl", "avif"),
                         [](const auto& row) { return std::string(row.param); });

TEST(JpegXL, GreyStandsThreeTimes) {
    DECODE_OR_SKIP(decoded, "gray.jxl");
    expectPixels(decoded->image, 5, 3, 0, [](int x, int) {
        const auto v = static_cast<std::uint8_t>(40 * x + 10);
        return Rgba{v, v, v, 255};
    });
    EXPECT_EQ(textProperty(decoded->properties, kPropertyColorModel), "Gray");
}

TEST(JpegXL, TheFirstFrameOfAnAnimationCounts) {
    DECODE_OR_SKIP(decoded, "frames.jxl");
    expectPixels(decoded->image, 5, 3, 0, straightPixel);
}

TEST(JpegXL, LossyPicturesOpen) {
    DECODE_OR_SKIP(decoded, "lossy.jxl");
    EXPECT_EQ(decoded->image.width(), 40);
    EXPECT_EQ(decoded->image.height(), 24);
    EXPECT_NEAR(pixelAt(decoded->image, 20, 12)[2], 200, 40);
}

TEST(Heif, PicturesCodedByHevcOpenWithAndWithoutAlpha) {
    for (const std::string name : {"lossy.heic", "alpha.heic"}) {
        DECODE_OR_SKIP(decoded, name);
        EXPECT_EQ(decoded->image.width(), 80);
        EXPECT_EQ(decoded->image.height(), 64);
        EXPECT_NEAR(pixelAt(decoded->image, 0, 0)[2], 200, 24);
        EXPECT_EQ(wholeProperty(decoded->properties, kPropertyHasAlpha), name == "alpha.heic");
    }
}

class LateFile : public ::testing::TestWithParam<std::string> {};

TEST_P(LateFile, AboveTheLimitIsRefused) {
    const std::string name = GetParam();
    if (!imageTypeWithIdentifier(typeOf(name))->canRead) {
        GTEST_SKIP() << "built without " << typeOf(name);
    }
    const auto decoded = decodeImage(dataFile(name), {14});
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error().code, ErrorCode::TooLarge);
}

TEST_P(LateFile, EveryPrefixIsAnErrorOrTheWholePicture) {
    const std::string name = GetParam();
    DECODE_OR_SKIP(whole, name);
    const Bytes file = dataFile(name);
    // Files of some kilobytes are cut at every seventh byte.
    for (std::size_t size = 0; size<file.size(); size += file.size()> 600 ? 7 : 1) {
        const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        const auto decoded = decodeImage(cut);
        if (decoded) {
            EXPECT_TRUE(samePixels(decoded->image, whole->image)) << size;
        } else {
            EXPECT_FALSE(decoded.error().message.empty());
        }
    }
}

TEST_P(LateFile, FlippedBitsNeverDoHarm) {
    const std::string name = GetParam();
    if (!imageTypeWithIdentifier(typeOf(name))->canRead) {
        GTEST_SKIP() << "built without " << typeOf(name);
    }
    const Bytes good = dataFile(name);
    std::mt19937 random(17);
    for (int round = 0; round < 300; ++round) {
        Bytes file = good;
        for (unsigned i = 0; i < 1 + random() % 4; ++i) {
            file[random() % file.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
        }
        const auto decoded = decodeImage(file, {1 << 16});
        if (!decoded) {
            EXPECT_FALSE(decoded.error().message.empty());
        } else {
            EXPECT_LE(std::int64_t{decoded->image.width()} * decoded->image.height(), 1 << 16);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Files, LateFile,
                         ::testing::Values("plain.jxl", "alpha.jxl", "gray.jxl", "p3.jxl",
                                           "turned.jxl", "frames.jxl", "lossy.jxl", "plain.avif",
                                           "alpha.avif", "p3.avif", "turned.avif", "lossy.heic",
                                           "alpha.heic"),
                         [](const auto& row) {
                             std::string name = row.param;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

bool isMapped(std::string_view library) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(library) != std::string::npos) return true;
    }
    return false;
}

/// Runs in a process of its own, since a library that was loaded stays.
TEST(LateCodecDeathTest, LibrariesAreLoadedByTheFirstFileOfTheirs) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    if (!imageTypeWithIdentifier(kUTTypeJPEGXL)->canRead) {
        GTEST_SKIP() << "built without " << kUTTypeJPEGXL;
    }
    auto program = [] {
        if (isMapped("libjxl") || isMapped("libheif")) return 1;
        const Bytes png = *encodeImage(randomValidPicture(4, 4, 1), kUTTypePNG);
        if (io::prepareToDecode(png, io::Rest::HasNeither) != io::CodecNeeds::Nothing ||
            !decodeImage(png))
            return 2;
        for (const char* other : {"libjxl", "libheif", "libtiff", "libwebp", "libopenjp2", "libgif",
                                  "libexif", "libjpeg"}) {
            if (isMapped(other)) return 3;
        }
        const Bytes jxl = dataFile("plain.jxl");
        if (io::prepareToDecode(ByteView(jxl).first(16)) != io::CodecNeeds::Bounds) return 4;
        return isMapped("libjxl") && !isMapped("libheif") ? 0 : 5;
    };
    EXPECT_EXIT(std::_Exit(program()), ::testing::ExitedWithCode(0), "");
}

TEST(LateCodec, ALibraryThatIsMissingBindsNothing) {
    io::CodecLibrary library("libskarnel-there-is-no-such.so.0");
    EXPECT_FALSE(library.complete());
    int (*function)() = nullptr;
    library.bind(function, "anything");
    EXPECT_EQ(function, nullptr);
}

TEST(LateCodec, ASymbolThatIsMissingMakesTheLibraryIncomplete) {
    io::CodecLibrary library("libm.so.6");
    ASSERT_TRUE(library.complete());
    double (*cosine)(double) = nullptr;
    library.bind(cosine, "cos");
    EXPECT_TRUE(library.complete());
    EXPECT_EQ(cosine(0.0), 1.0);
    library.bind(cosine, "there_is_no_such");
    EXPECT_FALSE(library.complete());
}

TEST(LateLibraries, ThatAreMissingAreNamed) {
    io::LateLibraries late({"libm.so.6", "libskarnel-there-is-no-such.so.0"},
                           [](std::vector<io::CodecLibrary>&) {});
    EXPECT_FALSE(late.load());
    const auto needed = late.need();
    ASSERT_FALSE(needed);
    EXPECT_EQ(needed.error().code, ErrorCode::Unsupported);
    EXPECT_NE(needed.error().message.find("libskarnel-there-is-no-such.so.0"), std::string::npos);
}

TEST(LateLibraries, AreBoundOnceAndLookedForAgainUntilThen) {
    static int calls;
    static const char* wanted;
    static double (*cosine)(double);
    calls = 0;
    wanted = "there_is_no_such";
    io::LateLibraries late({"libm.so.6"}, [](std::vector<io::CodecLibrary>& libraries) {
        ++calls;
        libraries[0].bind(cosine, wanted);
    });
    EXPECT_FALSE(late.load());
    EXPECT_FALSE(late.load());
    EXPECT_EQ(calls, 2);
    wanted = "cos";
    EXPECT_TRUE(late.load());
    EXPECT_TRUE(late.need());
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(cosine(0.0), 1.0);
}

TEST(RgbProfile, OfPrimariesThatMakeNoSpaceIsEmpty) {
    const io::Chromaticity same{0.3, 0.3};
    EXPECT_TRUE(io::makeRgbProfile({same, same, same, same}, io::RgbCurve::Srgb).empty());
}

TEST(RgbProfile, HasTheCurveAskedFor) {
    using io::RgbCurve;
    // Code 128 of 255 in each curve, by the curves' definitions.
    const double v = 128.0 / 255;
    const std::pair<RgbCurve, double> rows[] = {
        {RgbCurve::Linear, v},
        {RgbCurve::Gamma22, std::pow(v, 2.2)},
        {RgbCurve::Gamma28, std::pow(v, 2.8)},
        {RgbCurve::Srgb, std::pow((v + 0.055) / 1.055, 2.4)},
    };
    for (const auto& [curve, expected] : rows) {
        const Bytes bytes = io::makeRgbProfile({}, curve);
        cmsHPROFILE profile =
            cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
        ASSERT_NE(profile, nullptr);
        const auto* tone = static_cast<const cmsToneCurve*>(cmsReadTag(profile, cmsSigRedTRCTag));
        EXPECT_NEAR(cmsEvalToneCurveFloat(tone, static_cast<float>(v)), expected, 0.001);
        cmsCloseProfile(profile);
    }
}

}  // namespace
}  // namespace skarnel
