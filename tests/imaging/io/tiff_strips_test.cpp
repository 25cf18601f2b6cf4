// The strips of a TIFF as they go to their taker; what they hold is shown by the round trips.
#include "imaging/io/tiff_strips.h"

#include <gtest/gtest.h>

#include <random>

#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

struct Way {
    const char* name;
    io::StripCode code;
    std::optional<int> level;
    bool noise;  // nothing but runs is found in it, where there is enough to look at
};

constexpr int kWidth = 400;
constexpr int kHeight = 200;  // 320 KB

CGImage pictureFor(const Way& way) {
    std::mt19937 random(3);
    std::vector<Rgba> pixels(kWidth * kHeight, Rgba{1, 2, 3, 255});
    for (Rgba& pixel : pixels) {
        if (!way.noise) break;
        for (std::size_t k = 0; k < 3; ++k) pixel[k] = static_cast<std::uint8_t>(random());
    }
    return picture(kWidth, kHeight, pixels);
}

class TiffStrips : public ::testing::TestWithParam<Way> {};

TEST_P(TiffStrips, EndWhereTheirTakerSaysSo) {
    const CGImage image = pictureFor(GetParam());
    constexpr int kRows = 32;
    constexpr std::uint32_t kStrips = 7;  // the last of eight rows
    for (std::uint32_t last = 0; last <= kStrips; ++last) {
        std::vector<std::uint32_t> taken;
        const bool all = io::codeStrips(image.pixels(), kRows, GetParam().code, GetParam().level,
                                        [&](std::uint32_t number, ByteView codes) {
                                            EXPECT_FALSE(codes.empty());
                                            taken.push_back(number);
                                            return number != last;
                                        });
        EXPECT_EQ(all, last == kStrips);
        ASSERT_EQ(taken.size(), std::min(last + 1, kStrips));
        for (std::uint32_t i = 0; i < taken.size(); ++i) EXPECT_EQ(taken[i], i);
    }
}

TEST_P(TiffStrips, OfWhichThereAreManyAreJudgedBySomeOfThem) {
    std::uint32_t count = 0;
    std::size_t bytes = 0;
    EXPECT_TRUE(io::codeStrips(pictureFor(GetParam()).pixels(), 10, GetParam().code,
                               GetParam().level, [&](std::uint32_t, ByteView codes) {
                                   ++count;
                                   bytes += codes.size();
                                   return true;
                               }));
    EXPECT_EQ(count, 20U);
    // Three of four bytes are noise, or next to none differs from the one before.
    constexpr std::size_t kNoise = std::size_t{3} * kWidth * kHeight;
    EXPECT_EQ(bytes > kNoise, GetParam().noise);
}

INSTANTIATE_TEST_SUITE_P(Ways, TiffStrips,
                         ::testing::Values(Way{"Lzw", io::StripCode::Lzw, {}, true},
                                           Way{"LzwFlat", io::StripCode::Lzw, {}, false},
                                           Way{"Deflate", io::StripCode::Deflate, {}, true},
                                           Way{"DeflateFlat", io::StripCode::Deflate, {}, false},
                                           Way{"Level", io::StripCode::Deflate, 6, true}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace skarnel
