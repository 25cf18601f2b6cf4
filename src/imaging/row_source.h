// A picture whose rows are made when they are read.
#pragma once

#include <cstdint>

#include "imaging/cgimage.h"

namespace skarnel {

/// One row of a picture: the pixels of the columns [first, end) from `bytes` on. Beside them it is
/// transparent; with `isWhole` those pixels lie in memory too, before and behind the others. A row
/// of nothing is whole.
struct SourceRow {
    const std::uint8_t* bytes;
    int first;
    int end;
    bool isWhole;
};

/// Makes the rows of a picture of four samples a pixel, always to the same bytes. A reader that
/// takes the rows from top to bottom, each once, needs no memory for the whole picture: a preview
/// that is reduced anyway never writes and reads its full size. Who reads them again begins again
/// at the top, with strip 0. Cannot fail; what the rows need is
/// allocated by whoever makes the source.
class RowSource {
  public:
    RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;

    /// Row `y` (0 = top). Either written to `scratch`, which holds a whole row, or in memory that
    /// keeps its content at least while the next kKeptRows rows below are made.
    virtual SourceRow row(int y, std::uint8_t* scratch) = 0;
    static constexpr int kKeptRows = 16;

    /// A source of several strips of columns gives the rows of the strip that was begun last, at
    /// first strip 0, and of these nothing beside the strip. Readers begin one strip after the
    /// other, take its rows from top to bottom, and go on with the next.
    virtual int strips() const { return 1; }
    virtual void beginStrip(int /*strip*/) {}

    /// All rows; `target` has the picture's size. Called once at most, as the last call.
    virtual void drawAll(MutablePixelView target) = 0;
};

}  // namespace skarnel
