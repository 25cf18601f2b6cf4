// Resizers of bitmaps that the application keeps available.
#pragma once

#include <optional>

#include "imaging/cgimage.h"

namespace skarnel {

/// The image at a height, its width scaled along: trunc(w * (height / h)) in single precision. None
/// as below.
std::optional<CGImage> resizeCGImageToHeight(const CGImage& image, int height);

/// The image stretched to a size. Its layout is copied from the source, the bytes per row too, so
/// that a width whose row does not fit in the source's stride gives none. So does a side below 1,
/// a source without alpha (nothing is drawn into three packed samples), or a lack of memory.
std::optional<CGImage> resizeCGImageToWidthAndHeight(const CGImage& image, int width, int height);

}  // namespace skarnel
