#include "qt/compare_overlay.h"

#include <QKeyEvent>
#include <QPainter>

#include "qt/picture_painter.h"

namespace skarnel {

CompareOverlay::CompareOverlay(QWidget& over, Source source, Ground ground)
    : QWidget(&over), over_(over), source_(std::move(source)), ground_(std::move(ground)) {
    setObjectName(QStringLiteral("compareOverlay"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(tr("The picture without its reflection"));
    hide();
    over_.installEventFilter(this);
}

void CompareOverlay::start() {
    const std::optional<CGImage> source = source_();
    if (!source || isVisible()) return;
    picture_ = paintableImage(*source);
    setGeometry(over_.rect());
    raise();
    show();
}

void CompareOverlay::stop() {
    hide();
    picture_ = {};
}

bool CompareOverlay::isCompareKey(const QEvent& event) const {
    const auto& key = static_cast<const QKeyEvent&>(event);
    return key.key() == Qt::Key_Space && key.modifiers() == Qt::NoModifier;
}

bool CompareOverlay::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &over_) return false;
    switch (event->type()) {
        case QEvent::KeyPress:
            if (!isCompareKey(*event)) return false;
            if (!static_cast<QKeyEvent*>(event)->isAutoRepeat()) start();
            return true;
        case QEvent::KeyRelease:
            if (!isCompareKey(*event)) return false;
            if (!static_cast<QKeyEvent*>(event)->isAutoRepeat()) stop();
            return true;
        case QEvent::FocusOut:
            stop();
            return false;
        case QEvent::Resize:
            if (isVisible()) setGeometry(over_.rect());
            return false;
        default:
            return false;
    }
}

void CompareOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), ground_());
    if (picture_.isNull()) return;
    // As in the viewer, one pixel of the picture is at most one of the screen.
    const qreal ratio = devicePixelRatioF();
    QSizeF size = QSizeF(picture_.size()) / ratio;
    if (size.width() > width() || size.height() > height()) {
        size.scale(QSizeF(this->size()), Qt::KeepAspectRatio);
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
    painter.drawImage(QRectF(corner, size), picture_);
}

}  // namespace skarnel
