// Our own lossless WebP: what the library's decoder reads in it are the very pixels.
#include "imaging/io/vp8l_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "imaging/io/pictures.h"
#include "imaging/io/pixel_rows.h"
#include "imaging/io/vp8l_codes.h"
#include "imaging/io/vp8l_predictor.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

template <typename PixelAt>
CGImage make(int width, int height, PixelAt at) {
    auto buffer = *PixelBuffer::zeroed(width, height);
    const MutablePixelView view = buffer.view();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgba pixel = at(x, y);
            std::copy(pixel.begin(), pixel.end(), view.row(y) + 4 * x);
        }
    }
    return CGImage(std::move(buffer));
}

std::uint8_t byte(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

/// Light and shade with grain, over an edge, fading out below: what a result looks like.
CGImage photoLike(int width, int height) {
    std::mt19937 random(11);
    return make(width, height, [&](int x, int y) {
        const int light = 128 + 90 * ((x / 37 + y / 53) % 3 - 1) + (x * 3 + y * 2) / 40 % 30;
        const int grain = static_cast<int>(random() % 9) - 4;
        const int alpha = y < height / 2 ? 255 : 255 * (height - y) / (height - height / 2);
        const auto over = [&](int c) {
            return io::multiply255(byte(c), static_cast<unsigned>(alpha));
        };
        return Rgba{over(light + grain), over(light + grain + 10), over(light - 20 + grain),
                    static_cast<std::uint8_t>(alpha)};
    });
}

void expectSurvives(const CGImage& image, const std::string& name) {
    const auto file = io::writeLosslessWebP(image, {});
    ASSERT_TRUE(file) << name;
    const auto decoded = decodeImage(*file);
    ASSERT_TRUE(decoded) << name << ": " << decoded.error().message;
    EXPECT_TRUE(samePixels(decoded->image, image)) << name;
    // RIFF counts all that follows its own count, in whole pairs.
    const std::uint32_t counted =
        (*file)[4] | (*file)[5] << 8U | (*file)[6] << 16U | std::uint32_t{(*file)[7]} << 24U;
    EXPECT_EQ(counted + 8, file->size()) << name;
    EXPECT_EQ(file->size() % 2, 0U) << name;
}

TEST(LosslessWebP, KeepsEveryPixelOfEverySmallSize) {
    for (int width = 1; width <= 35; ++width) {
        for (const int height : {1, 2, 3, 15, 16, 17, 18, 33}) {
            expectSurvives(randomValidPicture(width, height, static_cast<unsigned>(width)),
                           std::to_string(width) + "x" + std::to_string(height));
        }
    }
}

TEST(LosslessWebP, KeepsFlatAndRepeatedPictures) {
    expectSurvives(make(300, 40, [](int, int) { return Rgba{0, 0, 0, 0}; }), "nothing");
    expectSurvives(make(9000, 3, [](int, int) { return Rgba{1, 2, 3, 4}; }), "one colour");
    expectSurvives(make(200, 90,
                        [](int x, int) {
                            return Rgba{byte(x), byte(x), 7, 255};
                        }),
                   "columns");
    expectSurvives(make(200, 300,
                        [](int, int y) {
                            return Rgba{byte(y), 0, byte(y / 2), 255};
                        }),
                   "rows");
    expectSurvives(
        make(97, 80,
             [](int x, int y) {
                 return (x / 5 + y / 7) % 2 == 0 ? Rgba{0, 0, 0, 255} : Rgba{255, 255, 255, 255};
             }),
        "checks");
    expectSurvives(make(64, 64,
                        [](int x, int y) {
                            return x == 40 && y == 40 ? Rgba{9, 8, 7, 255} : Rgba{0, 0, 0, 0};
                        }),
                   "a point");
}

TEST(LosslessWebP, KeepsALikenessOfAPhotoAndNoise) {
    expectSurvives(photoLike(401, 333), "photo");
    expectSurvives(randomValidPicture(401, 133, 9), "noise");
}

/// Every predictor is the best one somewhere: rows that are built from it with little noise.
TEST(LosslessWebP, KeepsPicturesThatEachPredictorFits) {
    for (unsigned mode = 1; mode < io::kVp8lModes; ++mode) {
        std::mt19937 random(mode);
        constexpr std::size_t kWidth = 70;
        std::vector<Bytes> rows(49, Bytes((kWidth + 2) * 4, 128));
        for (std::size_t y = 1; y < rows.size(); ++y) {
            for (std::size_t x = 1; x <= kWidth; ++x) {
                Bytes left(4);
                // What is left of black, by the predictor, is its negative.
                Bytes around = rows[y];
                std::fill_n(around.begin() + static_cast<long>(4 * x), 4, std::uint8_t{0});
                io::vp8lResidual(mode, around.data() + 4 * x, rows[y - 1].data() + 4 * x,
                                 left.data(), 1);
                for (std::size_t k = 0; k < 4; ++k) {
                    rows[y][4 * x + k] = static_cast<std::uint8_t>(random() % 3 - 1 - left[k]);
                }
            }
        }
        expectSurvives(make(kWidth, 48,
                            [&](int x, int y) {
                                const std::uint8_t* pixel =
                                    &rows[static_cast<std::size_t>(y) + 1]
                                         [4 * (static_cast<std::size_t>(x) + 1)];
                                return Rgba{byte(pixel[0] + pixel[1]), pixel[1],
                                            byte(pixel[2] + pixel[1]), 255};
                            }),
                       "mode " + std::to_string(mode));
    }
}

TEST(LosslessWebP, TakesPicturesWithoutAlpha) {
    const int width = 50;
    const int height = 20;
    Bytes packed(static_cast<std::size_t>(width * height * 3));
    std::mt19937 random(2);
    for (auto& value : packed) value = static_cast<std::uint8_t>(random());
    const auto image = CGImage::copyOf({packed.data(), width, height, 3 * width, 3});
    const auto decoded = decodeImage(*io::writeLosslessWebP(*image, {}));
    ASSERT_TRUE(decoded);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const std::uint8_t* pixel = packed.data() + 3 * (y * width + x);
            EXPECT_EQ(pixelAt(decoded->image, x, y), (Rgba{pixel[0], pixel[1], pixel[2], 255}));
        }
    }
}

