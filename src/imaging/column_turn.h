// A projective map that keeps vertical lines vertical, drawn in two passes: along the rows, then
// along the columns. This is the shape of every turn about a vertical axis.
//
//   topLeft *                                 Both sides are vertical, so each target column
//           |\___                             shows one source column, shifted and stretched:
//           |    \* topRight                  with t = (x - left) / (right - left) the column's
//           |     |                           height is L(t) = (1 - t) Lleft + t Lright and its
//           |  ___* bottomRight               source is s = t Lright / (t Lright + (1 - t) Lleft)
//           |/                                of the width (lengths are inverse to depths).
// bottomLeft*
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "imaging/kernels/turn.h"
#include "imaging/projection.h"

namespace skarnel {

class ColumnTurn {
  public:
    /// For a picture of the given size whose rectangle goes onto `quad`, drawn into targetWidth x
    /// targetHeight pixels whose lower left corner is `lowerLeft`. None when a side of the quad is
    /// not vertical, a corner is not finite, or the quad is turned around; throws nothing.
    static std::optional<ColumnTurn> plan(int width, int height, const Quad& quad,
                                          CGPoint lowerLeft, int targetWidth, int targetHeight);

    int targetWidth() const { return static_cast<int>(from_.size()); }

    /// First pass: one source row to one row of targetWidth() pixels. Of the memory behind `source`
    /// `readablePixels` may be read, at least a row; what lies beyond the row plays no part.
    void squeezeRow(const std::uint8_t* source, std::size_t readablePixels,
                    std::uint8_t* target) const;

    /// Second pass. `squeezed` holds the squeezed rows, top row first, and after them one readable
    /// row whose content plays no part. Writes every byte of the target.
    ///
    /// Against ideal bilinear sampling a byte is at most 1 level off for the rounding of the two
    /// passes, plus what a shift of height / 2^22 + 2^-15 source pixels makes.
    void walkRows(PixelView squeezed, MutablePixelView target) const;

    /// One row of the second pass: targetWidth() pixels of target row `row`.
    void walkRow(PixelView squeezed, int row, std::uint8_t* target) const;

  private:
    kernels::ColumnWalk walkThrough(PixelView squeezed) const;
    void walkRow(kernels::ColumnWalk& walk, int row, std::uint8_t* target) const;
    ColumnTurn() = default;
    void planColumn(double position, double top, double length);
    void paintEdge(const kernels::ColumnWalk& walk, int row, int begin, int end,
                   std::uint8_t* target) const;

    int width_ = 0;
    int height_ = 0;
    std::vector<std::int32_t> from_;     // source column left of the sample
    std::vector<std::uint32_t> weight_;  // of the next one, twice
    std::vector<float> centre_;          // source row at the target's middle row
    std::vector<float> step_;            // source rows for each target row
    std::vector<double> top_;            // where the column begins and ends in the target,
    std::vector<double> bottom_;         // in rows from the top
    double middleRow_ = 0;
};

/// Memory for the first pass of a picture of `height` rows: one row more than that.
std::optional<PixelBuffer> squeezedBuffer(int width, int height);

/// As drawProjected for quads with vertical sides: the whole picture in both passes. None when
/// there is no such plan or no memory. A quad that is the picture's own rectangle at the target's
/// lower left corner is no special case here.
std::optional<CGImage> drawColumnTurn(const CGImage& picture, const Quad& quad, CGPoint lowerLeft,
                                      int targetWidth, int targetHeight);

}  // namespace skarnel
