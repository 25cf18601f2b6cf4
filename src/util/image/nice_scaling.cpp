#include "util/image/nice_scaling.h"

#include <algorithm>

#include "util/image/focus.h"
#include "util/log/system_log.h"

namespace skarnel::NiceScaling {
namespace {

/// a / b rounded to a float.
double floatRatio(double a, double b) {
    return static_cast<double>(static_cast<float>(a / b));
}

void logFailure(const NSException& exception) {
    systemLogFormat("Couldn't scale image %s", exception.what());
}

}  // namespace

CGSize scaledSizeToFitSize(CGSize source, CGSize target) {
    const bool square = source.width == source.height;
    const double height =
        square ? target.width : floatRatio(source.height, source.width) * target.height;
    if (height > target.height && !square)
        return {floatRatio(source.width, source.height) * target.width, target.height};
    return {height > target.height ? target.height : target.width, std::min(target.height, height)};
}

CGSize scaledSizeToFitSize(const NSImage& image, CGSize target) {
    return scaledSizeToFitSize(image.size(), target);
}

CGSize scaledSizeToCoverSize(CGSize source, CGSize target) {
    const double height = floatRatio(source.height, source.width) * target.width;
    if (target.height > height)
        return {floatRatio(source.width, source.height) * target.height, target.height};
    return {target.width, height};
}

CGSize scaledSizeToCoverSize(const NSImage& image, CGSize target) {
    return scaledSizeToCoverSize(image.size(), target);
}

CGPoint coverOrigin(CGSize scaled, CGSize target, std::int32_t align) {
    const double right = -(scaled.width - target.width);
    const double top = -(scaled.height - target.height);
    const double centerX = right * 0.5;
    const double centerY = top * 0.5;
    switch (align) {
        case kAlignCenter:
            return {centerX, centerY};
        case kAlignTop:
            return {centerX, top};
        case kAlignTopLeft:
            return {0, top};
        case kAlignTopRight:
            return {right, top};
        case kAlignLeft:
            return {0, centerY};
        case kAlignBottom:
            return {centerX, 0};
        case kAlignBottomRight:
            return {right, 0};
        case kAlignRight:
            return {right, centerY};
        default:
            return {0, 0};
    }
}

std::optional<NSImage> scaledImageToFitSize(const NSImage& image, CGSize target,
                                            InterpolationQuality interpolation, Box box) {
    const CGSize size = scaledSizeToFitSize(image, target);
    NSImage scaled = NSImage::initWithSize(target);
    const CGRect whole = rectFromSize(image.size());
    try {
        FocusLock focus(scaled);
        const CGRect place{(target.width - size.width) * 0.5, (target.height - size.height) * 0.5,
                           size.width, size.height};
        if (box == Box::Yes) {
            focus->setColor(NSColor::whiteColor());
            focus->fillRect(place, CompositeOperation::Copy);
            focus->setColor(NSColor::blackColor());
        }
        focus->setImageInterpolation(interpolation);
        focus->drawImage(image, place, whole, CompositeOperation::SourceOver, 1);
        if (box == Box::Yes) focus->strokeRect(place);
        focus.unlock();
        return scaled;
    } catch (const NSException& exception) {
        logFailure(exception);
        return std::nullopt;
    }
}

std::optional<NSImage> scaledImageToCoverSize(const NSImage& image, CGSize target,
                                              InterpolationQuality interpolation, Box box,
                                              std::int32_t align) {
    const CGSize size = scaledSizeToCoverSize(image, target);
    NSImage scaled = NSImage::initWithSize(target);
    const CGRect whole = rectFromSize(image.size());
    const CGPoint origin = coverOrigin(size, target, align);
    try {
        FocusLock focus(scaled);
        focus->clipToRect(rectFromSize(target));
        focus->setImageInterpolation(interpolation);
        focus->drawImage(image, {origin.x, origin.y, size.width, size.height}, whole,
                         CompositeOperation::SourceOver, 1);
        if (box == Box::Yes) {
            focus->setColor(NSColor::blackColor());
            focus->strokeRect(rectFromSize(target));
        }
        focus.unlock();
        return scaled;
    } catch (const NSException& exception) {
        logFailure(exception);
        return std::nullopt;
    }
}

}  // namespace skarnel::NiceScaling
