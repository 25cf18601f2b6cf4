// The canvas, turned strip by strip, so that what lies between the turn's two passes stays in a
// core's own cache.
#pragma once

#include <cstdint>
#include <optional>

#include "imaging/column_turn.h"
#include "imaging/row_source.h"
#include "render/canvas.h"

namespace skarnel {

/// The canvas in pieces, for a turn that takes one strip after the other.
class CanvasPieces final : public PictureRows {
  public:
    /// Pixels behind the rows that are squeezed, so that their last vectors need no special case.
    static constexpr int kReadBeyond = 64;

    /// Both are borrowed; `block` has room for kernels::kBlockRows rows of the canvas, and behind
    /// each for kReadBeyond pixels.
    CanvasPieces(CanvasRows& rows, MutablePixelView block) : rows_(rows), block_(block) {}

    RowSpans piece(int row, int count, int first, int end) override;

  private:
    CanvasRows& rows_;
    MutablePixelView block_;
    const std::uint8_t* sources_[kernels::kBlockRows + 1];
};

/// A turned canvas that is never a bitmap itself, neither whole nor squeezed.
class TurnedStrips final : public RowSource {
  public:
    /// What the rows are made in; all of it is allocated before.
    struct Room {
        PixelBuffer block;  // as CanvasPieces wants it
        PixelBuffer bands;  // from bandsFor
        TurnRoom passes;
    };

    /// Keeps the picture that the rows are drawn from. `height` is the target's.
    TurnedStrips(CGImage picture, CanvasRows rows, ColumnTurn turn, int height, Room room);

    /// Memory for a strip's rows; none without memory.
    static std::optional<PixelBuffer> bandsFor(const ColumnTurn& turn);

    int strips() const override { return static_cast<int>(turn_.strips()); }
    void beginStrip(int strip) override;
    SourceRow row(int y, std::uint8_t* scratch) override;
    void drawAll(MutablePixelView target) override;

  private:
    /// Two bands: one keeps the rows before.
    static constexpr int kBands = 2;

    CGImage picture_;
    CanvasRows rows_;
    ColumnTurn turn_;
    int height_;
    Room room_;
    CanvasPieces pieces_;
    TurnStrip strip_;
    int drawnBands_[kBands];
    int lastBand_ = 0;
};

}  // namespace skarnel
