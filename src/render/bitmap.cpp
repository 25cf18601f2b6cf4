// Bitmaps of the render: rasterised filter images and canvases.
#include <cstdint>
#include <limits>
#include <new>

#include "render/reflection.h"
#include "util/geometry/integers.h"

namespace skarnel {

std::optional<CGImage> CIImageGetCGImage(const CIImage& image) try {
    const CGRect extent = image.extent();
    const int width = toInt32(extent.width);
    const int height = toInt32(extent.height);
    if (width < 1 || height < 1) return std::nullopt;
    // The byte count is a signed 32-bit number, here and in the compositor.
    if (std::int64_t{4} * width * height > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return image.rasterize(extent.origin(), width, height);
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

std::unique_ptr<CGContext> MyCreateBitmapContext(int width, int height) {
    return CGContext::create(width, height);
}

}  // namespace skarnel
