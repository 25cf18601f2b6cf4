#include "qt/picture_painter.h"

#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <memory>

#include "imaging/kernels/pixel_ops.h"
#include "imaging/pixel_memory.h"

namespace skarnel {
namespace {

int roundedSide(double length) {
    return std::max(1, static_cast<int>(std::lround(std::min(length, 1e6))));
}

QRectF toQt(CGRect rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

/// The picture over the ground as the screen has it, in memory that is used again and again: fresh
/// memory costs more than the work. Null without memory.
QImage flatImage(const PixelView& picture, const QColor& ground) {
    const auto rowBytes = std::size_t{4} * static_cast<std::size_t>(picture.width);
    auto memory = allocatePixelMemory(rowBytes * static_cast<std::size_t>(picture.height),
                                      PixelContents::Undefined);
    if (!memory) return {};
    const kernels::Pixel under{static_cast<std::uint8_t>(ground.red()),
                               static_cast<std::uint8_t>(ground.green()),
                               static_cast<std::uint8_t>(ground.blue()), 255};
    for (int y = 0; y < picture.height; ++y)
        kernels::flattenRow(memory.get() + rowBytes * static_cast<std::size_t>(y), picture.row(y),
                            under, static_cast<std::size_t>(picture.width));
    std::uint8_t* const bytes = memory.get();
    using Owner = std::shared_ptr<std::uint8_t>;
    return {bytes,
            picture.width,
            picture.height,
            static_cast<qsizetype>(rowBytes),
            QImage::Format_RGB32,
            [](void* owner) { delete static_cast<Owner*>(owner); },
            new Owner(std::move(memory))};
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
    flat_ = QImage();
    shrunk_ = QImage();
}

const QImage& PicturePainter::image() const {
    if (image_.isNull() && source_) image_ = paintableImage(*source_);
    return image_;
}

bool PicturePainter::isPlain(const ViewTransform& view) const {
    const CGRect part = view.part();
    return source_ && source_->alphaInfo() == CGImageAlphaInfo::PremultipliedLast &&
           view.factor() == 1.0 && view.rotation() == 0 && part.x == 0 && part.y == 0 &&
           part.width == source_->width() && part.height == source_->height();
}

bool PicturePainter::paintOver(QPainter& painter, const ViewTransform& view, const QColor& ground) {
    if (flat_.isNull() || flatGround_ != ground.rgb()) {
        flat_ = flatImage(source_->pixels(), ground);
        flatGround_ = ground.rgb();
    }
    if (flat_.isNull()) return false;
    const CGRect box = view.content();
    painter.drawImage(QPointF(box.x, box.y), flat_);
    return true;
}

void PicturePainter::paint(QPainter& painter, const ViewTransform& view) {
    if (isEmpty() || view.isEmpty()) return;
    painter.save();
    if (view.rotation() == 0)
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
