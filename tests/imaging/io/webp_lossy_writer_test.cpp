// Large lossy WebP: alpha comes back exactly, colours as well as from the library alone.
#include "imaging/io/webp_lossy_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include "imaging/io/exif_block.h"
#include "imaging/io/pictures.h"
#include "imaging/io/writers.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

constexpr double kQuality = 0.9;

/// Waves of colour; `alphaAt` gives the alpha of a place.
template <typename AlphaAt>
CGImage waves(int width, int height, AlphaAt alphaAt) {
    auto buffer = *PixelBuffer::zeroed(width, height);
    const MutablePixelView view = buffer.view();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto alpha = static_cast<unsigned>(alphaAt(x, y));
            std::uint8_t* pixel = view.row(y) + 4 * x;
            for (int k = 0; k < 3; ++k) {
                const double wave = std::sin(x * 0.05 + k) + std::cos(y * 0.07 - k);
                pixel[k] = io::multiply255(static_cast<std::uint8_t>(128 + 60 * wave), alpha);
            }
            pixel[3] = static_cast<std::uint8_t>(alpha);
        }
    }
    return CGImage(std::move(buffer));
}

Result<Bytes> written(const CGImage& image, const Bytes& exif = {}) {
    io::ImageRows rows(image);
    return io::writeLossyWebPInBands(rows, kQuality, exif);
}

/// The mean difference of a sample.
double errorOf(const CGImage& one, const CGImage& other) {
    double sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int i = 0; i < 4 * one.width(); ++i) {
            sum += std::abs(one.pixels().row(y)[i] - other.pixels().row(y)[i]);
        }
    }
    return sum / one.height() / one.width() / 4;
}

void expectSurvives(const CGImage& image, const std::string& name) {
    SCOPED_TRACE(name);
    const auto file = written(image);
    ASSERT_TRUE(file);
    const auto decoded = decodeImage(*file);
    ASSERT_TRUE(decoded) << decoded.error().message;
    ASSERT_EQ(decoded->image.width(), image.width());
    ASSERT_EQ(decoded->image.height(), image.height());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            ASSERT_EQ(decoded->image.pixels().row(y)[4 * x + 3], image.pixels().row(y)[4 * x + 3])
                << x << ", " << y;
        }
    }
    const auto library =
        encodeImage(image, kUTTypeWebP, {{std::string(kPropertyLossyQuality), kQuality}});
    EXPECT_LE(errorOf(decoded->image, image), errorOf(decodeImage(*library)->image, image) + 0.3);
}

TEST(LossyWebPInBands, SurvivesInEverySizeAroundABand) {
    for (const auto& [width, height] :
         {std::pair{1, 1}, std::pair{2, 1}, std::pair{1, 130}, std::pair{65, 63}, std::pair{66, 64},
          std::pair{31, 65}, std::pair{300, 129}, std::pair{5000, 3}}) {
        expectSurvives(waves(width, height, [](int x, int y) { return 255 - (x + y) % 200; }),
                       std::to_string(width) + "x" + std::to_string(height));
    }
}

TEST(LossyWebPInBands, SurvivesWithAlphaOfEveryKind) {
    std::mt19937 random(3);
    expectSurvives(waves(90, 90, [](int, int) { return 0; }), "nothing");
    expectSurvives(waves(90, 90, [](int, int y) { return 255 - y; }), "rows that fade");
    expectSurvives(waves(90, 90, [](int x, int) { return 2 * x; }), "columns that fade");
    expectSurvives(waves(90, 90, [](int x, int y) { return x < y ? 0 : 255; }), "an edge");
    expectSurvives(waves(90, 90, [&](int, int) { return random() % 256; }), "noise");
}

std::string chunkNameAt(const Bytes& file, std::size_t at) {
    return {file.begin() + static_cast<std::ptrdiff_t>(at),
            file.begin() + static_cast<std::ptrdiff_t>(at + 4)};
}

TEST(LossyWebPInBands, AnOpaquePictureIsOneChunkAlone) {
    const CGImage image = waves(70, 70, [](int, int) { return 255; });
    const auto file = written(image);
    ASSERT_TRUE(file);
    EXPECT_EQ(chunkNameAt(*file, 12), "VP8 ");
    const std::size_t counted = (*file)[4] | std::size_t{(*file)[5]} << 8U;
    EXPECT_EQ(counted + 8, file->size());
    expectSurvives(image, "opaque");
}

TEST(LossyWebPInBands, KeepsTheResolution) {
    const CGImage image = waves(20, 20, [](int, int) { return 255; });
    const auto file = written(image, io::writeExifBlock({}, io::Resolution{300, 150}));
    ASSERT_TRUE(file);
    EXPECT_EQ(chunkNameAt(*file, 12), "VP8X");
    const auto decoded = decodeImage(*file);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(io::numberProperty(decoded->properties, kPropertyDpiWidth), 300);
    EXPECT_EQ(io::numberProperty(decoded->properties, kPropertyDpiHeight), 150);
}

TEST(LossyWebPInBands, RowsThatEndEarlyAreNoPicture) {
    class FewRows final : public io::PictureRows {
      public:
        FewRows() : PictureRows({4, 100, 4, false}) {}
        const std::uint8_t* next() override { return ++given_ > 70 ? nullptr : row_.data(); }

      private:
        Bytes row_ = Bytes(16, 9);
        int given_ = 0;
    };
    FewRows rows;
    EXPECT_FALSE(io::writeLossyWebPInBands(rows, kQuality, {}));
}

TEST(LossyWebPInBands, IsWhatALargePictureGets) {
    auto buffer = *PixelBuffer::zeroed(2000, 2000);
    const CGImage image(std::move(buffer));
    const auto file =
        encodeImage(image, kUTTypeWebP, {{std::string(kPropertyLossyQuality), kQuality}});
    ASSERT_TRUE(file);
    EXPECT_EQ(*file, *written(image));
}

}  // namespace
}  // namespace skarnel
