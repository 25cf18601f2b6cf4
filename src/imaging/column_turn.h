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

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "imaging/kernels/turn.h"
#include "imaging/projection.h"

namespace skarnel {

/// Rows of which only the pixels [first, end) are shown; what lies beside them is transparent.
struct RowSpans {
    const std::uint8_t* const* rows;  // each from pixel `first` on
    int first;
    int end;
    std::size_t readablePixels;  // of the memory behind each row; at least end - first
    // From each row to what is wanted next.
    std::ptrdiff_t aheadBytes = kernels::kAheadInRow;
    // As kernels::SqueezeMap has it; what is shown then is the mix of each row and the next.
    int belowWeight = 0;
};

/// Columns of a target: [begin, end).
struct ColumnRange {
    std::size_t begin;
    std::size_t end;
};

/// A picture after the first pass: column by column, so that the second reads runs of pixels.
struct SqueezedPicture {
    std::shared_ptr<std::uint8_t> bytes;
    std::ptrdiff_t columnStride = 0;  // pixels
    bool stream = false;              // too large for the caches
    std::size_t firstColumn = 0;      // the target's column that comes first
    /// Row y lies at y modulo this.
    int ringRows = std::numeric_limits<int>::max();
};

/// Gives the rows of a picture piece by piece.
class PictureRows {
  public:
    PictureRows() = default;
    PictureRows(const PictureRows&) = delete;
    PictureRows& operator=(const PictureRows&) = delete;
    virtual ~PictureRows() = default;

    /// Rows `row` .. row + count - 1, at most kernels::kBlockRows; of each the columns [first, end)
    /// and maybe more. Good until the next call.
    virtual RowSpans piece(int row, int count, int first, int end) = 0;
};

/// Room for both passes at once: a strip of the squeezed picture, of that only the rows that the
/// walk needs just now.
struct TurnRoom {
    SqueezedPicture strip;
    std::shared_ptr<std::uint8_t> unfinishedLines;  // as kernels::ColumnWalk has them; may be null
};

/// A strip of the target's columns on its way through both passes.
struct TurnStrip {
    ColumnRange columns{0, 0};
    SqueezedPicture squeezed;
    int squeezedEnd = 0;  // the picture's rows before this one are squeezed, or no longer wanted
};

class ColumnTurn {
  public:
    /// For a picture of the given size whose rectangle goes onto `quad`, drawn into targetWidth x
    /// targetHeight pixels whose lower left corner is `lowerLeft`. None when a side of the quad is
    /// not vertical, a corner is not finite, or the quad is turned around; throws nothing.
    static std::optional<ColumnTurn> plan(int width, int height, const Quad& quad,
                                          CGPoint lowerLeft, int targetWidth, int targetHeight);

    /// Tells where the picture shows nothing: its column c is transparent above row emptyRows[c];
    /// one number for each of its columns. Such pixels are neither kept between the passes, where
    /// their whole blocks are transparent beside the spans, nor walked through. Without memory
    /// nothing is left out.
    void leaveOut(const std::vector<int>& emptyRows);

    /// First pass: rows `row` .. row + count - 1 of the picture, count being blockRows(row). Of the
    /// memory behind each of the `sources` `readablePixels` may be read, at least a row; what lies
    /// beyond the row plays no part.
    void squeezeRows(int row, const std::uint8_t* const* sources, std::size_t readablePixels,
                     SqueezedPicture& target) const;

    /// The same for rows that are transparent but for a span of their own: 0 <= first < end, end at
    /// most the width.
    void squeezeSpans(int row, const RowSpans& spans, SqueezedPicture& target) const {
        squeezeSpans(row, spans, {0, from_.size()}, target);
    }

    int targetWidth() const { return static_cast<int>(from_.size()); }

    /// How many rows the first pass takes at once: the rows up to the next multiple of
    /// kernels::kBlockRows or to the end.
    int blockRows(int row) const { return std::min(kernels::kBlockRows, height_ - row); }

    /// Room for the first pass; none without memory.
    std::optional<SqueezedPicture> squeezedPicture() const;

