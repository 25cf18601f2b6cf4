// What the writers of deflate blocks have in common: the stream around the blocks.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/io/deflate_bits.h"
#include "imaging/io/image_io.h"

namespace skarnel::io {

/// Writes one zlib stream (RFC 1950, RFC 1951) of blocks with codes of their own. Bytes go in in
/// pieces, the stream comes out at the end of a vector.
class BlockDeflater {
  public:
    /// Begins the stream at the end of `out`, which must outlive this. Throws std::bad_alloc, as do
    /// the others.
    explicit BlockDeflater(Bytes& out);
    BlockDeflater(const BlockDeflater&) = delete;
    BlockDeflater& operator=(const BlockDeflater&) = delete;
    virtual ~BlockDeflater() = default;

    /// Adds bytes of any number. What is added at once shares its blocks, so pieces below some
    /// 64 KB compress worse.
    void add(ByteView bytes);

    /// Ends the stream. Nothing may be added afterwards.
    void finish();

  protected:
    static constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

    /// Writes a block of 1 to kBlockBytes bytes: no more than kLiteralBits for each, and a header.
    virtual void writeBlock(ByteView block, BitWriter& writer) = 0;

    /// The front of a block: `literals` are kLiteralSymbols codes, of which some may have length 0.
    static void writeHeader(std::span<const PrefixCode> literals,
                            std::span<const PrefixCode> distances, BitWriter& writer);

  private:
    Bytes& out_;
    Bytes scratch_;            // a block's bits, before they are appended
    BitWriter writer_;         // into scratch_
    std::uint32_t check_ = 1;  // Adler-32
};

}  // namespace skarnel::io
