// How large a render's pictures will be, worked out before any memory is taken for them.
#pragma once

#include <optional>

#include "cli/numbers.h"
#include "cli/render_settings.h"

namespace skarnel::cli {

struct RenderSizes {
    PixelSize reflection;  // shaped, before it is laid on the canvas
    PixelSize canvas;      // before the turn
    PixelSize result;
};

/// The sizes for a picture of the given size; none where the render yields nothing. They are the
/// compositor's own; only what its bitmaps' byte counts must fit plays no part.
std::optional<RenderSizes> renderSizes(PixelSize picture, const RenderSettings& settings);

}  // namespace skarnel::cli
