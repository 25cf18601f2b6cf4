// The category Scaling of the image class: its representations by size, and hue and saturation.
#pragma once

#include <memory>
#include <optional>

#include "imaging/ciimage.h"
#include "imaging/nsimage/nsimage.h"
#include "util/geometry/geometry.h"

namespace skarnel::Scaling {

/// The first representation of exactly this size; null when there is none.
std::shared_ptr<NSImageRep> representationOfSize(const NSImage& image, CGSize size);

/// An exact one; else the nearest by the smaller of the two differences of the sides (a float),
/// where a larger representation is taken before any smaller one, and the earlier of equally near
/// ones. Without representations the platform's choice, which is null then.
std::shared_ptr<NSImageRep> bestRepresentationForSize(const NSImage& image, CGSize size);

/// Sets the image's size to that of its best representation, and returns it; (0, 0) without one.
CGSize adjustSizeToDrawAtSize(NSImage image, CGSize size);

/// Adds a bitmap of the size with the best representation fitted into it and centred; false when
/// one of that size exists. Raises NSException for a size without area.
bool createRepresentationOfSize(NSImage image, CGSize size);

/// Representations of 32 x 32 and 16 x 16, unflipped and not scaled when resized; true.
bool createIconRepresentations(NSImage image);

/// Removes those both wider and higher than the size.
void removeRepresentationsLargerThanSize(NSImage image, CGSize size);

/// Makes the representation, takes on the size and drops the larger representations; true.
bool shrinkToSize(NSImage image, CGSize size);

/// An unflipped copy, shrunk; the image itself stays as it was.
NSImage duplicateOfSize(const NSImage& image, CGSize size);

/// A new image of the filter image's size, drawn from a filter-backed representation of it.
NSImage imageWithCIImage(const CIImage& image);

/// imageWithCIImage of the filter's output; none without one.
std::optional<NSImage> imageWithCIFilter(const CIFilter& filter);

/// The image with its hue turned; 1 is a full turn, and whole turns make no difference. None when
/// it has no TIFF form.
std::optional<NSImage> imageByAdjustingHue(const NSImage& image, float hue);

/// The same, then its saturation multiplied (0 is grey, 1 changes nothing).
std::optional<NSImage> imageByAdjustingHue(const NSImage& image, float hue, float saturation);

}  // namespace skarnel::Scaling
