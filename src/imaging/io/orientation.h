// Turning a picture upright by the eight orientations of EXIF and TIFF.
#pragma once

#include <optional>

#include "imaging/cgimage.h"

namespace skarnel::io {

/// What is shown at (x, y) of the upright picture:
///
///   1 as stored          5 mirrored along the main diagonal (transposed)
///   2 mirrored sideways  6 turned a quarter clockwise
///   3 turned half round  7 mirrored along the other diagonal
///   4 mirrored upwards   8 turned a quarter counter-clockwise
///
/// 5..8 exchange width and height. Any other number counts as 1. Works in place where the shape
/// stays, otherwise makes a second buffer; none when there is no memory for it.
std::optional<PixelBuffer> turnUpright(PixelBuffer stored, int orientation);

}  // namespace skarnel::io
