#include "qt/annotation.h"

#include <QFont>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <cmath>

namespace skarnel {
namespace {

QPointF toQt(CGPoint point) {
    return {point.x, point.y};
}

QPainterPath arrowPath(QPointF from, QPointF to, double lineWidth) {
    QPainterPath path(from);
    path.lineTo(to);
    const QPointF along = to - from;
    const double length = std::hypot(along.x(), along.y());
    if (length < 1e-9) return path;
    const double head = std::min(length, lineWidth * 6);
    const QPointF back = to - along / length * head;
    const QPointF side(-along.y() / length * head * 0.5, along.x() / length * head * 0.5);
    path.moveTo(back + side);
    path.lineTo(to);
    path.lineTo(back - side);
    return path;
}

QPainterPath outline(const ViewTransform& view, const Annotation& annotation, double lineWidth) {
    const QPointF from = toQt(view.toView(annotation.from));
    const QPointF to = toQt(view.toView(annotation.to));
    if (annotation.shape == AnnotationShape::Arrow) return arrowPath(from, to, lineWidth);
    QPainterPath path;
    const QPointF across = toQt(view.toView({annotation.to.x, annotation.from.y}));
    const QPointF centre = (from + to) / 2;
    const QPointF right = across - from;
    path.addEllipse(QPointF(0, 0), std::hypot(right.x(), right.y()) / 2,
                    std::hypot(to.x() - across.x(), to.y() - across.y()) / 2);
    QTransform place;
    place.translate(centre.x(), centre.y());
    place.rotate(view.rotation());
    return place.map(path);
}

QPainterPath textPath(const ViewTransform& view, const Annotation& annotation, double deviceRatio) {
    QFont font = QGuiApplication::font();
    font.setPixelSize(static_cast<int>(std::lround(kAnnotationTextHeight * deviceRatio)));
    font.setBold(true);
    QPainterPath path;
    path.addText(toQt(view.toView(annotation.from)), font, annotation.text);
    return path;
}

}  // namespace

void paintAnnotation(QPainter& painter, const ViewTransform& view, const Annotation& annotation,
                     double deviceRatio) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double lineWidth = kAnnotationLineWidth * deviceRatio;
    const QColor edge =
        annotation.color.lightnessF() > 0.5F ? QColor(0, 0, 0, 150) : QColor(255, 255, 255, 170);
    QPainterPath shape;
    if (annotation.shape == AnnotationShape::Text) {
        shape = textPath(view, annotation, deviceRatio);
    } else {
        QPainterPathStroker stroker;
        stroker.setWidth(lineWidth);
        stroker.setCapStyle(Qt::RoundCap);
        stroker.setJoinStyle(Qt::RoundJoin);
        shape = stroker.createStroke(outline(view, annotation, lineWidth)).simplified();
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(edge, 2 * deviceRatio, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(shape);
    painter.fillPath(shape, annotation.color);
    painter.restore();
}

Annotation scaledAnnotation(Annotation annotation, double scaleX, double scaleY) {
    annotation.from = {annotation.from.x * scaleX, annotation.from.y * scaleY};
    annotation.to = {annotation.to.x * scaleX, annotation.to.y * scaleY};
    return annotation;
}

}  // namespace skarnel
