#include "imaging/io/repeat_deflate.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace skarnel::io {
namespace {

constexpr std::size_t kWord = 8;
constexpr unsigned kHashBits = 11;  // the table stays in the nearest cache beside the window
constexpr std::size_t kFarthest = 32767;
constexpr unsigned kDistanceBits = 15;

std::size_t hashOf(std::uint64_t word) {
    constexpr std::uint64_t kOddFraction = 0x9E3779B97F4A7C15;  // of the golden section
    return static_cast<std::size_t>(word * kOddFraction >> (64U - kHashBits));
}

/// How many bytes at `bytes` repeat those `distance` before them, where the first eight do; at most
/// `left`.
std::size_t repeatLength(const std::uint8_t* bytes, std::size_t distance, std::size_t left) {
    const std::uint8_t* before = bytes - distance;
    std::size_t length = kWord;
    for (; length + kWord <= left; length += kWord) {
        const std::uint64_t other = wordAt(bytes + length) ^ wordAt(before + length);
        if (other != 0) return length + static_cast<std::size_t>(std::countr_zero(other)) / 8;
    }
    while (length < left && bytes[length] == before[length]) ++length;
    return length;
}

/// The part of a long repeat that one match covers, so that what is left is none or long enough.
std::size_t nextMatch(std::size_t left) {
    if (left <= kLongestRepeat) return left;
    return std::min<std::size_t>(left - kShortestRepeat, kLongestRepeat);
}

/// Of the bytes that no repeat covers, by their place in a pixel: equal neighbours would wait for
/// each other's counter.
struct LiteralCounts {
    std::array<std::array<std::uint32_t, 256>, 4> by{};

    void add(const std::uint8_t* bytes, std::size_t size) {
        for (std::size_t k = 0; k < size; ++k) ++by[k][bytes[k]];
    }
};

}  // namespace

RepeatDeflater::RepeatDeflater(Bytes& out, std::size_t pixelBytes)
    : BlockDeflater(out), pixelBytes_(pixelBytes), lastSeen_(std::size_t{1} << kHashBits) {
    assert(pixelBytes == 3 || pixelBytes == 4);
}

void RepeatDeflater::writeBlock(ByteView block, BitWriter& writer) {
    findRepeats(block);
    makeCodes();
    writeHeader(codes_, distanceCodes_, writer);
    writeBody(block, writer);
}

void RepeatDeflater::findRepeats(ByteView block) {
    repeats_.clear();
    counts_.fill(0);
    distanceCounts_.fill(0);
    // Place 0 for what was never seen: what lies there decides, as everywhere else.
    std::fill(lastSeen_.begin(), lastSeen_.end(), 0);
    LiteralCounts literals;
    std::array<std::uint32_t, kLongestRepeat + 1> lengths{};
    const std::uint8_t* bytes = block.data();
    const std::size_t pixel = pixelBytes_;
    const std::size_t front = std::min(pixel, block.size());
    literals.add(bytes, front);
    std::size_t at = front;
    while (at + kWord <= block.size()) {
        const std::uint64_t word = wordAt(bytes + at);
        std::uint32_t& seen = lastSeen_[hashOf(word)];
        const bool again = word == wordAt(bytes + at - pixel);
        const std::size_t distance = again ? pixel : at - seen;
        const bool found = again || (word == wordAt(bytes + seen) && distance <= kFarthest);
        seen = static_cast<std::uint32_t>(at);
        if (!found) {
            literals.add(bytes + at, pixel);
            at += pixel;
            continue;
        }
        const std::size_t length = repeatLength(bytes + at, distance, block.size() - at);
        for (std::size_t done = 0; done < length;) {
            const std::size_t match = nextMatch(length - done);
            repeats_.push_back({static_cast<std::uint32_t>(at + done),
                                static_cast<std::uint16_t>(match),
                                static_cast<std::uint16_t>(distance)});
            ++lengths[match];
            ++distanceCounts_[distanceSymbol(static_cast<std::uint32_t>(distance)).symbol];
            done += match;
        }
        at += length;
    }
    for (; at < block.size(); ++at) literals.add(bytes + at, 1);
    for (std::size_t byte = 0; byte < 256; ++byte) {
        for (const auto& place : literals.by) counts_[byte] += place[byte];
    }
    for (std::uint32_t length = kShortestRepeat; length <= kLongestRepeat; ++length) {
        counts_[lengthSymbol(length).symbol] += lengths[length];
    }
}

void RepeatDeflater::makeCodes() {
    counts_[kEndOfBlock] = 1;
    makePrefixCode(counts_, kLiteralBits, codes_);
    // A code needs two symbols; the others hardly make it longer.
    for (std::uint32_t& count : distanceCounts_) ++count;
    makePrefixCode(distanceCounts_, kDistanceBits, distanceCodes_);
}

void RepeatDeflater::writeBody(ByteView block, BitWriter& waiting) const {
    LiteralCodes literals;
    std::copy_n(codes_.begin(), literals.size(), literals.begin());
    BitWriter writer = waiting;  // a local stays in registers
    const auto put = [&writer](const SymbolWithExtra& number, const auto& codes) {
        const PrefixCode code = codes[number.symbol];
        writer.put(code.bits | std::uint64_t{number.extra} << code.length,
                   code.length + number.extraBits);
    };
    std::size_t at = 0;
    for (const Repeat& repeat : repeats_) {
        writeLiterals(writer, literals, block.data() + at, repeat.start - at);
        // 14 and 5 bits, 15 and 13, and the 7 that were left.
        put(lengthSymbol(repeat.length), codes_);
        put(distanceSymbol(repeat.distance), distanceCodes_);
        writer.flush();
        at = repeat.start + std::size_t{repeat.length};
    }
    writeLiterals(writer, literals, block.data() + at, block.size() - at);
    writer.put(codes_[kEndOfBlock].bits, codes_[kEndOfBlock].length);
    writer.flush();
    waiting = writer;
}

}  // namespace skarnel::io
