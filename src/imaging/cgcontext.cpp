#include "imaging/cgcontext.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "imaging/axis_plan.h"
#include "imaging/device_pixel.h"
#include "imaging/image_rows.h"
#include "imaging/kernels/pixel_ops.h"
#include "imaging/row_painter.h"
#include "util/geometry/integers.h"

namespace skarnel {
namespace {

using kernels::multiply255;
using kernels::Pixel;

/// A rectangle in memory order: columns from the left, rows from the top.
struct Area {
    Interval columns;
    Interval rows;
    bool isEmpty() const { return !(columns.length() > 0 && rows.length() > 0); }
};

Interval ordered(double start, double length) {
    return length < 0 ? Interval{start + length, start} : Interval{start, start + length};
}

Interval intersection(Interval a, Interval b) {
    return {std::max(a.start, b.start), std::min(a.end, b.end)};
}

Area intersection(const Area& a, const Area& b) {
    return {intersection(a.columns, b.columns), intersection(a.rows, b.rows)};
}

/// The whole samples whose centres lie in the interval.
Interval centresWithin(Interval interval) {
    return {std::ceil(interval.start - 0.5), std::ceil(interval.end - 0.5)};
}

/// The share of each sample from `first` on that the interval covers.
std::vector<double> coverageOf(Interval interval, int first, int end) {
    std::vector<double> covered;
    for (int sample = first; sample < end; ++sample)
        covered.push_back(std::clamp(
            std::min(interval.end, sample + 1.0) - std::max(interval.start, 1.0 * sample), 0.0,
            1.0));
    return covered;
}

}  // namespace

struct CGContext::State {
    Area clip;
    Pixel fill{0, 0, 0, 255};
    Pixel stroke{0, 0, 0, 255};
    InterpolationQuality quality = InterpolationQuality::Default;
    CompositeOperation operation = CompositeOperation::SourceOver;
    bool antialias = true;
};

struct CGContext::Impl {
    explicit Impl(PixelBuffer buffer) : pixels(std::move(buffer)), view(pixels.view()) {
        state.clip = bounds();
    }

    Area bounds() const { return {{0, 1.0 * view.width}, {0, 1.0 * view.height}}; }

    Area areaOf(const CGRect& rect) const {
        const Interval fromBottom = ordered(rect.y, rect.height);
        return {ordered(rect.x, rect.width),
                {view.height - fromBottom.end, view.height - fromBottom.start}};
    }

    /// What a shape covers: by area, or by whole pixels without anti-aliasing.
    Area shapeOf(const CGRect& rect) const {
        const Area area = areaOf(rect);
        if (state.antialias) return area;
        return {centresWithin(area.columns), centresWithin(area.rows)};
    }

    void fill(const Area& outer, const Area& hole, Pixel color, CompositeOperation operation);
    void fillWhole(const Area& area, Pixel color, CompositeOperation operation);
    void draw(const CGImage& image, const Area& source, const Area& target,
              CompositeOperation operation, double fraction);
    void paintRows(ImageRows& rows, const AxisPlan& across, const AxisPlan& down,
                   CompositeOperation operation, std::uint8_t opacity);

    bool drawWhole(ImageRows& rows, const AxisPlan& across, const AxisPlan& down);
    /// Makes the pixels of a new context transparent, unless something has covered them already.
    void clearNew();

    PixelBuffer pixels;
    MutablePixelView view;
    bool isNew = false;            // transparent, but the memory holds anything
    bool hasHiddenColours = true;  // or may have: false after a first drawing that has none
    State state;
    std::vector<State> saved;
};

void CGContext::Impl::clearNew() {
    hasHiddenColours = true;
    if (!std::exchange(isNew, false)) return;
    for (int y = 0; y < view.height; ++y)
        std::memset(view.row(y), 0, std::size_t{4} * static_cast<std::size_t>(view.width));
}

/// The first drawing into a new context: over nothing a pixel is the source's own, so that the
/// rows are made in place. False where edges are partly covered.
bool CGContext::Impl::drawWhole(ImageRows& rows, const AxisPlan& across, const AxisPlan& down) {
    if (!isNew || !across.fullyCovered() || !down.fullyCovered()) return false;
    isNew = false;
    const auto bytes = [](int columns) {
        return std::size_t{4} * static_cast<std::size_t>(columns);
    };
    bool hidden = false;
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* row = view.row(y);
        if (y < down.first() || y >= down.end()) {
            std::memset(row, 0, bytes(view.width));
            continue;
        }
        std::memset(row, 0, bytes(across.first()));
        std::uint8_t* drawn = row + bytes(across.first());
        rows.drawRow(y - down.first(), drawn);
        hidden =
            hidden || kernels::hasHiddenColours(drawn, static_cast<std::size_t>(across.size()));
        std::memset(row + bytes(across.end()), 0, bytes(view.width - across.end()));
    }
    hasHiddenColours = hidden;
    return true;
}

