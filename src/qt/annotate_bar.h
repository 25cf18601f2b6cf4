// The small bar that floats over the picture while the annotate tool is chosen.
#pragma once

#include <QFrame>

namespace skarnel {

class Viewer;

class AnnotateBar final : public QFrame {
    Q_OBJECT
  public:
    /// A child of the viewer, whose next mark it sets.
    explicit AnnotateBar(Viewer& viewer);

  private:
    QWidget* colorButtons();
    Viewer& viewer_;
};

}  // namespace skarnel
