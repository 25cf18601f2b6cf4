#include "qt/viewer_tools.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "qt/picture_painter.h"
#include "qt/tool_keys.h"

namespace skarnel {
namespace {

double angleAt(const ViewTransform& view, CGPoint point) {
    const CGRect box = view.content();
    return std::atan2(point.y - box.midY(), point.x - box.midX()) * 180 / std::numbers::pi;
}

constexpr double kFrameShare = 0.5;  // of what is in sight, for a frame that a key began
constexpr double kMarkShare = 0.25;  // for a mark

/// Moves the marquee by an arrow key, or with Shift its right and lower edges.
bool reshapeSelection(ViewerSheet& sheet, int key, Qt::KeyboardModifiers modifiers) {
    const auto step = arrowStep(sheet.view, key, modifiers);
    if (!step || !sheet.selection) return false;
    sheet.selection = modifiers.testFlag(Qt::ShiftModifier)
                          ? resizedRect(*sheet.selection, *step, sheet.view.part())
                          : movedRect(*sheet.selection, *step, sheet.view.part());
    return true;
}

/// Drags the picture about.
class MoveTool final : public ViewerTool {
  public:
    void press(ViewerSheet& sheet, ToolPoint point) override {
        before_ = sheet.view;
        last_ = point.view;
    }
    void drag(ViewerSheet& sheet, ToolPoint point) override {
        sheet.view.scrollBy(point.view.x - last_.x, point.view.y - last_.y);
        last_ = point.view;
    }
    void cancel(ViewerSheet& sheet) override { sheet.view = before_; }
    Qt::CursorShape cursor(bool pressed) const override {
        return pressed ? Qt::ClosedHandCursor : Qt::OpenHandCursor;
    }

  private:
    ViewTransform before_;
    CGPoint last_;
};

/// Draws a marquee; a click without a drag takes it away. Return begins one, arrows change it.
class SelectTool : public ViewerTool {
  public:
    void press(ViewerSheet& sheet, ToolPoint point) override {
        before_ = sheet.selection;
        start_ = sheet.view.toImage(point.view);
        sheet.selection.reset();
    }
    void drag(ViewerSheet& sheet, ToolPoint point) override {
        CGPoint end = sheet.view.toImage(point.view);
        if (point.modifiers.testFlag(Qt::ShiftModifier)) end = squareCorner(end);
        sheet.selection = pixelsBetween(start_, end, sheet.view.part());
    }
    void cancel(ViewerSheet& sheet) override { sheet.selection = before_; }
    bool key(ViewerSheet& sheet, int key, Qt::KeyboardModifiers modifiers) override {
        if (isEnterKey(key) && !sheet.selection && !sheet.view.isEmpty()) {
            sheet.selection = middleOfSight(sheet.view, kFrameShare);
            return true;
        }
        if (key != Qt::Key_Escape) return reshapeSelection(sheet, key, modifiers);
        const bool had = sheet.selection.has_value();
        sheet.selection.reset();
        return had;
    }
    Qt::CursorShape cursor(bool /*pressed*/) const override { return Qt::CrossCursor; }

  protected:
    CGPoint squareCorner(CGPoint end) const {
        const double side = std::min(std::abs(end.x - start_.x), std::abs(end.y - start_.y));
        return {start_.x + std::copysign(side, end.x - start_.x),
                start_.y + std::copysign(side, end.y - start_.y)};
    }
    CGPoint start_;
    std::optional<CGRect> before_;
};

/// Shows only what the drag enclosed, or the frame that keys have made; Escape gives the frame up,
/// and without one shows the whole picture again.
class CropTool final : public SelectTool {
  public:
    void press(ViewerSheet& sheet, ToolPoint point) override {
        leave(sheet);
        sheet.setAside = sheet.selection;
        SelectTool::press(sheet, point);
        dragging_ = true;
    }
    void release(ViewerSheet& sheet, ToolPoint /*point*/) override {
        dragging_ = false;
        const CGRect crop = sheet.selection.value_or(CGRect{});
        // A stray click of a few pixels is no crop.
        const bool stray = std::min(crop.width, crop.height) * sheet.view.factor() < 4;
        stray ? cancel(sheet) : apply(sheet);
    }
    void cancel(ViewerSheet& sheet) override {
        dragging_ = false;
        framing_ = false;
        sheet.selection = std::exchange(sheet.setAside, std::nullopt);
    }
    void leave(ViewerSheet& sheet) override {
        if (framing_) cancel(sheet);
    }
    bool key(ViewerSheet& sheet, int key, Qt::KeyboardModifiers modifiers) override {
        framing_ = framing_ && sheet.selection;  // which another command may have taken away
        if (isEnterKey(key) && !framing_) return frame(sheet);
        if (framing_ && (isEnterKey(key) || key == Qt::Key_Escape)) {
            key == Qt::Key_Escape ? cancel(sheet) : apply(sheet);
            return true;
        }
        if (framing_) return reshapeSelection(sheet, key, modifiers);
        if (key != Qt::Key_Escape || sheet.showsWhole()) return false;
        sheet.view.setPart({});
        return true;
    }
    void paint(QPainter& painter, const ViewerSheet& sheet, double /*deviceRatio*/) const override {
        if ((!dragging_ && !framing_) || !sheet.selection) return;
        const CGRect& crop = *sheet.selection;
        QPainterPath veil;
        veil.addPolygon(shownOutline(sheet.view));
        QPainterPath hole;
        hole.addPolygon(painterTransform(sheet.view)
                            .map(QPolygonF(QRectF(crop.x, crop.y, crop.width, crop.height))));
        painter.fillPath(veil.subtracted(hole), QColor(0, 0, 0, 120));
    }

