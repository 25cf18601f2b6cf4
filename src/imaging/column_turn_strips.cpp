// Both passes of a turn at once, strip by strip of the target's columns.
//
//   picture rows  --squeeze-->  ring of squeezed rows  --walk-->  target rows, some at a time
//
// Neighbouring columns of a turn are stretched nearly alike, so that a strip of them needs but a
// few rows of the picture for each target row: the ring is a fraction of a core's own cache.
#include <algorithm>
#include <cstring>

#include "imaging/column_turn.h"
#include "imaging/kernels/turn.h"
#include "imaging/pixel_memory.h"
#include "imaging/streaming.h"

namespace skarnel {
namespace {

constexpr int kBlock = kernels::kBlockRows;

/// Strips are about this wide: long pieces of rows cost less each, narrow strips have flat rings.
constexpr std::size_t kStripWidth = 256;
static_assert(kStripWidth >= 2 * kernels::kStripColumns, "halves are strips, too");

int roundDown(int row, int unit) {
    return row / unit * unit;
}

int roundUp(int row, int unit) {
    return roundDown(row + unit - 1, unit);
}

}  // namespace

std::size_t ColumnTurn::strips() const {
    return (from_.size() - 1) / kStripWidth + 1;
}

ColumnRange ColumnTurn::stripColumns(std::size_t strip) const {
    const std::size_t count = strips();
    const auto start = [&](std::size_t number) {
        return number == count ? from_.size() : from_.size() * number / count / kBlock * kBlock;
    };
    return {start(strip), start(strip + 1)};
}

std::size_t ColumnTurn::stripWidth() const {
    std::size_t widest = 0;
    for (std::size_t strip = 0; strip < strips(); ++strip) {
        const ColumnRange columns = stripColumns(strip);
        widest = std::max(widest, columns.end - columns.begin);
    }
    return widest;
}

/// The picture's rows that the columns show in `rows` target rows from firstRow on, rounded up to
/// whole bands. A row's position grows or falls from column to column, so that the outermost ones
/// bound it, but for the rounding of single precision.
ColumnTurn::Rows ColumnTurn::neededRows(ColumnRange columns, int firstRow, int rows) const {
    const int margin = 2 + (height_ >> 20);
    const auto rowAt = [&](std::size_t column, int row) {
        const auto offset = static_cast<float>(row - middleRow_);
        const double position = (centre_[column] + offset * step_[column]) / kernels::kLerpUnit;
        return static_cast<int>(std::clamp(position, 0.0, height_ - 1.0));
    };
    const int lastRow = firstRow + roundUp(rows, kBlock) - 1;
    const std::size_t last = columns.end - 1;
    const int begin = std::min(rowAt(columns.begin, firstRow), rowAt(last, firstRow));
    const int end = std::max(rowAt(columns.begin, lastRow), rowAt(last, lastRow)) + 2;
    return {std::max(0, begin - margin), std::min(height_, end + margin)};
}

std::optional<TurnRoom> ColumnTurn::roomToDraw(const MutablePixelView& target) const {
    int ringRows = 4 * kBlock;
    for (std::size_t strip = 0; strip < strips(); ++strip) {
        const ColumnRange columns = stripColumns(strip);
        for (int row = 0; row < target.height; row += kStripRows) {
            const Rows needed = neededRows(columns, row, std::min(kStripRows, target.height - row));
            ringRows = std::max(ringRows, roundUp(needed.end, kBlock) - needed.begin);
        }
    }
    // Behind the ring its first blocks lie again, and an odd number of lines in all keeps columns
    // out of each other's places in a cache.
    ringRows = roundUp(ringRows, 2 * kBlock);
    const std::ptrdiff_t stride = std::ptrdiff_t{ringRows} + 3 * kBlock;
    const std::size_t pixels = stripWidth() * static_cast<std::size_t>(stride);
    auto bytes =
        allocatePixelMemory(4 * (pixels + kernels::kReadBehindColumns), PixelContents::Undefined);
    if (!bytes) return std::nullopt;
    TurnRoom room;
    room.strip = {std::move(bytes), stride, false, 0, ringRows};
    room.unfinishedLines = unfinishedLinesFor(target);
    return room;
}

/// One block of a strip's rows.
void ColumnTurn::squeezeBlock(int row, PictureRows& rows, ColumnRange columns,
                              SqueezedPicture& target) const {
    const int first = from_[columns.begin];
    const int end = std::min(width_, from_[columns.end - 1] + 2);
    squeezeSpans(row, rows.piece(row, blockRows(row), first, end), columns, target);
    const int place = row % target.ringRows;
    if (place >= kernels::kReadBehindColumns) return;
    std::uint8_t* column = target.bytes.get() + std::ptrdiff_t{4} * place;
    for (std::size_t x = columns.begin; x < columns.end; ++x, column += 4 * target.columnStride)
        std::memcpy(column + std::ptrdiff_t{4} * target.ringRows, column, kernels::kLineBytes);
}

/// The walk through what `count` target rows need of the strip, which then is squeezed.
kernels::ColumnWalk ColumnTurn::squeezedRows(TurnStrip& strip, PictureRows& rows, int firstRow,
                                             int count) const {
    SqueezedPicture& squeezed = strip.squeezed;
    squeezed.firstColumn = strip.columns.begin;
    const Rows needed = neededRows(strip.columns, firstRow, count);
    strip.squeezedEnd = std::max(strip.squeezedEnd, roundDown(needed.begin, kBlock));
    for (; strip.squeezedEnd < needed.end; strip.squeezedEnd += kBlock)
        squeezeBlock(strip.squeezedEnd, rows, strip.columns, squeezed);
    kernels::ColumnWalk walk = walkOf(squeezed, strip.columns);
    walk.ring.first = roundDown(needed.begin, squeezed.ringRows);
    walk.ring.wrap = walk.ring.first + squeezed.ringRows;
    return walk;
}

void ColumnTurn::drawStripRows(TurnStrip& strip, PictureRows& rows, int firstRow,
                               MutablePixelView target) const {
    kernels::walkColumns({target.bytes, target.strideBytes, firstRow, target.height},
                         squeezedRows(strip, rows, firstRow, target.height));
}

void ColumnTurn::drawStrip(TurnStrip& strip, PictureRows& rows, kernels::Strip kind,
                           std::uint8_t* unfinishedLines, MutablePixelView target) const {
    for (int row = 0; row < target.height; row += kStripRows) {
        const int count = std::min(kStripRows, target.height - row);
        kernels::ColumnWalk walk = squeezedRows(strip, rows, row, count);
        walk.strip = kind;
        if (unfinishedLines != nullptr)
            walk.unfinishedLines =
                unfinishedLines + kernels::kLineBytes * static_cast<std::size_t>(row);
        kernels::walkColumns(
            {target.row(row) + 4 * strip.columns.begin, target.strideBytes, row, count}, walk);
    }
}

void ColumnTurn::draw(PictureRows& rows, const TurnRoom& room, MutablePixelView target) const {
    const std::size_t last = strips() - 1;
    for (std::size_t number = 0; number <= last; ++number) {
        kernels::Strip kind = number == 0 ? kernels::Strip::First : kernels::Strip::Middle;
        if (number == last) kind = last == 0 ? kernels::Strip::Only : kernels::Strip::Last;
        TurnStrip strip{stripColumns(number), room.strip};
        drawStrip(strip, rows, kind, room.unfinishedLines.get(), target);
    }
}

}  // namespace skarnel
