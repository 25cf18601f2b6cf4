#include "render/shape.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "imaging/kernels/exact_weight.h"
#include "render/reflection.h"
#include "util/geometry/integers.h"

namespace skarnel {
namespace {

constexpr std::int64_t kMaxInt32 = std::numeric_limits<std::int32_t>::max();

std::optional<int> asInt32(std::int64_t value) {
    if (value < std::numeric_limits<std::int32_t>::min() || value > kMaxInt32) return std::nullopt;
    return static_cast<int>(value);
}

}  // namespace

std::optional<ShapeSize> ShapeSize::of(int width, int height, float perspectiveW,
                                       float perspectiveH) {
    const double scale = static_cast<double>(perspectiveH) / 100.0;
    const int scaledHeight = toInt32(std::abs(scale * height));
    if (scaledHeight < 1 || std::int64_t{4} * width * scaledHeight > kMaxInt32) return std::nullopt;
    return ofScaled(width, scaledHeight, perspectiveW);
}

std::optional<ShapeSize> ShapeSize::ofScaled(int width, int height, float perspectiveW) {
    const double widening = width * (static_cast<double>(perspectiveW) / 100.0);
    const int inset = toInt32(widening);
    // A widening that is no number counts as 0, but one that is too large must not.
    if (inset == 0 && std::abs(widening) >= 1) return std::nullopt;
    const auto outWidth = asInt32(std::int64_t{width} + 2 * std::int64_t{inset});
    if (!outWidth) return std::nullopt;
    return ShapeSize{width, height, inset, *outWidth};
}

bool ShapeSize::fits() const {
    return outWidth >= 1 && std::int64_t{4} * outWidth * height <= kMaxInt32;
}

double rowFactor(int index, int height, const FadeParameters& fade) {
    const auto last = static_cast<float>(height - 1);
    const double lastRow = height - 1;
    const double startRow = static_cast<double>(fade.gradientOffset * last) / 100;
    const float exponent = fade.gradient / 10;
    const double position = (height - index - 1) + startRow;
    const double clamped = position < lastRow ? position : lastRow;
    const float ramp = clamped > 0 ? static_cast<float>(clamped) : 0.0F;
    const float base = ramp / last;
    return static_cast<double>(powf(base, exponent) * fade.peakOpacity) / 255.0;
}

std::optional<RowShaper> RowShaper::create(const ShapeSize& size, const FadeParameters& fade) {
    if (size.outWidth < 1) return std::nullopt;
    try {
        RowShaper shaper(size, fade);
        shaper.from_.resize(static_cast<std::size_t>(size.outWidth));
        shaper.weight_.resize(static_cast<std::size_t>(size.outWidth));
        shaper.inDoubles_.resize(static_cast<std::size_t>(size.outWidth));
        shaper.fractions_.resize(static_cast<std::size_t>(size.outWidth));
        return shaper;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

void RowShaper::keepPlans() {
    if (!plans_) plans_ = ColumnPlans::take(size_.width);
}

void RowShaper::keepFactors() {
    try {
        factors_.resize(static_cast<std::size_t>(size_.height));
    } catch (const std::bad_alloc&) {
        factors_.clear();
    }
}

const kernels::ShapeFactor& RowShaper::factorOf(int index) {
    const auto made = [&] { return kernels::shapeFactor(rowFactor(index, size_.height, fade_)); };
    if (factors_.empty()) return factor_ = made();
    auto& kept = factors_[static_cast<std::size_t>(index)];
    if (!kept) kept = made();
    return *kept;
}

/// How many columns before a row's first show nothing.
int RowShaper::rowInset(int index) const {
    const double r = size_.height - index;
    return toInt32(r * size_.inset / size_.height);
}

/// Of these columns those with content. The columns a .. b of a row, both included, show the
/// mirror's columns 0 .. width - 1; a is the row's inset and b as far from the other end.
RowShaper::Columns RowShaper::contentColumns(int rowInset, Columns columns) const {
    const int begin = std::clamp(rowInset, columns.begin, columns.end);
    return {begin, std::clamp(toInt32(static_cast<double>(size_.outWidth) - rowInset) + 1, begin,
                              columns.end)};
}

RowShaper::Columns RowShaper::contentColumns(int index) const {
    return contentColumns(rowInset(index), {0, size_.outWidth});
}

void RowShaper::takeColumns(int rowInset, Columns columns) {
    if (plannedInset_ == rowInset && planned_.begin == columns.begin && planned_.end == columns.end)
        return;
    plannedInset_ = rowInset;
    planned_ = columns;
    const Columns content = contentColumns(rowInset, columns);
    begin_ = content.begin;
    end_ = content.end;
    plan_ = plans_ ? plans_->plan(size_.outWidth - 2 * rowInset) : nullptr;
    if (plan_ == nullptr) planColumns(rowInset);
}

void RowShaper::planColumns(int rowInset) {
    const double a = rowInset;
    const double b = static_cast<double>(size_.outWidth) - rowInset;
    const kernels::ColumnPositions positions{a, (size_.width - 1) / (b - a), size_.width - 1};
    const auto begin = static_cast<std::size_t>(begin_);
    // Whole vectors are planned where the row has the columns: single ones cost as much.
    constexpr std::int64_t kWhole = 16;
    const std::int64_t rowEnd = std::min(size_.outWidth, toInt32(b) + 1);
    const std::int64_t whole = (end_ - begin_ + kWhole - 1) / kWhole * kWhole;
    const std::int64_t count =
        std::max<std::int64_t>(end_ - begin_, std::min(whole, rowEnd - begin_));
    inDoublesCount_ =
        kernels::planShapeColumns(positions, begin_, static_cast<std::size_t>(count),
                                  from_.data() + begin, weight_.data() + begin, inDoubles_.data());
    while (inDoublesCount_ > 0 && inDoubles_[inDoublesCount_ - 1] >= end_) --inDoublesCount_;
    for (std::size_t i = 0; i < inDoublesCount_; ++i) {
        const double position = (inDoubles_[i] - positions.origin) * positions.scale;
        fractions_[i] = position - from_[static_cast<std::size_t>(inDoubles_[i])];
    }
}

namespace {

/// One column as the formula has it.
void shapeInDoubles(const std::uint8_t* first, double fraction, const kernels::ShapeFactor& factor,
                    std::uint8_t* out) {
    for (int k = 0; k < 4; ++k)
        out[k] = factor.table[static_cast<std::size_t>(
            static_cast<int>(first[k] + (first[k + 4] - first[k]) * fraction))];
}

std::size_t bytesOf(int pixels) {
    return std::size_t{4} * static_cast<std::size_t>(pixels);
}

}  // namespace

/// The columns [begin_, end_) as they were planned for this row, the first one to `content`.
void RowShaper::shapeColumns(const std::uint8_t* mirrorRow, std::size_t readablePixels,
                             const kernels::ShapeFactor& factor, std::uint8_t* content) const {
    const auto begin = static_cast<std::size_t>(begin_);
    kernels::shapeRow(content, mirrorRow, readablePixels,
                      {from_.data() + begin, weight_.data() + begin}, factor,
                      static_cast<std::size_t>(end_ - begin_));
    for (std::size_t i = 0; i < inDoublesCount_; ++i) {
        const std::int32_t x = inDoubles_[i];
        const std::int32_t from = from_[static_cast<std::size_t>(x)];
        shapeInDoubles(mirrorRow + std::ptrdiff_t{4} * from, fractions_[i], factor,
                       content + std::ptrdiff_t{4} * (x - begin_));
    }
}

/// The same from a kept plan, whose column 0 is the row's column `rowInset`.
void RowShaper::shapeKeptColumns(int rowInset, const std::uint8_t* mirrorRow,
                                 std::size_t readablePixels, const kernels::ShapeFactor& factor,
                                 std::uint8_t* content) const {
    const int first = begin_ - rowInset;
    kernels::shapePackedRow(content, mirrorRow, readablePixels, plan_->packed.data() + first,
                            factor, static_cast<std::size_t>(end_ - begin_));
    for (std::size_t i = 0; i < plan_->inDoubles.size(); ++i) {
        const std::int32_t column = plan_->inDoubles[i];
        const std::int32_t x = column + rowInset;
        if (x < begin_ || x >= end_) continue;
        const std::uint32_t from = plan_->packed[static_cast<std::size_t>(column)] & 0xFFFFU;
        shapeInDoubles(mirrorRow + std::size_t{4} * from, plan_->fractions[i], factor,
                       content + std::ptrdiff_t{4} * (x - begin_));
    }
}

RowShaper::Columns RowShaper::plan(int index, Columns columns) {
    const int inset = rowInset(index);
    takeColumns(inset, columns);
    if (plans_) plans_->expect(size_.outWidth - 2 * rowInset(index + 1));
    if (begin_ == end_) return {0, 0};
    const auto from = [&](int column) {
        return plan_ == nullptr
                   ? from_[static_cast<std::size_t>(column)]
                   : static_cast<int>(plan_->packed[static_cast<std::size_t>(column - inset)] &
                                      0xFFFFU);
    };
    return {from(begin_), std::min(size_.width, from(end_ - 1) + 2)};
}

void RowShaper::shapePlanned(int index, const std::uint8_t* mirrorRow, std::size_t readablePixels,
                             std::uint8_t* target) {
    const kernels::ShapeFactor& factor = factorOf(index);
    std::uint8_t* content = target + bytesOf(begin_ - planned_.begin);
    std::memset(target, 0, bytesOf(begin_ - planned_.begin));
    if (plan_ != nullptr && begin_ < end_)
        shapeKeptColumns(*plannedInset_, mirrorRow, readablePixels, factor, content);
    else
        shapeColumns(mirrorRow, readablePixels, factor, content);
    std::memset(target + bytesOf(end_ - planned_.begin), 0, bytesOf(planned_.end - end_));
}

double map_index(double x, double a, double b, double c, double d) {
    return x >= a && x <= b ? (x - a) * ((d - c) / (b - a)) + c : -1.0;
}

double linear_interpolate(double x, double low, double high) {
    double whole = 0;
    return low + (high - low) * std::modf(x, &whole);
}

}  // namespace skarnel
