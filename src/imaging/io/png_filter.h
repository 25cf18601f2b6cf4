// The rows of a picture as a PNG file takes them: straight samples, as differences.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"

namespace skarnel::io {

/// Which filters a row may have; the one with the least differences is taken.
enum class PngFilters { Sub, SubOrUp, SubUpOrPaeth };

/// Filters row by row. Rows are best asked for from the top down: each needs the one before it.
class PngRows {
  public:
    /// Three samples a pixel where `opaque`, else four. The picture must outlive this.
    PngRows(const CGImage& image, bool opaque, PngFilters filters);

    int count() const { return view_.height; }
    /// 3 or 4.
    std::size_t pixelBytes() const { return pixelBytes_; }
    /// Bytes of a filtered row: the filter's number and the samples.
    std::size_t lineBytes() const { return rowBytes_ + 1; }

    /// Puts row y, filtered, into lineBytes() bytes.
    void filter(int y, std::uint8_t* out);

  private:
    void load(int y);

    PixelView view_;
    std::size_t pixelBytes_;
    std::size_t rowBytes_;
    PngFilters filters_;
    int loaded_ = -1;
    // Straight samples of a row, behind `pixelBytes_` zeros so that its first pixel has a left
    // neighbour: the current row and the one before.
    std::array<Bytes, 2> rows_;
    Bytes trial_;
};

}  // namespace skarnel::io
