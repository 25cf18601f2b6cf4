// Deflate for filtered pictures, several times faster than a search for repeats: what the filters
// leave of a photo has next to none, save runs of one byte.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/io/huffman_code.h"
#include "imaging/io/image_io.h"

namespace skarnel::io {

/// Writes one zlib stream (RFC 1950, RFC 1951) whose blocks have codes of their own and no matches
/// but those at distance 1. Bytes go in in pieces, the stream comes out at the end of a vector.
class RunDeflater {
  public:
    /// Begins the stream at the end of `out`, which must outlive this. Throws std::bad_alloc, as do
    /// the others.
    explicit RunDeflater(Bytes& out);

    /// Adds bytes of any number. What is added at once shares its blocks, so pieces below some
    /// 64 KB compress worse.
    void add(ByteView bytes);

    /// Ends the stream. Nothing may be added afterwards.
    void finish();

  private:
    /// Puts bits one behind the other, the lowest first.
    struct BitWriter {
        std::uint8_t* at = nullptr;  // room for a word beyond what is written
        std::uint64_t bits = 0;
        unsigned count = 0;  // of bits not yet written

        void put(std::uint64_t more, unsigned moreCount) {
            bits |= more << count;
            count += moreCount;
        }
        /// Writes the whole bytes that are there. At most 63 bits may be waiting.
        void flush();
    };
    /// Bytes that repeat the one before them; 3 to 258.
    struct Run {
        std::uint32_t start;
        std::uint32_t length;
    };
    static constexpr std::size_t kLiteralSymbols = 286;  // literals, end of block, run lengths

    void addBlock(ByteView block);
    void findRuns(ByteView block);
    bool isSampled(std::size_t blockSize) const;
    void makeCodes(ByteView block);
    void writeHeader();
    void writeBody(ByteView block);

    Bytes& out_;
    std::vector<Run> runs_;
    std::size_t stretches_ = 0;  // of literals, between runs that do not touch
    std::vector<PrefixCode> codes_;
    Bytes scratch_;            // a block's bits, before they are appended
    BitWriter writer_;         // into scratch_
    std::uint32_t check_ = 1;  // Adler-32
};

}  // namespace skarnel::io
