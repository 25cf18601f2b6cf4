// The two scroll bars that lie over the picture's edges.
#pragma once

#include <QObject>
#include <QSize>

#include "qt/view_transform.h"

class QScrollBar;
class QWidget;

namespace skarnel {

/// Children of the viewer that show how it is scrolled and tell when a hand moves them. They take
/// no room from the picture and never the focus.
class ViewerScrollBars final : public QObject {
    Q_OBJECT
  public:
    explicit ViewerScrollBars(QWidget& viewer);

    /// On: each bar is there only while there is something to scroll its way.
    void setAutohides(bool hides) { autohides_ = hides; }
    bool autohides() const { return autohides_; }

    /// Shows the view's scroll position along the edges of a widget of this size (logical pixels).
    /// Does not emit `scrolled`.
    void place(const ViewTransform& view, QSize size);

  signals:
    /// Where a hand has moved the bars to, in device pixels.
    void scrolled(double x, double y);

  private:
    QScrollBar* horizontal_;
    QScrollBar* vertical_;
    bool autohides_ = true;
};

}  // namespace skarnel
