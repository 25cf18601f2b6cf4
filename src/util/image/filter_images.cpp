#include "util/image/filter_images.h"

#include "imaging/io/image_io.h"
#include "util/image/focus.h"

namespace skarnel {

std::optional<CGImage> createImageWithName(std::string_view name,
                                           const std::vector<std::string>& folders) {
    const std::optional<std::string> path = findResource(name, folders);
    if (!path) return std::nullopt;
    Result<DecodedImage> decoded = decodeOwnImageFile(*path);
    if (!decoded) return std::nullopt;
    return std::move(decoded->image);
}

std::optional<CIImage> filterImageOf(const NSImage& image) {
    const std::optional<DecodedImage> decoded = image.decodedTIFFRepresentation();
    if (!decoded) return std::nullopt;
    return CIImage::imageWithCGImage(decoded->image);
}

NSImage imageOfRepresentation(const std::shared_ptr<NSImageRep>& representation) {
    NSImage image = NSImage::initWithSize(representation->size());
    image.addRepresentation(representation);
    return image;
}

CIImage RotateCIImage(const CIImage& image, std::int16_t degrees) {
    // One comparison for "not in 1..359": what is below 1 wraps to a large number.
    if (static_cast<std::uint16_t>(degrees - 1) > 358) return image;
    std::optional<CIFilter> filter = CIFilter::filterWithName("CIAffineTransform");
    if (!filter) return image;
    filter->setDefaults();
    filter->setValue(image, "inputImage");
    filter->setValue(AffineTransform::rotationByDegrees(static_cast<double>(degrees)),
                     "inputTransform");
    return filter->outputImage().value_or(image);
}

std::optional<NSImage> RotateNSImage(const NSImage& image, std::int16_t degrees) {
    const std::optional<CIImage> input = filterImageOf(image);
    if (!input) return std::nullopt;
    return imageOfRepresentation(std::make_shared<NSCIImageRep>(RotateCIImage(*input, degrees)));
}

std::shared_ptr<NSBitmapImageRep> BitmapImageRepFromNSImage(const NSImage& image) {
    for (const auto& representation : image.representations())
        if (auto bitmap = std::dynamic_pointer_cast<NSBitmapImageRep>(representation))
            return bitmap;
    FocusLock focus(image);
    return focus->bitmapOfRect(rectFromSize(image.size()));
}

}  // namespace skarnel
