#include "imaging/io/huffman_code.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace skarnel::io {
namespace {

constexpr std::size_t kMaxSymbols = 288;
constexpr std::size_t kMaxLength = 15;

struct Leaf {
    std::uint32_t count;
    std::uint16_t symbol;
};

/// Merges the two lightest nodes until one is left. Leaves come lightest first, and merged nodes
/// are made in order of weight, so the lightest is always at the head of one of the two lists.
/// Gives the depth of each leaf.
void depthsOf(std::span<const Leaf> leaves, std::span<std::uint16_t> depths) {
    const std::size_t count = leaves.size();
    std::array<std::uint32_t, 2 * kMaxSymbols> weight;
    std::array<std::uint16_t, 2 * kMaxSymbols> parent;
    for (std::size_t i = 0; i < count; ++i) weight[i] = leaves[i].count;
    std::size_t leaf = 0;
    std::size_t merged = count;
    std::size_t made = count;
    const auto takeLightest = [&] {
        const bool leafIsLighter =
            leaf < count && (merged == made || weight[leaf] <= weight[merged]);
        return leafIsLighter ? leaf++ : merged++;
    };
    for (; made < 2 * count - 1; ++made) {
        const std::size_t first = takeLightest();
        const std::size_t second = takeLightest();
        weight[made] = weight[first] + weight[second];
        parent[first] = parent[second] = static_cast<std::uint16_t>(made);
    }
    std::array<std::uint16_t, 2 * kMaxSymbols> depth;
    depth[made - 1] = 0;
    for (std::size_t i = made - 1; i-- > 0;) {
        depth[i] = static_cast<std::uint16_t>(depth[parent[i]] + 1);
    }
    std::copy_n(depth.begin(), count, depths.begin());
}

/// Cuts what is too deep and pays for it by deepening the rarest of the others, until the code
/// fits again: sum of 2^-length at most 1.
void limitDepths(std::span<std::uint16_t> depths, unsigned maxLength) {
    std::uint64_t used = 0;  // in units of 2^-maxLength
    for (std::uint16_t& depth : depths) {
        depth = static_cast<std::uint16_t>(std::min<unsigned>(depth, maxLength));
        used += std::uint64_t{1} << (maxLength - depth);
    }
    const std::uint64_t room = std::uint64_t{1} << maxLength;
    while (used > room) {
        // Rarest first, hence the deepest that can still go deeper.
        const auto found = std::find_if(depths.begin(), depths.end(),
                                        [&](std::uint16_t depth) { return depth < maxLength; });
        ++*found;
        used -= std::uint64_t{1} << (maxLength - *found);
    }
    // The last step may have freed more than was needed; decoders want a complete code.
    for (std::size_t i = depths.size(); used < room && i-- > 0;) {
        while (depths[i] > 1 && used + (std::uint64_t{1} << (maxLength - depths[i])) <= room) {
            used += std::uint64_t{1} << (maxLength - depths[i]);
            --depths[i];
        }
    }
}

std::uint16_t reversed(unsigned bits, unsigned length) {
    unsigned out = 0;
    for (unsigned i = 0; i < length; ++i) out |= (bits >> i & 1U) << (length - 1 - i);
    return static_cast<std::uint16_t>(out);
}

void numberCodes(std::span<PrefixCode> codes) {
    std::array<unsigned, kMaxLength + 2> next{};
    for (const PrefixCode& code : codes) {
        if (code.length > 0) ++next[code.length + std::size_t{1}];
    }
    for (std::size_t length = 1; length < next.size(); ++length) {
        next[length] = (next[length - 1] + next[length]) << 1U;
    }
    // next[L] now is twice the first code of length L - 1 and all before it, that is, the first
    // code of length L.
    for (PrefixCode& code : codes) {
        if (code.length > 0) code.bits = reversed(next[code.length]++, code.length);
    }
}

}  // namespace

void makePrefixCode(std::span<const std::uint32_t> counts, unsigned maxLength,
                    std::span<PrefixCode> codes) {
    assert(counts.size() <= kMaxSymbols && codes.size() == counts.size());
    std::array<Leaf, kMaxSymbols> leaves;
    std::size_t used = 0;
    for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
        codes[symbol] = {};
        if (counts[symbol] > 0) {
            leaves[used++] = {counts[symbol], static_cast<std::uint16_t>(symbol)};
        }
    }
    assert(used >= 2 && used <= std::size_t{1} << maxLength);
    const std::span<Leaf> sorted = std::span(leaves).first(used);
    std::sort(sorted.begin(), sorted.end(), [](const Leaf& a, const Leaf& b) {
        return a.count != b.count ? a.count < b.count : a.symbol < b.symbol;
    });
    std::array<std::uint16_t, kMaxSymbols> depths;
    depthsOf(sorted, depths);
    limitDepths(std::span(depths).first(used), maxLength);
    for (std::size_t i = 0; i < used; ++i) codes[sorted[i].symbol].length = depths[i];
    numberCodes(codes);
}

}  // namespace skarnel::io