  private:
    bool frame(ViewerSheet& sheet) {
        if (sheet.view.isEmpty()) return false;
        sheet.setAside = sheet.selection;
        sheet.selection = middleOfSight(sheet.view, kFrameShare);
        framing_ = true;
        return true;
    }
    void apply(ViewerSheet& sheet) {
        sheet.view.setPart(*sheet.selection);
        sheet.setAside.reset();
        cancel(sheet);
    }
    bool dragging_ = false;
    bool framing_ = false;  // a frame that a key began stands
};

/// Turns the picture about its centre.
class RotateTool final : public ViewerTool {
  public:
    void press(ViewerSheet& sheet, ToolPoint point) override {
        before_ = sheet.view;
        grip_ = angleAt(sheet.view, point.view) - sheet.view.rotation();
        dragging_ = true;
    }
    void drag(ViewerSheet& sheet, ToolPoint point) override {
        const bool steps = point.modifiers.testFlag(Qt::ShiftModifier);
        sheet.view.setRotation(snappedAngle(angleAt(sheet.view, point.view) - grip_, steps));
    }
    void release(ViewerSheet& /*sheet*/, ToolPoint /*point*/) override { dragging_ = false; }
    void cancel(ViewerSheet& sheet) override {
        dragging_ = false;
        sheet.view = before_;
    }
    bool key(ViewerSheet& sheet, int key, Qt::KeyboardModifiers modifiers) override {
        const double step = modifiers.testFlag(Qt::ShiftModifier) ? 15 : 1;
        const double now = sheet.view.rotation();
        if (key == Qt::Key_Left)
            sheet.view.setRotation(now - step);
        else if (key == Qt::Key_Right)
            sheet.view.setRotation(now + step);
        else if (key == Qt::Key_Escape && now != 0)
            sheet.view.setRotation(0);
        else
            return false;
        return true;
    }
    void paint(QPainter& painter, const ViewerSheet& sheet, double deviceRatio) const override {
        if (!dragging_) return;
        const QString text = QString::number(sheet.view.rotation(), 'f', 1) + QChar(0xB0);
        QFont font = QGuiApplication::font();
        font.setPixelSize(static_cast<int>(std::lround(13 * deviceRatio)));
        painter.setFont(font);
        const CGSize port = sheet.view.viewport();
        const QRectF badge(port.width / 2 - 34 * deviceRatio, port.height - 40 * deviceRatio,
                           68 * deviceRatio, 26 * deviceRatio);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 170));
        painter.drawRoundedRect(badge, badge.height() / 2, badge.height() / 2);
        painter.setPen(Qt::white);
        painter.drawText(badge, Qt::AlignCenter, text);
    }
    Qt::CursorShape cursor(bool pressed) const override {
        return pressed ? Qt::ClosedHandCursor : Qt::PointingHandCursor;
    }

  private:
    ViewTransform before_;
    double grip_ = 0;
    bool dragging_ = false;
};

/// Puts marks on the picture; a text is typed where the click was. Return puts one in the middle,
/// and until the next Return it follows the arrow keys.
class AnnotateTool final : public ViewerTool {
  public:
    void press(ViewerSheet& sheet, ToolPoint point) override {
        const CGPoint place = sheet.view.toImage(point.view);
        pressed_ = point.view;
        placed_.reset();
        if (sheet.nextShape == AnnotationShape::Text) {
            textPlace_ = place;
            return;
        }
        sheet.annotations.push_back({sheet.nextShape, place, place, {}, sheet.nextColor});
        drawing_ = true;
    }
    void drag(ViewerSheet& sheet, ToolPoint point) override {
        if (drawing_) sheet.annotations.back().to = sheet.view.toImage(point.view);
    }
    void release(ViewerSheet& sheet, ToolPoint point) override {
        const double moved = std::hypot(point.view.x - pressed_.x, point.view.y - pressed_.y);
        if (drawing_ && moved < 3) sheet.annotations.pop_back();
        drawing_ = false;
    }
    void cancel(ViewerSheet& sheet) override {
        if (drawing_) sheet.annotations.pop_back();
        drawing_ = false;
        textPlace_.reset();
    }
    bool key(ViewerSheet& sheet, int key, Qt::KeyboardModifiers modifiers) override {
        if (drawing_ || sheet.view.isEmpty()) return false;
        if (isEnterKey(key)) return isPlacing(sheet) ? keep() : place(sheet);
        if (isPlacing(sheet) && reshape(sheet, key, modifiers)) return true;
        const bool removes = key == Qt::Key_Delete || key == Qt::Key_Backspace ||
                             (key == Qt::Key_Escape && isPlacing(sheet));
        if (!removes || sheet.annotations.empty()) return false;
        sheet.annotations.pop_back();
        placed_.reset();
        return true;
    }
    std::optional<CGPoint> takeTextPlace() override { return std::exchange(textPlace_, {}); }
    Qt::CursorShape cursor(bool /*pressed*/) const override { return Qt::CrossCursor; }

