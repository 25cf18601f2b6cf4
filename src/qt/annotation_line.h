// The line in which a text mark is typed, on the picture.
#pragma once

#include <QLineEdit>

#include "qt/view_transform.h"

namespace skarnel {

/// Return and leaving the line end it as any line edit's (`editingFinished`), Escape drops it.
class AnnotationLine final : public QLineEdit {
    Q_OBJECT
  public:
    /// `place` is where the text is to start, in image pixels.
    AnnotationLine(CGPoint place, QWidget* parent);

    CGPoint place() const { return place_; }
    /// Carries the place over to a picture of another size.
    void scalePlace(double x, double y);
    /// Lays the line over its place, inside the parent; the view's units are device pixels.
    void follow(const ViewTransform& view, double deviceRatio);

  signals:
    void dropped();

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    CGPoint place_;
};

}  // namespace skarnel
