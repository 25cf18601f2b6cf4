// Weighted sums of pixels, one vector of sums for each component.
#if defined(SKARNEL_PIXEL_SUMS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef SKARNEL_PIXEL_SUMS_INL
#undef SKARNEL_PIXEL_SUMS_INL
#else
#define SKARNEL_PIXEL_SUMS_INL
#endif

#include <hwy/highway.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET != HWY_SCALAR
namespace hn = hwy::HWY_NAMESPACE;

template <class VI32>
struct ComponentSums {
    VI32 red, green, blue, alpha;
};

/// Adds the products of two neighbours of each pixel. Each 32-bit lane of a pair vector holds one
/// component of both, which the pairwise product adds up; the lanes of the weights hold the first
/// one's below the second one's.
template <class D8, class VI32>
HWY_INLINE void AddPair(D8 d8, hn::Vec<D8> first, hn::Vec<D8> second, VI32 weightPairs,
                        ComponentSums<VI32>& sums) {
    const hn::Repartition<std::uint16_t, D8> d16;
    const hn::Repartition<std::uint32_t, D8> d32;
    const hn::Repartition<std::int16_t, D8> di16;
    const hn::Repartition<std::int32_t, D8> di32;
    const auto low = hn::Set(d16, std::uint16_t{0xFF});
    const auto weights = hn::BitCast(di16, weightPairs);
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

/// The pixels whose rounded sums these are.
template <class D8, class VI32>
HWY_INLINE hn::Vec<D8> PixelsOf(D8 d8, const ComponentSums<VI32>& sums) {
    const auto red = hn::ShiftRight<14>(sums.red);
    const auto green = hn::ShiftLeft<8>(hn::ShiftRight<14>(sums.green));
    const auto blue = hn::ShiftLeft<16>(hn::ShiftRight<14>(sums.blue));
    const auto alpha = hn::ShiftLeft<24>(hn::ShiftRight<14>(sums.alpha));
    return hn::BitCast(d8, hn::Or(hn::Or(red, green), hn::Or(blue, alpha)));
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard by target
