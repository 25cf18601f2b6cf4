// The rows of a picture on its way into a file, wherever the picture lies.
#pragma once

#include <cstdint>

#include "imaging/cgimage.h"
#include "imaging/io/pixel_rows.h"

namespace skarnel::io {

/// Gives rows from the top down, each once, of RGBA8 (premultiplied) or packed RGB8.
class PictureRows {
  public:
    struct Shape {
        int width;
        int height;
        int samples;  // a pixel: 3 or 4
        bool opaque;  // every alpha is 255
    };

    explicit PictureRows(const Shape& shape) : shape_(shape) {}
    PictureRows(const PictureRows&) = delete;
    PictureRows& operator=(const PictureRows&) = delete;
    virtual ~PictureRows() = default;

    const Shape& shape() const { return shape_; }
    /// The next row, valid until the next call; null when it cannot be had. Not to be called after
    /// the last.
    virtual const std::uint8_t* next() = 0;

  private:
    Shape shape_;
};

/// Those of a picture in memory, which must outlive this.
class ImageRows final : public PictureRows {
  public:
    explicit ImageRows(const CGImage& image)
        : PictureRows({image.width(), image.height(), image.pixels().samplesPerPixel,
                       isOpaque(image.pixels())}),
          view_(image.pixels()) {}

    const std::uint8_t* next() override { return view_.row(y_++); }

  private:
    PixelView view_;
    int y_ = 0;
};

}  // namespace skarnel::io
