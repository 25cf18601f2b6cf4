// The category Trimming of the image object: the part of an image that differs from its corner.
#pragma once

#include <cstdint>
#include <optional>

#include "imaging/nsimage/nsimage.h"
#include "util/geometry/geometry.h"

namespace skarnel::Trimming {

/// The smallest rectangle that holds every pixel whose distance from the top left one, over red,
/// green, blue and alpha in steps of 8 bits, is above the tolerance; bottom-up, one pixel a unit.
/// Where none is: (W, H - 1, 1 - W, 1 - H), which has no positive size unless W and H are 1 (then
/// it is (1, 0, 0, 0)). A negative tolerance finds every pixel.
/// Raises NSException for an image that has no bitmap.
CGRect usedRect(const NSImage& image, std::int32_t tolerance);

/// The same on a bitmap. Each row is taken to be exactly pixelsWide * samplesPerPixel bytes long;
/// the bitmap's own row length is not looked at, so that padded rows are read askew.
CGRect usedRect(const NSBitmapImageRep& bitmap, std::int32_t tolerance);

/// Cuts out the used rectangle (`trim`; otherwise the whole image) and scales it into `size` when
/// `scaleUp` is set or when it is larger; `expand` then covers the size instead of fitting in it.
/// High interpolation. None when the canvas cannot be read back.
/// Raises NSException for a canvas without positive width and height, as usedRect leaves it for an
/// image of one colour, and where usedRect does.
std::optional<NSImage> scaleImageToSize(const NSImage& image, CGSize size, bool trim,
                                        std::int32_t tolerance, bool expand, bool scaleUp);

}  // namespace skarnel::Trimming
