// The picture viewer: a widget that shows one picture and lets tools work on how it is shown.
#pragma once

#include <QColor>
#include <QImage>
#include <QWidget>
#include <memory>
#include <optional>

#include "imaging/cgimage.h"
#include "platform/image_view.h"
#include "qt/picture_painter.h"
#include "qt/viewer_tools.h"

namespace skarnel {

class AnnotateBar;
class AnnotationLine;
class ViewerScrollBars;

/// Units: the transform and everything named "device" count device pixels; Qt's own positions are
/// logical. Nothing here changes the picture.
class Viewer final : public QWidget {
    Q_OBJECT
  public:
    explicit Viewer(QWidget* parent = nullptr);
    ~Viewer() override;

    void setImage(const CGImage& image);
    /// The picture shown; a null image before the first.
    const QImage& shownImage() const { return painter_.image(); }
    bool hasImage() const { return !painter_.isEmpty(); }
    /// The picture shown, no larger than the box; null before the first, or without memory.
    QImage imageFittedInto(QSize box) const { return painter_.fittedInto(box); }

    /// What a screen reader calls the picture; empty where it has no name.
    const QString& pictureName() const { return pictureName_; }
    void setPictureName(const QString& name) { pictureName_ = name; }

    /// The viewport's size in device pixels; does not depend on zoom and scrolling, since the
    /// scroll bars lie over the picture.
    CGSize viewportSize() const;

    double zoomFactor() const { return sheet_.view.factor(); }
    bool fits() const { return sheet_.view.fits(); }
    void setZoomFactor(double factor);
    void zoomToFit();
    void zoomToActualSize();

    IKToolMode toolMode() const { return mode_; }
    void setToolMode(IKToolMode mode);
    void setBackground(const QColor& color);
    QColor background() const { return background_; }
    void setCheckerboard(bool shown);
    bool checkerboard() const { return checkerboard_; }
    /// On: scroll bars are there only while there is something to scroll.
    void setAutohidesScrollers(bool hides);
    /// Off: fitting does not follow the widget's size.
    void setAutoresizes(bool resizes) { autoresizes_ = resizes; }

    const ViewerSheet& sheet() const { return sheet_; }
    /// Forgets crop, turn, selection and marks: they belonged to another picture.
    void discardEdits() { takeEdits({}); }
    /// Shows the picture with the edits of an earlier `sheet()`, which may be of another size.
    void takeEdits(const ViewerSheet& edits);
    void setAnnotationShape(AnnotationShape shape);
    void setAnnotationColor(const QColor& color);
    void clearAnnotations();
    void selectAll();
    /// The pixels inside the marquee, not premultiplied; null without one.
    QImage selectedPicture() const;

    QSize sizeHint() const override { return {640, 480}; }
    QSize minimumSizeHint() const override { return {160, 120}; }

  signals:
    void zoomChanged();
    void selectionChanged();
    void toolModeChanged();
    /// Selection, crop, turn or marks.
    void editsChanged();
    /// Another picture is to be shown; for whoever counts renders.
    void imageChanged();
    /// The picture has been painted; for whoever measures how long that took.
    void painted();

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    ToolPoint toolPoint(QPointF logical, Qt::KeyboardModifiers modifiers) const;
    bool gesture(QEvent* event);
    bool scrollByKey(const QKeyEvent& event);
    void followViewport();
    /// Repaints and tells of what changed since the sheet looked like `before`.
    void changed(const ViewerSheet& before);
    /// The same for who has asked for the repaint already.
    void settled(const ViewerSheet& before);
    QRect logicalBox(const ViewTransform& view) const;
    void placeAnnotateBar();
    void zoomAround(double factor, QPointF logical);
    void beginText(CGPoint place);
    void endText(bool keep);
    void showCursor();
    /// Ends the drag where the pointer was seen last.
    void finishDrag();
    /// Ends the drag and puts back what it had changed.
    void cancelDrag();
    void paintGround(QPainter& painter);
    /// Picture and ground of a plain view at once; false where it takes one after the other.
    bool paintPlain(QPainter& painter);

    PicturePainter painter_;
    QString pictureName_;
    ViewerSheet sheet_;
    IKToolMode mode_ = IKToolModeMove;
    std::unique_ptr<ViewerTool> tool_;
    QColor background_ = Qt::black;
    bool checkerboard_ = false;
    bool autoresizes_ = true;
    std::optional<ToolPoint> held_;  // during a drag: where the pointer was seen last
    ViewerScrollBars* scrollBars_;
    AnnotateBar* annotateBar_;
    AnnotationLine* textLine_ = nullptr;
};

}  // namespace skarnel
