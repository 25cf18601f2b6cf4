#include "cli/preview.h"

#include <algorithm>
#include <cmath>

#include "imaging/cgcontext.h"
#include "render/fitting.h"
#include "util/geometry/integers.h"

namespace skarnel::cli {

PixelSize sizeToFit(PixelSize picture, PixelSize box) {
    const CGRect source{0, 0, double(picture.width), double(picture.height)};
    const CGRect fitted = GetDestinationRect(source, {0, 0, double(box.width), double(box.height)});
    return {std::max(1, toInt32(std::round(fitted.width))),
            std::max(1, toInt32(std::round(fitted.height)))};
}

std::optional<CGImage> shrinkToFit(const CGImage& picture, PixelSize box) {
    const auto [width, height] = sizeToFit({picture.width(), picture.height()}, box);
    if (width == picture.width() && height == picture.height()) return picture;
    const std::unique_ptr<CGContext> context = CGContext::create(width, height);
    if (!context) return std::nullopt;
    context->drawImage(picture, {0, 0, double(width), double(height)});
    return std::move(*context).takeImage();
}

}  // namespace skarnel::cli