  private:
    /// A text is there only after it was typed.
    bool isPlacing(const ViewerSheet& sheet) const {
        return placed_ && sheet.annotations.size() == *placed_ + 1;
    }
    bool keep() {
        placed_.reset();
        return true;
    }
    bool place(ViewerSheet& sheet) {
        const CGRect box = middleOfSight(sheet.view, kMarkShare);
        placed_ = sheet.annotations.size();
        if (sheet.nextShape == AnnotationShape::Text) {
            textPlace_ = CGPoint{box.x, box.midY()};
            return true;
        }
        const bool isArrow = sheet.nextShape == AnnotationShape::Arrow;  // which points up
        sheet.annotations.push_back({sheet.nextShape,
                                     {box.minX(), isArrow ? box.maxY() : box.minY()},
                                     {box.maxX(), isArrow ? box.minY() : box.maxY()},
                                     {},
                                     sheet.nextColor});
        return true;
    }
    /// Moves the mark whole, or with Shift its second point alone.
    static bool reshape(ViewerSheet& sheet, int key, Qt::KeyboardModifiers modifiers) {
        const auto step = arrowStep(sheet.view, key, modifiers);
        if (!step) return false;
        const CGRect part = sheet.view.part();
        Annotation& mark = sheet.annotations.back();
        if (modifiers.testFlag(Qt::ShiftModifier)) {
            const CGRect end = movedRect({mark.to.x, mark.to.y, 0, 0}, *step, part);
            mark.to = {end.x, end.y};
            return true;
        }
        const CGRect box{std::min(mark.from.x, mark.to.x), std::min(mark.from.y, mark.to.y),
                         std::abs(mark.to.x - mark.from.x), std::abs(mark.to.y - mark.from.y)};
        const CGRect moved = movedRect(box, *step, part);
        for (CGPoint* point : {&mark.from, &mark.to})
            *point = {point->x + moved.x - box.x, point->y + moved.y - box.y};
        return true;
    }

    CGPoint pressed_;
    std::optional<CGPoint> textPlace_;
    std::optional<std::size_t> placed_;  // how many marks there were before a key placed one
    bool drawing_ = false;
};

}  // namespace

double snappedAngle(double degrees, bool steps) {
    double angle = std::remainder(degrees, 360.0);
    const double grid = steps ? 15.0 : 90.0;
    const double nearest = std::round(angle / grid) * grid;
    if (steps || std::abs(angle - nearest) < 4) angle = nearest;
    return angle >= 180 ? angle - 360 : angle;
}

std::optional<CGRect> pixelsBetween(CGPoint a, CGPoint b, CGRect bounds) {
    const double left = std::max(bounds.minX(), std::floor(std::min(a.x, b.x)));
    const double top = std::max(bounds.minY(), std::floor(std::min(a.y, b.y)));
    const double right = std::min(bounds.maxX(), std::ceil(std::max(a.x, b.x)));
    const double bottom = std::min(bounds.maxY(), std::ceil(std::max(a.y, b.y)));
    if (!(right > left && bottom > top)) return std::nullopt;
    return CGRect{left, top, right - left, bottom - top};
}

void paintMarquee(QPainter& painter, const ViewTransform& view, CGRect selection,
                  double deviceRatio) {
    const QPolygonF outline = painterTransform(view).map(
        QPolygonF(QRectF(selection.x, selection.y, selection.width, selection.height)));
    painter.save();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, deviceRatio));
    painter.drawPolygon(outline);
    QPen dashes(Qt::black, deviceRatio, Qt::CustomDashLine);
    dashes.setDashPattern({4, 4});
    painter.setPen(dashes);
    painter.drawPolygon(outline);
    painter.restore();
}

std::unique_ptr<ViewerTool> ViewerTool::create(IKToolMode mode) {
    switch (mode) {
        case IKToolModeMove:
            return std::make_unique<MoveTool>();
        case IKToolModeSelect:
            return std::make_unique<SelectTool>();
        case IKToolModeCrop:
            return std::make_unique<CropTool>();
        case IKToolModeRotate:
            return std::make_unique<RotateTool>();
        case IKToolModeAnnotate:
            return std::make_unique<AnnotateTool>();
    }
    return std::make_unique<MoveTool>();
}

}  // namespace skarnel
