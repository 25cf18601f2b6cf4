#include "app/image_operations.h"

#include "textimaging/knock_out.h"
#include "textimaging/trimming.h"
#include "util/image/nsimage_extensions.h"

namespace skarnel {

std::optional<NSImage> ImageOperations::initByReferencingFile(const std::string& path) {
    return NSImage::initByReferencingFile(path);
}

std::optional<NSImage> ImageOperations::imageByScalingProportionallyToSize(const NSImage& image,
                                                                           CGSize size) {
    return NSImageExtensions::imageByScalingProportionallyToSize(image, size);
}

std::optional<CGImage> ImageOperations::getCGImageRef(const NSImage& image) {
    return NSImageExtensions::getCGImageRef(image);
}

std::optional<NSImage> ImageOperations::NSImageFromCGImageRef(const CGImage& image) {
    return skarnel::NSImageFromCGImageRef(image);
}

std::optional<TIFFData> ImageOperations::TIFFRepresentation(const NSImage& image) {
    return TIFFData::initWithImage(image);
}

std::optional<CGImage> ImageOperations::addReflectionToCGImage(
    const CGImage& image, float perspectiveW, float perspectiveH, float reflectionOffset,
    float gradientOffset, float gradient, const RenderInputReaders& readers) {
    if (drawnPixels(image.width(), image.height(), perspectiveW, perspectiveH, reflectionOffset) >
        kMostResultPixels) {
        readers.peakOpacity();  // the shaping comes before the canvas
        return std::nullopt;
    }
    std::optional<ReflectionResult> result =
        skarnel::addReflectionToCGImage(image, perspectiveW, perspectiveH, reflectionOffset,
                                        gradientOffset, gradient, readers, Drawing::WhenRead);
    if (!result) return std::nullopt;
    return std::move(result->image);
}

std::optional<NSImage> ImageOperations::imageWithBitmap(const CGImage& bitmap) {
    return skarnel::NSImageFromCGImageRef(bitmap);
}

std::optional<CIImage> ImageOperations::CIImageMakeFirtsPixelColorTransparent(
    const CIImage& image) {
    return skarnel::CIImageMakeFirtsPixelColorTransparent(image);
}

std::optional<CGImage> ImageOperations::CIImageGetCGImage(const CIImage& image) {
    return skarnel::CIImageGetCGImage(image);
}

CGRect ImageOperations::usedRect(const NSImage& image, std::int32_t tolerance) {
    return Trimming::usedRect(image, tolerance);
}

std::optional<NSImage> ImageOperations::scaleImageToSize(const NSImage& image, CGSize size,
                                                         bool trim, std::int32_t tolerance,
                                                         bool expand, bool scaleUp) {
    return Trimming::scaleImageToSize(image, size, trim, tolerance, expand, scaleUp);
}

NSImage NSImageFromCGImageRef(const CGImage& image) {
    NSImage wrapped = NSImage::initWithSize(
        {static_cast<double>(image.width()), static_cast<double>(image.height())});
    wrapped.addRepresentation(NSBitmapImageRep::initWithCGImage(image));
    return wrapped;
}

}  // namespace skarnel
