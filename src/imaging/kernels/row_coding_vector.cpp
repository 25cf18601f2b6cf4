// Vector twins of row_coding.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/row_coding_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/highway.h>

#include "imaging/kernels/row_coding.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR  // a processor without vectors runs the definition

void UnpremultiplyRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    scalar::unpremultiplyRow(target, source, pixels);
}

std::uint64_t SubtractRow(std::uint8_t* difference, const std::uint8_t* row,
                          const std::uint8_t* other, std::size_t bytes) {
    return scalar::subtractRow(difference, row, other, bytes);
}

#else
namespace hn = hwy::HWY_NAMESPACE;

/// One colour of every pixel, as the lowest byte of its lane. With n = c * 255 + a / 2 the
/// definition is floor(n / a). (n + 1/2) / a is at least 1 / (2a) away from the whole numbers on
/// both sides; the two roundings of its product in single precision, 2^-24 of it each, move it by
/// less than 0.008 / a, so that its floor is the same. n + 1/2 itself, below 2^16, is exact.
template <class D32, class V32, class VF>
HWY_INLINE V32 StraightColor(D32 d32, V32 color, V32 halfAlpha, VF reciprocal) {
    const hn::RebindToSigned<D32> di;
    const hn::RebindToFloat<D32> df;
    const auto n = hn::Add(hn::Sub(hn::ShiftLeft<8>(color), color), halfAlpha);
    const auto middle = hn::Add(hn::ConvertTo(df, hn::BitCast(di, n)), hn::Set(df, 0.5F));
    const auto quotient = hn::BitCast(d32, hn::ConvertTo(di, hn::Mul(middle, reciprocal)));
    return hn::Min(quotient, hn::Set(d32, 255U));
}

template <class D32, class V32>
HWY_INLINE V32 StraightPixels(D32 d32, V32 pixels) {
    const hn::RebindToSigned<D32> di;
    const hn::RebindToFloat<D32> df;
    const auto byte = hn::Set(d32, 0xFFU);
    const auto alpha = hn::ShiftRight<24>(pixels);
    const auto halfAlpha = hn::ShiftRight<1>(alpha);
    const auto divisor = hn::Max(alpha, hn::Set(d32, 1U));
    const auto reciprocal = hn::Div(hn::Set(df, 1.0F), hn::ConvertTo(df, hn::BitCast(di, divisor)));
    const auto red = StraightColor(d32, hn::And(pixels, byte), halfAlpha, reciprocal);
    const auto green =
        StraightColor(d32, hn::And(hn::ShiftRight<8>(pixels), byte), halfAlpha, reciprocal);
    const auto blue =
        StraightColor(d32, hn::And(hn::ShiftRight<16>(pixels), byte), halfAlpha, reciprocal);
    const auto colors = hn::Or(hn::Or(red, hn::ShiftLeft<8>(green)), hn::ShiftLeft<16>(blue));
    const auto seen = hn::Ne(alpha, hn::Zero(d32));
    return hn::Or(hn::IfThenElseZero(seen, colors), hn::ShiftLeft<24>(alpha));
}

void UnpremultiplyRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    const hn::ScalableTag<std::uint8_t> d8;
    const hn::Repartition<std::uint32_t, decltype(d8)> d32;
    const auto opaque = hn::Set(d32, 0xFF000000U);
    const std::size_t lanes = hn::Lanes(d8);
    std::size_t i = 0;
    for (; i + lanes <= 4 * pixels; i += lanes) {
        const auto found = hn::BitCast(d32, hn::LoadU(d8, source + i));
        // Most of a picture is opaque, and needs no arithmetic.
        const bool allOpaque = hn::AllTrue(d32, hn::Eq(hn::And(found, opaque), opaque));
        const auto straight = allOpaque ? found : StraightPixels(d32, found);
        hn::StoreU(hn::BitCast(d8, straight), d8, target + i);
    }
    scalar::unpremultiplyRow(target + i, source + i, pixels - i / 4);
}

std::uint64_t SubtractRow(std::uint8_t* HWY_RESTRICT difference,
                          const std::uint8_t* HWY_RESTRICT row,
                          const std::uint8_t* HWY_RESTRICT other, std::size_t bytes) {
    const hn::ScalableTag<std::uint8_t> d8;
    const hn::RebindToSigned<decltype(d8)> di8;
    const hn::Repartition<std::uint64_t, decltype(d8)> d64;
    const std::size_t lanes = hn::Lanes(d8);
    auto sums = hn::Zero(d64);
    std::size_t i = 0;
    for (; i + lanes <= bytes; i += lanes) {
        const auto d = hn::Sub(hn::LoadU(d8, row + i), hn::LoadU(d8, other + i));
        hn::StoreU(d, d8, difference + i);
        // The sign of -128 cannot be taken away, but as an unsigned byte it is 128 already.
        sums = hn::Add(sums, hn::SumsOf8(hn::BitCast(d8, hn::Abs(hn::BitCast(di8, d)))));
    }
    return hn::GetLane(hn::SumOfLanes(d64, sums)) +
           scalar::subtractRow(difference + i, row + i, other + i, bytes - i);
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(UnpremultiplyRow);
HWY_EXPORT(SubtractRow);

namespace vector {
void unpremultiplyRow(std::uint8_t* target, const std::uint8_t* source, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(UnpremultiplyRow)(target, source, pixels);
}

std::uint64_t subtractRow(std::uint8_t* difference, const std::uint8_t* row,
                          const std::uint8_t* other, std::size_t bytes) {
    return HWY_DYNAMIC_DISPATCH(SubtractRow)(difference, row, other, bytes);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
