#include "app/image_operations.h"

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

std::optional<Bytes> ImageOperations::TIFFRepresentation(const NSImage& image) {
    return image.TIFFRepresentation();
}

std::optional<CGImage> ImageOperations::addReflectionToCGImage(
    const CGImage& image, float perspectiveW, float perspectiveH, float reflectionOffset,
    float gradientOffset, float gradient, const RenderInputReaders& readers) {
    std::optional<ReflectionResult> result = skarnel::addReflectionToCGImage(
        image, perspectiveW, perspectiveH, reflectionOffset, gradientOffset, gradient, readers);
    if (!result) return std::nullopt;
    return std::move(result->image);
}

NSImage NSImageFromCGImageRef(const CGImage& image) {
    NSImage wrapped = NSImage::initWithSize(
        {static_cast<double>(image.width()), static_cast<double>(image.height())});
    wrapped.addRepresentation(NSBitmapImageRep::initWithCGImage(image));
    return wrapped;
}

}  // namespace skarnel
