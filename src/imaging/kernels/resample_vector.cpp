// Vector twins of resample.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/resample_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/highway.h>

#include "imaging/kernels/resample.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR  // a processor without vectors runs the definition

void CombineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes) {
    scalar::combineRows(target, rows, taps, bytes);
}

void CombineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels) {
    scalar::combineColumns(target, source, sourcePixels, taps, pixels);
}

void CombinePackedColumns(std::uint8_t* target, const std::uint8_t* source,
                          const PackedTaps& taps) {
    scalar::combinePackedColumns(target, source, taps);
}

#else
namespace hn = hwy::HWY_NAMESPACE;

/// Two taps: first + (second - first) * w1 / unit, rounded, is the weighted sum itself.
template <class D8>
HWY_INLINE hn::Vec<D8> MixTwo(D8 d8, hn::Vec<D8> first, hn::Vec<D8> second,
                              std::int16_t doubledWeight) {
    const hn::Repartition<std::uint16_t, D8> d16;
    const hn::Repartition<std::int16_t, D8> di16;
    const auto low = hn::Set(d16, std::uint16_t{0xFF});
    const auto weight = hn::Set(di16, doubledWeight);
    const auto mixed = [&](auto a, auto b) HWY_ATTR {
        const auto difference = hn::BitCast(di16, hn::Sub(b, a));
        return hn::Add(a, hn::BitCast(d16, hn::MulFixedPoint15(difference, weight)));
    };
    const auto a = hn::BitCast(d16, first);
    const auto b = hn::BitCast(d16, second);
    const auto even = mixed(hn::And(a, low), hn::And(b, low));
    const auto odd = mixed(hn::ShiftRight<8>(a), hn::ShiftRight<8>(b));
    return hn::BitCast(d8, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

template <class VI32>
struct ComponentSums {
    VI32 red, green, blue, alpha;
};

/// Adds the products of two rows. Each 32-bit lane of a pair vector holds one component of both
/// rows, which the pairwise product adds up.
template <class D8, class VI32>
HWY_INLINE void AddPair(D8 d8, hn::Vec<D8> first, hn::Vec<D8> second, std::int16_t weight0,
                        std::int16_t weight1, ComponentSums<VI32>& sums) {
    const hn::Repartition<std::uint16_t, D8> d16;
    const hn::Repartition<std::uint32_t, D8> d32;
    const hn::Repartition<std::int16_t, D8> di16;
    const hn::Repartition<std::int32_t, D8> di32;
    const auto low = hn::Set(d16, std::uint16_t{0xFF});
    const auto weights =
        hn::BitCast(di16, hn::Set(di32, weight0 | static_cast<std::int32_t>(weight1) << 16));
    const auto a = hn::BitCast(d16, first);
    const auto b = hn::BitCast(d16, second);
    const auto add = [&](auto pair, auto& sum) HWY_ATTR {
        auto rest = hn::Zero(di32);
        sum = hn::ReorderWidenMulAccumulate(di32, hn::BitCast(di16, pair), weights, sum, rest);
        sum = hn::RearrangeToOddPlusEven(sum, rest);
    };
    const auto up = [&](auto v) HWY_ATTR {
        return hn::BitCast(d16, hn::ShiftLeft<16>(hn::BitCast(d32, v)));
    };
    const auto down = [&](auto v) HWY_ATTR {
        return hn::BitCast(d16, hn::ShiftRight<16>(hn::BitCast(d32, v)));
    };
    const auto evenA = hn::And(a, low);  // r0 b0 | r1 b1 | ...
    const auto evenB = hn::And(b, low);
    const auto oddA = hn::ShiftRight<8>(a);  // g0 a0 | g1 a1 | ...
    const auto oddB = hn::ShiftRight<8>(b);
    add(hn::OddEven(up(evenB), evenA), sums.red);
    add(hn::OddEven(up(oddB), oddA), sums.green);
    add(hn::OddEven(evenB, down(evenA)), sums.blue);
    add(hn::OddEven(oddB, down(oddA)), sums.alpha);
}

/// Three taps: the middle row plus what the outer ones' differences from it add, since the weights
/// are a whole. Half as many products as of three rows by themselves.
template <class D8>
HWY_INLINE hn::Vec<D8> MixThree(D8 d8, hn::Vec<D8> first, hn::Vec<D8> middle, hn::Vec<D8> last,
                                std::int16_t weight0, std::int16_t weight2) {
    const hn::Repartition<std::uint16_t, D8> d16;
    const hn::Repartition<std::uint32_t, D8> d32;
    const hn::Repartition<std::int16_t, D8> di16;
    const hn::Repartition<std::int32_t, D8> di32;
    const auto low = hn::Set(d16, std::uint16_t{0xFF});
    const auto half = hn::Set(di32, kTapUnit / 2);
    const auto weights =
        hn::BitCast(di16, hn::Set(di32, weight0 | static_cast<std::int32_t>(weight2) << 16));
    const auto product = [&](auto pair) HWY_ATTR {
        auto rest = hn::Zero(di32);
        const auto sum =
            hn::ReorderWidenMulAccumulate(di32, hn::BitCast(di16, pair), weights, half, rest);
        return hn::BitCast(d32, hn::RearrangeToOddPlusEven(sum, rest));
    };
    // Every second byte in 16-bit lanes: x0 y0 | x1 y1 | ...
    const auto mixed = [&](auto a, auto b, auto c) HWY_ATTR {
        const auto before = hn::Sub(a, b);
        const auto behind = hn::Sub(c, b);
        const auto up = hn::BitCast(d16, hn::ShiftLeft<16>(hn::BitCast(d32, behind)));
        const auto down = hn::BitCast(d16, hn::ShiftRight<16>(hn::BitCast(d32, before)));
        const auto x = hn::ShiftRight<14>(product(hn::OddEven(up, before)));
        const auto y = hn::ShiftLeft<2>(product(hn::OddEven(behind, down)));
        return hn::Add(b, hn::OddEven(hn::BitCast(d16, y), hn::BitCast(d16, x)));
    };
    const auto a = hn::BitCast(d16, first);
    const auto b = hn::BitCast(d16, middle);
    const auto c = hn::BitCast(d16, last);
    const auto even = mixed(hn::And(a, low), hn::And(b, low), hn::And(c, low));
    const auto odd = mixed(hn::ShiftRight<8>(a), hn::ShiftRight<8>(b), hn::ShiftRight<8>(c));
    return hn::BitCast(d8, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

template <class D8>
HWY_INLINE hn::Vec<D8> MixMany(D8 d8, const std::uint8_t* const* rows, const Taps& taps,
                               std::size_t at) {
    const hn::Repartition<std::int32_t, D8> di32;
    const auto half = hn::Set(di32, kTapUnit / 2);
    ComponentSums<hn::Vec<decltype(di32)>> sums{half, half, half, half};
    int j = 0;
    for (; j + 2 <= taps.count; j += 2)
        AddPair(d8, hn::LoadU(d8, rows[j] + at), hn::LoadU(d8, rows[j + 1] + at), taps.weights[j],
                taps.weights[j + 1], sums);
    if (j < taps.count)
        AddPair(d8, hn::LoadU(d8, rows[j] + at), hn::Zero(d8), taps.weights[j], 0, sums);
    const auto red = hn::ShiftRight<14>(sums.red);
    const auto green = hn::ShiftLeft<8>(hn::ShiftRight<14>(sums.green));
    const auto blue = hn::ShiftLeft<16>(hn::ShiftRight<14>(sums.blue));
    const auto alpha = hn::ShiftLeft<24>(hn::ShiftRight<14>(sums.alpha));
    return hn::BitCast(d8, hn::Or(hn::Or(red, green), hn::Or(blue, alpha)));
}

void CombineRows(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* const* rows,
                 const Taps& taps, std::size_t bytes) {
    const hn::ScalableTag<std::uint8_t> d8;
    const std::size_t lanes = hn::Lanes(d8);
    std::size_t i = 0;
    if (taps.count == 2) {
        const auto doubled = static_cast<std::int16_t>(2 * taps.weights[1]);
        for (; i + lanes <= bytes; i += lanes)
            hn::StoreU(MixTwo(d8, hn::LoadU(d8, rows[0] + i), hn::LoadU(d8, rows[1] + i), doubled),
                       d8, target + i);
    } else if (taps.count == 3) {
        for (; i + lanes <= bytes; i += lanes)
            hn::StoreU(MixThree(d8, hn::LoadU(d8, rows[0] + i), hn::LoadU(d8, rows[1] + i),
                                hn::LoadU(d8, rows[2] + i), taps.weights[0], taps.weights[2]),
                       d8, target + i);
    } else {
        for (; i + lanes <= bytes; i += lanes)
            hn::StoreU(MixMany(d8, rows, taps, i), d8, target + i);
    }
    if (i == bytes) return;
    if (bytes >= lanes) {  // the last vector once more, moved back to end with the row
        const std::size_t at = bytes - lanes;
        hn::StoreU(MixMany(d8, rows, taps, at), d8, target + at);
        return;
    }
    for (; i < bytes; ++i) {
        std::int32_t sum = kTapUnit / 2;
        for (int j = 0; j < taps.count; ++j) sum += rows[j][i] * taps.weights[j];
        target[i] = static_cast<std::uint8_t>(sum / kTapUnit);
    }
}

/// One pixel from its taps, four source pixels at a time.
HWY_INLINE void CombinePixel(std::uint8_t* HWY_RESTRICT target,
                             const std::uint8_t* HWY_RESTRICT from, const Taps& taps) {
    const hn::FixedTag<std::uint8_t, 16> d8;
    const hn::FixedTag<std::int16_t, 8> di16;
    const hn::FixedTag<std::int32_t, 4> di32;
    // Bytes of pixels 0 and 1 (2 and 3) side by side, each widened by a zero.
    alignas(16) static constexpr std::uint8_t kLow[16] = {0, 128, 4, 128, 1, 128, 5, 128,
                                                          2, 128, 6, 128, 3, 128, 7, 128};
    alignas(16) static constexpr std::uint8_t kHigh[16] = {8,  128, 12, 128, 9,  128, 13, 128,
                                                           10, 128, 14, 128, 11, 128, 15, 128};
    const auto weightPair = [&](int j) HWY_ATTR {
        const int first = j < taps.count ? taps.weights[j] : 0;
        const int second = j + 1 < taps.count ? taps.weights[j + 1] : 0;
        return hn::BitCast(di16, hn::Set(di32, first | second << 16));
    };
    auto sum = hn::Set(di32, kTapUnit / 2);
    auto rest = hn::Zero(di32);
    for (int j = 0; j < taps.count; j += 4) {
        const auto four = hn::LoadU(d8, from + 4 * j);
        const auto low = hn::BitCast(di16, hn::TableLookupBytesOr0(four, hn::Load(d8, kLow)));
        const auto high = hn::BitCast(di16, hn::TableLookupBytesOr0(four, hn::Load(d8, kHigh)));
        sum = hn::ReorderWidenMulAccumulate(di32, low, weightPair(j), sum, rest);
        sum = hn::ReorderWidenMulAccumulate(di32, high, weightPair(j + 2), sum, rest);
    }
    const auto shifted = hn::ShiftRight<14>(hn::RearrangeToOddPlusEven(sum, rest));
    const hn::FixedTag<std::uint8_t, 4> dPixel;
    hn::StoreU(hn::DemoteTo(dPixel, shifted), dPixel, target);
}

void CombineColumns(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* HWY_RESTRICT source,
                    std::size_t sourcePixels, const Taps* HWY_RESTRICT taps, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        const auto first = static_cast<std::size_t>(taps[x].first);
        const std::size_t read = (static_cast<std::size_t>(taps[x].count) + 3) / 4 * 4;
        if (first + read <= sourcePixels)
            CombinePixel(target + 4 * x, source + 4 * first, taps[x]);
        else
            scalar::combineColumns(target + 4 * x, source, sourcePixels, taps + x, 1);
    }
}

// A block is 16 bytes: four neighbouring pixels, or the four sums of one target pixel.
#if HWY_CAP_GE512
inline constexpr std::size_t kBlocks = 4;
#elif HWY_CAP_GE256
inline constexpr std::size_t kBlocks = 2;
#else
inline constexpr std::size_t kBlocks = 1;
#endif
using Blocks8 = hn::FixedTag<std::uint8_t, 16 * kBlocks>;
using Blocks16 = hn::Repartition<std::int16_t, Blocks8>;
using Blocks32 = hn::Repartition<std::int32_t, Blocks8>;

/// Block i holds the four pixels from first[i] on.
HWY_INLINE hn::Vec<Blocks8> LoadBlocks(const std::uint8_t* source, const std::int32_t* first) {
    const hn::FixedTag<std::uint8_t, 16> block;
    const auto at = [&](std::size_t i) HWY_ATTR {
        return hn::LoadU(block, source + std::ptrdiff_t{4} * first[i]);
    };
#if HWY_CAP_GE512
    const hn::FixedTag<std::uint8_t, 32> half;
    return hn::Combine(Blocks8(), hn::Combine(half, at(3), at(2)), hn::Combine(half, at(1), at(0)));
#elif HWY_CAP_GE256
    return hn::Combine(Blocks8(), at(1), at(0));
#else
    return at(0);
#endif
}

/// Each block's two pairs of weights, spread over the block.
struct BlockWeights {
    hn::Vec<Blocks16> low;   // w0 w1 | w0 w1 | w0 w1 | w0 w1
    hn::Vec<Blocks16> high;  // w2 w3 | w2 w3 | w2 w3 | w2 w3
};

HWY_INLINE BlockWeights LoadWeights(const std::int16_t* weights) {
    const Blocks32 d32;
    const hn::Half<Blocks32> half;
    alignas(64) static constexpr std::int32_t kLow[16] = {0, 0, 0, 0, 2, 2, 2, 2,
                                                          4, 4, 4, 4, 6, 6, 6, 6};
    alignas(64) static constexpr std::int32_t kHigh[16] = {1, 1, 1, 1, 3, 3, 3, 3,
                                                           5, 5, 5, 5, 7, 7, 7, 7};
    // Two pairs a block: half as many lanes as the sums have.
    const auto pairs = hn::ZeroExtendVector(
        d32,
        hn::BitCast(half, hn::LoadU(hn::Repartition<std::int16_t, hn::Half<Blocks32>>(), weights)));
    return {hn::BitCast(Blocks16(), hn::TableLookupLanes(pairs, hn::SetTableIndices(d32, kLow))),
            hn::BitCast(Blocks16(), hn::TableLookupLanes(pairs, hn::SetTableIndices(d32, kHigh)))};
}

void CombinePackedColumns(std::uint8_t* HWY_RESTRICT target,
                          const std::uint8_t* HWY_RESTRICT source, const PackedTaps& taps) {
    const Blocks8 d8;
    const Blocks32 d32;
    const hn::Rebind<std::uint8_t, Blocks32> dPixels;
    // Bytes of pixels 0 and 1 (2 and 3) of a block side by side, each widened by a zero.
    alignas(16) static constexpr std::uint8_t kLow[16] = {0, 128, 4, 128, 1, 128, 5, 128,
                                                          2, 128, 6, 128, 3, 128, 7, 128};
    alignas(16) static constexpr std::uint8_t kHigh[16] = {8,  128, 12, 128, 9,  128, 13, 128,
                                                           10, 128, 14, 128, 11, 128, 15, 128};
    const auto low = hn::LoadDup128(d8, kLow);
    const auto high = hn::LoadDup128(d8, kHigh);
    std::size_t x = 0;
    for (; x + kBlocks <= taps.samples; x += kBlocks) {
        auto sum = hn::Set(d32, kTapUnit / 2);
        auto rest = hn::Zero(d32);
        for (std::size_t group = 0; group < taps.groups; ++group) {
            const auto pixels = LoadBlocks(source + 16 * group, taps.first + x);
            const BlockWeights weights = LoadWeights(taps.weights + 4 * (group * taps.samples + x));
            sum = hn::ReorderWidenMulAccumulate(
                d32, hn::BitCast(Blocks16(), hn::TableLookupBytesOr0(pixels, low)), weights.low,
                sum, rest);
            sum = hn::ReorderWidenMulAccumulate(
                d32, hn::BitCast(Blocks16(), hn::TableLookupBytesOr0(pixels, high)), weights.high,
                sum, rest);
        }
        const auto shifted = hn::ShiftRight<14>(hn::RearrangeToOddPlusEven(sum, rest));
        hn::StoreU(hn::DemoteTo(dPixels, shifted), dPixels, target + 4 * x);
    }
    for (; x < taps.samples; ++x) {
        std::int32_t sums[4] = {kTapUnit / 2, kTapUnit / 2, kTapUnit / 2, kTapUnit / 2};
        for (std::size_t group = 0; group < taps.groups; ++group)
            for (std::size_t i = 0; i < 16; ++i)
                sums[i % 4] +=
                    source[16 * group + 4 * static_cast<std::size_t>(taps.first[x]) + i] *
                    taps.weights[4 * (group * taps.samples + x) + i / 4];
        for (std::size_t k = 0; k < 4; ++k)
            target[4 * x + k] = static_cast<std::uint8_t>(sums[k] / kTapUnit);
    }
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(CombineRows);
HWY_EXPORT(CombineColumns);
HWY_EXPORT(CombinePackedColumns);

namespace vector {
void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes) {
    HWY_DYNAMIC_DISPATCH(CombineRows)(target, rows, taps, bytes);
}

void combineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(CombineColumns)(target, source, sourcePixels, taps, pixels);
}

void combinePackedColumns(std::uint8_t* target, const std::uint8_t* source,
                          const PackedTaps& taps) {
    HWY_DYNAMIC_DISPATCH(CombinePackedColumns)(target, source, taps);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