namespace {

bool isWhole(Interval interval) {
    return interval.start == std::floor(interval.start) && interval.end == std::floor(interval.end);
}

}  // namespace

/// Every pixel of a whole-pixel area alike.
void CGContext::Impl::fillWhole(const Area& area, Pixel color, CompositeOperation operation) {
    const int left = toInt32(area.columns.start);
    const auto count = static_cast<std::size_t>(toInt32(area.columns.end) - left);
    for (int y = toInt32(area.rows.start); y < toInt32(area.rows.end); ++y) {
        std::uint8_t* row = view.row(y) + std::ptrdiff_t{4} * left;
        if (operation == CompositeOperation::Copy ||
            (operation == CompositeOperation::SourceOver && color[3] == 255))
            kernels::fillRow(row, color, count);
        else if (operation == CompositeOperation::SourceOver)
            kernels::overColorRow(row, color, count);
        else
            kernels::scaleRow(row, row, color[3], count);
    }
}

/// Fills `outer` without `hole`, both within the clip.
void CGContext::Impl::fill(const Area& outer, const Area& hole, Pixel color,
                           CompositeOperation operation) {
    const Area shape = intersection(outer, state.clip);
    if (shape.isEmpty()) return;
    clearNew();
    const Area cut = intersection(hole, state.clip);
    if (cut.isEmpty() && isWhole(shape.columns) && isWhole(shape.rows))
        return fillWhole(shape, color, operation);
    const int left = toInt32(std::floor(shape.columns.start));
    const int right = toInt32(std::ceil(shape.columns.end));
    const int top = toInt32(std::floor(shape.rows.start));
    const int bottom = toInt32(std::ceil(shape.rows.end));
    const std::vector<double> across = coverageOf(shape.columns, left, right);
    const std::vector<double> down = coverageOf(shape.rows, top, bottom);
    const std::vector<double> cutAcross = coverageOf(cut.columns, left, right);
    const std::vector<double> cutDown = coverageOf(cut.rows, top, bottom);
    const auto count = static_cast<std::size_t>(right - left);
    std::vector<std::uint8_t> source(4 * count);
    std::vector<std::uint8_t> mask(count);
    kernels::fillRow(source.data(), color, count);
    for (std::size_t j = 0; j < down.size(); ++j) {
        for (std::size_t i = 0; i < count; ++i)
            mask[i] = unitToByte(across[i] * down[j] - cutAcross[i] * cutDown[j]);
        paintRow(view.row(top + static_cast<int>(j)) + std::ptrdiff_t{4} * left, source.data(),
                 mask.data(), count, operation);
    }
}

void CGContext::Impl::paintRows(ImageRows& rows, const AxisPlan& across, const AxisPlan& down,
                                CompositeOperation operation, std::uint8_t opacity) {
    const auto count = static_cast<std::size_t>(across.size());
    std::vector<std::uint8_t> mask(count);
    std::vector<std::uint8_t> faded(opacity == 255 ? 0 : 4 * count);
    for (int j = 0; j < down.size(); ++j) {
        const std::uint8_t* source = rows.row(j);
        if (opacity != 255) {
            kernels::scaleRow(faded.data(), source, opacity, count);
            source = faded.data();
        }
        const std::uint8_t covered = down.coverage(j);
        const bool whole = covered == 255 && across.fullyCovered();
        for (std::size_t i = 0; !whole && i < count; ++i)
            mask[i] = multiply255(across.coverage(static_cast<int>(i)), covered);
        paintRow(view.row(down.first() + j) + std::ptrdiff_t{4} * across.first(), source,
                 whole ? nullptr : mask.data(), count, operation);
    }
}

void CGContext::Impl::draw(const CGImage& image, const Area& source, const Area& target,
                           CompositeOperation operation, double fraction) {
    const Area shape =
        state.antialias ? target : Area{centresWithin(target.columns), centresWithin(target.rows)};
    const Area visible = intersection(shape, state.clip);
    if (visible.isEmpty() || std::isnan(fraction)) return;
    const std::optional<CGImage> picture = image.withAlpha();
    if (!picture) throw std::bad_alloc();
    const AxisPlan across =
        planAxis(source.columns, picture->width(), target.columns, visible.columns, state.quality);
    const AxisPlan down =
        planAxis(source.rows, picture->height(), target.rows, visible.rows, state.quality);
    if (across.size() == 0 || down.size() == 0) return;
    RowSource* const undrawn = picture->rowSource();
    std::optional<ImageRows> rows =
        undrawn != nullptr ? ImageRows::create(*undrawn, picture->width(), across, down)
                           : ImageRows::create(picture->pixels(), across, down);
    if (!rows) throw std::bad_alloc();
    const std::uint8_t opacity = unitToByte(fraction);
    const bool replaces = opacity == 255 && operation != CompositeOperation::DestinationIn;
    if (replaces && drawWhole(*rows, across, down)) return;
    clearNew();
    paintRows(*rows, across, down, operation, opacity);
}

