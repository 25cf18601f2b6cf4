#include "imaging/io/deflate_bits.h"

#include <gtest/gtest.h>

namespace skarnel::io {
namespace {

/// A line of the tables of RFC 1951, 3.2.5: the first number that a symbol stands for.
struct Line {
    std::size_t symbol;
    unsigned extraBits;
    std::uint32_t first;
};

constexpr std::array<Line, 29> kLengths = {
    {{257, 0, 3},   {258, 0, 4},   {259, 0, 5},   {260, 0, 6},   {261, 0, 7},  {262, 0, 8},
     {263, 0, 9},   {264, 0, 10},  {265, 1, 11},  {266, 1, 13},  {267, 1, 15}, {268, 1, 17},
     {269, 2, 19},  {270, 2, 23},  {271, 2, 27},  {272, 2, 31},  {273, 3, 35}, {274, 3, 43},
     {275, 3, 51},  {276, 3, 59},  {277, 4, 67},  {278, 4, 83},  {279, 4, 99}, {280, 4, 115},
     {281, 5, 131}, {282, 5, 163}, {283, 5, 195}, {284, 5, 227}, {285, 0, 258}}};

constexpr std::array<Line, 30> kDistances = {
    {{0, 0, 1},      {1, 0, 2},      {2, 0, 3},       {3, 0, 4},       {4, 1, 5},
     {5, 1, 7},      {6, 2, 9},      {7, 2, 13},      {8, 3, 17},      {9, 3, 25},
     {10, 4, 33},    {11, 4, 49},    {12, 5, 65},     {13, 5, 97},     {14, 6, 129},
     {15, 6, 193},   {16, 7, 257},   {17, 7, 385},    {18, 8, 513},    {19, 8, 769},
     {20, 9, 1025},  {21, 9, 1537},  {22, 10, 2049},  {23, 10, 3073},  {24, 11, 4097},
     {25, 11, 6145}, {26, 12, 8193}, {27, 12, 12289}, {28, 13, 16385}, {29, 13, 24577}}};

template <typename Lines, typename SymbolOf>
void expectAsInTable(const Lines& lines, std::uint32_t last, SymbolOf symbolOf) {
    auto line = lines.begin();
    for (std::uint32_t number = line->first; number <= last; ++number) {
        if (line + 1 != lines.end() && number == (line + 1)->first) ++line;
        const SymbolWithExtra got = symbolOf(number);
        ASSERT_EQ(got.symbol, line->symbol) << number;
        ASSERT_EQ(got.extraBits, line->extraBits) << number;
        ASSERT_EQ(got.extra, number - line->first) << number;
    }
}

TEST(DeflateBits, LengthsHaveTheSymbolsOfTheTable) {
    expectAsInTable(kLengths, 258, lengthSymbol);
}

TEST(DeflateBits, DistancesHaveTheSymbolsOfTheTable) {
    expectAsInTable(kDistances, 32768, distanceSymbol);
}

TEST(DeflateBits, BitsFollowOneAnotherFromTheLowest) {
    std::array<std::uint8_t, 16> bytes{};
    BitWriter writer;
    writer.at = bytes.data();
    writer.put(0b101, 3);
    writer.put(0x3FF, 10);
    writer.flush();
    EXPECT_EQ(writer.at - bytes.data(), 1);  // 13 bits: one byte, five waiting
    writer.put(0, 2);
    writer.put(1, 1);
    writer.flush();
    EXPECT_EQ(writer.at - bytes.data(), 2);
    EXPECT_EQ(bytes[0], 0b1111'1101);
    EXPECT_EQ(bytes[1], 0b1001'1111);
}

TEST(DeflateBits, LiteralsOfAnyNumberAreWrittenOneByOne) {
    // Byte b has a code of b bits, all ones, so the stream of bytes 1 to n is as many ones.
    LiteralCodes codes{};
    for (std::size_t b = 1; b <= 14; ++b) {
        codes[b] = {static_cast<std::uint16_t>((1U << b) - 1), static_cast<std::uint16_t>(b)};
    }
    std::array<std::uint8_t, 14> literals{};
    for (std::size_t i = 0; i < literals.size(); ++i) {
        literals[i] = static_cast<std::uint8_t>(14 - i);  // the longest come first
    }
    unsigned bits = 0;
    for (std::size_t size = 0; size <= literals.size(); ++size) {
        std::array<std::uint8_t, 32> bytes{};
        BitWriter writer;
        writer.at = bytes.data();
        writeLiterals(writer, codes, literals.data(), size);
        EXPECT_EQ(8 * (writer.at - bytes.data()) + writer.count, bits) << size;
        for (unsigned bit = 0; bit < bits; ++bit) {
            EXPECT_EQ(bytes[bit / 8] >> (bit % 8) & 1, 1) << size << " at " << bit;
        }
        if (size < literals.size()) bits += literals[size];
    }
}

}  // namespace
}  // namespace skarnel::io
