// Fitting a picture into the visible part of the viewer.
#pragma once

#include "util/geometry/geometry.h"

namespace skarnel {

/// Fits the size of `src` into `dst`, shrinking by one factor for both axes, never enlarging, and
/// centres it. Only the size of `src` matters. The factor is narrowed to single precision, so
/// extents may pass those of `dst` by a rounding error. Extents of 0 in `src` count as fitting.
CGRect GetDestinationRect(const CGRect& src, const CGRect& dst);

}  // namespace skarnel
