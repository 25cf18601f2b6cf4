// Draws the viewer's picture: smooth when it shrinks, squares when its pixels are large.
#pragma once

#include <QImage>
#include <cstdint>
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

    /// A picture of more pixels is never drawn whole: only what is shown of it, no larger than it
    /// is shown. A result can be thousands of times as high as the picture it is made of.
    static constexpr std::int64_t kWholeUpTo = 32'000'000;

    /// These pixels of the picture, which lie in it; null without memory.
    QImage partOf(const QRect& part) const;
    /// The picture as large as it fits into the box; null without memory, or before the first.
    QImage fittedInto(QSize box) const;

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
    void paintLarge(QPainter& painter, const ViewTransform& view);
    const QImage& shrunk(const ViewTransform& view);
    bool isLarge() const;
    QImage resampled(const QRect& part, QSize size) const;
    void resample(const QRect& part, double factor);

    std::optional<CGImage> source_;
    mutable QImage image_;  // of the source; null until it is needed
    QImage strip_;          // some rows of the source over a ground, while they are painted
    // The shown part at `shrunkFactor_`, empty when it has to be made. Of a large picture what the
    // viewport has of it, at a factor of 1 at most.
    QImage shrunk_;
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
