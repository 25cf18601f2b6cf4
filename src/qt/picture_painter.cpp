#include "qt/picture_painter.h"

#include <QPaintEngine>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <new>

#include "imaging/cgcontext.h"
#include "imaging/kernels/pixel_ops.h"

namespace skarnel {
namespace {

int roundedSide(double length) {
    return std::max(1, static_cast<int>(std::lround(std::min(length, 1e6))));
}

QRectF toQt(CGRect rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

/// What the viewport has of the shown part, in image pixels.
QRectF partInViewport(const ViewTransform& view) {
    const CGSize port = view.viewport();
    QPolygonF corners;
    for (const CGPoint& corner : {CGPoint{0, 0}, CGPoint{port.width, 0},
                                  CGPoint{port.width, port.height}, CGPoint{0, port.height}}) {
        const CGPoint there = view.toImage(corner);
        corners << QPointF(there.x, there.y);
    }
    return corners.boundingRect() & toQt(view.part());
}

/// Rows that are laid over the ground together: few enough to stay in the nearest caches until
/// they are copied to the screen's own memory.
constexpr int kStripRows = 32;

kernels::Pixel opaquePixel(const QColor& color) {
    return {static_cast<std::uint8_t>(color.red()), static_cast<std::uint8_t>(color.green()),
            static_cast<std::uint8_t>(color.blue()), 255};
}

/// Where a painter puts `corner` in the pixels of an image that it paints on, one unit a pixel;
/// none for other devices, scales and clips.
std::optional<QPoint> placeInImage(const QPainter& painter, QPointF corner) {
    const QPaintEngine* engine = painter.paintEngine();
    if (engine->paintDevice()->devType() != QInternal::Image || painter.hasClipping() ||
        painter.opacity() != 1.0 ||
        painter.compositionMode() != QPainter::CompositionMode_SourceOver)
        return std::nullopt;
    const QTransform& toDevice = painter.deviceTransform();
    const auto isUnit = [](qreal scale) { return std::abs(scale - 1) < 1e-9; };
    if (!isUnit(toDevice.m11()) || !isUnit(toDevice.m22()) || toDevice.m12() != 0 ||
        toDevice.m21() != 0)
        return std::nullopt;
    return toDevice.map(corner).toPoint();
}

/// The picture over the ground, written where the painter would write it: a window's own memory is
/// an image, and copying there what was made elsewhere takes as long as making it. False where the
/// painter has to do it.
bool flattenInto(const QPainter& painter, QPointF corner, const PixelView& picture,
                 kernels::Pixel under) {
    const std::optional<QPoint> place = placeInImage(painter, corner);
    if (!place) return false;
    auto* image = static_cast<QImage*>(painter.paintEngine()->paintDevice());
    if (image->format() != QImage::Format_RGB32 &&
        image->format() != QImage::Format_ARGB32_Premultiplied)
        return false;
    QRegion region(QRect(*place, QSize(picture.width, picture.height)));
    region &= image->rect();
    const QRegion shown = painter.paintEngine()->systemClip();
    if (!shown.isEmpty()) region &= shown;
    for (const QRect& box : region) {
        const auto pixels = static_cast<std::size_t>(box.width());
        for (int y = box.top(); y <= box.bottom(); ++y) {
            // The painter holds these very rows; asking for rows to change could make others.
            auto* row = const_cast<std::uint8_t*>(image->constScanLine(y));
            kernels::flattenRow(
                row + std::ptrdiff_t{4} * box.left(),
                picture.row(y - place->y()) + std::ptrdiff_t{4} * (box.left() - place->x()), under,
                pixels);
        }
    }
    return true;
}

}  // namespace

QImage paintableImage(const CGImage& image) {
    const PixelView view = image.pixels();
    const QImage::Format format =
        view.samplesPerPixel == 4 ? QImage::Format_RGBA8888_Premultiplied : QImage::Format_RGB888;
    // Wraps the shared bytes; the conversion below copies them before the wrapper is gone.
    const QImage wrapped(view.bytes, view.width, view.height, view.strideBytes, format);
    return wrapped.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage straightImage(const QImage& paintable) {
    return paintable.convertToFormat(QImage::Format_RGBA8888);
}

void PicturePainter::setImage(const CGImage& image) {
    source_ = image;
    image_ = QImage();
    shrunk_ = QImage();
}

const QImage& PicturePainter::image() const {
    if (image_.isNull() && source_) image_ = paintableImage(*source_);
    return image_;
}

bool PicturePainter::isLarge() const {
    return std::int64_t{source_->width()} * source_->height() > kWholeUpTo;
}

/// The part, which lies in the picture, as large as `size`, from the picture's rows. Null without
/// memory.
QImage PicturePainter::resampled(const QRect& part, QSize size) const try {
    const auto context = CGContext::create(size.width(), size.height());
    if (!context) return {};
    const int fromBottom = source_->height() - (part.y() + part.height());
    context->drawImage(
        *source_, {1.0 * part.x(), 1.0 * fromBottom, 1.0 * part.width(), 1.0 * part.height()},
        {0, 0, 1.0 * size.width(), 1.0 * size.height()}, CompositeOperation::SourceOver, 1);
    return paintableImage(std::move(*context).takeImage());
} catch (const std::bad_alloc&) {
    return {};
}

QImage PicturePainter::partOf(const QRect& part) const {
    if (isEmpty()) return {};
    return isLarge() ? resampled(part, part.size()) : image().copy(part);
}

QImage PicturePainter::fittedInto(QSize box) const {
    if (isEmpty()) return {};
    if (!isLarge()) return image().scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    const QRect whole(0, 0, source_->width(), source_->height());
    return resampled(whole, whole.size().scaled(box, Qt::KeepAspectRatio).expandedTo({1, 1}));
}

bool PicturePainter::isPlain(const ViewTransform& view) const {
    const CGRect part = view.part();
    return source_ && !isLarge() && source_->alphaInfo() == CGImageAlphaInfo::PremultipliedLast &&
           view.factor() == 1.0 && view.rotation() == 0 && part.x == 0 && part.y == 0 &&
           part.width == source_->width() && part.height == source_->height();
}

bool PicturePainter::paintOver(QPainter& painter, const ViewTransform& view, const QColor& ground) {
    const PixelView picture = source_->pixels();
    const kernels::Pixel under = opaquePixel(ground);
    const CGRect box = view.content();
    if (flattenInto(painter, {box.x, box.y}, picture, under)) return true;
    if (strip_.width() < picture.width)
        strip_ = QImage(picture.width, kStripRows, QImage::Format_RGB32);
    if (strip_.isNull()) return false;
    for (int y = 0; y < picture.height; y += kStripRows) {
        const int rows = std::min(kStripRows, picture.height - y);
        for (int i = 0; i < rows; ++i)
            kernels::flattenRow(strip_.scanLine(i), picture.row(y + i), under,
                                static_cast<std::size_t>(picture.width));
        painter.drawImage(QPointF(box.x, box.y + y), strip_, QRectF(0, 0, picture.width, rows));
    }
    return true;
}

void PicturePainter::paint(QPainter& painter, const ViewTransform& view) {
    if (isEmpty() || view.isEmpty()) return;
    painter.save();
    if (isLarge())
        paintLarge(painter, view);
    else if (view.rotation() == 0)
        paintUpright(painter, view);
    else
        paintTurned(painter, view);
    painter.restore();
}

const QImage& PicturePainter::shrunk(const ViewTransform& view) {
    if (shrunk_.isNull() || shrunkFactor_ != view.factor() || !(shrunkPart_ == view.part())) {
        shrunkFactor_ = view.factor();
        shrunkPart_ = view.part();
        const QRect part = toQt(shrunkPart_).toAlignedRect();
        const QImage source = part == image().rect() ? image() : image().copy(part);
        shrunk_ = source.scaled(roundedSide(shrunkPart_.width * shrunkFactor_),
                                roundedSide(shrunkPart_.height * shrunkFactor_),
                                Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        ++resampleCount_;
    }
    return shrunk_;
}

void PicturePainter::paintUpright(QPainter& painter, const ViewTransform& view) {
    const CGRect box = view.content();
    const QRectF source = toQt(view.part());
    if (view.factor() < 1) {
        painter.drawImage(QPointF(box.x, box.y), shrunk(view));
    } else if (view.factor() == 1.0) {
        painter.drawImage(QPointF(box.x, box.y), image(), source);
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform, view.factor() < kSquaresFrom);
        painter.drawImage(toQt(box), image(), source);
    }
}

void PicturePainter::paintTurned(QPainter& painter, const ViewTransform& view) {
    painter.setTransform(painterTransform(view), true);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, view.factor() < kSquaresFrom);
    // A clip by the outline smooths the edges of the turned picture.
    painter.setRenderHint(QPainter::Antialiasing);
    const QImage& picture = view.factor() < 1 ? shrunk(view) : image();
    const QRectF source = view.factor() < 1 ? QRectF(picture.rect()) : toQt(view.part());
    painter.drawImage(toQt(view.part()), picture, source);
}

void PicturePainter::resample(const QRect& part, double factor) {
    const CGRect wanted{1.0 * part.x(), 1.0 * part.y(), 1.0 * part.width(), 1.0 * part.height()};
    if (!shrunk_.isNull() && shrunkFactor_ == factor && shrunkPart_ == wanted) return;
    shrunkFactor_ = factor;
    shrunkPart_ = wanted;
    shrunk_ = QImage();  // its memory serves the next one
    shrunk_ =
        resampled(part, {roundedSide(part.width() * factor), roundedSide(part.height() * factor)});
    ++resampleCount_;
}

void PicturePainter::paintLarge(QPainter& painter, const ViewTransform& view) {
    const QRectF shown = partInViewport(view);
    const QRect pixels = shown.toAlignedRect();
    if (pixels.isEmpty()) return;
    resample(pixels, std::min(view.factor(), 1.0));
    if (shrunk_.isNull()) return;
    const double across = 1.0 * shrunk_.width() / pixels.width();
    const double down = 1.0 * shrunk_.height() / pixels.height();
    const QRectF source((shown.x() - pixels.x()) * across, (shown.y() - pixels.y()) * down,
                        shown.width() * across, shown.height() * down);
    painter.setTransform(painterTransform(view), true);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, view.factor() < kSquaresFrom);
    if (view.rotation() != 0) painter.setRenderHint(QPainter::Antialiasing);
    painter.drawImage(shown, shrunk_, source);
}

QTransform painterTransform(const ViewTransform& view) {
    const CGPoint origin = view.toView({0, 0});
    const CGPoint right = view.toView({1, 0});
    const CGPoint down = view.toView({0, 1});
    return {right.x - origin.x, right.y - origin.y, down.x - origin.x,
            down.y - origin.y,  origin.x,           origin.y};
}

QPolygonF shownOutline(const ViewTransform& view) {
    return painterTransform(view).map(QPolygonF(toQt(view.part())));
}

void paintCheckerboard(QPainter& painter, const ViewTransform& view, int squareDevicePixels,
                       const QColor& first, const QColor& second) {
    if (view.isEmpty()) return;
    const int side = std::max(1, squareDevicePixels);
    QImage tile(2 * side, 2 * side, QImage::Format_RGB32);
    tile.fill(first);
    {
        QPainter squares(&tile);
        squares.fillRect(side, 0, side, side, second);
        squares.fillRect(0, side, side, side, second);
    }
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(QBrush(tile));
    const CGRect box = view.content();
    painter.setBrushOrigin(QPointF(box.x, box.y));
    if (view.rotation() == 0)
        painter.drawRect(QRectF(box.x, box.y, std::round(box.width), std::round(box.height)));
    else
        painter.drawPolygon(shownOutline(view));
    painter.restore();
}

}  // namespace skarnel
