// What is written is read back: every writable format through our own readers.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "imaging/io/image_io.h"
#include "imaging/io/pictures.h"
#include "memory/process_size.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

struct ExactFormat {
    const char* name;
    std::string_view type;
    ImageProperties options;
};

ImageProperties with(std::string_view key, PropertyValue value) {
    return {{std::string(key), std::move(value)}};
}

std::vector<ExactFormat> exactFormats() {
    return {{"TiffLzw", kUTTypeTIFF, with(kPropertyTiffCompression, std::int64_t{5})},
            {"TiffDeflate", kUTTypeTIFF, with(kPropertyTiffCompression, std::int64_t{8})},
            {"TiffDeflateSmall",
             kUTTypeTIFF,
             {{std::string(kPropertyTiffCompression), std::int64_t{8}},
              {std::string(kPropertyCompressionLevel), std::int64_t{6}}}},
            {"TiffOldDeflate", kUTTypeTIFF, with(kPropertyTiffCompression, std::int64_t{32946})},
            {"TiffPackBits", kUTTypeTIFF, with(kPropertyTiffCompression, std::int64_t{32773})},
            {"TiffNone", kUTTypeTIFF, with(kPropertyTiffCompression, std::int64_t{1})},
            {"TiffDefault", kUTTypeTIFF, {}},
            {"PngDefault", kUTTypePNG, {}},
            {"PngStored", kUTTypePNG, with(kPropertyCompressionLevel, std::int64_t{0})},
            {"PngSmall", kUTTypePNG, with(kPropertyCompressionLevel, std::int64_t{9})},
            {"Bmp", kUTTypeBMP, {}},
            {"WebP", kUTTypeWebP, {}},
            {"WebPFullQuality", kUTTypeWebP, with(kPropertyLossyQuality, 1.0)},
            {"Jpeg2000", kUTTypeJPEG2000, {}}};
}

class ExactRoundTrip : public ::testing::TestWithParam<ExactFormat> {};

TEST_P(ExactRoundTrip, GivesTheSamePixelsAtEveryShape) {
    for (const auto& [width, height] :
         {std::pair{1, 1}, {1, 7}, {7, 1}, {2, 3}, {33, 17}, {300, 260}}) {
        const CGImage image = randomValidPicture(width, height, 7U + static_cast<unsigned>(width));
        const auto bytes = encodeImage(image, GetParam().type, GetParam().options);
        ASSERT_TRUE(bytes) << bytes.error().message;
        const auto back = decodeImage(*bytes);
        ASSERT_TRUE(back) << back.error().message;
        EXPECT_EQ(back->type, GetParam().type);
        EXPECT_TRUE(samePixels(back->image, image));
    }
}

TEST_P(ExactRoundTrip, GivesTheSamePixelsForEveryColourAndAlpha) {
    // All 32,896 valid pairs of a colour and its alpha, in one picture.
    std::vector<Rgba> pixels;
    for (unsigned a = 0; a < 256; ++a) {
        for (unsigned c = 0; c <= a; ++c) {
            const auto v = static_cast<std::uint8_t>(c);
            pixels.push_back(
                {v, static_cast<std::uint8_t>(a - c), v, static_cast<std::uint8_t>(a)});
        }
    }
    const CGImage image = picture(257, 128, pixels);
    const auto bytes = encodeImage(image, GetParam().type, GetParam().options);
    ASSERT_TRUE(bytes);
    const auto back = decodeImage(*bytes);
    ASSERT_TRUE(back);
    EXPECT_TRUE(samePixels(back->image, image));
}

TEST_P(ExactRoundTrip, KeepsOpaquePicturesOpaqueAndExact) {
    std::vector<Rgba> pixels;
    for (unsigned i = 0; i < 64; ++i) {
        const auto v = static_cast<std::uint8_t>(i * 4);
        pixels.push_back({v, static_cast<std::uint8_t>(255 - v), 17, 255});
    }
    const CGImage image = picture(16, 4, pixels);
    const auto bytes = encodeImage(image, GetParam().type, GetParam().options);
    ASSERT_TRUE(bytes);
    const auto back = decodeImage(*bytes);
    ASSERT_TRUE(back);
    EXPECT_TRUE(samePixels(back->image, image));
}

