#include "imaging/column_turn.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "imaging/kernels/pixel_ops.h"
#include "imaging/kernels/turn.h"
#include "imaging/readable.h"
#include "imaging/streaming.h"

namespace skarnel {
namespace {

using kernels::kLerpUnit;

bool hasUprightSides(const Quad& quad) {
    return quad.topLeft.x == quad.bottomLeft.x && quad.topRight.x == quad.bottomRight.x &&
           quad.topLeft.x < quad.topRight.x && quad.topLeft.y > quad.bottomLeft.y &&
           quad.topRight.y > quad.bottomRight.y && quad.isConvex();
}

double mix(double a, double b, double t) {
    return (1 - t) * a + t * b;
}

}  // namespace

std::optional<ColumnTurn> ColumnTurn::plan(int width, int height, const Quad& quad,
                                           CGPoint lowerLeft, int targetWidth, int targetHeight) {
    if (!hasUprightSides(quad) || width < 1 || height < 1 || targetWidth < 1 || targetHeight < 1)
        return std::nullopt;
    const double lengthLeft = quad.topLeft.y - quad.bottomLeft.y;
    const double lengthRight = quad.topRight.y - quad.bottomRight.y;
    const double upper = lowerLeft.y + targetHeight;  // the target's top edge
    ColumnTurn turn;
    turn.width_ = width;
    turn.height_ = height;
    // Positions are kept from the middle row on, where single precision loses least.
    turn.middleRow_ = static_cast<double>(targetHeight / 2);
    try {
        for (int x = 0; x < targetWidth; ++x) {
            const double t = std::clamp(
                (lowerLeft.x + x + 0.5 - quad.topLeft.x) / (quad.topRight.x - quad.topLeft.x), 0.0,
                1.0);
            const double share = t * lengthRight / (t * lengthRight + (1 - t) * lengthLeft);
            const double top = upper - mix(quad.topLeft.y, quad.topRight.y, t);
            turn.planColumn(share * width, top, mix(lengthLeft, lengthRight, t));
        }
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
    return turn;
}

/// Adds the column that shows the source at `position`, from row `top` on over `length` rows.
void ColumnTurn::planColumn(double position, double top, double length) {
    const double centre = std::clamp(position - 0.5, 0.0, width_ - 1.0);
    const auto from = static_cast<std::int32_t>(centre);
    const auto weight = static_cast<std::uint32_t>((centre - from) * kLerpUnit);
    const double step = height_ / length;
    from_.push_back(from);
    weight_.push_back(weight | weight << 16);
    step_.push_back(static_cast<float>(step));
    centre_.push_back(static_cast<float>((middleRow_ + 0.5 - top) * step - 0.5));
    top_.push_back(top);
    bottom_.push_back(top + length);
}

void ColumnTurn::squeezeRow(const std::uint8_t* source, std::size_t readablePixels,
                            std::uint8_t* target) const {
    kernels::squeezeRow(target, source, readablePixels, from_.data(), weight_.data(), from_.size());
}

namespace {

struct Columns {
    int begin;
    int end;
};

Columns common(Columns a, Columns b) {
    const int begin = std::max(a.begin, b.begin);
    return {begin, std::max(begin, std::min(a.end, b.end))};
}

/// The columns whose value passes the test, for values that rise or fall all along and a test that
/// changes its mind once: a run at either end.
template <typename Test>
Columns passing(const std::vector<double>& values, Test test) {
    const auto size = static_cast<int>(values.size());
    const bool leading = test(values.front());
    const auto change = std::partition_point(values.begin(), values.end(),
                                             [&](double value) { return test(value) == leading; });
    const auto at = static_cast<int>(change - values.begin());
    return leading ? Columns{0, at} : Columns{at, size};
}

}  // namespace

/// The pixels of `row` that the quad's upper or lower edge crosses, faded by what it covers.
void ColumnTurn::paintEdge(const kernels::ColumnWalk& walk, int row, int begin, int end,
                           std::uint8_t* target) const {
    if (begin >= end) return;
    kernels::walkColumns(target, walk, static_cast<std::size_t>(begin),
                         static_cast<std::size_t>(end));
    for (int x = begin; x < end; ++x) {
        const auto i = static_cast<std::size_t>(x);
        const double covered = std::min(bottom_[i], row + 1.0) - std::max(top_[i], 1.0 * row);
        const auto level =
            static_cast<std::uint8_t>(std::lround(std::clamp(covered, 0.0, 1.0) * 255));
        if (level != 255) kernels::scalar::scaleRow(target + 4 * i, target + 4 * i, level, 1);
    }
}

kernels::ColumnWalk ColumnTurn::walkThrough(PixelView squeezed) const {
    return {squeezed.bytes,
            squeezed.strideBytes / 4,
            centre_.data(),
            step_.data(),
            0,
            static_cast<float>(height_ - 1),
            false};
}

void ColumnTurn::walkRows(PixelView squeezed, MutablePixelView target) const {
    kernels::ColumnWalk walk = walkThrough(squeezed);
    walk.stream = usesStreaming(target);
    for (int row = 0; row < target.height; ++row) walkRow(walk, row, target.row(row));
}

void ColumnTurn::walkRow(PixelView squeezed, int row, std::uint8_t* target) const {
    kernels::ColumnWalk walk = walkThrough(squeezed);
    walkRow(walk, row, target);
}

void ColumnTurn::walkRow(kernels::ColumnWalk& walk, int row, std::uint8_t* target) const {
    const auto pixels = [](int count) { return std::size_t{4} * static_cast<std::size_t>(count); };
    const double fullFrom = std::max(top_.front(), top_.back());
    const double fullTo = std::min(bottom_.front(), bottom_.back());
    walk.rowOffset = static_cast<float>(row - middleRow_);
    if (row >= fullFrom && row + 1 <= fullTo)
        return kernels::walkColumns(target, walk, 0, static_cast<std::size_t>(targetWidth()));
    const double upper = row;
    const double lower = row + 1.0;
    const Columns touched = common(passing(top_, [&](double top) { return top < lower; }),
                                   passing(bottom_, [&](double bottom) { return bottom > upper; }));
    const Columns full =
        common(common(passing(top_, [&](double top) { return top <= upper; }),
                      passing(bottom_, [&](double bottom) { return bottom >= lower; })),
               touched);
    std::memset(target, 0, pixels(touched.begin));
    std::memset(target + pixels(touched.end), 0, pixels(targetWidth() - touched.end));
    if (full.begin >= full.end) return paintEdge(walk, row, touched.begin, touched.end, target);
    paintEdge(walk, row, touched.begin, full.begin, target);
    kernels::walkColumns(target, walk, static_cast<std::size_t>(full.begin),
                         static_cast<std::size_t>(full.end));
    paintEdge(walk, row, full.end, touched.end, target);
}

std::optional<PixelBuffer> squeezedBuffer(int width, int height) {
    if (height == std::numeric_limits<int>::max()) return std::nullopt;
    return PixelBuffer::uninitialized(width, height + 1);
}

std::optional<CGImage> drawColumnTurn(const CGImage& picture, const Quad& quad, CGPoint lowerLeft,
                                      int targetWidth, int targetHeight) {
    const auto source = picture.withAlpha();
    const auto turn = ColumnTurn::plan(picture.width(), picture.height(), quad, lowerLeft,
                                       targetWidth, targetHeight);
    if (!source || !turn) return std::nullopt;
    auto squeezed = squeezedBuffer(targetWidth, picture.height());
    auto target = PixelBuffer::uninitialized(targetWidth, targetHeight);
    if (!squeezed || !target) return std::nullopt;
    const MutablePixelView rows = squeezed->view();
    for (int y = 0; y < picture.height(); ++y)
        turn->squeezeRow(source->pixels().row(y), readablePixels(source->pixels(), y), rows.row(y));
    std::memset(rows.row(picture.height()), 0,
                std::size_t{4} * static_cast<std::size_t>(targetWidth));
    turn->walkRows(rows, target->view());
    return CGImage(*std::move(target));
}

}  // namespace skarnel
