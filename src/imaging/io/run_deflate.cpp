#include "imaging/io/run_deflate.h"

#include <algorithm>
#include <array>

namespace skarnel::io {
namespace {

/// Of a block of hardly anything but literals a quarter is counted, in pieces that lie close to one
/// another: its codes come out a few thousandths longer, and counting costs as much as coding.
constexpr std::size_t kSampledFrom = std::size_t{32} << 10;
constexpr std::size_t kSamplePiece = 512;
constexpr std::size_t kSampleStep = 4 * kSamplePiece;
constexpr std::size_t kWord = 8;

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

void RunDeflater::writeBlock(ByteView block, BitWriter& writer) {
    findRuns(block);
    makeCodes(block);
    const std::array<PrefixCode, 1> distances = {{{0, 1}}};
    writeHeader(codes_, distances, writer);
    writeBody(block, writer);
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
        while (end - at >= kShortestRepeat) {
            const std::size_t length = std::min<std::size_t>(end - at, kLongestRepeat);
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

void RunDeflater::writeBody(ByteView block, BitWriter& waiting) const {
    LiteralCodes literals;
    std::copy_n(codes_.begin(), literals.size(), literals.begin());
    BitWriter writer = waiting;  // a local stays in registers
    std::size_t at = 0;
    for (const Run& run : runs_) {
        writeLiterals(writer, literals, block.data() + at, run.start - at);
        const SymbolWithExtra length = lengthSymbol(run.length);
        writer.put(codes_[length.symbol].bits, codes_[length.symbol].length);
        writer.put(length.extra, length.extraBits);
        writer.put(0, 1);  // the only distance
        writer.flush();
        at = run.start + run.length;
    }
    writeLiterals(writer, literals, block.data() + at, block.size() - at);
    writer.put(codes_[kEndOfBlock].bits, codes_[kEndOfBlock].length);
    writer.flush();
    waiting = writer;
}

}  // namespace skarnel::io
