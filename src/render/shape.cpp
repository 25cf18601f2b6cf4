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

/// The multiplier that gives the table's every entry, if there is one. For a factor below 1 the
/// 16-bit fraction that rounds down or up always does (see exact_weight.h for the reason), unless
/// a double product was rounded onto a whole number; hence the check.
void findMultiplier(double factor, kernels::ShapeFactor& result) {
    result.hasMultiplier = false;
    result.whole = 0;
    result.fraction = 0;
    if (!(factor >= 0) || factor >= kMaxInt32 / 255) return;
    const double whole = std::floor(factor);
    const auto lower = static_cast<std::uint32_t>((factor - whole) * 65536);
    const auto wholeBits = static_cast<std::uint32_t>(static_cast<std::int64_t>(whole) & 0xFF);
    for (std::uint32_t fraction = lower; fraction <= lower + 1 && fraction < 65536; ++fraction) {
        bool same = true;
        for (std::uint32_t t = 0; t < 256; ++t)
            same = same && result.table[t] == ((t * wholeBits + (t * fraction >> 16)) & 0xFF);
        if (!same) continue;
        result.hasMultiplier = true;
        result.whole = static_cast<std::uint16_t>(wholeBits);
        result.fraction = static_cast<std::uint16_t>(fraction);
        return;
    }
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
    const int inset = toInt32(width * (static_cast<double>(perspectiveW) / 100.0));
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

kernels::ShapeFactor shapeFactor(double factor) {
    kernels::ShapeFactor result;
    for (int t = 0; t < 256; ++t) result.table[static_cast<std::size_t>(t)] = toLowByte(t * factor);
    findMultiplier(factor, result);
    return result;
}

std::optional<RowShaper> RowShaper::create(const ShapeSize& size, const FadeParameters& fade) {
    if (size.outWidth < 1) return std::nullopt;
    try {
        RowShaper shaper(size, fade);
        shaper.from_.resize(static_cast<std::size_t>(size.outWidth));
        shaper.weight_.resize(static_cast<std::size_t>(size.outWidth));
        shaper.inDoubles_.resize(static_cast<std::size_t>(size.outWidth));
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
    positions_ = {a, (size_.width - 1) / (b - a), size_.width - 1};
    const auto begin = static_cast<std::size_t>(begin_);
    const std::size_t found =
        kernels::planShapeColumns(positions_, begin_, static_cast<std::size_t>(end_ - begin_),
                                  from_.data() + begin, weight_.data() + begin, inDoubles_.data());
    inDoublesCount_ = found;
}

void RowShaper::shapeInDoubles(const std::uint8_t* mirrorRow, const kernels::ShapeFactor& factor,
                               std::uint8_t* target) const {
    for (std::size_t i = 0; i < inDoublesCount_; ++i) {
        const std::int32_t x = inDoubles_[i];
        const double position = (x - positions_.origin) * positions_.scale;
        const double fraction = position - std::floor(position);
        const std::uint8_t* first =
            mirrorRow + std::ptrdiff_t{4} * from_[static_cast<std::size_t>(x)];
        std::uint8_t* out = target + std::ptrdiff_t{4} * x;
        for (int k = 0; k < 4; ++k)
            out[k] = factor.table[toLowByte(first[k] + (first[k + 4] - first[k]) * fraction)];
    }
}

void RowShaper::shapeRow(int index, const std::uint8_t* mirrorRow, std::uint8_t* target) {
    const double r = size_.height - index;
    planColumns(toInt32(r * size_.inset / size_.height));
    const kernels::ShapeFactor factor = shapeFactor(rowFactor(index, size_.height, fade_));
    const auto bytes = [](int pixels) { return std::size_t{4} * static_cast<std::size_t>(pixels); };
    const auto begin = static_cast<std::size_t>(begin_);
    std::memset(target, 0, bytes(begin_));
    kernels::shapeRow(target + bytes(begin_), mirrorRow, static_cast<std::size_t>(size_.width),
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
