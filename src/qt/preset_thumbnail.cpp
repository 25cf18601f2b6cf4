#include "qt/preset_thumbnail.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "imaging/cgcontext.h"
#include "qt/picture_painter.h"
#include "render/placement.h"
#include "render/reflection.h"

namespace skarnel {
namespace {

/// Of the canvas, or of the reflection where that is larger, for one thumbnail. The ends of the
/// sliders give a source of 168 x 168 a canvas of 504 x 840, which is below.
constexpr std::int64_t kMostPixels = 500'000;

}  // namespace

std::optional<CGImage> resizedPicture(const CGImage& source, int width, int height) try {
    const auto context = CGContext::create(width, height);
    if (!context) return std::nullopt;
    context->drawImage(source, {0, 0, 1.0 * width, 1.0 * height});
    return std::move(*context).takeImage();
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

QImage presetThumbnail(const CGImage& source, const SettingNumbers& settings) {
    std::optional<CGImage> picture = source;
    const std::int64_t pixels =
        drawnPixels(source.width(), source.height(), settings[0], settings[1], settings[2]);
    if (pixels > kMostPixels) {
        const double scale = std::sqrt(kMostPixels / static_cast<double>(pixels));
        const auto shrunk = [&](int side) { return std::max(1, static_cast<int>(side * scale)); };
        picture = resizedPicture(source, shrunk(source.width()), shrunk(source.height()));
    }
    if (!picture) return {};
    RenderInputs inputs;
    inputs.peakOpacity = settings[5];
    inputs.imagePerspective = settings[6];
    const auto result = addReflectionToCGImage(*picture, settings[0], settings[1], settings[2],
                                               settings[3], settings[4], inputs);
    return result ? paintableImage(result->image) : QImage();
}

}  // namespace skarnel
