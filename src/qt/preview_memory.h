// Memory for the previews of a drag, made ready before the first: fresh memory costs a multiple of
// the render that is stored in it.
#pragma once

#include <QObject>
#include <QTimer>
#include <cstddef>

namespace skarnel {

class Viewer;

/// Works in small steps while the window has nothing else to do, from the viewer's first picture
/// on.
class PreviewMemory final : public QObject {
    Q_OBJECT
  public:
    /// The viewer is borrowed and owns this object.
    explicit PreviewMemory(Viewer& viewer);

    bool isReady() const { return pictureBytes_ > 0 && !work_.isActive(); }

  private:
    void notice();
    void step();

    Viewer& viewer_;
    QTimer work_;
    std::size_t pictureBytes_ = 0;  // of one picture as large as the viewer; 0 before the first
};

}  // namespace skarnel
