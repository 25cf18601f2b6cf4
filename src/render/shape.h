// The shaping of the reflection: its size, the fade of each row and the widening of each row.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "imaging/kernels/exact_weight.h"
#include "imaging/kernels/shape.h"
#include "render/column_plans.h"

namespace skarnel {

/// Sizes of the rescaled mirror (w x h) and of the shaped reflection (outWidth x h).
struct ShapeSize {
    int width;     // w
    int height;    // h, the scaled height truncated
    int inset;     // trunc(w * (perspectiveW / 100)), 0 for NaN; may be negative
    int outWidth;  // w + 2 * inset; may be 0 or less

    /// None when the scaled picture has no whole row, or a size does not fit 32 bits.
    static std::optional<ShapeSize> of(int width, int height, float perspectiveW,
                                       float perspectiveH);
    /// The same for a mirror that is rescaled already.
    static std::optional<ShapeSize> ofScaled(int width, int height, float perspectiveW);

    /// Whether there is a column and the pixels' byte count is a signed 32-bit number.
    bool fits() const;
};

/// The fade of every row.
struct FadeParameters {
    float gradientOffset;  // lift of the ramp in percent
    float gradient;        // exponent times 10
    float peakOpacity;     // 0..255 and beyond
};

/// The factor of row `index` (0 = top) of `height`:
///   hm1 = height - 1, r = height - index, fadePos = (r - 1) + (gradientOffset * hm1) / 100,
///   factor = powf(min(fadePos, hm1) / hm1, gradient / 10) * peakOpacity / 255
/// with the mixture of single and double precision that the look was made with: products with a
/// setting are single, divisions by 100 and 255 double. One row alone has the base 0 / 0; a
/// position that is not a number counts as the full ramp.
double rowFactor(int index, int height, const FadeParameters& fade);

/// Makes the rows of a shaped reflection, in any order; rows of equal inset in a row share the
/// work on their columns.
class RowShaper {
  public:
    /// None when the shaped reflection has no column, or without memory.
    static std::optional<RowShaper> create(const ShapeSize& size, const FadeParameters& fade);

    /// Writes outWidth pixels: row `index` (0 = top) from the mirror's same row of `width` pixels.
    /// Of the memory behind mirrorRow `readablePixels` may be read, at least `width`; what lies
    /// beyond the row plays no part.
    void shapeRow(int index, const std::uint8_t* mirrorRow, std::size_t readablePixels,
                  std::uint8_t* target) {
        plan(index, {0, size_.outWidth});
        shapePlanned(index, mirrorRow, readablePixels, target);
    }

    /// Some columns of a row: [begin, end), begin < end.
    struct Columns {
        int begin;
        int end;
    };

    /// The columns of row `index` that may have content; all of them lie in the row.
    Columns contentColumns(int index) const;

    /// First step of making columns of row `index`: returns which columns of the mirror they need.
    Columns plan(int index, Columns columns);

    /// Second step, after plan(index, columns): writes these columns, the first one to `target`. Of
    /// the mirror's row only what they need plays a part.
    void shapePlanned(int index, const std::uint8_t* mirrorRow, std::size_t readablePixels,
                      std::uint8_t* target);

    /// From now on what rows are faded by is kept, for rows that are made in several pieces.
    /// Without memory it is worked out each time.
    void keepFactors();

    /// From here on rows take the columns that were planned for the render before, and leave theirs
    /// to the next one. For previews: the plans of a large picture take more memory than they are
    /// worth.
    void keepPlans();

    /// The columns of the row made last that may have content: [firstColumn, endColumn).
    int firstColumn() const { return begin_; }
    int endColumn() const { return end_; }

  private:
    RowShaper(const ShapeSize& size, const FadeParameters& fade) : size_(size), fade_(fade) {}
    int rowInset(int index) const;
    Columns contentColumns(int rowInset, Columns columns) const;
    void takeColumns(int rowInset, Columns columns);
    void planColumns(int rowInset);
    const kernels::ShapeFactor& factorOf(int index);
    void shapeColumns(const std::uint8_t* mirrorRow, std::size_t readablePixels,
                      const kernels::ShapeFactor& factor, std::uint8_t* content) const;
    void shapeKeptColumns(int rowInset, const std::uint8_t* mirrorRow, std::size_t readablePixels,
                          const kernels::ShapeFactor& factor, std::uint8_t* content) const;

    ShapeSize size_;
    FadeParameters fade_;
    std::optional<int> plannedInset_;
    Columns planned_{0, 0};
    int begin_ = 0;  // of the planned columns [begin_, end_) have content
    int end_ = 0;
    std::vector<std::optional<kernels::ShapeFactor>> factors_;  // of each row, where they are kept
    kernels::ShapeFactor factor_;                               // of the row made last, otherwise
    std::vector<std::int32_t> from_;
    std::vector<std::uint32_t> weight_;
    std::vector<std::int32_t> inDoubles_;
    std::vector<double> fractions_;  // of the columns in inDoubles_
    std::size_t inDoublesCount_ = 0;
    ColumnPlans::Handle plans_;
    const ColumnPlan* plan_ = nullptr;  // of the row made last; null where its columns lie above
};

}  // namespace skarnel
