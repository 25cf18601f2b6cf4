#include "render/placement.h"

#include <algorithm>

#include "render/canvas.h"
#include "render/shape.h"
#include "render/turn.h"

namespace skarnel {

std::optional<PicturePlacement> picturePlacement(int pictureWidth, int pictureHeight,
                                                 float perspectiveW, float perspectiveH,
                                                 float reflectionOffset, float imagePerspective) {
    const auto reflection = ShapeSize::of(pictureWidth, pictureHeight, perspectiveW, perspectiveH);
    if (!reflection || !reflection->fits()) return std::nullopt;
    const auto layout =
        CanvasLayout::of(pictureWidth, pictureHeight, *reflection, reflectionOffset);
    if (!layout) return std::nullopt;
    const double upperEdge = layout->yTop + pictureHeight;  // bottom-up
    PicturePlacement place{
        {1.0 * layout->width, 1.0 * layout->height},
        {1.0 * layout->x, layout->height - upperEdge, 1.0 * pictureWidth, 1.0 * pictureHeight}};
    const Quad corners = turnCorners(layout->width, layout->height, imagePerspective);
    if (isUnturned(corners, layout->width, layout->height)) return place;
    // A turn that cannot be made leaves the canvas.
    if (const auto bitmap = turnedBitmap(corners)) {
        place.result = {1.0 * bitmap->width, 1.0 * bitmap->height};
        place.picture.x -= bitmap->lowerLeft.x;
        place.picture.y = bitmap->height + bitmap->lowerLeft.y - upperEdge;
    }
    return place;
}

std::int64_t drawnPixels(int pictureWidth, int pictureHeight, float perspectiveW,
                         float perspectiveH, float reflectionOffset) {
    const auto reflection = ShapeSize::of(pictureWidth, pictureHeight, perspectiveW, perspectiveH);
    const auto layout =
        reflection ? CanvasLayout::of(pictureWidth, pictureHeight, *reflection, reflectionOffset)
                   : std::nullopt;
    if (!layout) return 0;
    return std::max(std::int64_t{reflection->outWidth} * reflection->height,
                    std::int64_t{layout->width} * layout->height);
}

}  // namespace skarnel
