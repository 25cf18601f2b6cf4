// Vector twin of exact_weight.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/exact_weight_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>

#include "imaging/kernels/exact_weight.h"

HWY_BEFORE_NAMESPACE();
namespace skarnel::kernels::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR  // a processor without vectors runs the definition

std::size_t PlanShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* from, std::uint32_t* weight,
                             std::int32_t* inDoubles) {
    return scalar::planShapeColumns(positions, first, count, from, weight, inDoubles);
}

#else
namespace hn = hwy::HWY_NAMESPACE;

/// What the columns of a row are written to.
struct PlannedColumns {
    std::int32_t* HWY_RESTRICT from;
    std::uint32_t* HWY_RESTRICT weight;
    std::int32_t* inDoubles;
    std::size_t found;
};

/// The definition for columns [begin, end), counted from `first`.
HWY_INLINE void PlanOneByOne(const ColumnPositions& positions, std::int32_t first,
                             std::size_t begin, std::size_t end, PlannedColumns& planned) {
    planned.found += scalar::planShapeColumns(
        positions, first + static_cast<std::int32_t>(begin), end - begin, planned.from + begin,
        planned.weight + begin, planned.inDoubles + planned.found);
}

// Doubles in full vectors, what becomes whole numbers in half ones.
using DF = hn::ScalableTag<double>;
using DIndex = hn::Rebind<std::int32_t, DF>;
using DWeight = hn::RebindToUnsigned<DIndex>;
using VF = hn::Vec<DF>;
constexpr std::size_t kDoubles = hn::MaxLanes(DF());

/// What the positions in a vector come to.
struct Planned {
    VF position, scaled, above;
    hn::Vec<DIndex> from;
    hn::Vec<DWeight> weight;
};

HWY_INLINE Planned PlanVector(const ColumnPositions& positions,
                              const std::int32_t* HWY_RESTRICT boundaries,
                              hn::Vec<DIndex> columns) {
    const DF df;
    const DIndex di32;
    const auto lastPixel = hn::Set(df, static_cast<double>(positions.lastPixel));
    const auto position =
        hn::Mul(hn::Sub(hn::PromoteTo(df, columns), hn::Set(df, positions.origin)),
                hn::Set(df, positions.scale));
    const auto whole = hn::Floor(position);
    const auto last = hn::Ge(whole, lastPixel);
    const auto fraction = hn::Sub(position, whole);
    const auto scaled = hn::Mul(fraction, hn::Set(df, 65536.0));
    const auto cell = hn::DemoteTo(di32, scaled);
    const auto cellStart = hn::PromoteTo(df, cell);
    const auto inside = hn::GatherIndex(di32, boundaries, cell);
    const auto numerator = hn::PromoteTo(df, hn::ShiftRight<8>(inside));
    const auto denominator = hn::PromoteTo(df, hn::And(inside, hn::Set(di32, 255)));
    const auto above = hn::Sub(hn::Mul(fraction, denominator), numerator);
    const auto past = hn::IfThenElseZero(hn::Ge(above, hn::Zero(df)), hn::Set(df, 1.0));
    const auto onEdge = hn::Eq(hn::And(cell, hn::Set(di32, 511)), hn::Zero(di32));
    const auto edge = hn::PromoteTo(df, hn::VecFromMask(di32, onEdge));  // -1 there
    const auto within = hn::IfThenZeroElse(hn::Eq(scaled, cellStart), edge);
    const auto exact = hn::Sub(hn::Add(cellStart, past), within);
    const auto q = hn::BitCast(DWeight(), hn::DemoteTo(di32, hn::IfThenZeroElse(last, exact)));
    return {position, scaled, above, hn::DemoteTo(di32, hn::IfThenElse(last, lastPixel, whole)),
            hn::Or(q, hn::ShiftLeft<16>(q))};
}

