// Marks on the shown picture: ellipses, arrows and lines of text.
#pragma once

#include <QColor>
#include <QString>

#include "qt/view_transform.h"

class QPainter;

namespace skarnel {

enum class AnnotationShape { Ellipse, Arrow, Text };

/// A mark in image pixels, so that it stays on its place under zoom, scroll and turn. An ellipse
/// fills the box between the two points, an arrow points from the first to the second, a text
/// starts at the first.
struct Annotation {
    AnnotationShape shape = AnnotationShape::Ellipse;
    CGPoint from;
    CGPoint to;
    QString text;
    QColor color;
    friend bool operator==(const Annotation&, const Annotation&) = default;
};

/// Line width and text height in logical pixels of the screen: marks are notes for the eye, so they
/// keep their size under zoom.
inline constexpr double kAnnotationLineWidth = 2.5;
inline constexpr int kAnnotationTextHeight = 18;

/// Draws one mark, with a thin contrasting edge so that it is seen on any ground. The painter's
/// units are device pixels.
void paintAnnotation(QPainter& painter, const ViewTransform& view, const Annotation& annotation,
                     double deviceRatio);

/// Carries a mark over to a picture of another size.
Annotation scaledAnnotation(Annotation annotation, double scaleX, double scaleY);

}  // namespace skarnel
