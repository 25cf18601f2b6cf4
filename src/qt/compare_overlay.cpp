#include "qt/compare_overlay.h"

#include <QKeyEvent>
#include <QPainter>
#include <algorithm>

#include "qt/picture_painter.h"
#include "qt/viewer.h"

namespace skarnel {

CompareOverlay::CompareOverlay(Viewer& viewer, Source source)
    : QWidget(&viewer), viewer_(viewer), source_(std::move(source)) {
    setObjectName(QStringLiteral("compareOverlay"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(tr("The picture without its reflection"));
    hide();
    viewer_.installEventFilter(this);
    // The settings or the picture may change while it is shown.
    connect(&viewer_, &Viewer::imageChanged, this, [this] {
        if (isVisible()) take();
    });
}

void CompareOverlay::setPinned(bool pinned) {
    if (pinned == pinned_) return;
    pinned_ = pinned;
    if (pinned)
        start();
    else
        stop();
    emit pinnedChanged(pinned);
}

void CompareOverlay::start() {
    if (isVisible()) return;
    take();
    setGeometry(viewer_.rect());
    raise();
    setVisible(!picture_.isNull());
}

void CompareOverlay::stop() {
    hide();
    picture_ = {};
    shrunk_ = {};
}

void CompareOverlay::take() {
    const std::optional<ComparedPicture> source = source_();
    if (!source) return;
    place_ = source->place;
    picture_ = paintableImage(source->image);
    shrunk_ = {};
    update();
}

bool CompareOverlay::isCompareKey(const QEvent& event) const {
    const auto& key = static_cast<const QKeyEvent&>(event);
    return key.key() == Qt::Key_Space && key.modifiers() == Qt::NoModifier;
}

bool CompareOverlay::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &viewer_) return false;
    switch (event->type()) {
        case QEvent::KeyPress:
            if (!isCompareKey(*event)) return false;
            if (!static_cast<QKeyEvent*>(event)->isAutoRepeat()) start();
            return true;
        case QEvent::KeyRelease:
            if (!isCompareKey(*event)) return false;
            if (!static_cast<QKeyEvent*>(event)->isAutoRepeat()) {
                stop();
                setPinned(false);
            }
            return true;
        case QEvent::FocusOut:
            if (!pinned_) stop();
            return false;
        case QEvent::Resize:
            if (isVisible()) setGeometry(viewer_.rect());
            return false;
        default:
            return false;
    }
}

QRectF CompareOverlay::pictureRect() const {
    // A result that is larger than the viewer is shown shrunk, in the middle of its bitmap.
    const CGSize shown = viewer_.sheet().view.imageSize();
    const CGSize result = place_.result;
    const double factor = std::min({shown.width / result.width, shown.height / result.height, 1.0});
    const CGRect& at = place_.picture;
    return {(shown.width - result.width * factor) / 2 + at.x * factor,
            (shown.height - result.height * factor) / 2 + at.y * factor, at.width * factor,
            at.height * factor};
}

/// The painter alone would leave out pixels where it shrinks much.
const QImage& CompareOverlay::pictureOfSize(QSize devicePixels) {
    const QSize size = devicePixels.expandedTo({1, 1});
    if (size.width() >= picture_.width() && size.height() >= picture_.height()) return picture_;
    if (shrunk_.size() != size)
        shrunk_ = picture_.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return shrunk_;
}

void CompareOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), viewer_.palette().window());  // seen through a translucent ground
    painter.fillRect(rect(), viewer_.background());
    const ViewTransform& view = viewer_.sheet().view;
    if (picture_.isNull() || view.isEmpty()) return;
    const double ratio = devicePixelRatioF();
    painter.scale(1 / ratio, 1 / ratio);
    painter.setTransform(painterTransform(view), true);
    // A crop hides what it hides of the result; beside a whole turned result there is more to show.
    const CGRect part = view.part();
    if (!(part.size() == view.imageSize()))
        painter.setClipRect(QRectF(part.x, part.y, part.width, part.height));
    const QRectF place = pictureRect();
    painter.setRenderHint(QPainter::SmoothPixmapTransform,
                          view.factor() < PicturePainter::kSquaresFrom);
    const QImage& picture = pictureOfSize((place.size() * view.factor()).toSize());
    painter.drawImage(place, picture, QRectF(picture.rect()));
}

}  // namespace skarnel
