#include "imaging/io/huffman_code.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <queue>
#include <random>
#include <vector>

namespace skarnel::io {
namespace {

std::vector<PrefixCode> codesOf(const std::vector<std::uint32_t>& counts, unsigned maxLength) {
    std::vector<PrefixCode> codes(counts.size());
    makePrefixCode(counts, maxLength, codes);
    return codes;
}

std::uint64_t bitsOf(const std::vector<std::uint32_t>& counts,
                     const std::vector<PrefixCode>& codes) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        bits += std::uint64_t{counts[i]} * codes[i].length;
    }
    return bits;
}

/// The least possible total, from the definition: each merge adds a bit to all that it merges.
std::uint64_t leastBits(const std::vector<std::uint32_t>& counts) {
    std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, std::greater<>> weights;
    for (const std::uint32_t count : counts) {
        if (count > 0) weights.push(count);
    }
    std::uint64_t bits = 0;
    while (weights.size() > 1) {
        const std::uint64_t first = weights.top();
        weights.pop();
        const std::uint64_t second = weights.top();
        weights.pop();
        bits += first + second;
        weights.push(first + second);
    }
    return bits;
}

/// Sum of 2^-length in units of 2^-16.
std::uint64_t filled(const std::vector<PrefixCode>& codes) {
    std::uint64_t sum = 0;
    for (const PrefixCode& code : codes) {
        if (code.length > 0) sum += std::uint64_t{1} << (16 - code.length);
    }
    return sum;
}

TEST(HuffmanCode, NumbersByLengthAndThenBySymbol) {
    // Lengths 3 3 2 1; codes 110 111 10 0, written with the first bit lowest.
    const auto codes = codesOf({1, 1, 2, 4}, 14);
    const std::array<PrefixCode, 4> expected = {
        PrefixCode{0b011, 3}, {0b111, 3}, {0b01, 2}, {0b0, 1}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(codes[i].length, expected[i].length) << i;
        EXPECT_EQ(codes[i].bits, expected[i].bits) << i;
    }
}

TEST(HuffmanCode, LeavesOutWhatDoesNotOccur) {
    const auto codes = codesOf({0, 9, 0, 1, 0}, 14);
    EXPECT_EQ(codes[0].length, 0);
    EXPECT_EQ(codes[1].length, 1);
    EXPECT_EQ(codes[2].length, 0);
    EXPECT_EQ(codes[3].length, 1);
    EXPECT_EQ(codes[4].length, 0);
}

TEST(HuffmanCode, TakesTheLeastBitsAndIsComplete) {
    std::mt19937 random(3);
    for (int round = 0; round < 500; ++round) {
        // No count so rare that its code would pass 15 bits.
        std::vector<std::uint32_t> counts(2 + random() % 287);
        for (auto& count : counts) count = random() % 3 == 0 ? 0 : 50 + random() % 1000;
        counts[0] = counts[1] = 60;
        const auto codes = codesOf(counts, 15);
        EXPECT_EQ(bitsOf(counts, codes), leastBits(counts)) << "round " << round;
        EXPECT_EQ(filled(codes), 1U << 16) << "round " << round;
    }
}

TEST(HuffmanCode, KeepsTheLimitWhereTheBestCodeIsTooLong) {
    // Counts of the Fibonacci series make the deepest code there is: 29 bits for 30 symbols.
    std::vector<std::uint32_t> counts = {1, 1};
    while (counts.size() < 30)
        counts.push_back(counts[counts.size() - 1] + counts[counts.size() - 2]);
    for (const unsigned limit : {5U, 7U, 10U, 14U}) {
        const auto codes = codesOf(counts, limit);
        for (const PrefixCode& code : codes) {
            EXPECT_GE(code.length, 1);
            EXPECT_LE(code.length, limit);
        }
        EXPECT_EQ(filled(codes), 1U << 16) << limit;
    }
    // At 14 bits the loss is small: the cut symbols are the rarest.
    EXPECT_LE(bitsOf(counts, codesOf(counts, 14)), leastBits(counts) * 101 / 100);
}

TEST(HuffmanCode, FillsTheLimitToTheLastCode) {
    std::vector<std::uint32_t> counts;
    for (std::uint32_t i = 0; i < 256; ++i) counts.push_back(1 + i * i);
    for (const PrefixCode& code : codesOf(counts, 8)) EXPECT_EQ(code.length, 8);
}

}  // namespace
}  // namespace skarnel::io
