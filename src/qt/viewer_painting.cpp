// How the viewer paints itself: ground, picture, marks.
#include <QPainter>
#include <cmath>

#include "qt/viewer.h"

namespace skarnel {
namespace {

constexpr int kCheckerSquare = 8;  // logical pixels

}  // namespace

void Viewer::paintGround(QPainter& painter) {
    const CGSize port = viewportSize();
    const QRectF all(0, 0, port.width + 1, port.height + 1);
    if (background_.alpha() < 255) painter.fillRect(all, palette().window());
    painter.fillRect(all, background_);
    if (!checkerboard_) return;
    const double ratio = devicePixelRatioF();
    const bool dark = palette().window().color().lightness() < 128;
    paintCheckerboard(painter, sheet_.view, static_cast<int>(std::lround(kCheckerSquare * ratio)),
                      dark ? QColor(0x4A, 0x4A, 0x4A) : QColor(Qt::white),
                      dark ? QColor(0x5E, 0x5E, 0x5E) : QColor(0xD4, 0xD4, 0xD4));
}

/// Everything but the picture's own box, where the ground is painted with the picture.
bool Viewer::paintPlain(QPainter& painter) {
    if (checkerboard_ || background_.alpha() < 255 || !painter_.isPlain(sheet_.view)) return false;
    if (!painter_.paintOver(painter, sheet_.view, background_)) return false;
    const CGSize port = viewportSize();
    const CGRect box = sheet_.view.content();
    const double right = box.x + box.width;
    const double lower = box.y + box.height;
    const auto fill = [&](double fromX, double fromY, double toX, double toY) {
        if (fromX < toX && fromY < toY)
            painter.fillRect(QRectF(fromX, fromY, toX - fromX, toY - fromY), background_);
    };
    // A pixel more than the viewport, for what rounding adds.
    const double width = port.width + 1;
    fill(0, 0, width, box.y);
    fill(0, lower, width, port.height + 1);
    fill(0, box.y, box.x, lower);
    fill(right, box.y, width, lower);
    return true;
}

void Viewer::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const double ratio = devicePixelRatioF();
    painter.scale(1 / ratio, 1 / ratio);
    if (!paintPlain(painter)) {
        paintGround(painter);
        painter_.paint(painter, sheet_.view);
    }
    const CGSize port = sheet_.view.viewport();
    painter.setClipRect(QRectF(0, 0, port.width, port.height));
    for (const Annotation& annotation : sheet_.annotations)
        paintAnnotation(painter, sheet_.view, annotation, ratio);
    if (sheet_.selection) paintMarquee(painter, sheet_.view, *sheet_.selection, ratio);
    tool_->paint(painter, sheet_, ratio);
    emit painted();
}

}  // namespace skarnel
