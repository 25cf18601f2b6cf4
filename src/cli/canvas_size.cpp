#include "cli/canvas_size.h"

#include "render/canvas.h"
#include "render/shape.h"
#include "render/turn.h"

namespace skarnel::cli {
namespace {

PixelSize turnedSize(PixelSize canvas, float imagePerspective) {
    const Quad corners = turnCorners(canvas.width, canvas.height, imagePerspective);
    if (isUnturned(corners, canvas.width, canvas.height)) return canvas;
    const std::optional<TurnedBitmap> bitmap = turnedBitmap(corners);
    // A turn that cannot be made leaves the canvas.
    return bitmap ? PixelSize{bitmap->width, bitmap->height} : canvas;
}

}  // namespace

std::optional<RenderSizes> renderSizes(PixelSize picture, const RenderSettings& settings) {
    const auto reflection =
        ShapeSize::of(picture.width, picture.height, settings.number("perspectiveWidth"),
                      settings.number("perspectiveHeight"));
    if (!reflection || reflection->outWidth < 1) return std::nullopt;
    const auto layout =
        CanvasLayout::of(picture.width, picture.height, *reflection, settings.number("offset"));
    if (!layout) return std::nullopt;
    RenderSizes sizes;
    sizes.reflection = {reflection->outWidth, reflection->height};
    sizes.canvas = {layout->width, layout->height};
    sizes.result = turnedSize(sizes.canvas, settings.number("imagePerspective"));
    return sizes;
}

}  // namespace skarnel::cli
