#include "qt/annotation_line.h"

#include <QApplication>
#include <QKeyEvent>
#include <algorithm>

#include "qt/annotation.h"

#include "qt/tool_keys.h"

namespace skarnel {
namespace {

constexpr int kLineWidth = 220;  // logical pixels
constexpr int kBaselineGap = 6;  // logical pixels from the line's lower edge up to its letters

}  // namespace

AnnotationLine::AnnotationLine(CGPoint place, QWidget* parent) : QLineEdit(parent), place_(place) {
    QFont lettering = QApplication::font();
    lettering.setPixelSize(kAnnotationTextHeight);
    setFont(lettering);
    resize(kLineWidth, sizeHint().height());
}

void AnnotationLine::scalePlace(double x, double y) {
    place_ = {place_.x * x, place_.y * y};
}

void AnnotationLine::follow(const ViewTransform& view, double deviceRatio) {
    const CGPoint at = view.toView(place_);
    const QSize room = parentWidget()->size() - size();
    const int x = static_cast<int>(at.x / deviceRatio);
    const int y = static_cast<int>(at.y / deviceRatio) - height() + kBaselineGap;
    move(std::clamp(x, 0, std::max(0, room.width())), std::clamp(y, 0, std::max(0, room.height())));
}

void AnnotationLine::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) return emit dropped();
    QLineEdit::keyPressEvent(event);
    // A line edit hands Return on, and to the viewer it would be a second one.
    if (isEnterKey(event->key())) event->accept();
}

}  // namespace skarnel
