#include "imaging/column_combiner.h"

#include <algorithm>
#include <cstring>

namespace skarnel {
namespace {

constexpr int kGroup = 4;       // taps that lie side by side
constexpr int kMostGroups = 4;  // beyond, packing would mostly add zeros

}  // namespace

ColumnCombiner::ColumnCombiner(const AxisPlan& columns, int sourceWidth)
    : columns_(&columns), sourceWidth_(sourceWidth) {
    int most = 1;
    for (int i = 0; i < columns.size(); ++i) most = std::max(most, columns.taps(i).count);
    const int groups = (most + kGroup - 1) / kGroup;
    const int width = groups * kGroup;
    if (groups > kMostGroups || width > sourceWidth) return;
    groups_ = static_cast<std::size_t>(groups);
    usedPlaces_ = static_cast<std::size_t>(most);
    const auto samples = static_cast<std::size_t>(columns.size());
    first_.reserve(samples);
    weights_.assign(static_cast<std::size_t>(width) * samples, 0);
    for (std::size_t x = 0; x < samples; ++x) {
        const kernels::Taps& taps = columns.taps(static_cast<int>(x));
        // At the right edge the group starts earlier, so that all of it lies in the row.
        const int first = std::min(taps.first, sourceWidth - width);
        first_.push_back(first);
        for (int j = 0; j < taps.count; ++j) {
            const auto place = static_cast<std::size_t>(taps.first - first + j);
            weights_[kGroup * (place / kGroup * samples + x) + place % kGroup] = taps.weights[j];
        }
    }
}

void ColumnCombiner::combine(std::uint8_t* target, const std::uint8_t* source) const {
    if (columns_ == nullptr) return;
    const auto samples = static_cast<std::size_t>(columns_->size());
    if (groups_ == 0)
        kernels::combineColumns(target, source, static_cast<std::size_t>(sourceWidth_),
                                columns_->allTaps(), samples);
    else
        kernels::combinePackedColumns(target, source,
                                      {first_.data(), weights_.data(), groups_, samples,
                                       static_cast<std::size_t>(sourceWidth_), usedPlaces_});
}

void ColumnCombiner::combineContent(std::uint8_t* target, const std::uint8_t* source, int first,
                                    int end) const {
    if (groups_ != 1) return combine(target, source);
    // Groups do not step back from one sample to the next.
    const auto begin = std::partition_point(
        first_.begin(), first_.end(), [&](std::int32_t group) { return group + kGroup <= first; });
    const auto stop =
        std::partition_point(begin, first_.end(), [&](std::int32_t group) { return group < end; });
    const auto from = static_cast<std::size_t>(begin - first_.begin());
    const auto samples = static_cast<std::size_t>(stop - begin);
    std::memset(target, 0, 4 * from);
    kernels::combinePackedColumns(target + 4 * from, source,
                                  {first_.data() + from, weights_.data() + kGroup * from, 1,
                                   samples, static_cast<std::size_t>(sourceWidth_), usedPlaces_});
    std::memset(target + 4 * (from + samples), 0, 4 * (first_.size() - from - samples));
}

}  // namespace skarnel
