// The rows of a picture as they land in a bitmap: resampled along both axes, one row at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "imaging/axis_plan.h"
#include "imaging/cgimage.h"

namespace skarnel {

/// Makes the rows of a drawing from a picture of four samples a pixel. Borrows all three.
/// Vertical first, rounded to bytes, then horizontal: each at most half a level off, so that a
/// resampled byte lies within one level and the weights' error of the exact mean.
class ImageRows {
  public:
    /// None without memory for the scratch rows.
    static std::optional<ImageRows> create(PixelView source, const AxisPlan& columns,
                                           const AxisPlan& rows);

    /// The pixels of target row rows.first() + i, columns.size() of them. Points into the source
    /// where nothing is resampled, otherwise into scratch that the next call overwrites.
    const std::uint8_t* row(int i);

    /// How many pixels from row(i) on may be read.
    std::size_t readableFrom(int i) const;

    /// Pixels that may be read behind every row of scratch.
    static constexpr std::size_t kPadding = 64;

  private:
    ImageRows(PixelView source, const AxisPlan& columns, const AxisPlan& rows)
        : source_(source), columns_(&columns), rows_(&rows) {}
    const std::uint8_t* combinedRow(const kernels::Taps& taps);

    PixelView source_;
    const AxisPlan* columns_;
    const AxisPlan* rows_;
    std::vector<const std::uint8_t*> tapRows_;
    std::vector<std::uint8_t> tall_;  // one source row after the vertical step
    std::vector<std::uint8_t> wide_;  // one target row after the horizontal step
};

}  // namespace skarnel
