#include "cli/canvas_size.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "util/geometry/integers.h"

namespace skarnel::cli {
namespace {

constexpr double kMinusTwoPi = -6.283185307179586;
constexpr double kIdentityShift = 1e-6;  // pixels; a smaller shift is no turn

bool fitsInt(double value) {
    return std::abs(value) <= static_cast<double>(std::numeric_limits<std::int32_t>::max());
}

PixelSize turnedSize(PixelSize canvas, float imagePerspective) {
    const float phase = imagePerspective / 100.0F;
    const auto sine = static_cast<float>(std::sin(static_cast<double>(phase) * kMinusTwoPi));
    const auto width = static_cast<float>(canvas.width);
    const auto height = static_cast<float>(canvas.height);
    const int inset = std::abs(toInt32(static_cast<double>(width * 0.2F * sine)));
    const float shift = 0.2F * height * sine;
    if (inset == 0 && std::abs(static_cast<double>(shift)) < kIdentityShift) return canvas;
    const double top =
        std::max(static_cast<double>(height + shift), static_cast<double>(height - shift));
    const double bottom = -std::abs(static_cast<double>(shift));
    const int turnedWidth = canvas.width - 2 * inset;
    const int turnedHeight = toInt32(top - bottom);
    // A turn that cannot be made leaves the canvas.
    if (turnedWidth < 1 || turnedHeight < 1) return canvas;
    return {turnedWidth, turnedHeight};
}

}  // namespace

std::optional<RenderSizes> renderSizes(PixelSize picture, const RenderSettings& settings) {
    const double scale = static_cast<double>(settings.number("perspectiveHeight")) / 100.0;
    const int rows = toInt32(std::abs(picture.height * scale));
    const int inset =
        toInt32(picture.width * (static_cast<double>(settings.number("perspectiveWidth")) / 100.0));
    const std::int64_t width = picture.width + 2 * std::int64_t{inset};
    if (rows < 1 || width < 1 || !fitsInt(static_cast<double>(width))) return std::nullopt;
    const double top = (static_cast<double>(settings.number("offset")) / 100.0 + 1.0) * rows;
    const int canvasHeight = toInt32(picture.height + top);
    if (canvasHeight < 1) return std::nullopt;
    RenderSizes sizes;
    sizes.reflection = {static_cast<int>(width), rows};
    sizes.canvas = {std::max(picture.width, static_cast<int>(width)), canvasHeight};
    sizes.result = turnedSize(sizes.canvas, settings.number("imagePerspective"));
    return sizes;
}

}  // namespace skarnel::cli
