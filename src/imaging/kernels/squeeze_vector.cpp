// Vector twin of the first pass of turn.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/squeeze_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <algorithm>

#include "imaging/kernels/turn.h"
#include "imaging/kernels/turn_vector-inl.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if !SKARNEL_VECTOR_BLOCKS  // the definition

void SqueezeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                 std::size_t readablePixels, const SqueezeMap& map) {
    scalar::squeezeRows(target, sources, readablePixels, map);
}

#else

constexpr std::size_t kParts = kBlockRows / kLanes;  // square blocks that make kBlockRows rows

/// A vector of columns and the source pixels that they need, the same for every row.
struct SqueezeColumns {
    VI32 offset;  // of the left pixel, from the first column's
    VI32 next;    // and of the right one
    V32 weight;
    V32 evenBytes;
    std::ptrdiff_t start;  // bytes
    std::ptrdiff_t ahead;  // bytes from there to what the next call will want
    V32 belowWeight;
};

/// What the columns show of a row: the pixel on the left and the one on the right of each.
struct Neighbours {
    V32 first;
    V32 second;
};

/// Picked from 2 * kPairs vectors of the row.
template <int kPairs>
HWY_INLINE Neighbours NeighboursIn(const std::uint8_t* HWY_RESTRICT source,
                                   const SqueezeColumns& columns) {
    const D32 d32;
    const DI32 di32;
    const std::uint8_t* at = source + columns.start;
#pragma GCC unroll 4
    for (std::size_t line = 0; line < kPairs * 8 * kLanes; line += kLineBytes)
        hwy::Prefetch(at + columns.ahead + line);
    const V32 a = LoadPixels(at);
    const V32 b = LoadPixels(at + 4 * kLanes);
    V32 first = PickFromTwo(d32, a, b, columns.offset);
    V32 second = PickFromTwo(d32, a, b, columns.next);
    if (kPairs == 2) {
        const V32 c = LoadPixels(at + 8 * kLanes);
        const V32 d = LoadPixels(at + 12 * kLanes);
        const auto last = hn::Set(di32, static_cast<std::int32_t>(2 * kLanes) - 1);
        const auto later = [&](V32 early, VI32 index) HWY_ATTR {
            return hn::IfThenElse(hn::RebindMask(d32, hn::Gt(index, last)),
                                  PickFromTwo(d32, c, d, hn::And(index, last)), early);
        };
        first = later(first, columns.offset);
        second = later(second, columns.next);
    }
    return {first, second};
}

HWY_INLINE V32 SqueezedPixels(Neighbours pixels, const SqueezeColumns& columns) {
    return LerpPixels(pixels.first, pixels.second, columns.weight, columns.evenBytes);
}

/// Between two rows: picked pixels are mixed, so that each row is picked from once.
HWY_INLINE Neighbours Mixed(Neighbours above, Neighbours below, const SqueezeColumns& columns) {
    const auto mixed = [&](V32 a, V32 b) HWY_ATTR {
        return LerpPixels(a, b, columns.belowWeight, columns.evenBytes);
    };
    return {mixed(above.first, below.first), mixed(above.second, below.second)};
}

