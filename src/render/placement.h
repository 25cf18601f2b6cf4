// Where the picture stands in its result, for whoever lays the one over the other.
#pragma once

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

}  // namespace skarnel
