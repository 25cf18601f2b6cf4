// The category NiceScaling of the image class: sizes that fit or cover, and new images of exactly
// a target size with the image fitted or covering.
#pragma once

#include <cstdint>
#include <optional>

#include "imaging/cgcontext.h"
#include "imaging/nsimage/nsimage.h"
#include "util/geometry/geometry.h"

namespace skarnel::NiceScaling {

/// Which part of a covering image is kept. Any other code places it as BottomLeft does.
enum ImageAlignment : std::int32_t {
    kAlignCenter = 0,
    kAlignTop = 1,
    kAlignTopLeft = 2,
    kAlignTopRight = 3,
    kAlignLeft = 4,
    kAlignBottom = 5,
    kAlignBottomLeft = 6,
    kAlignBottomRight = 7,
    kAlignRight = 8,
};

enum class Box { No, Yes };

/// The image fitted: (W, (h / w) H) for a landscape source, ((w / h) W, H) for a portrait one or
/// one that would come out too high, a square of the smaller side for a square one. The ratio, a
/// float, multiplies the other side of the target: an ordinary fit for square targets only. Kept so
/// on purpose.
CGSize scaledSizeToFitSize(CGSize source, CGSize target);
CGSize scaledSizeToFitSize(const NSImage& image, CGSize target);

/// The smallest size of the source's proportions (a float) that covers the target.
CGSize scaledSizeToCoverSize(CGSize source, CGSize target);
CGSize scaledSizeToCoverSize(const NSImage& image, CGSize target);

/// A new image of the target size with the image drawn centred at its fitted size; with a box it
/// lies on white within a black frame. None, with "Couldn't scale image ..." in the log, when the
/// target cannot be drawn into.
std::optional<NSImage> scaledImageToFitSize(
    const NSImage& image, CGSize target,
    InterpolationQuality interpolation = InterpolationQuality::High, Box box = Box::No);

/// A new image of the target size that the image covers; with a box the canvas has a black frame.
/// Fails as above.
std::optional<NSImage> scaledImageToCoverSize(
    const NSImage& image, CGSize target,
    InterpolationQuality interpolation = InterpolationQuality::High, Box box = Box::No,
    std::int32_t align = kAlignCenter);

/// The lower left corner of an image of the scaled size that covers the target, by the alignment.
CGPoint coverOrigin(CGSize scaled, CGSize target, std::int32_t align);

}  // namespace skarnel::NiceScaling