TEST_P(ExactRoundTrip, CarriesTheResolution) {
    ImageProperties options = GetParam().options;
    options.emplace(kPropertyDpiWidth, 300.0);
    options.emplace(kPropertyDpiHeight, 150.0);
    const auto bytes = encodeImage(randomValidPicture(3, 2, 1), GetParam().type, options);
    ASSERT_TRUE(bytes);
    const auto back = decodeImage(*bytes);
    ASSERT_TRUE(back);
    // Formats that count pixels a metre round: 0.02 is half a pixel a metre.
    EXPECT_NEAR(numberProperty(back->properties, kPropertyDpiWidth), 300.0, 0.02);
    EXPECT_NEAR(numberProperty(back->properties, kPropertyDpiHeight), 150.0, 0.02);
}

/// Grain over a slope, opaque above and fading below: large and noisy enough for every shortcut
/// that writers take on photos.
CGImage grainyPicture(int width, int height) {
    std::mt19937 random(11);
    auto buffer = PixelBuffer::zeroed(width, height);
    const MutablePixelView view = buffer->view();
    for (int y = 0; y < height; ++y) {
        const unsigned alpha =
            2 * y < height ? 255 : static_cast<unsigned>(255 * (height - y) / height);
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = view.row(y) + 4 * x;
            for (int k = 0; k < 3; ++k) {
                const unsigned colour = static_cast<unsigned>(x * 200 / width) + random() % 32;
                pixel[k] = static_cast<std::uint8_t>(colour * alpha / 255);
            }
            pixel[3] = static_cast<std::uint8_t>(alpha);
        }
    }
    return CGImage(*std::move(buffer));
}

TEST_P(ExactRoundTrip, GivesTheSamePixelsOfALargeNoisyPicture) {
    if (GetParam().type == kUTTypeWebP || GetParam().type == kUTTypeJPEG2000) {
        GTEST_SKIP() << "Has no writer of our own, and takes long";
    }
    const CGImage image = grainyPicture(811, 640);  // strips and chunks end within it
    const auto bytes = encodeImage(image, GetParam().type, GetParam().options);
    ASSERT_TRUE(bytes) << bytes.error().message;
    const auto back = decodeImage(*bytes);
    ASSERT_TRUE(back) << back.error().message;
    EXPECT_TRUE(samePixels(back->image, image));
}

