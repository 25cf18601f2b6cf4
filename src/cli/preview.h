// Shrinking a picture to fit a size, as the window does for its working copy.
#pragma once

#include <optional>

#include "cli/numbers.h"
#include "imaging/cgimage.h"

namespace skarnel::cli {

/// The size of a picture shrunk to fit, each side at least 1.
PixelSize sizeToFit(PixelSize picture, PixelSize box);

/// The picture shrunk by one factor to fit; the very picture when it already fits, since nothing
/// is ever enlarged. None without memory.
std::optional<CGImage> shrinkToFit(const CGImage& picture, PixelSize box);

}  // namespace skarnel::cli