    /// Second pass, after all rows were squeezed: the target's rows from firstRow on into
    /// `target`, which may have rows behind the last and be wider. Writes targetWidth() pixels of
    /// each.
    ///
    /// Against ideal bilinear sampling a byte is at most 1 level off for the rounding of the two
    /// passes, plus what a shift of height / 2^22 + 2^-15 source pixels makes.
    void walkRows(const SqueezedPicture& squeezed, int firstRow, MutablePixelView target) const;

    /// Room for drawing `target`; none without memory.
    std::optional<TurnRoom> roomToDraw(const MutablePixelView& target) const;

    /// Both passes, strip by strip of columns, to the same bytes: what lies between the two stays
    /// in the caches. The picture's rows are asked for in pieces, each once.
    void draw(PictureRows& rows, const TurnRoom& room, MutablePixelView target) const;

    /// How many strips of columns the target is drawn in.
    std::size_t strips() const;

    /// The columns of strip 0 .. strips() - 1.
    ColumnRange stripColumns(std::size_t strip) const;
    /// Of the widest strip.
    std::size_t stripWidth() const;

    /// Target rows of a strip that are drawn together.
    static constexpr int kStripRows = 64;

    /// The strip's columns of the target's rows from firstRow on, a multiple of kStripRows, at most
    /// kStripRows of them: `target` has no others. From one call to the next, firstRow grows; where
    /// it does not, squeezedEnd is to be 0.
    void drawStripRows(TurnStrip& strip, PictureRows& rows, int firstRow,
                       MutablePixelView target) const;

  private:
    ColumnTurn() = default;
    enum class Edge { Left, Right };
    void squeezeSpans(int row, const RowSpans& spans, ColumnRange columns,
                      SqueezedPicture& target) const;
    static std::shared_ptr<std::uint8_t> unfinishedLinesFor(const MutablePixelView& target);
    kernels::ColumnWalk walkOf(const SqueezedPicture& squeezed, ColumnRange columns) const;
    struct Rows {
        int begin;
        int end;
    };
    Rows neededRows(ColumnRange columns, int firstRow, int rows) const;
    void squeezeBlock(int row, PictureRows& rows, ColumnRange columns,
                      SqueezedPicture& target) const;
    kernels::ColumnWalk squeezedRows(TurnStrip& strip, PictureRows& rows, int firstRow,
                                     int count) const;
    void drawStrip(TurnStrip& strip, PictureRows& rows, kernels::Strip kind,
                   std::uint8_t* unfinishedLines, MutablePixelView target) const;
    void squeezeColumns(int row, std::size_t begin, std::size_t end, const RowSpans& spans,
                        SqueezedPicture& target) const;
    void squeezeEdge(int row, std::size_t begin, std::size_t end, Edge edge, const RowSpans& spans,
                     SqueezedPicture& target) const;
    void clearColumns(int row, std::size_t begin, std::size_t end, SqueezedPicture& target) const;
    void planColumn(double position, double top, double length, int targetHeight);
    void beginColumnAt(std::size_t column, double row);

    int width_ = 0;
    int height_ = 0;
    int middleRow_ = 0;                  // of the target
    std::vector<std::int32_t> from_;     // source column left of the sample
    std::vector<std::uint32_t> weight_;  // of the next one, twice
    // As kernels::ColumnWalk has them.
    std::vector<float> centre_;
    std::vector<float> step_;
    std::vector<std::int32_t> begin_, fullBegin_, fullEnd_, end_;
    std::vector<std::uint8_t> firstLevel_, lastLevel_;
    // The squeezed rows above this one, a multiple of kernels::kBlockRows, play no part; none where
    // nothing is left out.
    std::vector<std::int32_t> firstKeptRow_;
};

/// As drawProjected for quads with vertical sides: the whole picture in both passes. None when
/// there is no such plan or no memory. A quad that is the picture's own rectangle at the target's
/// lower left corner is no special case here.
std::optional<CGImage> drawColumnTurn(const CGImage& picture, const Quad& quad, CGPoint lowerLeft,
                                      int targetWidth, int targetHeight);

}  // namespace skarnel
