// What a drag in the viewer does, one class for each tool.
#pragma once

#include <QColor>
#include <QString>
#include <Qt>
#include <memory>
#include <optional>
#include <vector>

#include "platform/image_view.h"
#include "qt/annotation.h"
#include "qt/view_transform.h"

class QKeyEvent;
class QPainter;

namespace skarnel {

/// What the tools work on: how the picture is shown and what lies over it. None of it touches the
/// picture itself or what is saved.
struct ViewerSheet {
    ViewTransform view;
    std::optional<CGRect> selection;  // whole image pixels, inside the shown part
    std::optional<CGRect> setAside;  // what was selected before a frame for cropping took its place
    std::vector<Annotation> annotations;
    AnnotationShape nextShape = AnnotationShape::Ellipse;
    QColor nextColor{0xFF, 0x3B, 0x30};

    /// Carries selection, crop and marks over to a picture of another size.
    void setImageSize(CGSize size);
    /// Shows the whole upright picture again, without selection and marks.
    void discardEdits();
    /// Selection, crop, turn and marks of another sheet instead of its own, carried over to this
    /// picture's size. A frame for cropping that was under way there is given up.
    void takeEdits(ViewerSheet from);
    bool hasEdits() const;
    /// No crop.
    bool showsWhole() const;

    friend bool operator==(const ViewerSheet&, const ViewerSheet&) = default;
};

/// The pointer's place in device pixels.
struct ToolPoint {
    CGPoint view;
    Qt::KeyboardModifiers modifiers;
};

class ViewerTool {
  public:
    static std::unique_ptr<ViewerTool> create(IKToolMode mode);
    virtual ~ViewerTool() = default;

    /// Each changes the sheet only; the viewer repaints. `press` comes first, then drags, then one
    /// `release`; `cancel` may end a drag instead and puts back what it had changed.
    virtual void press(ViewerSheet& sheet, ToolPoint point) = 0;
    virtual void drag(ViewerSheet& sheet, ToolPoint point) = 0;
    virtual void release(ViewerSheet& /*sheet*/, ToolPoint /*point*/) {}
    virtual void cancel(ViewerSheet& /*sheet*/) {}

    /// Another tool is chosen, or all edits are discarded: what keys have begun is given up.
    virtual void leave(ViewerSheet& /*sheet*/) {}

    /// True when the key meant something to the tool.
    virtual bool key(ViewerSheet& /*sheet*/, int /*key*/, Qt::KeyboardModifiers /*modifiers*/) {
        return false;
    }

    /// Where a line of text is to be typed, after a click or a key asked for it; asked once.
    virtual std::optional<CGPoint> takeTextPlace() { return std::nullopt; }

    /// What is seen only while the tool is at work, over the picture; device pixels.
    virtual void paint(QPainter& /*painter*/, const ViewerSheet& /*sheet*/,
                       double /*deviceRatio*/) const {}

    virtual Qt::CursorShape cursor(bool pressed) const = 0;
};

/// Snaps an angle in degrees to a multiple of 90 nearer than 4 degrees; with `steps` to the
/// nearest multiple of 15. The result is in [-180, 180).
double snappedAngle(double degrees, bool steps);

/// The whole image pixels between two image points, inside `bounds`; none when there is none.
std::optional<CGRect> pixelsBetween(CGPoint a, CGPoint b, CGRect bounds);

/// The selection's outline and, for the crop tool, a veil around it; device pixels.
void paintMarquee(QPainter& painter, const ViewTransform& view, CGRect selection,
                  double deviceRatio);

}  // namespace skarnel
