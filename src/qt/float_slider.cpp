#include "qt/float_slider.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionSlider>
#include <QWheelEvent>
#include <cmath>
#include <utility>

#include "qt/accessible_parts.h"

namespace skarnel {

FloatSlider::FloatSlider(const SettingRange& range, QWidget* parent)
    : QSlider(Qt::Horizontal, parent), range_(range), value_(range.travelMin) {
    describeOwnWidgets();
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);  // a move without the button tells of a release that went elsewhere
    setRange(0, travelPositions(range));
    setSingleStep(1);
    setPageStep(static_cast<int>(std::lround(range.pageStep / range.step)));
    setMinimumWidth(90);
    connect(this, &QSlider::valueChanged, this, [this](int position) {
        value_ = valueAtPosition(range_, position);
        announceValue(*this);
        emit edited(value_);
    });
}

void FloatSlider::setFloatValue(float value) {
    const bool another = value != value_;
    const QSignalBlocker quiet(this);
    setValue(positionOfValue(range_, value));
    value_ = value;
    if (another) announceValue(*this);
}

void FloatSlider::moveTo(int position) {
    emit gestureBegan();
    setValue(position);
    emit gestureEnded();
}

bool FloatSlider::onHandle(const QPoint& place) const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    return style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this)
        .contains(place);
}

void FloatSlider::mousePressEvent(QMouseEvent* event) {
    // The middle button sets the slider too, in most styles.
    endDrag();
    held_ = event->button();
    emit gestureBegan();
    QSlider::mousePressEvent(event);
}

void FloatSlider::mouseMoveEvent(QMouseEvent* event) {
    if (held_ == Qt::NoButton) return event->ignore();
    // The release went elsewhere: to a menu, another window, another program.
    if (!event->buttons().testFlag(held_)) return endDrag();
    QSlider::mouseMoveEvent(event);
}

void FloatSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (held_ == Qt::NoButton || event->button() != held_) return event->ignore();
    QSlider::mouseReleaseEvent(event);
    held_ = Qt::NoButton;
    emit gestureEnded();
}

void FloatSlider::endDrag() {
    const Qt::MouseButton button = std::exchange(held_, Qt::NoButton);
    if (button == Qt::NoButton) return;
    // The base class learns of the end of a drag from a release alone.
    const QPointF at = rect().center();
    QMouseEvent release(QEvent::MouseButtonRelease, at, mapToGlobal(at), button, Qt::NoButton,
                        Qt::NoModifier);
    QSlider::mouseReleaseEvent(&release);
    emit gestureEnded();
}

bool FloatSlider::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::WindowDeactivate:
        case QEvent::Hide:
            endDrag();
            endKeyGesture();
            break;
        case QEvent::EnabledChange:
            if (!isEnabled()) endDrag();
            break;
        default:
            break;
    }
    return QSlider::event(event);
}

void FloatSlider::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && onHandle(event->position().toPoint()))
        emit defaultAsked();
    else
        mousePressEvent(event);
}

void FloatSlider::wheelEvent(QWheelEvent* event) {
    // Scrolling a panel must not change a setting that happens to pass under the pointer.
    if (!hasFocus()) return event->ignore();
    emit wheelTurning();
    QSlider::wheelEvent(event);
    event->accept();
}

void FloatSlider::keyPressEvent(QKeyEvent* event) {
    // A repeat may be the first: of two keys held at once, one has been let go.
    if (!keyHeld_) {
        keyHeld_ = true;
        emit gestureBegan();
    }
    QSlider::keyPressEvent(event);
}

void FloatSlider::endKeyGesture() {
    if (!keyHeld_) return;
    keyHeld_ = false;
    emit gestureEnded();
}

void FloatSlider::keyReleaseEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat()) endKeyGesture();
    QSlider::keyReleaseEvent(event);
}

void FloatSlider::focusOutEvent(QFocusEvent* event) {
    endDrag();
    endKeyGesture();
    QSlider::focusOutEvent(event);
}

}  // namespace skarnel