/// kLanes columns of a whole block of rows.
template <int kPairs, bool kStream, bool kBetweenRows>
HWY_INLINE void SqueezeBlock(const SqueezeTarget& target, std::size_t column,
                             const std::uint8_t* const* HWY_RESTRICT sources,
                             const SqueezeColumns& columns) {
    V32 block[kParts][kLanes];
    Neighbours above{hn::Zero(D32()), hn::Zero(D32())};
    if (kBetweenRows) above = NeighboursIn<kPairs>(sources[0], columns);
#pragma GCC unroll 4
    for (std::size_t part = 0; part < kParts; ++part) {
#pragma GCC unroll 16
        for (std::size_t i = 0; i < kLanes; ++i) {
            const std::uint8_t* const* row = sources + part * kLanes + i;
            if (kBetweenRows) {
                const Neighbours below = NeighboursIn<kPairs>(row[1], columns);
                block[part][i] = SqueezedPixels(Mixed(above, below, columns), columns);
                above = below;
            } else {
                block[part][i] = SqueezedPixels(NeighboursIn<kPairs>(row[0], columns), columns);
            }
        }
        Transpose(D32(), block[part]);
    }
    std::uint8_t* out =
        target.bytes + 4 * static_cast<std::ptrdiff_t>(column) * target.columnStride;
    const std::ptrdiff_t stride = 4 * target.columnStride;
#pragma GCC unroll 16
    for (std::size_t i = 0; i < kLanes; ++i, out += stride)
#pragma GCC unroll 4
        for (std::size_t part = 0; part < kParts; ++part) {
            const auto bytes = hn::BitCast(D8(), block[part][i]);
            if (kStream)
                hn::Stream(bytes, D8(), out + 4 * kLanes * part);
            else
                hn::StoreU(bytes, D8(), out + 4 * kLanes * part);
        }
}

template <bool kStream, bool kBetweenRows>
HWY_INLINE void SqueezeWholeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                                 std::size_t readablePixels, const SqueezeMap& map) {
    const DI32 di32;
    const V32 evenBytes = EvenBytes();
    const auto below = static_cast<std::uint32_t>(map.belowWeight);
    const V32 belowWeight = hn::Set(D32(), below | below << 16);
    for (std::size_t at = 0; at < map.columns; at += kLanes) {
        // The last vector overlaps the one before; both write the same bytes.
        const std::size_t x = std::min(at, map.columns - kLanes);
        const std::int32_t* from = map.from + x;
        const auto start = static_cast<std::size_t>(from[0] - map.firstPixel);
        const std::size_t reach = static_cast<std::size_t>(from[kLanes - 1] - from[0]) + 2;
        const std::size_t pairs = (reach + 2 * kLanes - 1) / (2 * kLanes);
        const auto offset = hn::Sub(hn::LoadU(di32, from), hn::Set(di32, from[0]));
        const SqueezeColumns columns{
            offset,     hn::Add(offset, hn::Set(di32, 1)),      hn::LoadU(D32(), map.weight + x),
            evenBytes,  4 * static_cast<std::ptrdiff_t>(start), map.aheadBytes,
            belowWeight};
        if (pairs > 2 || start + 2 * kLanes * pairs > readablePixels) {
            SqueezeTarget place = target;
            place.bytes += 4 * static_cast<std::ptrdiff_t>(x) * target.columnStride;
            scalar::squeezeRows(
                place, sources, readablePixels,
                {from, map.weight + x, kLanes, map.firstPixel, map.aheadBytes, map.belowWeight});
        } else if (pairs == 2) {
            SqueezeBlock<2, kStream, kBetweenRows>(target, x, sources, columns);
        } else {
            SqueezeBlock<1, kStream, kBetweenRows>(target, x, sources, columns);
        }
    }
}

template <bool kStream>
HWY_INLINE void SqueezeRowsOf(const SqueezeTarget& target, const std::uint8_t* const* sources,
                              std::size_t readablePixels, const SqueezeMap& map) {
    if (map.belowWeight == 0)
        SqueezeWholeRows<kStream, false>(target, sources, readablePixels, map);
    else
        SqueezeWholeRows<kStream, true>(target, sources, readablePixels, map);
}

void SqueezeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                 std::size_t readablePixels, const SqueezeMap& map) {
    if (target.rows != kBlockRows || map.columns < kLanes)
        scalar::squeezeRows(target, sources, readablePixels, map);
    else if (target.stream)
        SqueezeRowsOf<true>(target, sources, readablePixels, map);
    else
        SqueezeRowsOf<false>(target, sources, readablePixels, map);
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(SqueezeRows);

namespace vector {
void squeezeRows(const SqueezeTarget& target, const std::uint8_t* const* sources,
                 std::size_t readablePixels, const SqueezeMap& map) {
    HWY_DYNAMIC_DISPATCH(SqueezeRows)(target, sources, readablePixels, map);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