std::unique_ptr<CGContext> CGContext::create(int width, int height) {
    std::optional<PixelBuffer> pixels = PixelBuffer::uninitialized(width, height);
    if (!pixels) return nullptr;
    auto context = std::make_unique<CGContext>(*std::move(pixels));
    context->impl_->isNew = true;
    return context;
}

CGContext::CGContext(PixelBuffer pixels) : impl_(std::make_unique<Impl>(std::move(pixels))) {}
CGContext::~CGContext() = default;

int CGContext::width() const {
    return impl_->view.width;
}
int CGContext::height() const {
    return impl_->view.height;
}
MutablePixelView CGContext::pixels() {
    impl_->clearNew();
    return impl_->view;
}

void CGContext::saveState() {
    impl_->saved.push_back(impl_->state);
}

void CGContext::restoreState() {
    if (impl_->saved.empty()) return;
    impl_->state = impl_->saved.back();
    impl_->saved.pop_back();
}

void CGContext::setFillColor(const DeviceColor& color) {
    impl_->state.fill = premultipliedPixel(color);
}
void CGContext::setStrokeColor(const DeviceColor& color) {
    impl_->state.stroke = premultipliedPixel(color);
}
void CGContext::setInterpolationQuality(InterpolationQuality quality) {
    impl_->state.quality = quality;
}
void CGContext::setShouldAntialias(bool antialias) {
    impl_->state.antialias = antialias;
}
void CGContext::setCompositeOperation(CompositeOperation operation) {
    impl_->state.operation = operation;
}

void CGContext::clipToRect(const CGRect& rect) {
    impl_->state.clip = intersection(impl_->state.clip, impl_->shapeOf(rect));
}

void CGContext::clearRect(const CGRect& rect) {
    impl_->fill(impl_->shapeOf(rect), {}, {0, 0, 0, 0}, CompositeOperation::Copy);
}

void CGContext::fillRect(const CGRect& rect) {
    impl_->fill(impl_->shapeOf(rect), {}, impl_->state.fill, impl_->state.operation);
}

void CGContext::strokeRect(const CGRect& rect, double lineWidth) {
    strokeRect(rect, CGSize{lineWidth, lineWidth});
}

void CGContext::strokeRect(const CGRect& rect, CGSize line) {
    if (!(line.width > 0 && line.height > 0)) return;
    const double halfWidth = line.width / 2;
    const double halfHeight = line.height / 2;
    const Interval x = ordered(rect.x, rect.width);
    const Interval y = ordered(rect.y, rect.height);
    const CGRect outer{x.start - halfWidth, y.start - halfHeight, x.length() + line.width,
                       y.length() + line.height};
    Area hole{};
    // Opposite sides that touch leave no hole, and a negative extent would be turned around.
    if (x.length() > line.width && y.length() > line.height)
        hole = impl_->shapeOf({x.start + halfWidth, y.start + halfHeight, x.length() - line.width,
                               y.length() - line.height});
    impl_->fill(impl_->shapeOf(outer), hole, impl_->state.stroke, impl_->state.operation);
}

void CGContext::drawImage(const CGImage& image, const CGRect& destination) {
    const Area whole{{0, 1.0 * image.width()}, {0, 1.0 * image.height()}};
    impl_->draw(image, whole, impl_->areaOf(destination), impl_->state.operation, 1.0);
}

void CGContext::drawImage(const CGImage& image, const CGRect& source, const CGRect& destination,
                          CompositeOperation operation, double fraction) {
    const Interval fromBottom = ordered(source.y, source.height);
    const Area from{ordered(source.x, source.width),
                    {image.height() - fromBottom.end, image.height() - fromBottom.start}};
    impl_->draw(image, from, impl_->areaOf(destination), operation, fraction);
}

std::optional<CGImage> CGContext::createImage() const {
    impl_->clearNew();
    return CGImage::copyOf(impl_->view);
}

CGImage CGContext::takeImage() && {
    const bool hidden = impl_->hasHiddenColours;
    impl_->clearNew();
    CGImage image(std::move(impl_->pixels));
    if (!hidden) image.setKnownWithoutHiddenColours();
    impl_->view = {};
    impl_->state.clip = {};
    return image;
}

}  // namespace skarnel
