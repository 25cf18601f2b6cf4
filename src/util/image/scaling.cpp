#include "util/image/scaling.h"

#include <algorithm>
#include <cmath>

#include "util/image/filter_images.h"
#include "util/image/focus.h"
#include "util/image/nsimage_extensions.h"

namespace skarnel::Scaling {
namespace {

/// The filter that turns the hue of the image, ready to be read; none without a TIFF form.
std::optional<CIFilter> hueFilter(const NSImage& image, float hue) {
    constexpr double kPi = 3.141592653589793;
    const auto turn = static_cast<float>(std::fmod(static_cast<double>(hue + 1.0F), 1.0));
    const auto angle = static_cast<float>(static_cast<double>(turn + turn) * kPi);
    const std::optional<CIImage> input = filterImageOf(image);
    std::optional<CIFilter> filter = CIFilter::filterWithName("CIHueAdjust");
    if (!input || !filter) return std::nullopt;
    filter->setValue(static_cast<double>(angle), "inputAngle");
    filter->setValue(*input, "inputImage");
    return filter;
}

}  // namespace

std::shared_ptr<NSImageRep> representationOfSize(const NSImage& image, CGSize size) {
    for (const auto& representation : image.representations())
        if (representation->size() == size) return representation;
    return nullptr;
}

std::shared_ptr<NSImageRep> bestRepresentationForSize(const NSImage& image, CGSize size) {
    if (auto exact = representationOfSize(image, size)) return exact;
    float best = 65536.0F;
    std::shared_ptr<NSImageRep> chosen;
    for (const auto& representation : image.representations()) {
        const CGSize its = representation->size();
        // Positive for a representation that is smaller on both sides.
        const auto difference =
            static_cast<float>(std::min(size.width - its.width, size.height - its.height));
        if (best < 0 && difference > 0) continue;
        const bool nearer = std::abs(best) > std::abs(difference);
        const bool larger = difference < 0 && best > 0;
        if (!nearer && !larger) continue;
        chosen = representation;
        best = difference;
    }
    return chosen ? chosen : image.bestRepresentationForDevice();
}

CGSize adjustSizeToDrawAtSize(NSImage image, CGSize size) {
    const auto best = bestRepresentationForSize(image, size);
    const CGSize adjusted = best ? best->size() : CGSize{};
    image.setSize(adjusted);
    return adjusted;
}

bool createRepresentationOfSize(NSImage image, CGSize size) {
    if (representationOfSize(image, size)) return false;
    FocusLock focus(NSImage::initWithSize(size));
    focus->setImageInterpolation(InterpolationQuality::High);
    focus->setShouldAntialias(true);
    const auto best = bestRepresentationForSize(image, size);
    const CGSize its = best ? best->size() : CGSize{};
    focus->drawRepresentation(best, fitRectInRect(rectFromSize(its), rectFromSize(size), false));
    auto bitmap = focus->bitmapOfRect(rectFromSize(size));
    focus.unlock();
    if (bitmap) image.addRepresentation(std::move(bitmap));
    return true;
}

bool createIconRepresentations(NSImage image) {
    image.setFlipped(false);
    createRepresentationOfSize(image, {32, 32});
    createRepresentationOfSize(image, {16, 16});
    image.setScalesWhenResized(false);
    return true;
}

void removeRepresentationsLargerThanSize(NSImage image, CGSize size) {
    const auto all = image.representations();
    for (auto each = all.rbegin(); each != all.rend(); ++each) {
        const CGSize its = (*each)->size();
        if (its.width > size.width && its.height > size.height) image.removeRepresentation(*each);
    }
}

bool shrinkToSize(NSImage image, CGSize size) {
    createRepresentationOfSize(image, size);
    image.setSize(size);
    removeRepresentationsLargerThanSize(image, size);
    return true;
}

NSImage duplicateOfSize(const NSImage& image, CGSize size) {
    NSImage duplicate = image.copy();
    shrinkToSize(duplicate, size);
    duplicate.setFlipped(false);
    return duplicate;
}

NSImage imageWithCIImage(const CIImage& image) {
    return NSImageExtensions::imageWithCIImage(image);
}

std::optional<NSImage> imageWithCIFilter(const CIFilter& filter) {
    const std::optional<CIImage> output = filter.outputImage();
    if (!output) return std::nullopt;
    return imageWithCIImage(*output);
}

std::optional<NSImage> imageByAdjustingHue(const NSImage& image, float hue) {
    const std::optional<CIFilter> filter = hueFilter(image, hue);
    if (!filter) return std::nullopt;
    return imageWithCIFilter(*filter);
}

std::optional<NSImage> imageByAdjustingHue(const NSImage& image, float hue, float saturation) {
    const std::optional<CIFilter> turned = hueFilter(image, hue);
    const std::optional<CIImage> hued = turned ? turned->outputImage() : std::nullopt;
    std::optional<CIFilter> controls = CIFilter::filterWithName("CIColorControls");
    if (!hued || !controls) return std::nullopt;
    controls->setValue(*hued, "inputImage");
    controls->setValue(static_cast<double>(saturation), "inputSaturation");
    controls->setValue(0.0, "inputBrightness");
    controls->setValue(1.0, "inputContrast");
    return imageWithCIFilter(*controls);
}

}  // namespace skarnel::Scaling
