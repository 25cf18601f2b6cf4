#include "imaging/io/deflate.h"

#include "imaging/io/deflate_streams.h"

namespace skarnel::io {
namespace {

using testing::inflated;
using testing::noise;

TEST(FastestWay, SearchesFewBytes) {
    EXPECT_EQ(fastestWay(noise(100'000, 16, 3), 4), DeflateWay::Search);
}

TEST(FastestWay, TakesRunsForNoiseWithoutRepeats) {
    EXPECT_EQ(fastestWay(noise(400'000, 16, 3), 4), DeflateWay::Runs);
}

TEST(FastestWay, TakesRepeatsForRowsThatComeAgain) {
    // Each of 1000 bytes, a whole number of pixels, five times.
    Bytes bytes;
    for (unsigned row = 0; row < 400; ++row) {
        const Bytes fresh = noise(1000, 200, row / 5);
        bytes.insert(bytes.end(), fresh.begin(), fresh.end());
    }
    EXPECT_EQ(fastestWay(bytes, 4), DeflateWay::Repeats);
}

TEST(FastestWay, SearchesForRepeatsThatAreTooShortToBeMet) {
    // Words of six bytes in any order: none fills eight, and two in the same order are rare.
    const Bytes words = noise(std::size_t{6} * 4096, 256, 8);
    std::mt19937 random(1);
    Bytes bytes;
    while (bytes.size() < 400'000) {
        const auto word = words.begin() + static_cast<std::ptrdiff_t>(random() % 4096 * 6);
        bytes.insert(bytes.end(), word, word + 6);
    }
    EXPECT_EQ(fastestWay(bytes, 4), DeflateWay::Search);
}

TEST(BlockDeflaters, AreOfTheWayThatWasAskedFor) {
    const Bytes pattern = noise(1000, 200, 4);
    Bytes bytes;
    while (bytes.size() < 100'000) bytes.insert(bytes.end(), pattern.begin(), pattern.end());
    const auto sizeBy = [&](DeflateWay way) {
        Bytes out;
        const auto deflater = makeBlockDeflater(way, out, 4);
        deflater->add(bytes);
        deflater->finish();
        EXPECT_EQ(inflated(out, bytes.size()), bytes);
        return out.size();
    };
    EXPECT_GT(sizeBy(DeflateWay::Runs), bytes.size() / 2);
    EXPECT_LT(sizeBy(DeflateWay::Repeats), bytes.size() / 20);
}

}  // namespace
}  // namespace skarnel::io
