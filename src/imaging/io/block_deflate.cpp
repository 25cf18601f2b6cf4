#include "imaging/io/block_deflate.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>

namespace skarnel::io {

BlockDeflater::BlockDeflater(Bytes& out)
    // Room for the longest code of every byte, a block's header, and the store of a whole word.
    : out_(out), scratch_(kBlockBytes * kLiteralBits / 8 + 512) {
    // Deflate with a window of 32 KB, the fastest level; a multiple of 31.
    constexpr std::array<std::uint8_t, 2> kHeader = {0x78, 0x01};
    out_.insert(out_.end(), kHeader.begin(), kHeader.end());
}

void BlockDeflater::add(ByteView bytes) {
    check_ = libdeflate_adler32(check_, bytes.data(), bytes.size());
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), kBlockBytes);
        writer_.at = scratch_.data();
        writeBlock(bytes.first(size), writer_);
        out_.insert(out_.end(), scratch_.data(), writer_.at);
        bytes = bytes.subspan(size);
    }
}

void BlockDeflater::finish() {
    writer_.at = scratch_.data();
    // An empty block with the fixed codes, marked as the last.
    writer_.put(0b011, 3);
    writer_.put(0, 7);
    writer_.put(0, 7);  // up to the next byte
    writer_.flush();
    out_.insert(out_.end(), scratch_.data(), writer_.at);
    for (unsigned shift = 32; shift > 0; shift -= 8) {
        out_.push_back(static_cast<std::uint8_t>(check_ >> (shift - 8)));
    }
}

void BlockDeflater::writeHeader(std::span<const PrefixCode> literals,
                                std::span<const PrefixCode> distances, BitWriter& writer) {
    const auto put = [&](unsigned bits, unsigned count) {
        writer.put(bits, count);
        writer.flush();
    };
    put(0b100, 3);                  // not the last block, codes of its own
    put(kLiteralSymbols - 257, 5);  // all of them
    put(static_cast<unsigned>(distances.size()) - 1, 5);
    put(19 - 4, 4);  // all lengths of code lengths
    // Code lengths 0 to 15 have four bits each, which is complete; the repeats (the first three in
    // this order) have none.
    constexpr std::array<std::uint8_t, 19> kOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                     11, 4,  12, 3, 13, 2, 14, 1, 15};
    for (const std::uint8_t length : kOrder) put(length < 16 ? 4 : 0, 3);
    constexpr std::array<std::uint8_t, 16> kReversed = {0, 8, 4, 12, 2, 10, 6, 14,
                                                        1, 9, 5, 13, 3, 11, 7, 15};
    for (const auto& codes : {literals, distances}) {
        for (const PrefixCode& code : codes) put(kReversed[code.length], 4);
    }
}

}  // namespace skarnel::io
