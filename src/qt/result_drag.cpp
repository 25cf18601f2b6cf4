#include "qt/result_drag.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPixmap>
#include <QUrl>

#include "qt/viewer.h"
#include "qt/wait_cursor.h"

namespace skarnel {
namespace {

constexpr int kIconSide = 128;  // logical pixels

}  // namespace

ResultDrag::ResultDrag(Viewer& viewer, MakeFile makeFile)
    : QObject(&viewer),
      viewer_(viewer),
      makeFile_(std::move(makeFile)),
      carry_([](QDrag& drag) { drag.exec(Qt::CopyAction); }) {
    viewer.installEventFilter(this);
}

bool ResultDrag::takesOut(const QMouseEvent& press) const {
    if (press.button() != Qt::LeftButton || !viewer_.hasImage()) return false;
    if (press.modifiers() == Qt::AltModifier) return true;
    if (viewer_.toolMode() != IKToolModeMove || press.modifiers() != Qt::NoModifier) return false;
    const CGPoint range = viewer_.sheet().view.scrollRange();
    const QPointF device = press.position() * viewer_.devicePixelRatioF();
    return range.x <= 0 && range.y <= 0 && viewer_.sheet().view.hits({device.x(), device.y()});
}

bool ResultDrag::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &viewer_) return false;
    if (event->type() == QEvent::MouseButtonPress) {
        const auto& press = static_cast<const QMouseEvent&>(*event);
        armed_ = takesOut(press);
        start_ = press.position().toPoint();
        // With Alt no tool may see the press; otherwise the move tool takes it and has nothing to
        // do.
        return armed_ && press.modifiers() == Qt::AltModifier;
    }
    if (event->type() == QEvent::MouseButtonRelease) armed_ = false;
    if (event->type() != QEvent::MouseMove || !armed_) return false;
    const auto& move = static_cast<const QMouseEvent&>(*event);
    if (!move.buttons().testFlag(Qt::LeftButton)) {  // the release went elsewhere
        armed_ = false;
        return false;
    }
    const int way = (move.position().toPoint() - start_).manhattanLength();
    if (way >= QApplication::startDragDistance()) {
        armed_ = false;
        drag();
    }
    return true;
}

void ResultDrag::drag() {
    const QString path = [this] {
        const WaitCursor atWork;
        return makeFile_();
    }();
    // The viewer saw the press and will not see the release, which belongs to the drag.
    QMouseEvent release(QEvent::MouseButtonRelease, start_, viewer_.mapToGlobal(start_),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&viewer_, &release);
    if (path.isEmpty()) return;
    auto* data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile(path)});
    // Qt deletes a drag that it has carried; one that was carried otherwise goes with the viewer.
    auto* drag = new QDrag(&viewer_);
    drag->setMimeData(data);
    const qreal ratio = viewer_.devicePixelRatioF();
    QPixmap icon = QPixmap::fromImage(viewer_.imageFittedInto(QSize(kIconSide, kIconSide) * ratio));
    icon.setDevicePixelRatio(ratio);
    drag->setPixmap(icon);
    carry_(*drag);
}

}  // namespace skarnel
