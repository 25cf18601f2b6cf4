// Vector twins of shape.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/shape_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/highway.h>

#include "imaging/kernels/shape.h"
#include "imaging/kernels/vector_kept-inl.h"
#include "imaging/kernels/vector_lookup-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR  // a processor without vectors runs the definition

void ShapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    scalar::shapeRow(target, source, readablePixels, columns, factor, pixels);
}

void ShapePackedRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                    const std::uint32_t* columns, const ShapeFactor& factor, std::size_t pixels) {
    scalar::shapePackedRow(target, source, readablePixels, columns, factor, pixels);
}

ShapeFactor MakeShapeFactor(double factor) {
    return scalar::shapeFactor(factor);
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
    const auto start =
        hn::IfNegativeThenElse(signedWeight, hn::BitCast(di16, second), hn::BitCast(di16, first));
    return hn::BitCast(d16, hn::Add(start, hn::MulHigh(difference, signedWeight)));
}

/// Shapes vectors of columns that were picked already. Fade::Below is for factors without a whole
/// part, as nearly all rows have them: their products are bytes as they are.
enum class Fade { Any, Below };
template <Fade kFade>
class Shaper {
    using D32 = hn::ScalableTag<std::uint32_t>;
    using D16 = hn::Repartition<std::uint16_t, D32>;
    using D8 = hn::Repartition<std::uint8_t, D32>;
    using V32 = hn::Vec<D32>;
    using V16 = hn::Vec<D16>;

  public:
    HWY_INLINE explicit Shaper(const ShapeFactor& factor)
        : low_(Kept(hn::Set(D16(), std::uint16_t{0xFF}))),
          whole_(hn::Set(D16(), factor.whole)),
          fraction_(hn::Set(D16(), factor.fraction)) {}

    HWY_INLINE void store(const PixelPair<V32>& pair, V32 weightTwice, std::uint8_t* target) const {
        const auto weight = hn::BitCast(D16(), weightTwice);
        const auto first = hn::BitCast(D16(), pair.first);
        const auto second = hn::BitCast(D16(), pair.second);
        const auto even =
            faded(Interpolated(D16(), hn::And(first, low_), hn::And(second, low_), weight));
        const auto odd =
            faded(Interpolated(D16(), hn::ShiftRight<8>(first), hn::ShiftRight<8>(second), weight));
        hn::StoreU(hn::BitCast(D8(), hn::Or(even, hn::ShiftLeft<8>(odd))), D8(), target);
    }

  private:
    HWY_INLINE V16 faded(V16 t) const {
        if (kFade == Fade::Below) return hn::MulHigh(t, fraction_);
        return hn::And(hn::Add(hn::Mul(t, whole_), hn::MulHigh(t, fraction_)), low_);
    }

    V16 low_, whole_, fraction_;
};

/// Calls shape(at) for whole vectors of a row. The last one overlaps the one before; both write the
/// same bytes.
template <class Shape>
HWY_INLINE void ForVectors(std::size_t pixels, std::size_t lanes, const Shape& shape) {
    std::size_t x = 0;
    for (; x + lanes <= pixels; x += lanes) shape(x);
    if (x < pixels) shape(pixels - lanes);
}

template <Fade kFade>
void ShapeVectors(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* HWY_RESTRICT source,
                  std::size_t readablePixels, const ShapeColumns& columns,
                  const ShapeFactor& factor, std::size_t pixels) {
    const hn::ScalableTag<std::uint32_t> d32;
    const std::size_t lanes = hn::Lanes(d32);
    const Shaper<kFade> shaper(factor);
    const std::int32_t* HWY_RESTRICT from = columns.from;
    const std::uint32_t* HWY_RESTRICT weight = columns.weight;
    ForVectors(pixels, lanes, [&](std::size_t at) SKARNEL_INLINE_LAMBDA {
        const auto pair = PixelPairs(d32, source, readablePixels, from + at);
        if (HWY_UNLIKELY(!pair.found))
            return scalar::shapeRow(target + 4 * at, source, readablePixels,
                                    {from + at, weight + at}, factor, lanes);
        shaper.store(pair, hn::LoadU(d32, weight + at), target + 4 * at);
    });
}

void ShapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    if (!factor.hasMultiplier || pixels < hn::Lanes(hn::ScalableTag<std::uint32_t>()))
        return scalar::shapeRow(target, source, readablePixels, columns, factor, pixels);
    const auto shape = factor.whole == 0 ? ShapeVectors<Fade::Below> : ShapeVectors<Fade::Any>;
    shape(target, source, readablePixels, columns, factor, pixels);
}

