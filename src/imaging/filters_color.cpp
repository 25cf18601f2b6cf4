// The filters that change each pixel's colour by itself: hue, saturation, sepia, inversion.
//
// They work on straight (not premultiplied) components in the picture's own encoding, as the
// matrices of the web's filter effects do; alpha is kept. Matrices: W3C Filter Effects Module
// Level 1, "feColorMatrix" (hueRotate, saturate) and "sepia".
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

#include "imaging/filter_registry.h"
#include "imaging/recipe.h"

namespace skarnel {
namespace {

using Vector3 = std::array<double, 3>;

/// component' = matrix * component + offset, each clamped to 0..1.
struct ColorMatrix {
    std::array<Vector3, 3> rows{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Vector3 offset{0, 0, 0};

    Vector3 apply(const Vector3& color) const {
        Vector3 out{};
        for (std::size_t i = 0; i < 3; ++i)
            out[i] = std::clamp(
                rows[i][0] * color[0] + rows[i][1] * color[1] + rows[i][2] * color[2] + offset[i],
                0.0, 1.0);
        return out;
    }
};

/// Changes one premultiplied pixel in place. A transparent one has no colour to change.
void changePixel(std::uint8_t* pixel, const ColorMatrix& matrix) {
    const double alpha = pixel[3];
    if (alpha == 0) return;
    const Vector3 changed = matrix.apply({pixel[0] / alpha, pixel[1] / alpha, pixel[2] / alpha});
    for (std::size_t i = 0; i < 3; ++i)
        pixel[i] = static_cast<std::uint8_t>(std::lround(changed[i] * alpha));
}

class ColorRecipe final : public CIImage::Recipe {
  public:
    ColorRecipe(CIImage input, const ColorMatrix& matrix)
        : input_(std::move(input)), matrix_(matrix) {}

    CGRect extent() const override { return input_.extent(); }

    std::optional<CGImage> rasterize(CGPoint lowerLeft, int width, int height) const override {
        const std::optional<CGImage> before = input_.rasterize(lowerLeft, width, height);
        auto buffer = PixelBuffer::uninitialized(width, height);
        if (!before || !buffer) return std::nullopt;
        for (int y = 0; y < height; ++y) {
            std::uint8_t* row = buffer->view().row(y);
            std::copy_n(before->pixels().row(y), std::size_t{4} * static_cast<std::size_t>(width),
                        row);
            for (int x = 0; x < width; ++x) changePixel(row + std::ptrdiff_t{4} * x, matrix_);
        }
        return CGImage(*std::move(buffer));
    }

  private:
    CIImage input_;
    ColorMatrix matrix_;
};

CIImage changed(const FilterInputs& inputs, const ColorMatrix& matrix) {
    return CIImage(std::make_shared<ColorRecipe>(inputs.image(), matrix));
}

/// A value that is not finite defines no image.
bool isFinite(double value) {
    return std::isfinite(value);
}

std::optional<CIImage> hueAdjust(const FilterInputs& inputs) {
    const auto angle = inputs.value<double>("inputAngle");  // radians
    if (!isFinite(angle)) return std::nullopt;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    ColorMatrix matrix;
    matrix.rows = {{{0.213 + c * 0.787 - s * 0.213, 0.715 - c * 0.715 - s * 0.715,
                     0.072 - c * 0.072 + s * 0.928},
                    {0.213 - c * 0.213 + s * 0.143, 0.715 + c * 0.285 + s * 0.140,
                     0.072 - c * 0.072 - s * 0.283},
                    {0.213 - c * 0.213 - s * 0.787, 0.715 - c * 0.715 + s * 0.715,
                     0.072 + c * 0.928 + s * 0.072}}};
    return changed(inputs, matrix);
}

/// Saturation first, then brightness is added, then contrast spreads the components about 0.5.
std::optional<CIImage> colorControls(const FilterInputs& inputs) {
    const auto s = inputs.value<double>("inputSaturation");
    const auto brightness = inputs.value<double>("inputBrightness");
    const auto contrast = inputs.value<double>("inputContrast");
    if (!isFinite(s) || !isFinite(brightness) || !isFinite(contrast)) return std::nullopt;
    ColorMatrix matrix;
    matrix.rows = {{{0.213 + 0.787 * s, 0.715 - 0.715 * s, 0.072 - 0.072 * s},
                    {0.213 - 0.213 * s, 0.715 + 0.285 * s, 0.072 - 0.072 * s},
                    {0.213 - 0.213 * s, 0.715 - 0.715 * s, 0.072 + 0.928 * s}}};
    for (Vector3& row : matrix.rows)
        for (double& factor : row) factor *= contrast;
    matrix.offset.fill((brightness - 0.5) * contrast + 0.5);
    return changed(inputs, matrix);
}

std::optional<CIImage> sepiaTone(const FilterInputs& inputs) {
    const auto intensity = inputs.value<double>("inputIntensity");
    if (!isFinite(intensity)) return std::nullopt;
    const double rest = 1 - std::clamp(intensity, 0.0, 1.0);
    ColorMatrix matrix;
    matrix.rows = {{{0.393 + 0.607 * rest, 0.769 - 0.769 * rest, 0.189 - 0.189 * rest},
                    {0.349 - 0.349 * rest, 0.686 + 0.314 * rest, 0.168 - 0.168 * rest},
                    {0.272 - 0.272 * rest, 0.534 - 0.534 * rest, 0.131 + 0.869 * rest}}};
    return changed(inputs, matrix);
}

std::optional<CIImage> colorInvert(const FilterInputs& inputs) {
    ColorMatrix matrix;
    matrix.rows = {{{-1, 0, 0}, {0, -1, 0}, {0, 0, -1}}};
    matrix.offset = {1, 1, 1};
    return changed(inputs, matrix);
}

}  // namespace

std::vector<FilterEntry> colorFilters() {
    return {
        {"CIHueAdjust", {{"inputAngle", 0.0}}, hueAdjust},
        {"CIColorControls",
         {{"inputSaturation", 1.0}, {"inputBrightness", 0.0}, {"inputContrast", 1.0}},
         colorControls},
        {"CISepiaTone", {{"inputIntensity", 1.0}}, sepiaTone},
        {"CIColorInvert", {}, colorInvert},
    };
}

}  // namespace skarnel
