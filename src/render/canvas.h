// The composite as a sequence of rows: background, reflection and picture, drawn straight into
// the bitmap that needs them. No other image is made on the way.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "imaging/axis_plan.h"
#include "imaging/cgimage.h"
#include "imaging/column_combiner.h"
#include "imaging/image_rows.h"
#include "imaging/kernels/pixel_ops.h"
#include "imaging/row_source.h"
#include "render/shape.h"

namespace skarnel {

/// Where everything lies on the canvas; bottom-up.
///
///      x            +-------------+
///                   |   picture   |  H0 rows, its lower edge at yTop
///                   +-------------+
///                        gap
///      0      +--------------------------+
///             |        reflection        |  H1 rows, as wide as the canvas
///      0      +--------------------------+
struct CanvasLayout {
    int width;    // max(W0, W1)
    int height;   // trunc(H0 + yTop)
    double yTop;  // (reflectionOffset / 100 + 1) * H1; fractional
    int x;        // trunc(W1 / 2) - trunc(W0 / 2); negative where the reflection is narrower

    /// None where the canvas has no pixel.
    static std::optional<CanvasLayout> of(int pictureWidth, int pictureHeight,
                                          const ShapeSize& reflection, float reflectionOffset);
};

class CanvasRows {
  public:
    /// Borrows the picture's pixels (four samples). None without memory.
    static std::optional<CanvasRows> create(PixelView picture, const CanvasLayout& layout,
                                            const ShapeSize& reflection, bool upright,
                                            const FadeParameters& fade,
                                            std::optional<kernels::Pixel> background);

    /// Writes canvas row `row` (0 = top), layout.width pixels.
    void draw(int row, std::uint8_t* target) { draw(row, {0, layout_.width}, target); }

    /// Some columns of a row: [begin, end), begin < end.
    using Columns = RowShaper::Columns;

    /// Writes these columns of the row, the first one to `target`.
    void draw(int row, Columns columns, std::uint8_t* target);

    /// Whether columns can be drawn without the rest of their row.
    bool drawsInPieces() const { return reflectionWidth_ == layout_.width; }

    /// For each column, above which row it is transparent at least; nothing where that is known of
    /// no column. Throws std::bad_alloc.
    std::vector<int> emptyRows() const;

    /// Rows will be drawn in pieces: what these can share is kept.
    void expectPieces() { shaper_->keepFactors(); }

    /// For rows that are drawn for a preview: see RowShaper::keepPlans.
    void keepPlans() { shaper_->keepPlans(); }

    /// The same row: drawn into `scratch`, or the picture's own where the canvas has nothing else
    /// there. The picture's own stays readable as long as the picture.
    SourceRow row(int row, std::uint8_t* scratch);

    /// The picture's columns on the canvas, where rows `row` .. row + count - 1 show the picture
    /// and nothing else: `rows`, with room for count + 1, then points to the first pixel of each of
    /// its rows there, or of those between which they lie. None otherwise.
    struct PictureSpan {
        int first;
        int end;
        std::size_t readablePixels;  // behind each of the rows
        std::ptrdiff_t strideBytes;  // from each to the next
        int belowWeight;             // as RowSpans has it; 0 where all are the picture's own
    };
    std::optional<PictureSpan> pictureAlone(int row, int count, const std::uint8_t** rows);

    /// Calls draw(row) for the first row of each block of `blockRows` rows, each once, in an order
    /// in which picture and reflection want about the same rows of the picture: these then come
    /// from memory once for both.
    template <typename Draw>
    void inReadingOrder(int blockRows, Draw draw) const {
        const int blocks = (layout_.height - 1) / blockRows + 1;
        const int upper = std::clamp(reflectionTop_ / blockRows, 0, blocks);
        const int lower = blocks - upper;
        int reflected = 0;
        const auto reflect = [&](int count) {
            for (; reflected < count; ++reflected)
                draw((upright_ ? upper + reflected : blocks - 1 - reflected) * blockRows);
        };
        for (int block = 0; block < upper; ++block) {
            draw(block * blockRows);
            const std::int64_t pictureRows = (block + std::int64_t{1}) * blockRows;
            reflect(static_cast<int>(
                std::min<std::int64_t>(lower, lower * pictureRows / picture_.height)));
        }
        reflect(lower);
    }

    /// The same row by stores past the caches.
    void stream(int row, std::uint8_t* target);

  private:
    CanvasRows(PixelView picture, const CanvasLayout& layout)
        : picture_(picture), layout_(layout) {}
    void drawReflection(int row, Columns columns, std::uint8_t* target);
    void drawPicture(int row, Columns columns, bool overNothing, std::uint8_t* target);
    bool isOnlyPicture(int row) const;

    PixelView picture_;
    CanvasLayout layout_;
    std::optional<kernels::Pixel> background_;
    bool upright_ = false;   // the reflection's first row shows the picture's first
    int reflectionTop_ = 0;  // canvas row of the reflection's first; may be negative
    int reflectionWidth_ = 0;
    ColumnCombiner stretch_;  // of a reflection that is narrower than the canvas
    // Plans lie on the heap so that what refers to them stays valid when this object moves.
    struct Plans {
        AxisPlan pictureColumns, pictureRows;
        AxisPlan mirrorColumns, mirrorRows;
        AxisPlan stretch;
    };
    std::unique_ptr<Plans> plans_;
    std::optional<ImageRows> mirror_;
    std::optional<ImageRows> pictureRows_;
    std::optional<RowShaper> shaper_;
    std::vector<std::uint8_t> shaped_;
    std::vector<std::uint8_t> layer_;
    std::vector<std::uint8_t> row_;
};

}  // namespace skarnel
