#include "render/turn.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "render/reflection.h"
#include "util/geometry/integers.h"

namespace skarnel {

Quad turnCorners(int width, int height, float imagePerspective) {
    const auto w = static_cast<float>(width);
    const auto h = static_cast<float>(height);
    const float phase = imagePerspective / 100;
    const auto sine = static_cast<float>(std::sin(static_cast<double>(phase) * -6.283185307179586));
    const float inward = w * 0.2F * sine;
    const auto dx = static_cast<float>(std::abs(toInt32(static_cast<double>(inward))));
    const float dy = 0.2F * h * sine;
    return {{dx, h + dy}, {w - dx, h - dy}, {dx, h * -0.2F * sine}, {w - dx, dy}};
}

bool isUnturned(const Quad& corners, int width, int height) {
    constexpr double kNoise = 1e-6;
    const double w = static_cast<float>(width);  // as the corners have it
    const auto still = [&](CGPoint corner, double x, double y) {
        return corner.x == x && std::abs(corner.y - y) < kNoise;
    };
    return still(corners.bottomLeft, 0, 0) && still(corners.bottomRight, w, 0) &&
           still(corners.topLeft, 0, height) && still(corners.topRight, w, height);
}

std::optional<TurnedBitmap> turnedBitmap(const Quad& corners) {
    const CGRect box = corners.boundingBox();
    const int width = toInt32(box.width);
    const int height = toInt32(box.height);
    if (width < 1 || height < 1 || !std::isfinite(box.x) || !std::isfinite(box.y) ||
        std::int64_t{4} * width * height > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return TurnedBitmap{box.origin(), width, height};
}

std::optional<CGImage> perspectiveImage(const CGImage& image, float imagePerspective) {
    const Quad corners = turnCorners(image.width(), image.height(), imagePerspective);
    if (isUnturned(corners, image.width(), image.height())) return image.withAlpha();
    std::optional<CIFilter> filter = CIFilter::filterWithName("CIPerspectiveTransform");
    if (!filter) return std::nullopt;
    filter->setDefaults();
    filter->setValue(CIImage::imageWithCGImage(image), "inputImage");
    filter->setValue(corners.topLeft, "inputTopLeft");
    filter->setValue(corners.topRight, "inputTopRight");
    filter->setValue(corners.bottomLeft, "inputBottomLeft");
    filter->setValue(corners.bottomRight, "inputBottomRight");
    const std::optional<CIImage> output = filter->outputImage();
    return output ? CIImageGetCGImage(*output) : std::nullopt;
}

}  // namespace skarnel