template <Fade kFade>
void ShapePackedVectors(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* HWY_RESTRICT source,
                        std::size_t readablePixels, const std::uint32_t* HWY_RESTRICT columns,
                        const ShapeFactor& factor, std::size_t pixels) {
    const hn::ScalableTag<std::uint32_t> d32;
    const hn::RebindToSigned<decltype(d32)> di32;
    const std::size_t lanes = hn::Lanes(d32);
    const Shaper<kFade> shaper(factor);
    const auto low = hn::Set(d32, 0xFFFFU);
    ForVectors(pixels, lanes, [&](std::size_t at) SKARNEL_INLINE_LAMBDA {
        const std::uint32_t* here = columns + at;
        const auto packed = hn::LoadU(d32, here);
        const auto pair =
            PixelPairs(d32, source, readablePixels, hn::BitCast(di32, hn::And(packed, low)),
                       here[0] & 0xFFFF, here[lanes - 1] & 0xFFFF);
        if (!pair.found)
            return scalar::shapePackedRow(target + 4 * at, source, readablePixels, here, factor,
                                          lanes);
        const auto above = hn::ShiftRight<16>(packed);
        shaper.store(pair, hn::Or(above, hn::ShiftLeft<16>(above)), target + 4 * at);
    });
}

void ShapePackedRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                    const std::uint32_t* columns, const ShapeFactor& factor, std::size_t pixels) {
    if (!factor.hasMultiplier || pixels < hn::Lanes(hn::ScalableTag<std::uint32_t>()))
        return scalar::shapePackedRow(target, source, readablePixels, columns, factor, pixels);
    const auto shape =
        factor.whole == 0 ? ShapePackedVectors<Fade::Below> : ShapePackedVectors<Fade::Any>;
    shape(target, source, readablePixels, columns, factor, pixels);
}

/// True when the multiplier gives every entry of the table, kept as 16-bit numbers.
bool MultiplierFits(const std::uint16_t* HWY_RESTRICT table, std::uint16_t wholePart,
                    std::uint16_t fractionPart) {
    const hn::ScalableTag<std::uint16_t> d16;
    const auto whole = hn::Set(d16, wholePart);
    const auto fraction = hn::Set(d16, fractionPart);
    const auto low = hn::Set(d16, std::uint16_t{0xFF});
    auto wrong = hn::Zero(d16);
    for (std::size_t t = 0; t < 256; t += hn::Lanes(d16)) {
        const auto byte = hn::Iota(d16, static_cast<std::uint16_t>(t));
        const auto product = hn::Add(hn::Mul(byte, whole), hn::MulHigh(byte, fraction));
        wrong = hn::Or(wrong, hn::Xor(hn::And(product, low), hn::LoadU(d16, table + t)));
    }
    return hn::AllTrue(d16, hn::Eq(wrong, hn::Zero(d16)));
}

ShapeFactor MakeShapeFactor(double factor) {
    // Outside, products may be no 32-bit numbers, which only the definition handles.
    if (!(factor >= 0) || factor >= kLargestMultiplied) return scalar::shapeFactor(factor);
    const hn::ScalableTag<double> df;
    const hn::Rebind<std::int32_t, decltype(df)> di32;
    const auto factors = hn::Set(df, factor);
    HWY_ALIGN std::uint16_t table[256];
    HWY_ALIGN std::int32_t products[hn::MaxLanes(df)];
    for (std::size_t t = 0; t < 256; t += hn::Lanes(df)) {
        const auto byte = hn::PromoteTo(df, hn::Iota(di32, static_cast<std::int32_t>(t)));
        hn::Store(hn::DemoteTo(di32, hn::Mul(byte, factors)), di32, products);
        for (std::size_t i = 0; i < hn::Lanes(df); ++i)
            table[t + i] = static_cast<std::uint16_t>(products[i] & 0xFF);
    }
    ShapeFactor result;
    for (std::size_t t = 0; t < 256; ++t) result.table[t] = static_cast<std::uint8_t>(table[t]);
    const auto whole = static_cast<std::uint32_t>(factor);
    const auto lower = static_cast<std::uint32_t>((factor - whole) * 65536);
    result.whole = static_cast<std::uint16_t>(whole);
    result.fraction = static_cast<std::uint16_t>(lower);
    result.hasMultiplier = MultiplierFits(table, result.whole, result.fraction);
    if (!result.hasMultiplier && lower < 65535) {
        ++result.fraction;
        result.hasMultiplier = MultiplierFits(table, result.whole, result.fraction);
    }
    if (!result.hasMultiplier) result.whole = result.fraction = 0;
    return result;
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(ShapeRow);
HWY_EXPORT(ShapePackedRow);
HWY_EXPORT(MakeShapeFactor);

namespace vector {
ShapeFactor shapeFactor(double factor) {
    return HWY_DYNAMIC_DISPATCH(MakeShapeFactor)(factor);
}

void shapeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
              const ShapeColumns& columns, const ShapeFactor& factor, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(ShapeRow)(target, source, readablePixels, columns, factor, pixels);
}

void shapePackedRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                    const std::uint32_t* columns, const ShapeFactor& factor, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(ShapePackedRow)(target, source, readablePixels, columns, factor, pixels);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
