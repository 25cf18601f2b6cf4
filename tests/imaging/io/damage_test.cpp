// Damaged, cut and lying files of every format: an error or a valid picture, never a crash.
#include <gtest/gtest.h>

#include "imaging/io/file_builders.h"
#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

struct Sample {
    std::string name;
    Bytes file;
};

Bytes tiffOfTiles() {
    TiffBuilder tiff(20, 18, 2, {8, 8, 8});
    tiff.tags[322] = tiff.tags[323] = {16};
    tiff.blocks.assign(4, Bytes(16 * 16 * 3, 77));
    return tiff.build();
}

std::vector<Sample> samples() {
    std::vector<Sample> all;
    const CGImage image = randomValidPicture(19, 13, 5);
    for (const ImageType& type : imageTypes()) {
        if (type.canWrite)
            all.push_back(
                {std::string(type.preferredExtension), *encodeImage(image, type.identifier)});
    }
    all.push_back(
        {"TiffDeflate", *encodeImage(image, kUTTypeTIFF,
                                     {{std::string(kPropertyTiffCompression), std::int64_t{8}}})});
    all.push_back({"TiffTiles", tiffOfTiles()});
    all.push_back({"WebPLossy",
                   *encodeImage(image, kUTTypeWebP, {{std::string(kPropertyLossyQuality), 0.5}})});
    for (const std::uint16_t packing : {0, 1, 2, 3}) {
        PsdBuilder psd;
        psd.width = 5;
        psd.height = 2;
        psd.packing = packing;
        psd.rows.assign(8, Bytes{1, 2, 3, 4, 200});
        psd.resources = ByteSink(true).text("8BIM").u16(1005).u16(0).u32(16).zeros(16).bytes;
        all.push_back({"Psd" + std::to_string(packing), psd.build()});
    }
    all.push_back({"Gif", buildGif(7, 5, Bytes(768, 9), Bytes(35, 3), 2)});
    BmpBuilder runs;
    runs.bits = 8;
    runs.width = 4;
    runs.height = 3;
    runs.compression = 1;
    runs.palette = Bytes(1024, 50);
    runs.pixels = {2, 1, 1, 2, 0, 0, 0, 3, 3, 2, 1, 0, 0, 2, 1, 0, 1, 3, 0, 1};
    all.push_back({"BmpRuns", runs.build()});
    all.push_back({"PngPalette", buildPng(3, 1, 2, 3, {0b00011000},
                                          {{"PLTE", Bytes(9, 90)}, {"tRNS", {255, 128}}})});
    return all;
}

/// Every pixel of a decoded picture keeps what decodeImage promises.
void expectValid(const Result<DecodedImage>& decoded) {
    if (!decoded) {
        EXPECT_FALSE(decoded.error().message.empty());
        return;
    }
    for (const Rgba& pixel : pixelsOf(decoded->image)) {
        if (pixel[3] == 0) {
            ASSERT_EQ(pixel, (Rgba{0, 0, 0, 0}));
        }
    }
}

constexpr DecodeLimits kSmall{1 << 20};

class Damage : public ::testing::TestWithParam<Sample> {};

TEST_P(Damage, TheWholeFileOpens) {
    const auto decoded = decodeImage(GetParam().file, kSmall);
    EXPECT_TRUE(decoded) << decoded.error().message;
}

TEST_P(Damage, EveryPrefixIsAnErrorOrTheWholePicture) {
    const Bytes& file = GetParam().file;
    const auto whole = decodeImage(file, kSmall);
    for (std::size_t size = 0; size < file.size(); ++size) {
        // A copy of exactly that size, so that a sanitizer sees every byte read beyond it.
        const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
        const auto decoded = decodeImage(cut, kSmall);
        expectValid(decoded);
        if (decoded) {
            EXPECT_TRUE(samePixels(decoded->image, whole->image)) << size;
        }
    }
}

TEST_P(Damage, FlippedBitsNeverDoHarm) {
    std::mt19937 random(11);
    for (int round = 0; round < 1500; ++round) {
        Bytes file = GetParam().file;
        const unsigned flips = 1 + random() % 4;
        for (unsigned i = 0; i < flips; ++i) {
            // Headers decide most, so half of the damage goes there.
            const std::size_t range =
                i % 2 == 0 ? std::min<std::size_t>(file.size(), 64) : file.size();
            file[random() % range] ^= static_cast<std::uint8_t>(1U << random() % 8);
        }
        expectValid(decodeImage(file, kSmall));
    }
}

TEST_P(Damage, ExtremeNumbersNeverDoHarm) {
    const Bytes& good = GetParam().file;
    for (std::size_t at = 0; at < std::min<std::size_t>(good.size(), 200); ++at) {
        for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            for (const std::size_t count : {std::size_t{1}, std::size_t{2}, std::size_t{4}}) {
                Bytes file = good;
                for (std::size_t i = at; i < std::min(at + count, file.size()); ++i) {
                    file[i] = static_cast<std::uint8_t>(value);
                }
                expectValid(decodeImage(file, kSmall));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Files, Damage, ::testing::ValuesIn(samples()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace skarnel
