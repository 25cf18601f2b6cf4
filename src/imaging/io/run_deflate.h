// Deflate for filtered pictures, several times faster than a search for repeats: what the filters
// leave of a grainy photo has next to none, save runs of one byte.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/io/block_deflate.h"

namespace skarnel::io {

/// Blocks without matches but those at distance 1.
class RunDeflater final : public BlockDeflater {
  public:
    explicit RunDeflater(Bytes& out) : BlockDeflater(out), codes_(kLiteralSymbols) {}

  private:
    /// Bytes that repeat the one before them; 3 to 258.
    struct Run {
        std::uint32_t start;
        std::uint32_t length;
    };

    void writeBlock(ByteView block, BitWriter& writer) override;
    void findRuns(ByteView block);
    bool isSampled(std::size_t blockSize) const;
    void makeCodes(ByteView block);
    void writeBody(ByteView block, BitWriter& waiting) const;

    std::vector<Run> runs_;
    std::size_t stretches_ = 0;  // of literals, between runs that do not touch
    std::vector<PrefixCode> codes_;
};

}  // namespace skarnel::io
