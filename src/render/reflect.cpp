// The mirror and the shaped reflection as filter images.
#include <new>

#include "imaging/readable.h"
#include "render/reflection.h"
#include "render/shape.h"
#include "util/geometry/integers.h"

namespace skarnel {
namespace {

std::optional<CIImage> transformed(const CIImage& image, const AffineTransform& transform) {
    std::optional<CIFilter> filter = CIFilter::filterWithName("CIAffineTransform");
    if (!filter) return std::nullopt;
    filter->setValue(image, "inputImage");
    filter->setValue(transform, "inputTransform");
    return filter->outputImage();
}

}  // namespace

std::optional<CIImage> ReflectCIImage(const CIImage& image) try {
    const AffineTransform flip =
        AffineTransform::scale(1, -1).then(AffineTransform::translation(0, image.extent().height));
    return transformed(image, flip);
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

std::optional<CIImage> PerspectiveCIImage(const CIImage& image, float perspectiveW,
                                          float perspectiveH, float gradientOffset, float gradient,
                                          float peakOpacity) try {
    const double scale = static_cast<double>(perspectiveH) / 100.0;
    const auto scaled = transformed(image, AffineTransform::scale(1, scale));
    const auto mirror = scaled ? CIImageGetCGImage(*scaled) : std::nullopt;
    if (!mirror) return std::nullopt;
    const auto size = ShapeSize::ofScaled(mirror->width(), mirror->height(), perspectiveW);
    if (!size || !size->fits()) return std::nullopt;
    auto buffer = PixelBuffer::uninitialized(size->outWidth, size->height);
    auto shaper = RowShaper::create(*size, {gradientOffset, gradient, peakOpacity});
    if (!buffer || !shaper) return std::nullopt;
    for (int row = 0; row < size->height; ++row)
        shaper->shapeRow(row, mirror->pixels().row(row), readablePixels(mirror->pixels(), row),
                         buffer->view().row(row));
    return CIImage::imageWithCGImage(CGImage(*std::move(buffer)));
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

}  // namespace skarnel
