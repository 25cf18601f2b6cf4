// The lower half of lossless WebP (RFC 9649, 3.7): bits, numbers and prefix codes.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "imaging/io/huffman_code.h"
#include "imaging/io/image_io.h"

namespace skarnel::io {

/// Appends bits to bytes, the lowest first. Throws std::bad_alloc.
class Vp8lBits {
  public:
    explicit Vp8lBits(Bytes& out) : out_(out) {}

    /// At most 56 bits; those above `count` are zeros.
    void put(std::uint64_t bits, unsigned count);
    void put(PrefixCode code) { put(code.bits, code.length); }
    /// Fills the last byte with zeros.
    void finish();

  private:
    void spill();

    Bytes& out_;
    std::array<std::uint8_t, 4096> buffer_;
    std::size_t at_ = 0;
    std::uint64_t bits_ = 0;
    unsigned count_ = 0;  // below 8 between calls
};

/// A length or distance, at least 1, as the symbol that stands for its size and the bits behind it.
struct Vp8lNumber {
    std::uint32_t symbol;
    std::uint32_t extra;
    unsigned extraBits;
};
Vp8lNumber vp8lNumber(std::uint32_t value);

inline constexpr std::size_t kVp8lGreens = 256 + 24;  // greens, then lengths of copies
inline constexpr std::uint32_t kVp8lLongestCopy = 4096;
/// Distances go through a table of neighbours first: 1 is the pixel above, 2 the one on the left.
inline constexpr std::uint32_t kVp8lAbove = 1;
inline constexpr std::uint32_t kVp8lLeft = 2;

/// What one group of codes is used for, symbol by symbol; and the codes themselves. No code is
/// longer than 14 bits, so that the four of a pixel fit one call of Vp8lBits::put.
template <typename Entry>
struct Vp8lGroup {
    std::array<Entry, kVp8lGreens> green{};
    std::array<Entry, 256> red{};
    std::array<Entry, 256> blue{};
    std::array<Entry, 256> alpha{};
    std::array<Entry, 40> distance{};
};
using Vp8lCounts = Vp8lGroup<std::uint32_t>;
using Vp8lCodes = Vp8lGroup<PrefixCode>;

/// Makes the codes for such counts and writes their lengths. A symbol that is alone in its alphabet
/// has a code without bits.
Vp8lCodes putVp8lCodes(Vp8lBits& bits, Vp8lCounts counts);

/// An image of numbers 0 to 255 beside the main one, with its codes.
void putVp8lNumbers(Vp8lBits& bits, std::span<const std::uint8_t> numbers);

}  // namespace skarnel::io