TEST(LosslessWebP, CarriesTheResolution) {
    const CGImage image = randomValidPicture(5, 4, 3);
    const auto decoded =
        decodeImage(*io::writeLosslessWebP(image, {{std::string(kPropertyDpiWidth), 300.0}}));
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(samePixels(decoded->image, image));
    const auto dpi = decoded->properties.find(kPropertyDpiWidth);
    ASSERT_NE(dpi, decoded->properties.end());
    EXPECT_EQ(std::get<double>(dpi->second), 300.0);
}

TEST(LosslessWebP, RefusesWhatTheFormatHasNoRoomFor) {
    const CGImage wide(*PixelBuffer::zeroed(16384, 1));
    const auto file = io::writeLosslessWebP(wide, {});
    ASSERT_FALSE(file);
    EXPECT_EQ(file.error().code, ErrorCode::TooLarge);
    expectSurvives(CGImage(*PixelBuffer::zeroed(16383, 2)), "the widest");
}

/// From four million pixels on encodeImage takes our own; its files stay near the library's.
TEST(LosslessWebP, IsTakenForLargePicturesAndStaysNearTheLibrarysSize) {
    const auto photo = decodeOwnImageFile(SAMPLE_PHOTO);
    ASSERT_TRUE(photo);
    PixelView part = photo->image.pixels();
    part = {part.row(300) + 4 * 400, 500, 400, part.strideBytes, 4};
    const CGImage small = *CGImage::copyOf(part);
    const Bytes library = *encodeImage(small, kUTTypeWebP);
    const Bytes own = *io::writeLosslessWebP(small, {});
    EXPECT_NE(library, own);
    EXPECT_LT(own.size(), library.size() * 5 / 4);
    const CGImage large = make(2000, 2000, [](int x, int y) {
        return Rgba{byte(x / 8), byte(y / 8), 0, 255};
    });
    EXPECT_EQ(*encodeImage(large, kUTTypeWebP), *io::writeLosslessWebP(large, {}));
}

TEST(Vp8lNumber, FollowsTheTableOfTheFormat) {
    // RFC 9649, 3.7.2.3: 1 to 4 are symbols of their own; from symbol 4 on, two for each doubling.
    struct Row {
        std::uint32_t value, symbol, extra;
        unsigned extraBits;
    };
    for (const auto& [value, symbol, extra, extraBits] :
         {Row{1, 0, 0, 0}, Row{4, 3, 0, 0}, Row{5, 4, 0, 1}, Row{6, 4, 1, 1}, Row{7, 5, 0, 1},
          Row{9, 6, 0, 2}, Row{12, 6, 3, 2}, Row{13, 7, 0, 2}, Row{3073, 23, 0, 10},
          Row{4096, 23, 1023, 10}}) {
        const io::Vp8lNumber number = io::vp8lNumber(value);
        EXPECT_EQ(number.symbol, symbol) << value;
        EXPECT_EQ(number.extra, extra) << value;
        EXPECT_EQ(number.extraBits, extraBits) << value;
    }
}

}  // namespace
}  // namespace skarnel
