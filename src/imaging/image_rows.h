// The rows of a picture as they land in a bitmap: resampled along both axes, one row at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "imaging/axis_plan.h"
#include "imaging/cgimage.h"
#include "imaging/column_combiner.h"
#include "imaging/row_source.h"

namespace skarnel {

/// Makes the rows of a drawing from a picture of four samples a pixel. Borrows what it is given.
/// Vertical first, rounded to bytes, then horizontal: each at most half a level off, so that a
/// resampled byte lies within one level and the weights' error of the exact mean.
class ImageRows {
  public:
    /// None without memory for the scratch rows.
    static std::optional<ImageRows> create(PixelView source, const AxisPlan& columns,
                                           const AxisPlan& rows);

    /// From rows that are made when they are read, `width` pixels each. Rows asked for from top to
    /// bottom are made once each, and only as many are held as one target row needs; a source of
    /// several strips is read at the first of them, and its rows are held as they are after the
    /// vertical step.
    static std::optional<ImageRows> create(RowSource& source, int width, const AxisPlan& columns,
                                           const AxisPlan& rows);

    /// The pixels of target row rows.first() + i, columns.size() of them. Points into the source
    /// where nothing is resampled, otherwise into scratch that the next call overwrites.
    const std::uint8_t* row(int i);

    /// The same, of which the caller needs the target's columns [begin, end) alone; they lie where
    /// they lie in the whole row. For a picture that lies in memory.
    const std::uint8_t* rowPiece(int i, int begin, int end);

    /// The same pixels, written to `target`.
    void drawRow(int i, std::uint8_t* target);

    /// Neighbouring rows of a picture in memory that are mixed two by two.
    struct MixedRows {
        int belowWeight;             // of the lower one, as a fraction of kernels::kLerpUnit
        std::size_t readablePixels;  // behind each of them
    };

    /// The rows of the picture that target rows i .. i + count - 1 are mixed from, row i + k being
    /// exactly lerpByte of rows[k] and rows[k + 1]: `rows` has room for count + 1. None where they
    /// are not made so, all with one weight, or columns are resampled.
    std::optional<MixedRows> mixedRows(int i, int count, const std::uint8_t** rows) const;

    /// How many pixels from row(i) on may be read; for a picture that lies in memory.
    std::size_t readableFrom(int i) const;

    /// Pixels that may be read behind every row of scratch.
    static constexpr std::size_t kPadding = 64;

  private:
    ImageRows(PixelView source, const AxisPlan& columns, const AxisPlan& rows)
        : source_(source), columns_(&columns), rows_(&rows) {}
    static std::optional<ImageRows> create(PixelView view, RowSource* source,
                                           const AxisPlan& columns, const AxisPlan& rows);
    const std::uint8_t* combinedRow(int i);
    const std::uint8_t* combinedPiece(const kernels::Taps& taps, int begin, int end);
    const std::uint8_t* combinedMadeRow(const kernels::Taps& taps);
    const std::uint8_t* combinedStripsRow(int i);
    void combineStrips();
    const SourceRow& stripRow(int y);
    void askForRowsAhead(int i, int begin, int end) const;
    void combineAcross(std::uint8_t* target, const std::uint8_t* tall) const;

    /// A row of the row source: its number and where it lies.
    struct HeldRow {
        int y = -1;
        SourceRow row{};
    };
    HeldRow& heldRow(int y);
    /// The row with all of its pixels in memory.
    const std::uint8_t* wholeRow(int y);
    std::uint8_t* placeOf(int y);

    PixelView source_;  // of a row source only the width counts
    RowSource* rowSource_ = nullptr;
    std::vector<HeldRow> held_;  // row y lies at y modulo the size
    std::vector<std::uint8_t> heldMemory_;
    std::size_t rowBytes_ = 0;  // of a row there
    /// Of a source of several strips: all rows after the vertical step.
    std::shared_ptr<std::uint8_t> combined_;
    bool isCombined_ = false;
    SourceRow stripRows_[RowSource::kKeptRows] = {};  // row y lies at y modulo the size
    int stripEnd_ = 0;                                // of the rows that were made
    const AxisPlan* columns_;
    const AxisPlan* rows_;
    ColumnCombiner combiner_;  // where columns are resampled
    int contentFirst_ = 0;     // columns of the row that combinedRow made last: beside them
    int contentEnd_ = 0;       // it is transparent
    std::vector<const std::uint8_t*> tapRows_;
    std::vector<std::uint8_t> tall_;  // one source row after the vertical step
    std::vector<std::uint8_t> wide_;  // one target row after the horizontal step
};

}  // namespace skarnel
