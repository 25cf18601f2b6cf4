// Makes a page's ground transparent.
#pragma once

#include <optional>

#include "imaging/ciimage.h"

namespace skarnel {

/// Rasterises the image and makes every pixel transparent whose red, green and blue equal those of
/// the top left pixel exactly, whatever its alpha. Nothing but alpha bytes changes: a transparent
/// pixel keeps its colour although the layout is premultiplied. None when the image cannot be
/// rasterised, when its bytes pass a signed 32-bit count, or without memory.
std::optional<CIImage> CIImageMakeFirtsPixelColorTransparent(const CIImage& image);

}  // namespace skarnel
