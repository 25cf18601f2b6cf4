// The step along x of drawing a picture: one row of it to one row of the target.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/axis_plan.h"

namespace skarnel {

/// Combines neighbouring pixels as a plan says. The plan's taps are packed once for all rows.
class ColumnCombiner {
  public:
    ColumnCombiner() = default;  // combines nothing

    /// For rows of `sourceWidth` pixels; borrows the plan. Throws std::bad_alloc.
    ColumnCombiner(const AxisPlan& columns, int sourceWidth);

    /// Writes columns.size() pixels from `source`, which has sourceWidth. They do not overlap.
    void combine(std::uint8_t* target, const std::uint8_t* source) const;

    /// The same of a source that is transparent beside the columns [first, end); its pixels there
    /// are 0.
    void combineContent(std::uint8_t* target, const std::uint8_t* source, int first, int end) const;

  private:
    const AxisPlan* columns_ = nullptr;
    int sourceWidth_ = 0;
    std::size_t groups_ = 0;  // 0: not packed
    std::size_t usedPlaces_ = 0;
    std::vector<std::int32_t> first_;
    std::vector<std::int16_t> weights_;
};

}  // namespace skarnel
