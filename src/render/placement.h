// Where the picture stands in its result, for whoever lays the one over the other.
#pragma once

#include <cstdint>
#include <optional>

#include "util/geometry/geometry.h"

namespace skarnel {

/// In pixels of the result, from its top left corner to the right and DOWN.
struct PicturePlacement {
    CGSize result;
    /// The picture on the canvas before the turn, as large as it is: a turned result may be
    /// narrower, so the rectangle may reach beyond. Its upper edge may lie between two rows.
    CGRect picture;
};

/// Of a picture of the given size with the settings of `addReflectionToCGImage`; none where that
/// gives no result.
std::optional<PicturePlacement> picturePlacement(int pictureWidth, int pictureHeight,
                                                 float perspectiveW, float perspectiveH,
                                                 float reflectionOffset, float imagePerspective);

/// How many pixels such a render draws before the turn: those of its canvas, or of the reflection
/// where that has more. 0 where there is no canvas.
std::int64_t drawnPixels(int pictureWidth, int pictureHeight, float perspectiveW,
                         float perspectiveH, float reflectionOffset);

/// The largest picture of a render may have this many times the pixels of the largest source: at
/// the defaults a canvas has twice the source's, and a turn at most 1.4 times the canvas's rows.
inline constexpr std::int64_t kResultFactor = 4;

}  // namespace skarnel
