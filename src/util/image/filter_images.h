// Free functions between images, filter images and bitmaps.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/ciimage.h"
#include "imaging/nsimage/nsimage.h"
#include "util/resources/resource_path.h"

namespace skarnel {

/// A resource of the program as a picture, by its file name with extension; none when none of the
/// folders has it or it cannot be decoded.
std::optional<CGImage> createImageWithName(
    std::string_view name, const std::vector<std::string>& folders = resourceFolders());

/// The image turned counter-clockwise about its origin, its (minX, minY) corner; degrees outside
/// 1..359 give back the very input. Nothing is moved: the extent is the turned bounding box and may
/// start below zero.
CIImage RotateCIImage(const CIImage& image, std::int16_t degrees);

/// The image through its TIFF form and RotateCIImage, as a new image of one filter-backed
/// representation; none when it has no TIFF form.
std::optional<NSImage> RotateNSImage(const NSImage& image, std::int16_t degrees);

/// The first bitmap among the image's representations; without one, what the image shows, at its
/// size; raises NSException when that has no area. The image is not changed.
std::shared_ptr<NSBitmapImageRep> BitmapImageRepFromNSImage(const NSImage& image);

/// A filter image of the image's TIFF form; none when it has none.
std::optional<CIImage> filterImageOf(const NSImage& image);

/// A new image of the representation's size that has it as its only one.
NSImage imageOfRepresentation(const std::shared_ptr<NSImageRep>& representation);

}  // namespace skarnel
