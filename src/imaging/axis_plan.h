// One axis of drawing a stretch of a picture into a stretch of a bitmap: which source samples make
// a target sample, and how much of it is covered. Both axes together make the whole drawing.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "imaging/cgcontext.h"
#include "imaging/kernels/resample.h"

namespace skarnel {

/// [start, end); may be fractional.
struct Interval {
    double start = 0;
    double end = 0;
    double length() const { return end - start; }
    friend bool operator==(const Interval&, const Interval&) = default;
};

/// The target samples first .. first + size() - 1, each with its taps and coverage.
class AxisPlan {
  public:
    AxisPlan() = default;
    AxisPlan(AxisPlan&&) = default;  // moving keeps the weights where the taps point
    AxisPlan& operator=(AxisPlan&&) = default;

    int first() const { return first_; }
    int size() const { return static_cast<int>(coverage_.size()); }
    int end() const { return first_ + size(); }

    /// The taps of target sample first() + i; `taps.first` counts from the source's start.
    const kernels::Taps& taps(int i) const { return taps_[static_cast<std::size_t>(i)]; }
    const kernels::Taps* allTaps() const { return taps_.data(); }
    /// 0..255; 255 everywhere but at fractional edges.
    std::uint8_t coverage(int i) const { return coverage_[static_cast<std::size_t>(i)]; }
    bool fullyCovered() const { return fullyCovered_; }

    /// When every target sample is one source sample, in order and fully covered: the source
    /// sample of target sample 0. Such an axis is copied, never resampled.
    std::optional<int> copyShift() const { return copyShift_; }

    /// Source samples that any taps touch: [firstUsed, endUsed).
    int firstUsed() const { return firstUsed_; }
    int endUsed() const { return endUsed_; }

  private:
    friend AxisPlan planAxis(Interval, int, Interval, Interval, InterpolationQuality);
    int first_ = 0;
    std::vector<kernels::Taps> taps_;
    std::vector<std::uint8_t> coverage_;
    std::vector<std::int16_t> weights_;
    bool fullyCovered_ = true;
    std::optional<int> copyShift_;
    int firstUsed_ = 0;
    int endUsed_ = 0;
};

/// Plans drawing the stretch `source` of `sourceSize` samples into the stretch `target`, of which
/// only `visible` is touched. Both lie in sample units that grow along memory order.
///
/// Where the source is denser than the target each target sample averages the source over its
/// area; otherwise it is interpolated linearly between the two nearest source samples' centres,
/// never beyond `source`. InterpolationQuality::None takes the nearest sample. Weights are exact
/// to 1 / kTapUnit of their sum. Empty when nothing is visible or a length is not positive.
AxisPlan planAxis(Interval source, int sourceSize, Interval target, Interval visible,
                  InterpolationQuality quality);

}  // namespace skarnel
