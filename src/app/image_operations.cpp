#include "app/image_operations.h"

#include <new>

#include "textimaging/knock_out.h"
#include "textimaging/trimming.h"
#include "util/image/nsimage_extensions.h"

namespace skarnel {
namespace {

/// What the work gives, or none where there was no memory for it.
template <typename Work>
auto noneWithoutMemory(Work work) -> decltype(work()) try {
    return work();
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

}  // namespace

std::optional<NSImage> ImageOperations::initByReferencingFile(const std::string& path) {
    return noneWithoutMemory([&] { return NSImage::initByReferencingFile(path); });
}

std::optional<NSImage> ImageOperations::imageByScalingProportionallyToSize(const NSImage& image,
                                                                           CGSize size) {
    return noneWithoutMemory(
        [&] { return NSImageExtensions::imageByScalingProportionallyToSize(image, size); });
}

std::optional<CGImage> ImageOperations::getCGImageRef(const NSImage& image) {
    return noneWithoutMemory([&] { return NSImageExtensions::getCGImageRef(image); });
}

std::optional<NSImage> ImageOperations::NSImageFromCGImageRef(const CGImage& image) {
    return noneWithoutMemory([&] { return std::optional(skarnel::NSImageFromCGImageRef(image)); });
}

std::optional<TIFFData> ImageOperations::TIFFRepresentation(const NSImage& image) {
    return noneWithoutMemory([&] { return TIFFData::initWithImage(image); });
}

std::optional<CGImage> ImageOperations::addReflectionToCGImage(
    const CGImage& image, float perspectiveW, float perspectiveH, float reflectionOffset,
    float gradientOffset, float gradient, const RenderInputReaders& readers) {
    if (drawnPixels(image.width(), image.height(), perspectiveW, perspectiveH, reflectionOffset) >
        kMostResultPixels) {
        readers.peakOpacity();  // the shaping comes before the canvas
        return std::nullopt;
    }
    return noneWithoutMemory([&]() -> std::optional<CGImage> {
        std::optional<ReflectionResult> result =
            skarnel::addReflectionToCGImage(image, perspectiveW, perspectiveH, reflectionOffset,
                                            gradientOffset, gradient, readers, Drawing::WhenRead);
        if (!result) return std::nullopt;
        return std::move(result->image);
    });
}

std::optional<NSImage> ImageOperations::imageWithBitmap(const CGImage& bitmap) {
    return noneWithoutMemory([&] { return std::optional(skarnel::NSImageFromCGImageRef(bitmap)); });
}

std::optional<CIImage> ImageOperations::CIImageMakeFirtsPixelColorTransparent(
    const CIImage& image) {
    return noneWithoutMemory([&] { return skarnel::CIImageMakeFirtsPixelColorTransparent(image); });
}

std::optional<CGImage> ImageOperations::CIImageGetCGImage(const CIImage& image) {
    return noneWithoutMemory([&] { return skarnel::CIImageGetCGImage(image); });
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
