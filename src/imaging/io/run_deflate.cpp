#include "imaging/io/run_deflate.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace skarnel::io {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{256} << 10;
/// Of a block of hardly anything but literals a quarter is counted, in pieces that lie close to one
/// another: its codes come out a few thousandths longer, and counting costs as much as coding.
constexpr std::size_t kSampledFrom = std::size_t{32} << 10;
constexpr std::size_t kSamplePiece = 512;
constexpr std::size_t kSampleStep = 4 * kSamplePiece;
constexpr unsigned kLiteralBits = 14;  // four codes and seven bits left over fit 64
constexpr std::size_t kEndOfBlock = 256;
constexpr std::size_t kWord = 8;
constexpr std::uint32_t kLongestRun = 258;
constexpr std::uint32_t kShortestRun = 3;
/// Room for the longest code of every byte, a block's header, and the store of a whole word.
constexpr std::size_t kScratchBytes = kBlockBytes * kLiteralBits / 8 + 512;

std::uint64_t wordAt(const std::uint8_t* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// The symbol of a run's length and the bits behind it; RFC 1951, 3.2.5: from 11 on, four symbols
/// for each doubling, with one more bit each.
struct LengthSymbol {
    std::size_t symbol;
    unsigned extra;
    unsigned extraBits;
};

LengthSymbol lengthSymbol(std::uint32_t length) {
    if (length == kLongestRun) return {285, 0, 0};
    const unsigned above = length - kShortestRun;
    if (above < 8) return {257 + above, 0, 0};
    const unsigned extraBits = static_cast<unsigned>(std::bit_width(above)) - 3;
    return {257 + 4 * extraBits + (above >> extraBits), above & ((1U << extraBits) - 1), extraBits};
}

/// Counts into four tables in turn: equal neighbours would wait for each other's counter.
class ByteCounter {
  public:
    void add(const std::uint8_t* bytes, std::size_t size) {
        std::size_t i = 0;
        for (; i + kWord <= size; i += kWord) {
            std::uint64_t word = wordAt(bytes + i);
            for (std::size_t k = 0; k < kWord; ++k, word >>= 8U) ++counts_[k % 4][word & 255U];
        }
        for (; i < size; ++i) ++counts_[0][bytes[i]];
    }
    std::uint32_t of(std::size_t byte) const {
        return counts_[0][byte] + counts_[1][byte] + counts_[2][byte] + counts_[3][byte];
    }

  private:
    std::array<std::array<std::uint32_t, 256>, 4> counts_{};
};

}  // namespace

inline void RunDeflater::BitWriter::flush() {
    static_assert(std::endian::native == std::endian::little);
    std::memcpy(at, &bits, sizeof bits);
    at += count / 8;
    bits >>= count & ~7U;
    count &= 7U;
}

RunDeflater::RunDeflater(Bytes& out) : out_(out), codes_(kLiteralSymbols), scratch_(kScratchBytes) {
    // Deflate with a window of 32 KB, the fastest level; a multiple of 31.
    constexpr std::array<std::uint8_t, 2> kHeader = {0x78, 0x01};
    out_.insert(out_.end(), kHeader.begin(), kHeader.end());
}

void RunDeflater::add(ByteView bytes) {
    check_ = libdeflate_adler32(check_, bytes.data(), bytes.size());
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), kBlockBytes);
        addBlock(bytes.first(size));
        bytes = bytes.subspan(size);
    }
}

