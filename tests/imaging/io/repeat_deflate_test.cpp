#include "imaging/io/repeat_deflate.h"

#include "imaging/io/deflate_streams.h"

namespace skarnel::io {
namespace {

using testing::deflatedBy;
using testing::inflated;
using testing::noise;

constexpr std::size_t kBlock = std::size_t{256} << 10;
/// Code lengths of four bits for all symbols, and what stands around a block.
constexpr std::size_t kHeaderBytes = (286 + 30) / 2 + 16;

class RepeatDeflaterOf : public ::testing::TestWithParam<std::size_t> {
  protected:
    Bytes deflated(const Bytes& bytes, std::size_t piece = kBlock) const {
        return deflatedBy([](Bytes& out) { return RepeatDeflater(out, GetParam()); }, bytes, piece);
    }
    void expectComesBack(const Bytes& bytes, std::size_t piece = kBlock) const {
        EXPECT_EQ(inflated(deflated(bytes, piece), bytes.size()), bytes);
    }
};
INSTANTIATE_TEST_SUITE_P(PixelBytes, RepeatDeflaterOf, ::testing::Values(3, 4));

TEST_P(RepeatDeflaterOf, ComesBackAtEverySizeAroundAPixelAndABlock) {
    for (std::size_t size = 0; size <= 40; ++size) expectComesBack(noise(size, 2, 5));
    for (const std::size_t size : {kBlock - 1, kBlock, kBlock + 1, 2 * kBlock + 5}) {
        expectComesBack(noise(size, 256, 5), size);
    }
}

TEST_P(RepeatDeflaterOf, RepeatsOfEveryLengthComeBack) {
    for (const std::size_t distance : {std::size_t{3}, std::size_t{4}, std::size_t{40}}) {
        Bytes bytes;
        for (std::size_t length = 1; length <= 300; ++length) {
            const Bytes fresh = noise(distance, 256, static_cast<unsigned>(length));
            bytes.insert(bytes.end(), fresh.begin(), fresh.end());
            for (std::size_t i = 0; i < length; ++i)
                bytes.push_back(bytes[bytes.size() - distance]);
        }
        expectComesBack(bytes);
    }
}

TEST_P(RepeatDeflaterOf, EveryDistanceUpToTheWindowComesBackAndBeyondIt) {
    for (const std::size_t distance :
         {8U, 9U, 13U, 33U, 257U, 8192U, 12'289U, 24'576U, 32'764U, 32'767U, 32'768U, 40'000U}) {
        const Bytes fresh = noise(distance, 256, 7);
        Bytes bytes;
        for (int times = 0; times < 3; ++times) {
            bytes.insert(bytes.end(), fresh.begin(), fresh.end());
        }
        expectComesBack(bytes);
    }
}

TEST_P(RepeatDeflaterOf, RandomMixturesComeBack) {
    for (unsigned round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        std::mt19937 random(round);
        Bytes bytes(4, 9);
        while (bytes.size() < 40'000) {
            const std::size_t length = random() % 3 == 0 ? random() % 700 : random() % 9;
            const std::size_t back = 1 + random() % std::min<std::size_t>(bytes.size(), 35'000);
            const bool repeats = random() % 2 == 0;
            for (std::size_t i = 0; i < length; ++i) {
                bytes.push_back(repeats ? bytes[bytes.size() - back]
                                        : static_cast<std::uint8_t>(random() % 6 * 51));
            }
        }
        expectComesBack(bytes, 1 + random() % 50'000);
    }
}

TEST_P(RepeatDeflaterOf, OnePixelRepeatedTakesNextToNothing) {
    Bytes bytes;
    while (bytes.size() < kBlock) {
        for (std::size_t k = 0; k < GetParam(); ++k) bytes.push_back(static_cast<std::uint8_t>(k));
    }
    // 1017 matches a block, each of one bit for the length and one for the distance; a few more for
    // the symbols that only have to be there.
    EXPECT_LE(deflated(bytes, bytes.size()).size(), kHeaderBytes * 2 + 1017 * 2 / 8 + 40);
}

TEST_P(RepeatDeflaterOf, ARowThatComesAgainIsFoundAgain) {
    // 50 times a row of 1200 different pixels, less than a block: the first one takes its bytes,
    // all the others together a match for each 258 bytes, with codes and bits of at most 30.
    const Bytes row = noise(1200 * GetParam(), 256, 11);
    Bytes bytes;
    for (int y = 0; y < 50; ++y) bytes.insert(bytes.end(), row.begin(), row.end());
    const std::size_t matches = bytes.size() / 258;
    EXPECT_LE(deflated(bytes).size(), row.size() * 17 / 16 + matches * 4 + 2 * kHeaderBytes);
}

TEST_P(RepeatDeflaterOf, NoiseTakesItsEntropy) {
    // Sixteen values, equally often: four bits a byte, and the little that chance repeats add.
    const std::size_t packed = deflated(noise(4 * kBlock, 16, 2)).size();
    EXPECT_LE(packed, 4 * kBlock / 2 + 4 * (kHeaderBytes + 2048 + 256));
}

}  // namespace
}  // namespace skarnel::io