/// Columns [begin, end). Returns where it ended: less than a vector before the end.
std::size_t PlanInDoubles(const ColumnPositions& positions, std::int32_t first, std::size_t begin,
                          std::size_t end, PlannedColumns& planned) {
    const DF df;
    const DIndex di32;
    const std::int32_t* boundaries = boundaryTable();
    std::size_t i = begin;
    for (; i + kDoubles <= end; i += kDoubles) {
        const Planned made =
            PlanVector(positions, boundaries, hn::Iota(di32, first + static_cast<std::int32_t>(i)));
        hn::StoreU(made.from, di32, planned.from + i);
        hn::StoreU(made.weight, DWeight(), planned.weight + i);

        // The definition decides for a column that comes close to a boundary where doubles round.
        if (hn::GetLane(made.position) >= kExactFrom) continue;
        const auto nearInside = hn::Lt(hn::Abs(made.above), hn::Set(df, 0x1p-44));
        const auto nearest = hn::Abs(hn::Sub(made.scaled, hn::Round(made.scaled)));
        const auto nearEdge =
            hn::AndNot(hn::Eq(nearest, hn::Zero(df)), hn::Lt(nearest, hn::Set(df, 0x1p-28)));
        const auto close = hn::Or(nearInside, nearEdge);
        if (hn::AllFalse(df, close)) continue;
        HWY_ALIGN double isClose[kDoubles];
        hn::Store(hn::IfThenElseZero(close, hn::Set(df, 1.0)), df, isClose);
        for (std::size_t k = 0; k < kDoubles; ++k)
            if (isClose[k] != 0) PlanOneByOne(positions, first, i + k, i + k + 1, planned);
    }
    return i;
}

/// Columns here and there, counted from `first`, at positions that need no doubles.
void PlanExactOnes(const ColumnPositions& positions, std::int32_t first,
                   const std::int32_t* columns, std::size_t count, PlannedColumns& planned) {
    const DIndex di32;
    const std::int32_t* boundaries = boundaryTable();
    std::size_t i = 0;
    for (; i + kDoubles <= count; i += kDoubles) {
        const Planned made = PlanVector(
            positions, boundaries, hn::Add(hn::LoadU(di32, columns + i), hn::Set(di32, first)));
        HWY_ALIGN std::int32_t from[kDoubles];
        HWY_ALIGN std::uint32_t weight[kDoubles];
        hn::Store(made.from, di32, from);
        hn::Store(made.weight, DWeight(), weight);
        for (std::size_t k = 0; k < kDoubles; ++k) {
            const std::int32_t at = columns[i + k];
            planned.from[at] = from[k];
            planned.weight[at] = weight[k];
        }
    }
    for (; i < count; ++i) {
        const auto at = static_cast<std::size_t>(columns[i]);
        PlanOneByOne(positions, first, at, at + 1, planned);
    }
}

/// Columns here and there, counted from `first`, in rising order. They lie in the room for those
/// that need doubles, which never come before their turn.
void PlanScattered(const ColumnPositions& positions, std::int32_t first,
                   const std::int32_t* columns, std::size_t count, PlannedColumns& planned) {
    std::size_t i = 0;
    for (; i < count; ++i) {
        const auto at = static_cast<std::size_t>(columns[i]);
        if ((first + columns[i] - positions.origin) * positions.scale >= kExactFrom) break;
        PlanOneByOne(positions, first, at, at + 1, planned);
    }
    PlanExactOnes(positions, first, columns + i, count - i, planned);
}

// Positions in whole numbers of 2^-48: pixel, cell and what lies above the cell's start are the
// parts of 64 bits.
//
//   | pixel 16 | cell 16 | above 32 |
//
// A sum of steps is off the double position by less than kUnsure: the double's own rounding is at
// most 2^-39 on either side (2^9 units), and each of up to kMostSteps steps adds less than one
// unit. Nearer than that to a boundary or to a cell's edge doubles decide. Only positions that are
// fractions of small denominators come so near: two different fractions p / q and n / span are at
// least 1 / (q span) apart.
constexpr double kUnit = 0x1p48;
constexpr std::int32_t kMostPixels = 1 << 15;
constexpr std::size_t kMostSteps = std::size_t{1} << 13;
constexpr std::uint32_t kUnsure = 1U << 14;
constexpr std::uint32_t kPart = 1U << 24;
constexpr double kLargestScale = 256;

using D64 = hn::ScalableTag<std::uint64_t>;
using D32 = hn::Repartition<std::uint32_t, D64>;
using V64 = hn::Vec<D64>;
using V32 = hn::Vec<D32>;
constexpr std::size_t kColumns = hn::MaxLanes(D32());

/// The part of the boundary in each cell, where `above` has its parts.
HWY_INLINE V32 BoundaryParts(const std::uint32_t* HWY_RESTRICT table, V32 cell) {
    const hn::RebindToSigned<D32> di32;
    const auto entry = hn::BitCast(di32, hn::ShiftRight<2>(cell));
    const auto four = hn::GatherIndex(D32(), table, entry);
    const auto toTop = hn::ShiftLeft<3>(hn::AndNot(cell, hn::Set(D32(), 3U)));
    return hn::And(hn::Shl(four, toTop), hn::Set(D32(), 0xFF000000U));
}

