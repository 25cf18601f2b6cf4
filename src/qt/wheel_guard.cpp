#include "qt/wheel_guard.h"

#include <QEvent>
#include <QWidget>

namespace skarnel {
namespace {

class WheelGuard final : public QObject {
  public:
    explicit WheelGuard(QWidget& control) : QObject(&control), control_(control) {}

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::Wheel || control_.hasFocus()) return false;
        event->ignore();
        return true;
    }

  private:
    QWidget& control_;
};

}  // namespace

void guardFromWheel(QWidget& control) {
    if (control.focusPolicy() == Qt::WheelFocus) control.setFocusPolicy(Qt::StrongFocus);
    control.installEventFilter(new WheelGuard(control));
}

}  // namespace skarnel
