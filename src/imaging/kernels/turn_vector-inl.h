// What the two passes of the turn share: pixels in 32-bit lanes and mixing them.
#if defined(SKARNEL_TURN_VECTOR_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef SKARNEL_TURN_VECTOR_INL
#undef SKARNEL_TURN_VECTOR_INL
#else
#define SKARNEL_TURN_VECTOR_INL
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "imaging/kernels/vector_block-inl.h"
#include "imaging/kernels/vector_kept-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if SKARNEL_VECTOR_BLOCKS

using D32 = hn::ScalableTag<std::uint32_t>;
using DI32 = hn::RebindToSigned<D32>;
using DF = hn::RebindToFloat<D32>;
using D8 = hn::Repartition<std::uint8_t, D32>;
using V32 = hn::Vec<D32>;
using VI32 = hn::Vec<DI32>;
using VF = hn::Vec<DF>;
constexpr std::size_t kLanes = hn::MaxLanes(D32());

/// What lerpByte adds to `first`, on bytes in 16-bit lanes; the rounding high product is exactly
/// its formula.
template <class D16, class V16>
HWY_INLINE V16 LerpChange(D16 d16, V16 first, V16 second, V16 weight) {
    const hn::RebindToSigned<D16> di16;
    const auto difference = hn::BitCast(di16, hn::Sub(second, first));
    return hn::BitCast(d16, hn::MulFixedPoint15(difference, hn::BitCast(di16, weight)));
}

/// The same for pixels in 32-bit lanes, R and B apart from G and A.
HWY_INLINE V32 LerpPixels(V32 first, V32 second, V32 weight, V32 evenBytes) {
    const D32 d32;
    const hn::Repartition<std::uint16_t, D32> d16;
    const auto low = hn::BitCast(d16, evenBytes);
    const auto a = hn::BitCast(d16, first);
    const auto b = hn::BitCast(d16, second);
    const auto w = hn::BitCast(d16, weight);
    const auto even = LerpChange(d16, hn::And(a, low), hn::And(b, low), w);
    const auto odd = LerpChange(d16, hn::ShiftRight<8>(a), hn::ShiftRight<8>(b), w);
    const auto change =
        hn::OddEven(hn::BitCast(D8(), hn::ShiftLeft<8>(odd)), hn::BitCast(D8(), even));
    return hn::BitCast(d32, hn::Add(hn::BitCast(D8(), first), change));
}

HWY_INLINE V32 EvenBytes() {
    return Kept(hn::Set(D32(), 0xFF00FFU));
}

HWY_INLINE V32 LoadPixels(const std::uint8_t* HWY_RESTRICT bytes) {
    return hn::BitCast(D32(), hn::LoadU(D8(), bytes));
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard by target
