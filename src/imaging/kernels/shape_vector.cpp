// Vector twins of shape.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/shape_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/highway.h>

#include "imaging/kernels/shape.h"
#include "imaging/kernels/vector_lookup-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR  // a processor without vectors runs the definition

void ShapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    scalar::shapeRow(target, source, sourcePixels, columns, factor, pixels);
}

#else

/// Pixels as u32 lanes are split into u16 lanes: even holds R and B, odd holds G and A, so that
/// each weight stands twice in its pixel's lane and nothing has to be moved.
template <class D16, class V16>
HWY_INLINE V16 Interpolated(D16 d16, V16 first, V16 second, V16 weight) {
    const hn::RebindToSigned<D16> di16;
    const auto difference = hn::BitCast(di16, hn::Sub(second, first));
    // floor(d * Q / 65536) with Q as a signed number is d too low from Q = 32768 on, which starting
    // from the second pixel instead of the first makes good.
    const auto signedWeight = hn::BitCast(di16, weight);
    const auto upper = hn::MaskFromVec(hn::BroadcastSignBit(signedWeight));
    const auto start = hn::IfThenElse(hn::RebindMask(d16, upper), second, first);
    return hn::Add(start, hn::BitCast(d16, hn::MulHigh(difference, signedWeight)));
}

void ShapeRow(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* HWY_RESTRICT source,
              std::size_t sourcePixels, const ShapeColumns& columns, const ShapeFactor& factor,
              std::size_t pixels) {
    const hn::ScalableTag<std::uint32_t> d32;
    const hn::Repartition<std::uint16_t, decltype(d32)> d16;
    const hn::Repartition<std::uint8_t, decltype(d32)> d8;
    const std::size_t lanes = hn::Lanes(d32);
    std::size_t x = 0;
    const auto low = hn::Set(d16, std::uint16_t{0xFF});
    const auto whole = hn::Set(d16, factor.whole);
    const auto fraction = hn::Set(d16, factor.fraction);
    const auto faded = [&](auto t) HWY_ATTR {
        return hn::And(hn::Add(hn::Mul(t, whole), hn::MulHigh(t, fraction)), low);
    };
    for (; factor.hasMultiplier && x + lanes <= pixels; x += lanes) {
        const auto pair = PixelPairs(d32, source, sourcePixels, columns.from + x);
        if (!pair.found) break;
        const auto weight = hn::BitCast(d16, hn::LoadU(d32, columns.weight + x));
        const auto first = hn::BitCast(d16, pair.first);
        const auto second = hn::BitCast(d16, pair.second);
        const auto even =
            faded(Interpolated(d16, hn::And(first, low), hn::And(second, low), weight));
        const auto odd =
            faded(Interpolated(d16, hn::ShiftRight<8>(first), hn::ShiftRight<8>(second), weight));
        hn::StoreU(hn::BitCast(d8, hn::Or(even, hn::ShiftLeft<8>(odd))), d8, target + 4 * x);
    }
    scalar::shapeRow(target + 4 * x, source, sourcePixels, {columns.from + x, columns.weight + x},
                     factor, pixels - x);
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(ShapeRow);

namespace vector {
void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t sourcePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(ShapeRow)(target, source, sourcePixels, columns, factor, pixels);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
