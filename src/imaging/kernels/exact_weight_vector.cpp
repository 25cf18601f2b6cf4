// Vector twin of exact_weight.cpp.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/exact_weight_vector.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// The targets' code follows.
#include <hwy/highway.h>

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

/// Doubles in full vectors, what becomes whole numbers in half ones.
std::size_t PlanShapeColumns(const ColumnPositions& positions, std::int32_t first,
                             std::size_t count, std::int32_t* HWY_RESTRICT from,
                             std::uint32_t* HWY_RESTRICT weight,
                             std::int32_t* HWY_RESTRICT inDoubles) {
    const hn::ScalableTag<double> df;
    const hn::Rebind<std::int32_t, decltype(df)> di32;
    const std::size_t lanes = hn::Lanes(df);
    const std::int32_t* HWY_RESTRICT table = boundaryTable();
    const auto origin = hn::Set(df, positions.origin);
    const auto scale = hn::Set(df, positions.scale);
    const auto one = hn::Set(df, 1.0);
    const auto dyadic = hn::Set(di32, 511);
    std::size_t found = 0;
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto x = hn::PromoteTo(df, hn::Iota(di32, first + static_cast<std::int32_t>(i)));
        const auto position = hn::Mul(hn::Sub(x, origin), scale);
        const auto before = hn::Floor(position);
        const auto last = hn::Ge(before, hn::Set(df, static_cast<double>(positions.lastPixel)));
        const auto fraction = hn::Sub(position, before);
        const auto scaled = hn::Mul(fraction, hn::Set(df, 65536.0));
        const auto cell = hn::DemoteTo(di32, scaled);
        const auto cellStart = hn::PromoteTo(df, cell);
        const auto inside = hn::GatherIndex(di32, table, cell);
        const auto numerator = hn::PromoteTo(df, hn::ShiftRight<8>(inside));
        const auto denominator = hn::PromoteTo(df, hn::And(inside, hn::Set(di32, 255)));
        const auto above = hn::Sub(hn::Mul(fraction, denominator), numerator);
        const auto past = hn::IfThenElseZero(hn::Ge(above, hn::Zero(df)), one);
        const auto onEdge = hn::Eq(hn::And(cell, dyadic), hn::Zero(di32));
        const auto edge = hn::PromoteTo(df, hn::VecFromMask(di32, onEdge));  // -1 there
        const auto within = hn::IfThenZeroElse(hn::Eq(scaled, cellStart), edge);
        const auto exact = hn::Sub(hn::Add(cellStart, past), within);
        const auto q = hn::DemoteTo(di32, hn::IfThenZeroElse(last, exact));
        hn::StoreU(
            hn::DemoteTo(di32,
                         hn::IfThenElse(last, hn::Set(df, static_cast<double>(positions.lastPixel)),
                                        before)),
            di32, from + i);
        const hn::RebindToUnsigned<decltype(di32)> d32;
        const auto bits = hn::BitCast(d32, q);
        hn::StoreU(hn::Or(bits, hn::ShiftLeft<16>(bits)), d32, weight + i);

        // The definition decides for a group that comes close to a boundary where doubles round.
        if (hn::GetLane(position) >= 128) continue;
        const auto nearInside = hn::Lt(hn::Abs(above), hn::Set(df, 0x1p-44));
        const auto nearest = hn::Abs(hn::Sub(scaled, hn::Round(scaled)));
        const auto nearEdge =
            hn::AndNot(hn::Eq(nearest, hn::Zero(df)), hn::Lt(nearest, hn::Set(df, 0x1p-28)));
        if (!hn::AllFalse(df, hn::Or(nearInside, nearEdge)))
            found += scalar::planShapeColumns(positions, first + static_cast<std::int32_t>(i),
                                              lanes, from + i, weight + i, inDoubles + found);
    }
    return found + scalar::planShapeColumns(positions, first + static_cast<std::int32_t>(i),
                                            count - i, from + i, weight + i, inDoubles + found);
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
