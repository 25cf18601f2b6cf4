// LZW as TIFF has it, without the branches that a photo makes unpredictable.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/io/image_io.h"

namespace skarnel::io {

/// Encodes strips by the rules of TIFF 6.0, section 13: codes of 9 to 12 bits, the highest bit
/// first, one bit more as soon as the table has the last entry of a width, and a clear code before
/// it is full. A string is looked up in one place only; one whose place is taken later is
/// forgotten, which costs about a per cent of the size and no decoder notices.
class LzwEncoder {
  public:
    LzwEncoder();

    /// Replaces `codes` by those of the strip, from the first clear code to the end code. A strip
    /// has at least one byte. Throws std::bad_alloc.
    void encode(ByteView strip, Bytes& codes);

    /// The same for two strips at a time, which takes less than twice as long: each byte of one
    /// waits for the byte before it, and the processor does the other's meanwhile.
    void encodeTwo(ByteView first, Bytes& firstCodes, ByteView second, Bytes& secondCodes);

  private:
    /// What a strip is coded with: where its strings are found, and its codes since the last clear.
    struct Lane {
        std::vector<std::uint32_t> table;
        std::vector<std::uint16_t> codes;
    };
    struct Strip;

    static void begin(Strip& strip, Lane& lane, Bytes& out);
    void takeBytes(Strip& strip, std::size_t size) const;
    void takeFromBoth(Strip& first, Strip& second, std::size_t size) const;
    void end(Strip& strip, Bytes& out) const;

    std::array<Lane, 2> lanes_;
    std::array<std::uint32_t, 256> spread_{};  // where a byte sends its strings
};

}  // namespace skarnel::io
