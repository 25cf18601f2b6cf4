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

/// The columns a .. b of a row, both included, show the mirror's columns 0 .. width - 1.
void RowShaper::planColumns(int rowInset) {
    if (plannedInset_ == rowInset) return;
    plannedInset_ = rowInset;
    const double a = rowInset;
    const double b = static_cast<double>(size_.outWidth) - rowInset;
    begin_ = std::max(0, rowInset);
    end_ = std::min(size_.outWidth, toInt32(b) + 1);
    const kernels::ColumnPositions positions{a, (size_.width - 1) / (b - a), size_.width - 1};
    const auto begin = static_cast<std::size_t>(begin_);
    inDoublesCount_ =
        kernels::planShapeColumns(positions, begin_, static_cast<std::size_t>(end_ - begin_),
                                  from_.data() + begin, weight_.data() + begin, inDoubles_.data());
    for (std::size_t i = 0; i < inDoublesCount_; ++i) {
        const double position = (inDoubles_[i] - positions.origin) * positions.scale;
        fractions_[i] = position - from_[static_cast<std::size_t>(inDoubles_[i])];
    }
}

void RowShaper::shapeInDoubles(const std::uint8_t* mirrorRow, const kernels::ShapeFactor& factor,
                               std::uint8_t* target) const {
    for (std::size_t i = 0; i < inDoublesCount_; ++i) {
        const std::int32_t x = inDoubles_[i];
        const double fraction = fractions_[i];
        const std::uint8_t* first =
            mirrorRow + std::ptrdiff_t{4} * from_[static_cast<std::size_t>(x)];
        std::uint8_t* out = target + std::ptrdiff_t{4} * x;
        for (int k = 0; k < 4; ++k)
            out[k] = factor.table[static_cast<std::size_t>(
                static_cast<int>(first[k] + (first[k + 4] - first[k]) * fraction))];
    }
}

void RowShaper::shapeRow(int index, const std::uint8_t* mirrorRow, std::size_t readablePixels,
                         std::uint8_t* target) {
    const double r = size_.height - index;
    planColumns(toInt32(r * size_.inset / size_.height));
    const kernels::ShapeFactor factor = kernels::shapeFactor(rowFactor(index, size_.height, fade_));
    const auto bytes = [](int pixels) { return std::size_t{4} * static_cast<std::size_t>(pixels); };
    const auto begin = static_cast<std::size_t>(begin_);
    std::memset(target, 0, bytes(begin_));
    kernels::shapeRow(target + bytes(begin_), mirrorRow, readablePixels,
                      {from_.data() + begin, weight_.data() + begin}, factor,
                      static_cast<std::size_t>(end_ - begin_));
    shapeInDoubles(mirrorRow, factor, target);
    std::memset(target + bytes(end_), 0, bytes(size_.outWidth - end_));
}

double map_index(double x, double a, double b, double c, double d) {
    return x >= a && x <= b ? (x - a) * ((d - c) / (b - a)) + c : -1.0;
}

double linear_interpolate(double x, double low, double high) {
    double whole = 0;
    return low + (high - low) * std::modf(x, &whole);
}

}  // namespace skarnel
