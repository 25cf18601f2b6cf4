// The picture alone, shown in place of the result for as long as a key is held.
#pragma once

#include <QImage>
#include <QWidget>
#include <functional>
#include <optional>

#include "imaging/cgimage.h"
#include "render/placement.h"

namespace skarnel {

class Viewer;

/// What is compared: the picture that the result was made of, and where it stands in that.
struct ComparedPicture {
    CGImage image;
    PicturePlacement place;
};

/// Lies over the viewer and follows its size, zoom, scrolling, crop and turn, so that the picture
/// stays where it stands in the result. The space bar shows it while the viewer has the focus;
/// letting go, or losing the focus, hides it. Pinned, it stays until the space bar or unpinning.
class CompareOverlay final : public QWidget {
    Q_OBJECT
  public:
    using Source = std::function<std::optional<ComparedPicture>()>;

    CompareOverlay(Viewer& viewer, Source source);

    void setPinned(bool pinned);
    /// The picture's rectangle in the viewer's image points.
    QRectF pictureRect() const;

  signals:
    void pinnedChanged(bool pinned);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void start();
    void stop();
    void take();
    bool isCompareKey(const QEvent& event) const;
    const QImage& pictureOfSize(QSize devicePixels);

    Viewer& viewer_;
    Source source_;
    bool pinned_ = false;
    PicturePlacement place_;
    QImage picture_;
    QImage shrunk_;  // the picture as small as it was painted last
};

}  // namespace skarnel
