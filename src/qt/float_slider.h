// A slider that holds a number of its own, of which the handle shows the nearest position.
#pragma once

#include <QSlider>

#include "qt/setting_ranges.h"

namespace skarnel {

class FloatSlider final : public QSlider {
    Q_OBJECT
  public:
    explicit FloatSlider(const SettingRange& range, QWidget* parent = nullptr);

    /// The very number last set or dragged to; it may lie off the steps and beyond the travel.
    float floatValue() const { return value_; }
    /// Shows the number; emits nothing.
    void setFloatValue(float value);

    /// As if the handle were dragged to that position and let go.
    void moveTo(int position);

    const SettingRange& range() const { return range_; }

  signals:
    /// The user moved the handle, by whatever means.
    void edited(float value);
    /// A drag, or a key that is held, begins and ends; what is edited in between is one change.
    void gestureBegan();
    void gestureEnded();
    /// The wheel turns over the focused slider; what it does comes after.
    void wheelTurning();
    /// Double-click on the handle.
    void defaultAsked();

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool event(QEvent* event) override;

  private:
    bool onHandle(const QPoint& place) const;
    void endKeyGesture();
    /// Lets the handle go where it is.
    void endDrag();

    const SettingRange& range_;
    float value_;
    bool keyHeld_ = false;
    Qt::MouseButton held_ = Qt::NoButton;  // went down here and its release has not been seen
};

}  // namespace skarnel
