#include "imaging/io/vp8l_codes.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <vector>

namespace skarnel::io {
namespace {

constexpr unsigned kLongestCode = 14;

/// A step of the list of code lengths: a length itself or a repeat, with the bits behind it.
struct LengthStep {
    std::uint8_t symbol;
    std::uint8_t extra;
    std::uint8_t extraBits;
};
constexpr std::size_t kLengthSymbols = 19;

void addZeros(std::vector<LengthStep>& steps, std::size_t count) {
    while (count >= 11) {
        const std::size_t part = std::min<std::size_t>(count, 138);
        steps.push_back({18, static_cast<std::uint8_t>(part - 11), 7});
        count -= part;
    }
    if (count >= 3) {
        steps.push_back({17, static_cast<std::uint8_t>(count - 3), 3});
        count = 0;
    }
    for (; count > 0; --count) steps.push_back({0, 0, 0});
}

void addLengths(std::vector<LengthStep>& steps, std::uint8_t length, std::size_t count) {
    steps.push_back({length, 0, 0});
    for (--count; count >= 3;) {
        const std::size_t part = std::min<std::size_t>(count, 6);
        steps.push_back({16, static_cast<std::uint8_t>(part - 3), 2});
        count -= part;
    }
    for (; count > 0; --count) steps.push_back({length, 0, 0});
}

std::vector<LengthStep> stepsOf(std::span<const PrefixCode> codes) {
    std::vector<LengthStep> steps;
    for (std::size_t at = 0; at < codes.size();) {
        std::size_t end = at + 1;
        while (end < codes.size() && codes[end].length == codes[at].length) ++end;
        if (codes[at].length == 0) {
            addZeros(steps, end - at);
        } else {
            addLengths(steps, static_cast<std::uint8_t>(codes[at].length), end - at);
        }
        at = end;
    }
    return steps;
}

void putLengths(Vp8lBits& bits, std::span<const PrefixCode> codes) {
    const std::vector<LengthStep> steps = stepsOf(codes);
    std::array<std::uint32_t, kLengthSymbols> counts{};
    for (const LengthStep& step : steps) ++counts[step.symbol];
    // A code needs two symbols; one that never comes does no harm.
    for (std::size_t symbol = 0; std::count(counts.begin(), counts.end(), 0U) > 17; ++symbol) {
        counts[symbol] = std::max(counts[symbol], 1U);
    }
    std::array<PrefixCode, kLengthSymbols> lengthCodes;
    makePrefixCode(counts, 7, lengthCodes);
    constexpr std::array<std::uint8_t, kLengthSymbols> kOrder = {
        17, 18, 0, 1, 2, 3, 4, 5, 16, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    std::size_t listed = kLengthSymbols;
    while (listed > 4 && lengthCodes[kOrder[listed - 1]].length == 0) --listed;
    bits.put(listed - 4, 4);
    for (std::size_t i = 0; i < listed; ++i) bits.put(lengthCodes[kOrder[i]].length, 3);
    bits.put(0, 1);  // the list goes to the end of the alphabet
    for (const LengthStep& step : steps) {
        bits.put(lengthCodes[step.symbol]);
        bits.put(step.extra, step.extraBits);
    }
}

void putCode(Vp8lBits& bits, std::span<std::uint32_t> counts, std::span<PrefixCode> codes) {
    const auto isUsed = [](std::uint32_t count) { return count > 0; };
    const auto used = std::count_if(counts.begin(), counts.end(), isUsed);
    const auto first = static_cast<std::size_t>(std::find_if(counts.begin(), counts.end(), isUsed) -
                                                counts.begin());
    if (used == 0 || (used == 1 && first < 256)) {
        // Simple, one symbol, of eight bits.
        bits.put(0b101, 3);
        bits.put(used == 0 ? 0 : first, 8);
        return;
    }
    if (used == 1) counts[0] = 1;  // a simple code has no symbol from 256 on
    makePrefixCode(counts, kLongestCode, codes);
    bits.put(0, 1);
    putLengths(bits, codes);
}

}  // namespace

void Vp8lBits::put(std::uint64_t bits, unsigned count) {
    static_assert(std::endian::native == std::endian::little);
    assert(count <= 56);
    bits_ |= bits << count_;
    count_ += count;
    if (at_ + sizeof bits_ > buffer_.size()) spill();
    std::memcpy(buffer_.data() + at_, &bits_, sizeof bits_);
    at_ += count_ / 8;
    bits_ >>= count_ & ~7U;  // at most 56
    count_ &= 7U;
}

void Vp8lBits::finish() {
    if (count_ > 0) put(0, 8 - count_);
    spill();
}

void Vp8lBits::spill() {
    out_.insert(out_.end(), buffer_.data(), buffer_.data() + at_);
    at_ = 0;
}

Vp8lNumber vp8lNumber(std::uint32_t value) {
    const std::uint32_t above = value - 1;
    if (above < 4) return {above, 0, 0};
    const auto top = static_cast<unsigned>(std::bit_width(above)) - 1;
    const unsigned extraBits = top - 1;
    const std::uint32_t second = above >> extraBits & 1U;
    return {2 * top + second, above & ((1U << extraBits) - 1), extraBits};
}

Vp8lCodes putVp8lCodes(Vp8lBits& bits, Vp8lCounts counts) {
    Vp8lCodes codes;
    putCode(bits, counts.green, codes.green);
    putCode(bits, counts.red, codes.red);
    putCode(bits, counts.blue, codes.blue);
    putCode(bits, counts.alpha, codes.alpha);
    putCode(bits, counts.distance, codes.distance);
    return codes;
}

void putVp8lNumbers(Vp8lBits& bits, std::span<const std::uint8_t> numbers) {
    Vp8lCounts counts;
    for (const std::uint8_t number : numbers) ++counts.green[number];
    bits.put(0, 1);  // no cache of colours
    const Vp8lCodes codes = putVp8lCodes(bits, counts);
    for (const std::uint8_t number : numbers) bits.put(codes.green[number]);
}

}  // namespace skarnel::io
