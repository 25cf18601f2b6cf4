// Prefix codes as deflate numbers them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace skarnel::io {

/// The code of one symbol as the bit stream takes it.
struct PrefixCode {
    std::uint16_t bits = 0;  // the first bit of the code in the lowest place
    std::uint16_t length = 0;
};

/// Fills `codes` for symbols that occur `counts` times: none (length 0) for those that do not, a
/// complete code of at most `maxLength` bits for the rest. Where no length passes the limit the
/// total is the least possible (Huffman, 1952); otherwise near it. Numbered canonically: by length,
/// then by symbol. At least two counts are positive, their number is at most 2^maxLength, and
/// `counts` has at most 288 entries whose sum fits 32 bits.
void makePrefixCode(std::span<const std::uint32_t> counts, unsigned maxLength,
                    std::span<PrefixCode> codes);

}  // namespace skarnel::io
