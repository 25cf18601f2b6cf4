#include "render/turned_strips.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace skarnel {

RowSpans CanvasPieces::piece(int row, int count, int first, int end) {
    if (const auto span = rows_.pictureAlone(row, count, sources_))
        return {sources_,
                span->first,
                span->end,
                span->readablePixels,
                kernels::kBlockRows * span->strideBytes,
                span->belowWeight};
    // Rows that lie close together, whatever room the block's have.
    const std::ptrdiff_t stride = std::ptrdiff_t{4} * (end - first + kReadBeyond);
    for (int i = 0; i < count; ++i) {
        std::uint8_t* target = block_.bytes + i * stride;
        rows_.draw(row + i, {first, end}, target);
        sources_[i] = target;
    }
    return {sources_, first, end, static_cast<std::size_t>(end - first + kReadBeyond)};
}

TurnedStrips::TurnedStrips(CGImage picture, CanvasRows rows, ColumnTurn turn, int height, Room room)
    : picture_(std::move(picture)),
      rows_(std::move(rows)),
      turn_(std::move(turn)),
      height_(height),
      room_(std::move(room)),
      pieces_(rows_, room_.block.view()) {
    if (turn_.strips() > 1) rows_.expectPieces();
    beginStrip(0);
}

std::optional<PixelBuffer> TurnedStrips::bandsFor(const ColumnTurn& turn) {
    return PixelBuffer::uninitialized(static_cast<int>(turn.stripWidth()),
                                      kBands * ColumnTurn::kStripRows);
}

void TurnedStrips::beginStrip(int strip) {
    strip_ = {turn_.stripColumns(static_cast<std::size_t>(strip)), room_.passes.strip};
    std::fill(std::begin(drawnBands_), std::end(drawnBands_), -1);
    lastBand_ = 0;
}

SourceRow TurnedStrips::row(int y, std::uint8_t* /*scratch*/) {
    constexpr int kRows = ColumnTurn::kStripRows;
    const int number = y / kRows;
    const int place = number % kBands;
    MutablePixelView band = room_.bands.view();
    band.bytes = band.row(place * kRows);
    band.height = std::min(kRows, height_ - number * kRows);
    if (std::exchange(drawnBands_[place], number) != number) {
        rows_.keepPlans();
        // What is gone from the strip is made again.
        if (std::exchange(lastBand_, number) > number) strip_.squeezedEnd = 0;
        turn_.drawStripRows(strip_, pieces_, number * kRows, band);
    }
    const ColumnRange columns = strip_.columns;
    return {band.row(y % kRows), static_cast<int>(columns.begin), static_cast<int>(columns.end),
            turn_.strips() == 1};
}

void TurnedStrips::drawAll(MutablePixelView target) {
    turn_.draw(pieces_, room_.passes, target);
}

}  // namespace skarnel
