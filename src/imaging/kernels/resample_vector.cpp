// Vector twins of resample.cpp, but for packed columns.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/resample_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/highway.h>

#include "imaging/kernels/pixel_sums-inl.h"
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
    const auto pair = [&](std::int16_t weight0, std::int16_t weight1) HWY_ATTR {
        return hn::Set(di32, weight0 | static_cast<std::int32_t>(weight1) << 16);
    };
    int j = 0;
    for (; j + 2 <= taps.count; j += 2)
        AddPair(d8, hn::LoadU(d8, rows[j] + at), hn::LoadU(d8, rows[j + 1] + at),
                pair(taps.weights[j], taps.weights[j + 1]), sums);
    if (j < taps.count)
        AddPair(d8, hn::LoadU(d8, rows[j] + at), hn::Zero(d8), pair(taps.weights[j], 0), sums);
    return PixelsOf(d8, sums);
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

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(CombineRows);
HWY_EXPORT(CombineColumns);

namespace vector {
void combineRows(std::uint8_t* target, const std::uint8_t* const* rows, const Taps& taps,
                 std::size_t bytes) {
    HWY_DYNAMIC_DISPATCH(CombineRows)(target, rows, taps, bytes);
}

void combineColumns(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
                    const Taps* taps, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(CombineColumns)(target, source, sourcePixels, taps, pixels);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
