// From a colour's components to the bytes of a pixel.
#pragma once

#include <cstdint>

#include "imaging/cgcontext.h"
#include "imaging/kernels/pixel_ops.h"

namespace skarnel {

/// round(255 * unit), clamped; 0 for what is not a number.
std::uint8_t unitToByte(double unit);

/// Components are clamped to 0..1 first (no number counts as 0) and premultiplied before they
/// become bytes, so that each is rounded once.
kernels::Pixel premultipliedPixel(const DeviceColor& color);

}  // namespace skarnel
