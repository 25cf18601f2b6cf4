#include "qt/focus_ring.h"

#include <QFocusEvent>
#include <QPainter>

namespace skarnel {
namespace {

constexpr int kOuter = 2;  // logical pixels
constexpr int kInner = 1;

bool cameByKey(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

}  // namespace

FocusRing::FocusRing(QWidget& around) : QWidget(&around), around_(around) {
    setObjectName(QStringLiteral("focusRing"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
    around_.installEventFilter(this);
}

void FocusRing::place() {
    setGeometry(around_.rect());
    // Only the edge, so that the widget below is painted as without it.
    const int width = kOuter + kInner;
    setMask(QRegion(rect()) - QRegion(rect().adjusted(width, width, -width, -width)));
    raise();
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &around_) return false;
    switch (event->type()) {
        case QEvent::FocusIn: {
            const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
            // Coming back from a menu or another window, the focus is as it was.
            if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason) break;
            place();
            setVisible(cameByKey(reason));
            break;
        }
        case QEvent::FocusOut: {
            const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
            if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason) break;
            hide();
            break;
        }
        case QEvent::Resize:
            if (isVisible()) place();
            break;
        default:
            break;
    }
    return false;
}

void FocusRing::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Highlight));
    const bool dark = palette().color(QPalette::Highlight).lightness() < 128;
    painter.fillRect(rect().adjusted(kOuter, kOuter, -kOuter, -kOuter),
                     dark ? Qt::white : Qt::black);
}

}  // namespace skarnel
