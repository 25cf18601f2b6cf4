// The bit stream of deflate blocks (RFC 1951), as its writers share it.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "imaging/io/huffman_code.h"

namespace skarnel::io {

inline constexpr std::uint32_t kShortestRepeat = 3;
inline constexpr std::uint32_t kLongestRepeat = 258;
inline constexpr std::size_t kEndOfBlock = 256;
inline constexpr std::size_t kLiteralSymbols = 286;  // literals, end of block, lengths
inline constexpr std::size_t kDistanceSymbols = 30;
inline constexpr unsigned kLiteralBits = 14;  // four codes and seven bits left over fit 64

inline std::uint64_t wordAt(const std::uint8_t* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Puts bits one behind the other, the lowest first.
struct BitWriter {
    std::uint8_t* at = nullptr;  // room for a word beyond what is written
    std::uint64_t bits = 0;
    unsigned count = 0;  // of bits not yet written

    void put(std::uint64_t more, unsigned moreCount) {
        bits |= more << count;
        count += moreCount;
    }
    /// Writes the whole bytes that are there. At most 63 bits may be waiting; 7 may be left.
    void flush() {
        static_assert(std::endian::native == std::endian::little);
        std::memcpy(at, &bits, sizeof bits);
        at += count / 8;
        bits >>= count & ~7U;
        count &= 7U;
    }
};

/// A symbol and the number that stands behind its code.
struct SymbolWithExtra {
    std::size_t symbol;
    unsigned extra;
    unsigned extraBits;
};

/// Of a length, 3 to 258; RFC 1951, 3.2.5: from 11 on, four symbols for each doubling, with one
/// more bit each.
inline SymbolWithExtra lengthSymbol(std::uint32_t length) {
    if (length == kLongestRepeat) return {285, 0, 0};
    const unsigned above = length - kShortestRepeat;
    if (above < 8) return {257 + above, 0, 0};
    const unsigned extraBits = static_cast<unsigned>(std::bit_width(above)) - 3;
    return {257 + 4 * extraBits + (above >> extraBits), above & ((1U << extraBits) - 1), extraBits};
}

/// Of a distance, 1 to 32768: from 5 on, two symbols for each doubling.
inline SymbolWithExtra distanceSymbol(std::uint32_t distance) {
    const unsigned above = distance - 1;
    if (above < 4) return {above, 0, 0};
    const unsigned extraBits = static_cast<unsigned>(std::bit_width(above)) - 2;
    return {2 * extraBits + (above >> extraBits), above & ((1U << extraBits) - 1), extraBits};
}

using LiteralCodes = std::array<PrefixCode, 256>;

/// Codes of at most kLiteralBits.
inline void writeLiterals(BitWriter& writer, const LiteralCodes& codes, const std::uint8_t* bytes,
                          std::size_t size) {
    std::size_t i = 0;
    for (; i + 4 <= size; i += 4) {
        const PrefixCode a = codes[bytes[i]];
        const PrefixCode b = codes[bytes[i + 1]];
        const PrefixCode c = codes[bytes[i + 2]];
        const PrefixCode d = codes[bytes[i + 3]];
        // Put together in pairs, so that only one shift of the four waits for the last word.
        const unsigned first = unsigned{a.length} + b.length;
        const std::uint64_t front = a.bits | std::uint64_t{b.bits} << a.length;
        const std::uint64_t back = c.bits | std::uint64_t{d.bits} << c.length;
        writer.put(front | back << first, first + c.length + d.length);
        writer.flush();
    }
    for (; i < size; ++i) writer.put(codes[bytes[i]].bits, codes[bytes[i]].length);
    writer.flush();
}

}  // namespace skarnel::io
