#include "qt/color_well.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionFocusRect>

#include "qt/accessible_parts.h"

namespace skarnel {

ColorWell::ColorWell(QWidget* parent) : QAbstractButton(parent) {
    describeOwnWidgets();
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
}

void ColorWell::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    update();
    announceColor(*this);
}

QSize ColorWell::sizeHint() const {
    const int height = fontMetrics().height() + 10;
    return {height * 2, height};
}

void ColorWell::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5);
    QPainterPath shape;
    shape.addRoundedRect(frame, 4, 4);
    painter.setClipPath(shape);
    if (color_.alpha() < 255) {
        painter.fillRect(frame, Qt::white);
        painter.fillRect(frame, QBrush(QColor(0xB0, 0xB0, 0xB0), Qt::Dense4Pattern));
    }
    painter.fillRect(frame, color_);
    if (color_.alpha() < 255) {
        // The lower left half shows the colour itself, as if it were opaque.
        QPainterPath half;
        half.addPolygon(QPolygonF({frame.topLeft(), frame.bottomLeft(), frame.bottomRight()}));
        QColor opaque = color_;
        opaque.setAlpha(255);
        painter.fillPath(half, opaque);
    }
    painter.setClipping(false);
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlpha(isDown() ? 200 : 110);
    painter.setPen(QPen(hasFocus() ? palette().color(QPalette::Link) : edge, hasFocus() ? 2 : 1));
    painter.drawPath(shape);
}

}  // namespace skarnel
