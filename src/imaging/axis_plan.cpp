#include "imaging/axis_plan.h"

#include <algorithm>
#include <cmath>

#include "util/geometry/integers.h"

namespace skarnel {
namespace {

using kernels::kTapUnit;

/// A position this close to a whole sample cannot change a weight.
constexpr double kNegligible = 1.0 / (2 * kTapUnit);

/// Taps of a sample that room is made for ahead.
constexpr double kMostReserved = 8;

/// Weights before the vector that holds them is complete, hence by offset.
struct TapRange {
    int first;
    int count;
    std::size_t offset;
};

struct TapWriter {
    Interval bounds;               // whole source samples that may be read
    std::vector<TapRange> ranges;  // of all samples
    std::size_t written = 0;       // of them
    std::vector<std::int16_t> weights;

    void single(int sample) {
        ranges[written++] = {sample, 1, weights.size()};
        weights.push_back(kTapUnit);
    }

    /// Linear between the centres of the two samples around the position.
    void linear(double position) {
        const double centre =
            std::clamp(position - 0.5, bounds.start, std::max(bounds.start, bounds.end - 1));
        const double low = std::floor(centre);
        if (centre == low) return single(static_cast<int>(low));
        const auto weight = static_cast<int>(std::lround((centre - low) * kTapUnit));
        const auto first = static_cast<int>(low);
        if (weight == 0) return single(first);
        if (weight == kTapUnit) return single(first + 1);
        ranges[written++] = {first, 2, weights.size()};
        weights.push_back(static_cast<std::int16_t>(kTapUnit - weight));
        weights.push_back(static_cast<std::int16_t>(weight));
    }

    /// The mean over [start, end). Rounding the running total, not each weight, keeps the sum.
    void area(double start, double end) {
        start = std::clamp(start, bounds.start, bounds.end);
        end = std::clamp(end, bounds.start, bounds.end);
        const double length = end - start;
        const auto first = static_cast<int>(std::floor(start));
        const int last = static_cast<int>(std::ceil(end)) - 1;
        if (!(length > 0) || last <= first)
            return single(std::clamp(first, static_cast<int>(bounds.start),
                                     static_cast<int>(bounds.end) - 1));
        const std::size_t offset = weights.size();
        int begin = first;
        int total = 0;
        for (int sample = first; sample <= last; ++sample) {
            const double covered = std::min(sample + 1.0, end) - start;
            const int next = sample == last
                                 ? kTapUnit
                                 : static_cast<int>(std::lround(covered / length * kTapUnit));
            if (next == total && weights.size() == offset) {
                begin = sample + 1;  // the leading sample counts for nothing
                continue;
            }
            weights.push_back(static_cast<std::int16_t>(next - total));
            total = next;
        }
        while (weights.back() == 0) weights.pop_back();
        ranges[written++] = {begin, static_cast<int>(weights.size() - offset), offset};
    }
};

std::uint8_t coverageOf(Interval target, int sample) {
    const double covered =
        std::min(target.end, sample + 1.0) - std::max(target.start, 1.0 * sample);
    return static_cast<std::uint8_t>(std::lround(std::clamp(covered, 0.0, 1.0) * 255));
}

double snapped(double position) {
    const double whole = std::round(position);
    return std::abs(position - whole) < kNegligible ? whole : position;
}

bool usable(Interval interval) {
    return std::isfinite(interval.start) && std::isfinite(interval.end) && interval.length() > 0;
}

}  // namespace

AxisPlan planAxis(Interval source, int sourceSize, Interval target, Interval visible,
                  InterpolationQuality quality) {
    AxisPlan plan;
    if (!usable(source) || !usable(target) || !usable(visible)) return plan;
    target = {snapped(target.start), snapped(target.end)};
    if (!(target.length() > 0)) return plan;
    const int first = toInt32(std::floor(std::max(target.start, visible.start)));
    const int end = toInt32(std::ceil(std::min(target.end, visible.end)));
    if (end <= first) return plan;

    TapWriter writer;
    writer.bounds = {std::floor(std::max(source.start, 0.0)),
                     std::ceil(std::min(source.end, 1.0 * sourceSize))};
    if (!(writer.bounds.length() > 0)) return plan;
    const double scale = source.length() / target.length();
    const auto map = [&](double position) {
        return source.start + (position - target.start) * scale;
    };
    const Interval drawn{std::max(target.start, visible.start), std::min(target.end, visible.end)};
    plan.first_ = first;
    const auto count = static_cast<std::size_t>(end - first);
    writer.ranges.resize(count);
    const double tapsEach = std::clamp(std::ceil(scale) + 1, 1.0, kMostReserved);
    writer.weights.reserve(count * static_cast<std::size_t>(tapsEach));
    plan.coverage_.reserve(count);
    for (int sample = first; sample < end; ++sample) {
        if (quality == InterpolationQuality::None)
            writer.single(static_cast<int>(std::clamp(std::floor(map(sample + 0.5)),
                                                      writer.bounds.start, writer.bounds.end - 1)));
        else if (scale > 1 + kNegligible)
            writer.area(map(std::max(sample + 0.0, target.start)),
                        map(std::min(sample + 1.0, target.end)));
        else
            writer.linear(map(sample + 0.5));
        plan.coverage_.push_back(coverageOf(drawn, sample));
    }

    plan.weights_ = std::move(writer.weights);
    plan.taps_.reserve(count);
    plan.firstUsed_ = sourceSize;
    bool inOrder = true;
    for (const TapRange& range : writer.ranges) {
        plan.taps_.push_back({range.first, range.count, plan.weights_.data() + range.offset});
        plan.firstUsed_ = std::min(plan.firstUsed_, range.first);
        plan.endUsed_ = std::max(plan.endUsed_, range.first + range.count);
        inOrder =
            inOrder && range.count == 1 &&
            range.first - writer.ranges.front().first == static_cast<int>(plan.taps_.size()) - 1;
    }
    plan.fullyCovered_ = std::all_of(plan.coverage_.begin(), plan.coverage_.end(),
                                     [](std::uint8_t covered) { return covered == 255; });
    if (inOrder && plan.fullyCovered_) plan.copyShift_ = plan.taps_.front().first;
    return plan;
}

}  // namespace skarnel
