// Draws the viewer's picture: smooth when it shrinks, squares when its pixels are large.
#pragma once

#include <QImage>
#include <optional>

#include "imaging/cgimage.h"
#include "qt/view_transform.h"

class QColor;
class QPainter;
class QPolygonF;
class QTransform;

namespace skarnel {

/// The picture's bytes as the painter's own kind of picture (premultiplied ARGB words); a copy.
QImage paintableImage(const CGImage& image);

/// The same, not premultiplied and byte-ordered, for encoders and the clipboard.
QImage straightImage(const QImage& paintable);

class PicturePainter {
  public:
    /// From this factor on every image pixel is a sharp square; below it enlarging is smooth.
    static constexpr double kSquaresFrom = 3.0;

    void setImage(const CGImage& image);
    bool isEmpty() const { return !source_; }
    /// A null image before the first; converted when it is first asked for.
    const QImage& image() const;

    /// Draws the part that `view` shows. The painter's units are device pixels.
    void paint(QPainter& painter, const ViewTransform& view);

    /// Whether `view` shows the picture whole, upright and pixel by pixel, as it does while it
    /// fits.
    bool isPlain(const ViewTransform& view) const;

    /// For a plain view over an opaque ground: draws picture and ground in one, so that nothing
    /// needs to be painted below. False without memory; something may be drawn then.
    bool paintOver(QPainter& painter, const ViewTransform& view, const QColor& ground);

    /// How often the picture was resampled anew; repainting an unchanged view must not add to it.
    int resampleCount() const { return resampleCount_; }

  private:
    void paintUpright(QPainter& painter, const ViewTransform& view);
    void paintTurned(QPainter& painter, const ViewTransform& view);
    const QImage& shrunk(const ViewTransform& view);

    std::optional<CGImage> source_;
    mutable QImage image_;  // of the source; null until it is needed
    QImage strip_;          // some rows of the source over a ground, while they are painted
    QImage shrunk_;         // the shown part at `shrunkFactor_`, empty when it has to be made
    CGRect shrunkPart_;
    double shrunkFactor_ = 0;
    int resampleCount_ = 0;
};

/// Image coordinates to device pixels, for painters.
QTransform painterTransform(const ViewTransform& view);

/// The shown part's outline in device pixels.
QPolygonF shownOutline(const ViewTransform& view);

/// Fills the shown part's outline with a checkerboard whose squares have a fixed size on screen.
void paintCheckerboard(QPainter& painter, const ViewTransform& view, int squareDevicePixels,
                       const QColor& first, const QColor& second);

}  // namespace skarnel
