#include "qt/viewer.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPinchGesture>
#include <QWheelEvent>
#include <cmath>

#include "qt/accessible_parts.h"
#include "qt/annotate_bar.h"
#include "qt/annotation_line.h"
#include "qt/viewer_scroll_bars.h"

namespace skarnel {
namespace {

constexpr double kWheelDoubling = 480;  // wheel units (eighths of a degree) that double the zoom
constexpr double kWheelNotch = 120;
constexpr double kNotchScroll = 60;  // logical pixels a notch
constexpr double kKeyScroll = 40;    // logical pixels an arrow key

}  // namespace

Viewer::Viewer(QWidget* parent)
    : QWidget(parent),
      tool_(ViewerTool::create(mode_)),
      scrollBars_(new ViewerScrollBars(*this)),
      annotateBar_(new AnnotateBar(*this)) {
    describeOwnWidgets();
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    grabGesture(Qt::PinchGesture);
    setAccessibleName(tr("Picture"));
    setAccessibleDescription(
        tr("The picture with its reflection, as it would be saved; Space shows the picture alone"));
    connect(scrollBars_, &ViewerScrollBars::scrolled, this, [this](double x, double y) {
        const ViewerSheet before = sheet_;
        sheet_.view.setScroll({x, y});
        changed(before);
    });
    annotateBar_->hide();
    sheet_.view.zoomToFit();
    showCursor();
}

Viewer::~Viewer() = default;

CGSize Viewer::viewportSize() const {
    const double ratio = devicePixelRatioF();
    return {ViewTransform::devicePixels(width(), ratio),
            ViewTransform::devicePixels(height(), ratio)};
}

void Viewer::setImage(const CGImage& image) {
    const CGSize size{static_cast<double>(image.width()), static_cast<double>(image.height())};
    const CGSize old = sheet_.view.imageSize();
    // A drag's points and what it would put back belong to the old size.
    if (size != old) cancelDrag();
    if (textLine_ != nullptr && old.width > 0 && old.height > 0)
        textLine_->scalePlace(size.width / old.width, size.height / old.height);
    const ViewerSheet before = sheet_;
    const bool wasUpright = !painter_.isEmpty() && sheet_.view.rotation() == 0;
    painter_.setImage(image);
    sheet_.setImageSize(size);
    // What lies beside the old picture and the new one stays as it is.
    if (wasUpright && sheet_.view.rotation() == 0 && !sheet_.selection &&
        sheet_.annotations.empty() && !held_)
        update(logicalBox(before.view).united(logicalBox(sheet_.view)));
    else
        update();
    settled(before);
    emit imageChanged();
}

/// The picture's box in whole logical pixels, with a pixel around for what rounding adds.
QRect Viewer::logicalBox(const ViewTransform& view) const {
    const CGRect box = view.content();
    const double ratio = devicePixelRatioF();
    return QRectF(box.x / ratio, box.y / ratio, box.width / ratio, box.height / ratio)
        .toAlignedRect()
        .adjusted(-1, -1, 1, 1);
}

void Viewer::changed(const ViewerSheet& before) {
    if (before == sheet_) return;
    update();
    settled(before);
}

void Viewer::settled(const ViewerSheet& before) {
    if (before == sheet_) return;
    scrollBars_->place(sheet_.view, size());
    if (textLine_ != nullptr) textLine_->follow(sheet_.view, devicePixelRatioF());
    if (before.view.factor() != sheet_.view.factor() || before.view.fits() != sheet_.view.fits())
        emit zoomChanged();
    if (before.selection != sheet_.selection) emit selectionChanged();
    if (before.selection != sheet_.selection || before.annotations != sheet_.annotations ||
        before.view.part() != sheet_.view.part() ||
        before.view.rotation() != sheet_.view.rotation())
        emit editsChanged();
}

void Viewer::setZoomFactor(double factor) {
    const ViewerSheet before = sheet_;
    sheet_.view.setFactor(factor);
    changed(before);
}

void Viewer::zoomToFit() {
    const ViewerSheet before = sheet_;
    sheet_.view.zoomToFit();
    changed(before);
}

void Viewer::zoomToActualSize() {
    setZoomFactor(1.0);
}

void Viewer::zoomAround(double factor, QPointF logical) {
    const ViewerSheet before = sheet_;
    sheet_.view.zoomAt(factor, toolPoint(logical, {}).view);
    changed(before);
}

void Viewer::setToolMode(IKToolMode mode) {
    if (mode == mode_) return;
    cancelDrag();
    const ViewerSheet before = sheet_;
    endText(true);
    tool_->leave(sheet_);
    mode_ = mode;
    tool_ = ViewerTool::create(mode);
    annotateBar_->setVisible(mode == IKToolModeAnnotate);
    placeAnnotateBar();
    showCursor();
    changed(before);
    emit toolModeChanged();
}

void Viewer::setBackground(const QColor& color) {
    if (color == background_) return;
    background_ = color;
    update();
}

void Viewer::setCheckerboard(bool shown) {
    if (shown == checkerboard_) return;
    checkerboard_ = shown;
    update();
}

void Viewer::setAutohidesScrollers(bool hides) {
    if (hides == scrollBars_->autohides()) return;
    scrollBars_->setAutohides(hides);
    scrollBars_->place(sheet_.view, size());
}

void Viewer::takeEdits(const ViewerSheet& edits) {
    cancelDrag();
    const ViewerSheet before = sheet_;
    endText(false);
    tool_->leave(sheet_);
    sheet_.takeEdits(edits);
    changed(before);
}

void Viewer::setAnnotationShape(AnnotationShape shape) {
    sheet_.nextShape = shape;
}

void Viewer::setAnnotationColor(const QColor& color) {
    sheet_.nextColor = color;
}

void Viewer::clearAnnotations() {
    cancelDrag();
    const ViewerSheet before = sheet_;
    endText(false);
    sheet_.annotations.clear();
    changed(before);
}

void Viewer::selectAll() {
    if (painter_.isEmpty()) return;
    const ViewerSheet before = sheet_;
    sheet_.selection = sheet_.view.part();
    changed(before);
}

QImage Viewer::selectedPicture() const {
    if (painter_.isEmpty() || !sheet_.selection) return {};
    const CGRect& part = *sheet_.selection;
    return straightImage(
        painter_.partOf(QRectF(part.x, part.y, part.width, part.height).toAlignedRect()));
}

void Viewer::followViewport() {
    const CGSize port = viewportSize();
    if (port == sheet_.view.viewport()) return;
    cancelDrag();
    const ViewerSheet before = sheet_;
    if (!autoresizes_ && sheet_.view.fits()) sheet_.view.setFactor(sheet_.view.factor());
    sheet_.view.setViewport(port);
    changed(before);
}

void Viewer::resizeEvent(QResizeEvent* /*event*/) {
    followViewport();
    scrollBars_->place(sheet_.view, size());
    placeAnnotateBar();
}

void Viewer::placeAnnotateBar() {
    const QSize size = annotateBar_->sizeHint();
    annotateBar_->setGeometry((width() - size.width()) / 2, 8, size.width(), size.height());
    annotateBar_->raise();
}

// Input --------------------------------------------------------------------------------------

ToolPoint Viewer::toolPoint(QPointF logical, Qt::KeyboardModifiers modifiers) const {
    const double ratio = devicePixelRatioF();
    return {{logical.x() * ratio, logical.y() * ratio}, modifiers};
}

void Viewer::showCursor() {
    setCursor(painter_.isEmpty() ? Qt::ArrowCursor : tool_->cursor(held_.has_value()));
}

void Viewer::mousePressEvent(QMouseEvent* event) {
    endText(true);
    if (event->button() != Qt::LeftButton || painter_.isEmpty()) return event->ignore();
    finishDrag();
    const ViewerSheet before = sheet_;
    held_ = toolPoint(event->position(), event->modifiers());
    tool_->press(sheet_, *held_);
    showCursor();
    changed(before);
    if (const auto place = tool_->takeTextPlace()) beginText(*place);
}

void Viewer::mouseMoveEvent(QMouseEvent* event) {
    if (!held_) return showCursor();
    // The release went elsewhere, to a menu or another program.
    if (!event->buttons().testFlag(Qt::LeftButton)) return finishDrag();
    const ViewerSheet before = sheet_;
    held_ = toolPoint(event->position(), event->modifiers());
    tool_->drag(sheet_, *held_);
    changed(before);
}

void Viewer::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !held_) return event->ignore();
    held_ = toolPoint(event->position(), event->modifiers());
    finishDrag();
}