void RunDeflater::finish() {
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

void RunDeflater::addBlock(ByteView block) {
    writer_.at = scratch_.data();
    findRuns(block);
    makeCodes(block);
    writeHeader();
    writeBody(block);
    out_.insert(out_.end(), scratch_.data(), writer_.at);
}

/// Looks a word at a time, so that runs are only seen from some fifteen bytes on. Shorter ones gain
/// little: bytes that often repeat have short codes.
void RunDeflater::findRuns(ByteView block) {
    runs_.clear();
    stretches_ = 1;
    const std::uint8_t* bytes = block.data();
    const std::size_t size = block.size();
    std::size_t at = 1;
    while (at + kWord <= size) {
        if (wordAt(bytes + at) != wordAt(bytes + at - 1)) {
            at += kWord;
            continue;
        }
        ++stretches_;
        std::size_t end = at + kWord;
        while (end + kWord <= size && wordAt(bytes + end) == wordAt(bytes + end - 1)) end += kWord;
        while (end < size && bytes[end] == bytes[end - 1]) ++end;
        while (end - at >= kShortestRun) {
            const std::size_t length = std::min<std::size_t>(end - at, kLongestRun);
            runs_.push_back({static_cast<std::uint32_t>(at), static_cast<std::uint32_t>(length)});
            at += length;
        }
        at = end;
    }
}

/// Whether a part of the literals tells enough of all. They lie in `stretches` between the runs;
/// short ones would stand for more than they are.
bool RunDeflater::isSampled(std::size_t blockSize) const {
    return blockSize >= kSampledFrom && stretches_ * kSampledFrom / 8 <= blockSize;
}

void RunDeflater::makeCodes(ByteView block) {
    std::array<std::uint32_t, kLiteralSymbols> counts{};
    ByteCounter literals;
    const std::size_t step = isSampled(block.size()) ? kSampleStep : kSamplePiece;
    const auto count = [&](std::size_t start, std::size_t end) {
        for (std::size_t at = start; at < end; at += step) {
            literals.add(block.data() + at, std::min(kSamplePiece, end - at));
        }
    };
    std::size_t at = 0;
    for (const Run& run : runs_) {
        count(at, run.start);
        ++counts[lengthSymbol(run.length).symbol];
        at = run.start + run.length;
    }
    count(at, block.size());
    // What no sample has seen may still be there.
    const std::uint32_t unseen = isSampled(block.size()) ? 1 : 0;
    const auto weight = static_cast<std::uint32_t>(step / kSamplePiece);
    for (std::size_t byte = 0; byte < 256; ++byte) {
        counts[byte] = weight * literals.of(byte) + unseen;
    }
    counts[kEndOfBlock] = 1;
    makePrefixCode(counts, kLiteralBits, codes_);
}

void RunDeflater::writeHeader() {
    const auto put = [this](unsigned bits, unsigned count) {
        writer_.put(bits, count);
        writer_.flush();
    };
    put(0b100, 3);                  // not the last block, codes of its own
    put(kLiteralSymbols - 257, 5);  // all of them
    put(0, 5);                      // one distance
    put(19 - 4, 4);                 // all lengths of code lengths
    // Code lengths 0 to 15 have four bits each, which is complete; the repeats (the first three in
    // this order) have none.
    constexpr std::array<std::uint8_t, 19> kOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                     11, 4,  12, 3, 13, 2, 14, 1, 15};
    for (const std::uint8_t length : kOrder) put(length < 16 ? 4 : 0, 3);
    constexpr std::array<std::uint8_t, 16> kReversed = {0, 8, 4, 12, 2, 10, 6, 14,
                                                        1, 9, 5, 13, 3, 11, 7, 15};
    for (const PrefixCode& code : codes_) put(kReversed[code.length], 4);
    put(kReversed[1], 4);  // of the distance 1
}

void RunDeflater::writeBody(ByteView block) {
    std::array<PrefixCode, 256> literals;
    std::copy_n(codes_.begin(), literals.size(), literals.begin());
    BitWriter writer = writer_;  // a local stays in registers
    const auto writeLiterals = [&](const std::uint8_t* bytes, std::size_t size) {
        std::size_t i = 0;
        for (; i + 4 <= size; i += 4) {
            const PrefixCode a = literals[bytes[i]];
            const PrefixCode b = literals[bytes[i + 1]];
            const PrefixCode c = literals[bytes[i + 2]];
            const PrefixCode d = literals[bytes[i + 3]];
            // Put together in pairs, so that only one shift of the four waits for the last word.
            const unsigned first = unsigned{a.length} + b.length;
            const std::uint64_t front = a.bits | std::uint64_t{b.bits} << a.length;
            const std::uint64_t back = c.bits | std::uint64_t{d.bits} << c.length;
            writer.put(front | back << first, first + c.length + d.length);
            writer.flush();
        }
        for (; i < size; ++i) {
            writer.put(literals[bytes[i]].bits, literals[bytes[i]].length);
            writer.flush();
        }
    };
    std::size_t at = 0;
    for (const Run& run : runs_) {
        writeLiterals(block.data() + at, run.start - at);
        const LengthSymbol length = lengthSymbol(run.length);
        writer.put(codes_[length.symbol].bits, codes_[length.symbol].length);
        writer.put(length.extra, length.extraBits);
        writer.put(0, 1);  // the only distance
        writer.flush();
        at = run.start + run.length;
    }
    writeLiterals(block.data() + at, block.size() - at);
    writer.put(codes_[kEndOfBlock].bits, codes_[kEndOfBlock].length);
    writer.flush();
    writer_ = writer;
}

}  // namespace skarnel::io
