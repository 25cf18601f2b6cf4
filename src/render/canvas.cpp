#include "render/canvas.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>

#include "imaging/row_painter.h"
#include "util/geometry/integers.h"

namespace skarnel {
namespace {

std::size_t bytesOf(int pixels) {
    return std::size_t{4} * static_cast<std::size_t>(pixels);
}

Interval whole(int length) {
    return {0, 1.0 * length};
}

PixelView upsideDown(PixelView picture) {
    picture.bytes = picture.row(picture.height - 1);
    picture.strideBytes = -picture.strideBytes;
    return picture;
}

}  // namespace

std::optional<CanvasLayout> CanvasLayout::of(int pictureWidth, int pictureHeight,
                                             const ShapeSize& reflection, float reflectionOffset) {
    CanvasLayout layout{};
    layout.width = std::max(pictureWidth, reflection.outWidth);
    layout.yTop = (static_cast<double>(reflectionOffset) / 100 + 1) * reflection.height;
    layout.height = toInt32(pictureHeight + layout.yTop);
    layout.x = reflection.outWidth / 2 - pictureWidth / 2;
    if (layout.height < 1) return std::nullopt;
    return layout;
}

std::optional<CanvasRows> CanvasRows::create(PixelView picture, const CanvasLayout& layout,
                                             const ShapeSize& reflection, bool upright,
                                             const FadeParameters& fade,
                                             std::optional<kernels::Pixel> background) {
    constexpr auto kQuality = InterpolationQuality::Default;
    try {
        CanvasRows rows(picture, layout);
        rows.background_ = background;
        rows.upright_ = upright;
        rows.reflectionTop_ = layout.height - reflection.height;
        rows.reflectionWidth_ = reflection.outWidth;
        rows.plans_ = std::make_unique<Plans>();
        Plans& plans = *rows.plans_;
        const double top = layout.height - (layout.yTop + picture.height);
        plans.pictureColumns = planAxis(whole(picture.width), picture.width,
                                        {1.0 * layout.x, 1.0 * layout.x + picture.width},
                                        whole(layout.width), kQuality);
        plans.pictureRows =
            planAxis(whole(picture.height), picture.height, {top, layout.height - layout.yTop},
                     whole(layout.height), kQuality);
        plans.mirrorColumns = planAxis(whole(picture.width), picture.width, whole(picture.width),
                                       whole(picture.width), kQuality);
        plans.mirrorRows = planAxis(whole(picture.height), picture.height, whole(reflection.height),
                                    whole(reflection.height), kQuality);
        rows.mirror_ = ImageRows::create(upright ? picture : upsideDown(picture),
                                         plans.mirrorColumns, plans.mirrorRows);
        rows.pictureRows_ = ImageRows::create(picture, plans.pictureColumns, plans.pictureRows);
        rows.shaper_ = RowShaper::create(reflection, fade);
        if (!rows.mirror_ || !rows.pictureRows_ || !rows.shaper_) return std::nullopt;
        if (reflection.outWidth < layout.width) {
            plans.stretch = planAxis(whole(reflection.outWidth), reflection.outWidth,
                                     whole(layout.width), whole(layout.width), kQuality);
            rows.stretch_ = ColumnCombiner(plans.stretch, reflection.outWidth);
        }
        rows.shaped_.resize(bytesOf(reflection.outWidth));
        rows.layer_.resize(bytesOf(layout.width));
        rows.row_.resize(bytesOf(layout.width));
        return rows;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

/// Writes the columns of a reflection over nothing; all of them where it is stretched.
void CanvasRows::drawReflection(int row, Columns columns, std::uint8_t* target) {
    const int index = row - reflectionTop_;
    if (reflectionWidth_ == layout_.width) {
        const Columns needed = shaper_->plan(index, columns);
        return shaper_->shapePlanned(index, mirror_->rowPiece(index, needed.begin, needed.end),
                                     mirror_->readableFrom(index), target);
    }
    shaper_->shapeRow(index, mirror_->row(index), mirror_->readableFrom(index), shaped_.data());
    stretch_.combine(target, shaped_.data());
}

/// Lays the picture's row over what the columns hold. Over nothing a composited pixel is the
/// picture's own, so they are written and what lies beside the picture is cleared.
void CanvasRows::drawPicture(int row, Columns columns, bool overNothing, std::uint8_t* target) {
    const AxisPlan& across = plans_->pictureColumns;
    const AxisPlan& rows = plans_->pictureRows;
    const int index = row - rows.first();
    const std::uint8_t covered = rows.coverage(index);
    const int begin = std::clamp(across.first(), columns.begin, columns.end);
    const int end = std::clamp(across.end(), begin, columns.end);
    const std::uint8_t* source =
        pictureRows_->rowPiece(index, begin - across.first(), end - across.first()) +
        bytesOf(begin - across.first());
    std::uint8_t* place = target + bytesOf(begin - columns.begin);
    const auto count = static_cast<std::size_t>(end - begin);
    if (overNothing) {
        std::memset(target, 0, bytesOf(begin - columns.begin));
        std::memset(place + 4 * count, 0, bytesOf(columns.end - end));
        if (covered == 255)
            std::memcpy(place, source, 4 * count);
        else
            kernels::scaleRow(place, source, covered, count);
        return;
    }
    if (covered != 255) {
        kernels::scaleRow(layer_.data(), source, covered, count);
        source = layer_.data();
    }
    kernels::overRow(place, source, count);
}

void CanvasRows::draw(int row, Columns columns, std::uint8_t* target) {
    const auto width = static_cast<std::size_t>(columns.end - columns.begin);
    const bool hasReflection = row >= reflectionTop_;
    const AxisPlan& pictureRows = plans_->pictureRows;
    const bool hasPicture =
        row >= pictureRows.first() && row < pictureRows.end() && plans_->pictureColumns.size() > 0;
    if (background_) {
        kernels::fillRow(target, *background_, width);
        if (hasReflection) {
            drawReflection(row, columns, layer_.data());
            kernels::overRow(target, layer_.data(), width);
        }
    } else if (hasReflection) {
        drawReflection(row, columns, target);
    } else if (!hasPicture) {
        std::memset(target, 0, 4 * width);
    }
    if (hasPicture) drawPicture(row, columns, !background_ && !hasReflection, target);
}

/// Whether the row is a whole row of the picture and nothing beside it.
bool CanvasRows::isOnlyPicture(int row) const {
    const AxisPlan& columns = plans_->pictureColumns;
    const AxisPlan& rows = plans_->pictureRows;
    return !background_ && row < reflectionTop_ && row >= rows.first() && row < rows.end() &&
           columns.size() == layout_.width && rows.fullyCovered();
}

/// Beside the picture a column begins with the first row of the reflection that is wide enough.
std::vector<int> CanvasRows::emptyRows() const {
    const AxisPlan& across = plans_->pictureColumns;
    if (background_ || reflectionWidth_ != layout_.width || across.size() == layout_.width ||
        across.size() < 1)
        return {};
    std::vector<int> rows(static_cast<std::size_t>(layout_.width), layout_.height);
    Columns filled{across.first(), across.end()};
    std::fill(rows.begin() + filled.begin, rows.begin() + filled.end, 0);
    for (int row = std::max(0, reflectionTop_); row < layout_.height; ++row) {
        const Columns content = shaper_->contentColumns(row - reflectionTop_);
        while (filled.begin > content.begin) rows[static_cast<std::size_t>(--filled.begin)] = row;
        while (filled.end < content.end) rows[static_cast<std::size_t>(filled.end++)] = row;
    }
    return rows;
}

std::optional<CanvasRows::PictureSpan> CanvasRows::pictureAlone(int row, int count,
                                                                const std::uint8_t** rows) {
    const AxisPlan& columns = plans_->pictureColumns;
    const AxisPlan& lines = plans_->pictureRows;
    if (background_ || row + count > reflectionTop_ || row < lines.first() ||
        row + count > lines.end() || columns.size() < 1 || !columns.copyShift())
        return std::nullopt;
    const int index = row - lines.first();
    PictureSpan span{columns.first(), columns.end(), 0, picture_.strideBytes, 0};
    if (lines.copyShift()) {
        for (int i = 0; i < count; ++i) rows[i] = pictureRows_->row(index + i);
        span.readablePixels = pictureRows_->readableFrom(index + count - 1);
        return span;
    }
    const auto mixed = pictureRows_->mixedRows(index, count, rows);
    if (!mixed) return std::nullopt;
    // A row that is covered partly lies beyond the middle of the picture's last: no mix of two.
    assert(lines.coverage(index) == 255 && lines.coverage(index + count - 1) == 255);
    span.readablePixels = mixed->readablePixels;
    span.belowWeight = mixed->belowWeight;
    return span;
}

SourceRow CanvasRows::row(int row, std::uint8_t* scratch) {
    const std::uint8_t* own[2];
    if (const auto span = pictureAlone(row, 1, own); span && span->belowWeight == 0)
        return {own[0], span->first, span->end, false};
    draw(row, scratch);
    const AxisPlan& lines = plans_->pictureRows;
    const bool hasPicture = row >= lines.first() && row < lines.end();
    if (background_ || hasPicture) return {scratch, 0, layout_.width, true};
    if (row < reflectionTop_) return {scratch, 0, 0, true};
    if (reflectionWidth_ != layout_.width) return {scratch, 0, layout_.width, true};
    const int first = shaper_->firstColumn();
    return {scratch + bytesOf(first), first, shaper_->endColumn(), true};
}

void CanvasRows::stream(int row, std::uint8_t* target) {
    const std::uint8_t* made = row_.data();
    if (isOnlyPicture(row))
        made = pictureRows_->row(row - plans_->pictureRows.first());
    else
        draw(row, row_.data());
    kernels::streamRow(target, made, static_cast<std::size_t>(layout_.width));
}

}  // namespace skarnel