void Viewer::finishDrag() {
    if (!held_) return;
    const ViewerSheet before = sheet_;
    tool_->release(sheet_, *std::exchange(held_, std::nullopt));
    showCursor();
    update();
    changed(before);
}

void Viewer::cancelDrag() {
    if (!held_) return;
    const ViewerSheet before = sheet_;
    held_.reset();
    tool_->cancel(sheet_);
    showCursor();
    update();
    changed(before);
}

void Viewer::mouseDoubleClickEvent(QMouseEvent* event) {
    if (mode_ == IKToolModeAnnotate) return mousePressEvent(event);
    if (event->button() != Qt::LeftButton) return event->ignore();
    if (fits())
        zoomAround(1.0, event->position());
    else
        zoomToFit();
}

void Viewer::wheelEvent(QWheelEvent* event) {
    const QPoint turned = event->angleDelta();
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        if (turned.y() != 0)
            zoomAround(zoomFactor() * std::exp2(turned.y() / kWheelDoubling), event->position());
        return event->accept();
    }
    const double ratio = devicePixelRatioF();
    QPointF moved = event->pixelDelta();
    if (moved.isNull()) moved = QPointF(turned) / kWheelNotch * kNotchScroll;
    if (event->modifiers().testFlag(Qt::ShiftModifier) && moved.x() == 0)
        moved = QPointF(moved.y(), 0);
    const ViewerSheet before = sheet_;
    sheet_.view.scrollBy(moved.x() * ratio, moved.y() * ratio);
    changed(before);
    event->accept();
}