INSTANTIATE_TEST_SUITE_P(Formats, ExactRoundTrip, ::testing::ValuesIn(exactFormats()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TiffRoundTrip, KeepsColoursAboveTheirAlpha) {
    const CGImage image = picture(2, 1, {{200, 9, 255, 40}, {255, 255, 255, 1}});
    const auto back = decodeImage(*encodeImage(image, kUTTypeTIFF));
    ASSERT_TRUE(back);
    EXPECT_TRUE(samePixels(back->image, image));
}

TEST(TiffRoundTrip, ClearsColoursUnderNoAlpha) {
    const CGImage image = picture(2, 1, {{200, 9, 255, 0}, {1, 2, 3, 255}});
    const auto back = decodeImage(*encodeImage(image, kUTTypeTIFF));
    ASSERT_TRUE(back);
    EXPECT_EQ(pixelAt(back->image, 0, 0), (Rgba{0, 0, 0, 0}));
    EXPECT_EQ(pixelAt(back->image, 1, 0), (Rgba{1, 2, 3, 255}));
}

TEST(TiffRoundTrip, SaysHowItIsCompressed) {
    for (const std::int64_t compression : {1, 5, 8}) {
        const auto bytes = encodeImage(randomValidPicture(4, 4, 2), kUTTypeTIFF,
                                       with(kPropertyTiffCompression, compression));
        const auto back = decodeImage(*bytes);
        ASSERT_TRUE(back);
        EXPECT_EQ(wholeProperty(back->properties, kPropertyTiffCompression), compression);
        EXPECT_EQ(wholeProperty(back->properties, kPropertyOrientation), 1);
        EXPECT_EQ(wholeProperty(back->properties, kPropertyHasAlpha), 1);
        EXPECT_EQ(textProperty(back->properties, kPropertyColorModel), "RGB");
    }
}

TEST(TiffRoundTrip, ALevelMakesDeflateSmaller) {
    const CGImage image = grainyPicture(400, 300);
    std::size_t before = 0;
    for (const std::int64_t level : {12, 1}) {
        const auto bytes = encodeImage(image, kUTTypeTIFF,
                                       {{std::string(kPropertyTiffCompression), std::int64_t{8}},
                                        {std::string(kPropertyCompressionLevel), level}});
        ASSERT_TRUE(bytes);
        EXPECT_GT(bytes->size(), before) << level;
        before = bytes->size();
    }
}

TEST(PngRoundTrip, WithoutALevelItIsFastAndStillSmall) {
    const CGImage image = grainyPicture(811, 640);
    const auto fast = encodeImage(image, kUTTypePNG);
    const auto searched =
        encodeImage(image, kUTTypePNG, with(kPropertyCompressionLevel, std::int64_t{1}));
    ASSERT_TRUE(fast && searched);
    EXPECT_NE(fast->size(), searched->size());
    EXPECT_LE(fast->size(), searched->size() * 6 / 5);
}

TEST(JpegRoundTrip, LaysTransparentPartsOverTheMatte) {
    std::vector<Rgba> pixels(16 * 16, Rgba{0, 0, 0, 0});
    for (const auto& [matte, expected] : {std::pair{"", Rgba{255, 255, 255, 255}},
                                          {"#2040c0", Rgba{0x20, 0x40, 0xC0, 255}},
                                          {"#2040C", Rgba{255, 255, 255, 255}},
                                          {"#20g0c0", Rgba{255, 255, 255, 255}}}) {
        ImageProperties options;
        if (*matte != 0) options = with(kPropertyMatteColor, std::string(matte));
        const auto back = decodeImage(*encodeImage(picture(16, 16, pixels), kUTTypeJPEG, options));
        ASSERT_TRUE(back);
        const Rgba pixel = pixelAt(back->image, 8, 8);
        for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(pixel[k], expected[k], 3) << matte;
    }
}

/// The same colours, all opaque.
CGImage opaqueCopyOf(const CGImage& image) {
    auto buffer = PixelBuffer::uninitialized(image.width(), image.height());
    const MutablePixelView view = buffer->view();
    for (int y = 0; y < view.height; ++y) {
        const std::size_t rowBytes = std::size_t{4} * static_cast<std::size_t>(view.width);
        std::copy_n(image.pixels().row(y), rowBytes, view.row(y));
        for (std::size_t i = 3; i < rowBytes; i += 4) view.row(y)[i] = 255;
    }
    return CGImage(*std::move(buffer));
}

TEST(LossyRoundTrip, QualityDecidesTheSize) {
    const CGImage image = randomValidPicture(64, 64, 3);
    for (const std::string_view type : {kUTTypeJPEG, kUTTypeJPEG2000, kUTTypeWebP}) {
        std::size_t before = 0;
        for (const double quality : {0.1, 0.5, 0.9, 1.0}) {
            const auto bytes = encodeImage(image, type, with(kPropertyLossyQuality, quality));
            ASSERT_TRUE(bytes);
            EXPECT_GT(bytes->size(), before) << type << " " << quality;
            before = bytes->size();
        }
    }
}

TEST(LossyRoundTrip, StaysNearThePicture) {
    // A smooth slope in all channels: at quality 0.9 no format may be off by more than 8 steps.
    std::vector<Rgba> pixels;
    for (int i = 0; i < 64 * 64; ++i) {
        const auto v = static_cast<std::uint8_t>(i % 64 * 2 + i / 64);
        pixels.push_back({v, static_cast<std::uint8_t>(255 - v), 90, 255});
    }
    const CGImage image = picture(64, 64, pixels);
    for (const std::string_view type : {kUTTypeJPEG, kUTTypeJPEG2000, kUTTypeWebP}) {
        const auto back = decodeImage(*encodeImage(image, type, with(kPropertyLossyQuality, 0.9)));
        ASSERT_TRUE(back);
        for (int i = 0; i < 64 * 64; ++i) {
            const Rgba is = pixelAt(back->image, i % 64, i / 64);
            const Rgba was = pixelAt(image, i % 64, i / 64);
            for (std::size_t k = 0; k < 4; ++k) ASSERT_NEAR(is[k], was[k], 8) << type << " " << i;
        }
    }
}

TEST(Jpeg2000RoundTrip, KeepsEveryPixelOfAPictureInTiles) {
    // Tiles have at most 1024 pixels a side: one, two or three of them, the last ones smaller.
    struct Size {
        int width;
        int height;
    };
    for (const Size size : {Size{1024, 9}, Size{1025, 9}, Size{7, 1025}, Size{2051, 5}}) {
        for (const bool opaque : {true, false}) {
            CGImage image = randomValidPicture(size.width, size.height, 5);
            if (opaque) image = opaqueCopyOf(image);
            const auto back = decodeImage(*encodeImage(image, kUTTypeJPEG2000));
            ASSERT_TRUE(back) << size.width << " x " << size.height;
            EXPECT_TRUE(samePixels(back->image, image)) << size.width << " x " << size.height;
        }
    }
}

TEST(Jpeg2000RoundTrip, HoldsTheSamplesOfATileAlone) {
    if (!kMemoryIsMeasurable) GTEST_SKIP() << "a sanitizer keeps freed memory";
    // Three samples of 32 bits for each of 4.2 million pixels would be 50 MB, and the library would
    // need as much again for its codes.
    const CGImage image = opaqueCopyOf(*CGImage::copyOf(PixelBuffer::zeroed(2048, 2048)->view()));
    const std::size_t before = residentBytes();
    const std::size_t most = mostBytesDuring([&] { (void)encodeImage(image, kUTTypeJPEG2000); });
    EXPECT_LT(most, before + (std::size_t{45} << 20));
}

TEST(JpegRoundTrip, CarriesTheResolution) {
    const auto bytes =
        encodeImage(randomValidPicture(8, 8, 3), kUTTypeJPEG, with(kPropertyDpiWidth, 240.0));
    const auto back = decodeImage(*bytes);
    ASSERT_TRUE(back);
    EXPECT_EQ(numberProperty(back->properties, kPropertyDpiWidth), 240.0);
    EXPECT_EQ(numberProperty(back->properties, kPropertyDpiHeight), 240.0);
}

TEST(EncodeImage, RefusesTypesThatCannotBeWritten) {
    for (std::string_view type : {kUTTypePSD, kUTTypeGIF, std::string_view("public.nothing")}) {
        const auto bytes = encodeImage(randomValidPicture(2, 2, 1), type);
        ASSERT_FALSE(bytes);
        EXPECT_EQ(bytes.error().code, ErrorCode::Unsupported);
    }
}

TEST(EncodeImage, WritesThreePackedSamples) {
    const std::shared_ptr<std::uint8_t> bytes(
        new std::uint8_t[16]{10, 20, 30, 40, 50, 60, 0, 0, 70, 80, 90, 100, 110, 120, 0, 0},
        std::default_delete<std::uint8_t[]>());
    const auto image = CGImage::share(bytes, 2, 2, 8, 3);
    ASSERT_TRUE(image);
    for (std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeBMP}) {
        const auto back = decodeImage(*encodeImage(*image, type));
        ASSERT_TRUE(back);
        EXPECT_EQ(pixelAt(back->image, 0, 0), (Rgba{10, 20, 30, 255}));
        EXPECT_EQ(pixelAt(back->image, 1, 1), (Rgba{100, 110, 120, 255}));
        EXPECT_EQ(wholeProperty(back->properties, kPropertyHasAlpha), 0);
    }
}

}  // namespace
}  // namespace skarnel