/// kColumns columns of a row as whole numbers give them.
struct WholeColumns {
    V32 head;    // pixel and cell
    V32 above;   // the cell's beginning
    V32 part;    // of the boundary in the cell
    V32 weight;  // of the second pixel, once

    /// Too near to a boundary or to the cell's edge to be sure.
    HWY_INLINE auto isClose() const {
        const auto fromEdge = hn::Add(above, hn::Set(D32(), kUnsure));
        return hn::Or(hn::Lt(fromEdge, hn::Set(D32(), 2 * kUnsure)),
                      hn::Lt(hn::Sub(fromEdge, part), hn::Set(D32(), kPart + 2 * kUnsure)));
    }
};

/// Goes through the columns of a row.
class ColumnSums {
  public:
    HWY_INLINE ColumnSums(const ColumnPositions& positions, std::int32_t first) {
        HWY_ALIGN std::uint64_t sums[kColumns];
        for (std::size_t i = 0; i < kColumns; ++i) {
            const double x = first + static_cast<std::int32_t>(i);
            sums[i] = static_cast<std::uint64_t>((x - positions.origin) * positions.scale * kUnit);
        }
        lower_ = hn::Load(D64(), sums);
        upper_ = hn::Load(D64(), sums + kColumns / 2);
        step_ = hn::Set(D64(), static_cast<std::uint64_t>(static_cast<double>(kColumns) *
                                                          positions.scale * kUnit));
    }

    HWY_INLINE WholeColumns next() {
        const D32 d32;
        const auto a = hn::BitCast(d32, lower_);
        const auto b = hn::BitCast(d32, upper_);
        lower_ = hn::Add(lower_, step_);
        upper_ = hn::Add(upper_, step_);
        const auto above = hn::ConcatEven(d32, b, a);
        const auto head = hn::ConcatOdd(d32, b, a);
        const auto cell = hn::And(head, hn::Set(d32, 0xFFFFU));
        const auto part = BoundaryParts(table_, cell);
        const auto before = hn::VecFromMask(d32, hn::Lt(above, part));  // -1 there
        return {head, above, part, hn::Add(hn::Add(cell, hn::Set(d32, 1U)), before)};
    }

  private:
    // Asked for once: a call in the loop would take all vectors through memory.
    const std::uint32_t* table_ = boundaryPartTable();
    V64 lower_, upper_, step_;
};

/// A row that shows the whole mirror from its first column on: columns 0 .. span, counted from it.
/// The position of column x and that of span - x make up the last pixel, so that one look-up gives
/// both; that the scale is rounded moves a position by at most 2^-38 (2^10 units).
struct MirroredRow {
    std::size_t span;
    std::size_t end;  // columns before this one are worked out for their mirror images, too
};

/// Mirroring begins behind the first vector.
constexpr std::size_t kMirroredFrom = kColumns;

/// None for other rows, and for those so short that a mirror image might need doubles.
HWY_INLINE MirroredRow MirroredRowOf(const ColumnPositions& positions, std::int32_t first,
                                     std::size_t count) {
    const double span = std::nearbyint(positions.lastPixel / positions.scale);
    if (first != positions.origin || positions.lastPixel / span != positions.scale ||
        static_cast<double>(count) < span)
        return {0, 0};
    if ((span / 2 - 2.0 * static_cast<double>(kColumns)) * positions.scale < kExactFrom)
        return {0, 0};
    const auto whole = static_cast<std::size_t>(span);
    return {whole, whole / 2 + 1};
}

/// Writes the columns' mirror images, the last one to column `place`. Their weights make up a
/// whole; but where a cell has no boundary its beginning is the weight on both sides, unless the
/// image's cell begins with a boundary.
HWY_INLINE void StoreMirrored(const ColumnPositions& positions, const WholeColumns& columns,
                              std::size_t place, PlannedColumns& planned) {
    const D32 d32;
    const hn::RebindToSigned<D32> di32;
    const auto low = hn::Set(d32, 511U);
    const auto noBoundary = hn::Eq(columns.part, hn::Set(d32, 255 * kPart));
    const auto toBoundary = hn::Eq(hn::And(columns.head, low), low);
    const auto lowered = hn::VecFromMask(d32, hn::AndNot(toBoundary, noBoundary));  // -1 there
    const auto weight = hn::Add(hn::Sub(hn::Set(d32, 65536U), columns.weight), lowered);
    const auto from = hn::Sub(hn::Set(d32, static_cast<std::uint32_t>(positions.lastPixel) - 1),
                              hn::ShiftRight<16>(columns.head));
    hn::StoreU(hn::BitCast(di32, hn::Reverse(d32, from)), di32, planned.from + place);
    hn::StoreU(hn::Reverse(d32, hn::Or(weight, hn::ShiftLeft<16>(weight))), d32,
               planned.weight + place);
}

