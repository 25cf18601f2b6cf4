// The category NSImageExtensions of the image class: bitmaps of an image, scaling by one factor,
// rotation and named filters. On paper methods of the image, here functions whose first argument
// is the image; a nil result is an empty optional.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/ciimage.h"
#include "imaging/nsimage/nsimage.h"
#include "util/geometry/geometry.h"

namespace skarnel::NSImageExtensions {

/// The picture that the image's TIFF form decodes to (premultiplied RGBA8); none when it has no
/// such form. The detour is left out where it would hand back the very same pixels.
std::optional<CGImage> getCGImageRef(const NSImage& image);

/// A new image of exactly `size` points with the image fitted into it, its proportions kept, and
/// centred; enlarged if need be. The factor and the drawn size are computed in single precision,
/// the origin in double. None when the image has nothing to draw or the size no positive sides.
std::optional<NSImage> imageByScalingProportionallyToSize(const NSImage& image, CGSize size);

/// A new image of the target size with the image scaled by one factor (a float) and centred; copied
/// in, not laid over. Changes the image itself on purpose: it scales when resized from now on, and
/// its size becomes that of the scaled picture. Raises NSException for a target without area.
NSImage scaleImageToSize(NSImage image, CGSize size);

/// scaleImageToSize to the image's size times the factor.
NSImage scaleImage(NSImage image, float factor);

/// RotateNSImage by the angle's low 16 bits, taken as a signed number.
std::optional<NSImage> imageByRotatingByDegrees(const NSImage& image, int degrees);

/// The folder that temporary rotated images lie in unless another is given; a fixed one, which most
/// machines do not have.
inline constexpr std::string_view kTemporaryRotatedImageFolder = "/Users/dunmoke/Desktop/temp";

/// Writes the rotated image as TIFF into the folder, under the last component of the path name. The
/// path of the file, whether or not it could be written; none when there is no rotated image.
/// Writes in place: a reader may see half a file.
std::optional<std::string> temporaryImageByRotatingByDegrees(
    const NSImage& image, int degrees, std::string_view pathname,
    std::string_view folder = kTemporaryRotatedImageFolder);

/// A new image of the filter image's size, drawn from a filter-backed representation of it.
NSImage imageWithCIImage(const CIImage& image);

/// The image seen through the filter of that name with its defaults; none for an unknown name or an
/// image that cannot be read.
std::optional<NSImage> imageWithCIFilter(const NSImage& image, std::string_view filterName);

}  // namespace skarnel::NSImageExtensions
