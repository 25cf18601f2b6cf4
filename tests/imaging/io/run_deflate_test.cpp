#include "imaging/io/run_deflate.h"

#include "imaging/io/deflate_streams.h"

namespace skarnel::io {
namespace {

using testing::deflatedBy;
using testing::inflated;
using testing::noise;

constexpr std::size_t kBlock = std::size_t{128} << 10;

Bytes deflated(const Bytes& bytes, std::size_t piece) {
    return deflatedBy([](Bytes& out) { return RunDeflater(out); }, bytes, piece);
}

TEST(RunDeflater, ComesBackAtEverySizeAroundABlock) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{8},
                                   std::size_t{9}, kBlock - 1, kBlock, kBlock + 1, 3 * kBlock}) {
        const Bytes bytes = noise(size, 256, 5);
        EXPECT_EQ(inflated(deflated(bytes, size), size), bytes) << size;
    }
}

TEST(RunDeflater, AnEmptyStreamIsOne) {
    Bytes out;
    RunDeflater deflater(out);
    deflater.finish();
    Bytes back(1);
    uLongf size = back.size();
    EXPECT_EQ(uncompress(back.data(), &size, out.data(), out.size()), Z_OK);
    EXPECT_EQ(size, 0U);
}

TEST(RunDeflater, RunsOfEveryLengthComeBack) {
    Bytes bytes;
    for (std::size_t length = 1; length <= 800; ++length) {
        bytes.insert(bytes.end(), length, static_cast<std::uint8_t>(length * 37));
    }
    for (const std::size_t piece : {std::size_t{1000}, std::size_t{4097}, bytes.size()}) {
        EXPECT_EQ(inflated(deflated(bytes, piece), bytes.size()), bytes) << piece;
    }
}

TEST(RunDeflater, RandomMixturesComeBack) {
    for (unsigned round = 0; round < 60; ++round) {
        std::mt19937 random(round);
        Bytes bytes;
        while (bytes.size() < 40'000) {
            const std::size_t length = random() % 3 == 0 ? random() % 700 : random() % 5;
            bytes.insert(bytes.end(), length, static_cast<std::uint8_t>(random() % 6 * 51));
        }
        EXPECT_EQ(inflated(deflated(bytes, 1 + random() % 20'000), bytes.size()), bytes)
            << "round " << round;
    }
}

TEST(RunDeflater, TheCheckIsOfAllBytes) {
    Bytes stream = deflated(noise(5000, 9, 1), 700);
    stream.back() ^= 1U;
    EXPECT_TRUE(inflated(stream, 5000).empty());
}

TEST(RunDeflater, EvenNoiseTakesItsEntropy) {
    // Sixteen values, equally often: four bits a byte. A block also has a header of 160 bytes, and
    // one value a bit more, since the end needs a code: an eighth of a byte for 8192 of them.
    const std::size_t size = 8 * kBlock;
    const std::size_t packed = deflated(noise(size, 16, 2), kBlock).size();
    EXPECT_GE(packed, size / 2);
    EXPECT_LE(packed, size / 2 + std::size_t{8} * (160 + 1024 + 40));
}

TEST(RunDeflater, WhatASampleOfTheBytesDoesNotShowComesBackToo) {
    // Values that lie between the pieces that are counted, in a block of nothing but literals.
    Bytes bytes = noise(2 * kBlock, 4, 6);
    for (std::size_t at = 600; at < bytes.size(); at += 2048) {
        bytes[at] = static_cast<std::uint8_t>(100 + at / 2048);
    }
    const Bytes packed = deflated(bytes, bytes.size());
    EXPECT_EQ(inflated(packed, bytes.size()), bytes);
    // Two bits a byte, at most 14 for the rare ones; room for 240 codes that are not needed.
    EXPECT_LT(packed.size(), bytes.size() / 4 + bytes.size() / 20);
}

TEST(RunDeflater, OneByteRepeatedTakesNextToNothing) {
    // 508 runs a block, each of two bits, behind the header.
    EXPECT_LE(deflated(Bytes(8 * kBlock, 0), kBlock).size(), 8U * (160 + 508 / 4 + 16));
}

}  // namespace
}  // namespace skarnel::io
