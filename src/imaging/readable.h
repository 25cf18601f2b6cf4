// How far a kernel may read beyond the end of a row.
#pragma once

#include <cstddef>

#include "imaging/cgimage.h"

namespace skarnel {

/// The pixels from row `y` on to the end of the last row in memory, for four samples a pixel.
/// Kernels load whole vectors; inside the picture's own memory they may.
inline std::size_t readablePixels(const PixelView& picture, int y) {
    const std::ptrdiff_t later = picture.strideBytes > 0
                                     ? (picture.height - 1 - y) * picture.strideBytes
                                     : y * -picture.strideBytes;
    return static_cast<std::size_t>(later / 4 + picture.width);
}

}  // namespace skarnel
