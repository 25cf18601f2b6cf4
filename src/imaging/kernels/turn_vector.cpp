// Vector twins of turn.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/turn_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "imaging/kernels/turn.h"
#include "imaging/kernels/vector_lookup-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR  // a processor without vectors runs the definition

void SqueezeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                const std::int32_t* from, const std::uint32_t* weight, std::size_t pixels) {
    scalar::squeezeRow(target, source, readablePixels, from, weight, pixels);
}

void WalkColumns(std::uint8_t* target, const ColumnWalk& walk, std::size_t begin, std::size_t end) {
    scalar::walkColumns(target, walk, begin, end);
}

#else

/// lerpByte on bytes in 16-bit lanes; the rounding high product is exactly its formula.
template <class D16, class V16>
HWY_INLINE V16 Lerp(D16 d16, V16 first, V16 second, V16 weight) {
    const hn::RebindToSigned<D16> di16;
    const auto difference = hn::BitCast(di16, hn::Sub(second, first));
    return hn::Add(first,
                   hn::BitCast(d16, hn::MulFixedPoint15(difference, hn::BitCast(di16, weight))));
}

/// The same for pixels in 32-bit lanes, R and B apart from G and A.
template <class D32, class V32>
HWY_INLINE V32 LerpPixels(D32 d32, V32 first, V32 second, V32 weight) {
    const hn::Repartition<std::uint16_t, D32> d16;
    const auto low = hn::Set(d16, std::uint16_t{0xFF});
    const auto a = hn::BitCast(d16, first);
    const auto b = hn::BitCast(d16, second);
    const auto w = hn::BitCast(d16, weight);
    const auto even = Lerp(d16, hn::And(a, low), hn::And(b, low), w);
    const auto odd = Lerp(d16, hn::ShiftRight<8>(a), hn::ShiftRight<8>(b), w);
    return hn::BitCast(d32, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

void SqueezeRow(std::uint8_t* HWY_RESTRICT target, const std::uint8_t* HWY_RESTRICT source,
                std::size_t readablePixels, const std::int32_t* HWY_RESTRICT from,
                const std::uint32_t* HWY_RESTRICT weight, std::size_t pixels) {
    const hn::ScalableTag<std::uint32_t> d32;
    const hn::Repartition<std::uint8_t, decltype(d32)> d8;
    const std::size_t lanes = hn::Lanes(d32);
    if (pixels < lanes)
        return scalar::squeezeRow(target, source, readablePixels, from, weight, pixels);
    const auto squeeze = [&](std::size_t x) SKARNEL_INLINE_LAMBDA {
        const auto pair = PixelPairs(d32, source, readablePixels, from + x);
        if (!pair.found)
            return scalar::squeezeRow(target + 4 * x, source, readablePixels, from + x, weight + x,
                                      lanes);
        const auto result = LerpPixels(d32, pair.first, pair.second, hn::LoadU(d32, weight + x));
        hn::StoreU(hn::BitCast(d8, result), d8, target + 4 * x);
    };
    std::size_t x = 0;
    for (; x + lanes <= pixels; x += lanes) squeeze(x);
    // The last vector overlaps the one before; both write the same bytes.
    if (x < pixels) squeeze(pixels - lanes);
}

/// The part of a walk that is the same for every vector of columns.
template <class DF>
class Walker {
  public:
    Walker(DF df, const ColumnWalk& walk)
        : walk_(walk),
          pixels_(reinterpret_cast<const std::int32_t*>(walk.source)),
          rowOffset_(hn::Set(df, walk.rowOffset)),
          lastRow_(hn::Set(df, walk.lastRow)),
          stride_(hn::Set(hn::RebindToSigned<DF>(), static_cast<std::int32_t>(walk.stridePixels))) {
    }

    /// The pixels of the columns x, x + 1, ...
    HWY_INLINE auto At(DF df, std::size_t x) const {
        const hn::RebindToSigned<DF> di32;
        const hn::RebindToUnsigned<DF> d32;
        const auto product = hn::Mul(rowOffset_, hn::LoadU(df, walk_.step + x));
        const auto sum = hn::Add(hn::LoadU(df, walk_.centre + x), product);
        const auto position = hn::Min(hn::Max(sum, hn::Zero(df)), lastRow_);
        const auto row = hn::ConvertTo(di32, position);
        const auto fraction = hn::Sub(position, hn::ConvertTo(df, row));
        const auto weight =
            hn::BitCast(d32, hn::ConvertTo(di32, hn::Mul(fraction, hn::Set(df, 1.0F * kLerpUnit))));
        const auto index =
            hn::Add(hn::Mul(row, stride_), hn::Iota(di32, static_cast<std::int32_t>(x)));
        // What the same columns will want a few rows later; a step may pass over one row.
        const std::int32_t* ahead = pixels_ + hn::GetLane(index) + kRowsAhead * walk_.stridePixels;
        hwy::Prefetch(ahead);
        hwy::Prefetch(ahead + walk_.stridePixels);
        const auto first = hn::GatherIndex(di32, pixels_, index);
        const auto second = hn::GatherIndex(di32, pixels_ + walk_.stridePixels, index);
        return LerpPixels(d32, hn::BitCast(d32, first), hn::BitCast(d32, second),
                          hn::Or(weight, hn::ShiftLeft<16>(weight)));
    }

  private:
    static constexpr std::ptrdiff_t kRowsAhead = 10;
    const ColumnWalk& walk_;
    const std::int32_t* pixels_;
    hn::Vec<DF> rowOffset_;
    hn::Vec<DF> lastRow_;
    hn::Vec<hn::RebindToSigned<DF>> stride_;
};

void WalkColumns(std::uint8_t* HWY_RESTRICT target, const ColumnWalk& walk, std::size_t begin,
                 std::size_t end) {
    const hn::ScalableTag<float> df;
    const hn::Repartition<std::uint8_t, decltype(df)> d8;
    const std::size_t lanes = hn::Lanes(df);
    if (end < begin + lanes) return scalar::walkColumns(target, walk, begin, end);
    const Walker<decltype(df)> walker(df, walk);
    const auto store = [&](std::size_t x) SKARNEL_INLINE_LAMBDA {
        hn::StoreU(hn::BitCast(d8, walker.At(df, x)), d8, target + 4 * x);
    };
    // The first and the last vector may overlap their neighbours; both write the same bytes.
    store(begin);
    std::size_t x = begin + lanes;
    const std::size_t misaligned = reinterpret_cast<std::uintptr_t>(target + 4 * x) % (4 * lanes);
    if (walk.stream && misaligned % 4 == 0) {
        x -= misaligned / 4;
        for (; x + lanes <= end; x += lanes)
            hn::Stream(hn::BitCast(d8, walker.At(df, x)), d8, target + 4 * x);
    } else {
        for (; x + lanes <= end; x += lanes) store(x);
    }
    if (x < end) store(end - lanes);
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(SqueezeRow);
HWY_EXPORT(WalkColumns);

namespace vector {
void squeezeRow(std::uint8_t* target, const std::uint8_t* source, std::size_t readablePixels,
                const std::int32_t* from, const std::uint32_t* weight, std::size_t pixels) {
    HWY_DYNAMIC_DISPATCH(SqueezeRow)(target, source, readablePixels, from, weight, pixels);
}

void walkColumns(std::uint8_t* target, const ColumnWalk& walk, std::size_t begin, std::size_t end) {
    // Lanes address pixels by 32-bit numbers, and rows by exact single-precision ones.
    const double last =
        (static_cast<double>(walk.lastRow) + 2) * static_cast<double>(walk.stridePixels);
    if (last > 2147483647.0) return scalar::walkColumns(target, walk, begin, end);
    HWY_DYNAMIC_DISPATCH(WalkColumns)(target, walk, begin, end);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