bool Viewer::gesture(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        auto* native = static_cast<QNativeGestureEvent*>(event);
        if (native->gestureType() != Qt::ZoomNativeGesture) return false;
        zoomAround(zoomFactor() * (1 + native->value()), native->position());
        return true;
    }
    auto* pinch =
        static_cast<QPinchGesture*>(static_cast<QGestureEvent*>(event)->gesture(Qt::PinchGesture));
    if (pinch == nullptr) return false;
    if (pinch->changeFlags().testFlag(QPinchGesture::ScaleFactorChanged))
        zoomAround(zoomFactor() * pinch->scaleFactor(), mapFromGlobal(pinch->centerPoint()));
    return true;
}

bool Viewer::event(QEvent* event) {
    if (event->type() == QEvent::Gesture || event->type() == QEvent::NativeGesture) {
        if (gesture(event)) return true;
    }
    if (event->type() == QEvent::ScreenChangeInternal) followViewport();
    return QWidget::event(event);
}

bool Viewer::scrollByKey(const QKeyEvent& event) {
    const double step = kKeyScroll * devicePixelRatioF();
    const double page = sheet_.view.viewport().height * 0.9;
    switch (event.key()) {
        case Qt::Key_Left:
            sheet_.view.scrollBy(step, 0);
            return true;
        case Qt::Key_Right:
            sheet_.view.scrollBy(-step, 0);
            return true;
        case Qt::Key_Up:
            sheet_.view.scrollBy(0, step);
            return true;
        case Qt::Key_Down:
            sheet_.view.scrollBy(0, -step);
            return true;
        case Qt::Key_PageUp:
            sheet_.view.scrollBy(0, page);
            return true;
        case Qt::Key_PageDown:
            sheet_.view.scrollBy(0, -page);
            return true;
        default:
            return false;
    }
}

void Viewer::keyPressEvent(QKeyEvent* event) {
    if (held_ && event->key() == Qt::Key_Escape) return cancelDrag();
    const ViewerSheet before = sheet_;
    const bool used =
        (!held_ && tool_->key(sheet_, event->key(), event->modifiers())) || scrollByKey(*event);
    if (!used) return QWidget::keyPressEvent(event);
    update();  // a tool's own drawing may have changed alone
    changed(before);
    if (const auto place = tool_->takeTextPlace()) beginText(*place);
}

// Text on the picture ------------------------------------------------------------------------

void Viewer::beginText(CGPoint place) {
    held_.reset();
    textLine_ = new AnnotationLine(place, this);
    textLine_->setAccessibleName(tr("Text on the picture"));
    textLine_->setPlaceholderText(tr("Text"));
    textLine_->follow(sheet_.view, devicePixelRatioF());
    connect(textLine_, &QLineEdit::editingFinished, this, [this] { endText(true); });
    connect(textLine_, &AnnotationLine::dropped, this, [this] { endText(false); });
    textLine_->show();
    textLine_->setFocus();
}

void Viewer::endText(bool keep) {
    AnnotationLine* line = std::exchange(textLine_, nullptr);
    if (line == nullptr) return;
    const QString text = line->text().trimmed();
    // Where the user has gone on to something else, the focus is there already.
    const bool wasTyping = window()->focusWidget() == line;
    line->hide();
    line->deleteLater();
    if (wasTyping) setFocus();
    if (!keep || text.isEmpty()) return;
    const ViewerSheet before = sheet_;
    sheet_.annotations.push_back(
        {AnnotationShape::Text, line->place(), line->place(), text, sheet_.nextColor});
    changed(before);
}

}  // namespace skarnel
