// A picture whose rows are made when they are read.
#pragma once

#include <cstdint>

#include "imaging/cgimage.h"

namespace skarnel {

/// Makes the rows of a picture of four samples a pixel, always to the same bytes. A reader that
/// takes the rows from top to bottom, each once, needs no memory for the whole picture: a preview
/// that is reduced anyway never writes and reads its full size. Cannot fail; what the rows need is
/// allocated by whoever makes the source.
class RowSource {
  public:
    RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;
    virtual ~RowSource() = default;

    /// The pixels of row `y` (0 = top). Either written to `scratch`, which holds one row, or
    /// memory that keeps its content as long as the source lives.
    virtual const std::uint8_t* row(int y, std::uint8_t* scratch) = 0;

    /// All rows; `target` has the picture's size. Called once at most, as the last call.
    virtual void drawAll(MutablePixelView target) = 0;
};

}  // namespace skarnel
