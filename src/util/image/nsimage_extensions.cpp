#include "util/image/nsimage_extensions.h"

#include <algorithm>
#include <fstream>
#include <utility>

#include "util/image/filter_images.h"
#include "util/image/focus.h"

namespace skarnel::NSImageExtensions {
namespace {

/// Where the whole image is drawn in a canvas of the target size.
CGRect fittedRect(CGSize size, CGSize target) {
    if (size == target) return rectFromSize(target);
    const auto width = static_cast<float>(size.width);
    const auto height = static_cast<float>(size.height);
    const float widthFactor = static_cast<float>(target.width) / width;
    const float heightFactor = static_cast<float>(target.height) / height;
    const float factor = widthFactor < heightFactor ? widthFactor : heightFactor;
    CGRect rect{0, 0, static_cast<double>(width * factor), static_cast<double>(height * factor)};
    if (heightFactor > widthFactor)
        rect.y = (target.height - rect.height) * 0.5;
    else if (widthFactor > heightFactor)
        rect.x = (target.width - rect.width) * 0.5;
    return rect;
}

/// The last component of a path; separators at its end do not count.
std::string_view lastComponent(std::string_view path) {
    while (path.ends_with('/')) path.remove_suffix(1);
    return path.substr(path.rfind('/') + 1);
}

std::string joined(std::string_view folder, std::string_view name) {
    std::string path(folder);
    if (!name.empty() && !path.ends_with('/')) path += '/';
    return path.append(name);
}

}  // namespace

std::optional<CGImage> getCGImageRef(const NSImage& image) {
    std::optional<DecodedImage> decoded = image.decodedTIFFRepresentation();
    if (!decoded) return std::nullopt;
    return std::move(decoded->image);
}

std::optional<NSImage> imageByScalingProportionallyToSize(const NSImage& image, CGSize size) {
    if (!image.isValid()) return std::nullopt;
    const NSImage scaled = NSImage::initWithSize(size);
    try {
        FocusLock focus(scaled);
        focus->drawImage(image, fittedRect(image.size(), size), rectFromSize(image.size()),
                         CompositeOperation::SourceOver, 1);
        focus.unlock();
    } catch (const NSException&) {
        // A window without room asks for a size without area: there is no picture then.
        return std::nullopt;
    }
    return scaled;
}

NSImage scaleImageToSize(NSImage image, CGSize size) {
    const NSImage scaled = NSImage::initWithSize(size);
    image.setScalesWhenResized(true);
    const CGSize before = image.size();
    const auto factor =
        static_cast<double>(std::min(static_cast<float>(size.width / before.width),
                                     static_cast<float>(size.height / before.height)));
    FocusLock focus(scaled);
    focus->setImageInterpolation(InterpolationQuality::Low);
    const CGSize after{before.width * factor, before.height * factor};
    image.setSize(after);
    focus->compositeImage(image,
                          {(size.width - after.width) * 0.5, (size.height - after.height) * 0.5},
                          CompositeOperation::Copy);
    focus.unlock();
    return scaled;
}

NSImage scaleImage(NSImage image, float factor) {
    const double wide = static_cast<double>(factor);
    const CGSize size = image.size();
    return scaleImageToSize(std::move(image), {size.width * wide, size.height * wide});
}

std::optional<NSImage> imageByRotatingByDegrees(const NSImage& image, int degrees) {
    return RotateNSImage(image, static_cast<std::int16_t>(degrees & 0xFFFF));
}

std::optional<std::string> temporaryImageByRotatingByDegrees(const NSImage& image, int degrees,
                                                             std::string_view pathname,
                                                             std::string_view folder) {
    const std::optional<NSImage> rotated = imageByRotatingByDegrees(image, degrees);
    if (!rotated) return std::nullopt;
    std::string path = joined(folder, lastComponent(pathname));
    if (const std::optional<Bytes> data = rotated->TIFFRepresentation()) {
        // A write that fails is ignored: the path is handed out all the same.
        std::ofstream file(path, std::ios::binary);
        file.write(reinterpret_cast<const char*>(data->data()),
                   static_cast<std::streamsize>(data->size()));
    }
    return path;
}

NSImage imageWithCIImage(const CIImage& image) {
    return imageOfRepresentation(std::make_shared<NSCIImageRep>(image));
}

std::optional<NSImage> imageWithCIFilter(const NSImage& image, std::string_view filterName) {
    const std::optional<CIImage> input = filterImageOf(image);
    std::optional<CIFilter> filter = CIFilter::filterWithName(filterName);
    if (!input || !filter) return std::nullopt;
    filter->setDefaults();
    filter->setValue(*input, "inputImage");
    const std::optional<CIImage> output = filter->outputImage();
    if (!output) return std::nullopt;
    return imageWithCIImage(*output);
}

}  // namespace skarnel::NSImageExtensions
