// The geometry of the turn about a vertical axis.
#pragma once

#include <optional>

#include "imaging/projection.h"

namespace skarnel {

/// Where the corners of a width x height composite go at the control value `imagePerspective`.
/// With s the sine of -2 pi imagePerspective / 100 the sides move in by a whole number of pixels,
/// |trunc(0.2 width s)|, and the left side grows by 0.2 height s at both ends while the right
/// side shrinks by it; in single precision, widened at the end. Corners that are not numbers come
/// from a control value that is none.
Quad turnCorners(int width, int height, float imagePerspective);

/// True for corners that leave a width x height picture where it is, but for floating-point noise:
/// no inset and a shift below 10^-6 pixel. Such a turn copies the pixels.
bool isUnturned(const Quad& corners, int width, int height);

/// The bitmap that a turned composite fills: the corners' bounding box from its lower left corner
/// on, truncated to whole pixels. None when it is empty or does not fit 32-bit sizes.
struct TurnedBitmap {
    CGPoint lowerLeft;
    int width;
    int height;
};
std::optional<TurnedBitmap> turnedBitmap(const Quad& corners);

}  // namespace skarnel
