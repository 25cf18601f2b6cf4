// The category Average of the image class: its average colour.
#pragma once

#include <optional>

#include "imaging/nscolor.h"
#include "imaging/nsimage/nsimage.h"

namespace skarnel::Average {

/// The average of the image's best bitmap as an opaque device colour; none when its best
/// representation is no bitmap.
///
/// The bitmap is taken for packed 3-byte pixels, as many as the representation has points, whatever
/// it really holds: n = width * height of its size, cut to 32 bits, groups of 3 bytes are summed in
/// 32-bit sums (which wrap), divided by n as floats and then by 256, so that white gives 255/256.
/// Where the bitmap holds fewer bytes, the missing ones count as 0 and are never read. An n of 0
/// divides by zero and gives components that are no numbers.
std::optional<NSColor> averageColor(const NSImage& image);

}  // namespace skarnel::Average