/// The mirror images of columns that were too close to be sure.
void PlanMirrorImages(const ColumnPositions& positions, std::int32_t first, std::size_t span,
                      const std::int32_t* columns, std::size_t count, PlannedColumns& planned) {
    constexpr std::size_t kMost = 8 * kDoubles;
    std::int32_t images[kMost];
    for (std::size_t i = 0; i < count; i += kMost) {
        const std::size_t some = std::min(kMost, count - i);
        for (std::size_t k = 0; k < some; ++k)
            images[k] = static_cast<std::int32_t>(span) - columns[i + k];
        PlanExactOnes(positions, first, images, some, planned);
    }
}

/// Columns [0, end), whose positions are below positions.lastPixel. Returns where it ended: less
/// than a vector before the end, or where the mirror images end.
std::size_t PlanInWholeNumbers(const ColumnPositions& positions, std::int32_t first,
                               std::size_t end, const MirroredRow& mirrored,
                               PlannedColumns& planned) {
    const D32 d32;
    const hn::RebindToSigned<D32> di32;
    ColumnSums sums(positions, first);
    std::int32_t* left = planned.inDoubles + planned.found;
    std::size_t leftCount = 0;
    std::size_t withoutImage = 0;
    const bool mirrors = mirrored.end > 0;
    const std::size_t stop = mirrors ? mirrored.end + kColumns - 1 : end;
    std::size_t i = 0;
    for (; i + kColumns <= stop; i += kColumns) {
        const WholeColumns made = sums.next();
        hn::StoreU(hn::BitCast(di32, hn::ShiftRight<16>(made.head)), di32, planned.from + i);
        hn::StoreU(hn::Or(made.weight, hn::ShiftLeft<16>(made.weight)), d32, planned.weight + i);
        if (mirrors && i >= kMirroredFrom)
            StoreMirrored(positions, made, mirrored.span - i - (kColumns - 1), planned);

        const auto close = made.isClose();
        if (HWY_UNLIKELY(!hn::AllFalse(d32, close))) {
            // Room for a whole vector: none of the columns so far is among those that need doubles.
            const auto columns = hn::Iota(di32, static_cast<std::int32_t>(i));
            hn::StoreU(hn::Compress(columns, hn::RebindMask(di32, close)), di32, left + leftCount);
            leftCount += hn::CountTrue(d32, close);
        }
        if (i < kMirroredFrom) withoutImage = leftCount;
    }
    if (mirrors)
        PlanMirrorImages(positions, first, mirrored.span, left + withoutImage,
                         leftCount - withoutImage, planned);
    PlanScattered(positions, first, left, leftCount, planned);
    return mirrors ? mirrored.span - (kMirroredFrom - 1) : i;
}

/// The column, counted from `first`, before which all positions certainly lie below the last pixel.
HWY_INLINE std::size_t EndOfPairs(const ColumnPositions& positions, std::int32_t first,
                                  std::size_t count) {
    const double end = positions.origin + (positions.lastPixel - 1) / positions.scale - first;
    return end > 0 ? static_cast<std::size_t>(std::min(end, static_cast<double>(count))) : 0;
}

std::size_t PlanShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* from, std::uint32_t* weight,
                             std::int32_t* inDoubles) {
    PlannedColumns planned{from, weight, inDoubles, 0};
    std::size_t done = 0;
    if (positions.lastPixel < kMostPixels && positions.scale < kLargestScale &&
        count <= kMostSteps * kColumns)
        done = PlanInWholeNumbers(positions, first, EndOfPairs(positions, first, count),
                                  MirroredRowOf(positions, first, count), planned);
    done = PlanInDoubles(positions, first, done, count, planned);
    PlanOneByOne(positions, first, done, count, planned);
    return planned.found;
}

#endif
}  // namespace skarnel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace skarnel::kernels {
HWY_EXPORT(PlanShapeColumns);

namespace vector {
std::size_t planShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* from, std::uint32_t* weight,
                             std::int32_t* inDoubles) {
    return HWY_DYNAMIC_DISPATCH(PlanShapeColumns)(positions, first, count, from, weight, inDoubles);
}
}  // namespace vector

}  // namespace skarnel::kernels
#endif
