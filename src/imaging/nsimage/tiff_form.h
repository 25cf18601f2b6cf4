// The TIFF form of an image, and what decoding it would give without encoding it first.
#pragma once

#include <optional>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"

namespace skarnel {

/// The properties of a picture that has been turned upright and brought to RGBA8: sizes, depth
/// and orientation are those of `image`, the rest is kept.
ImageProperties uprightProperties(const CGImage& image, ImageProperties properties);

/// Uncompressed TIFF with the properties; none when it cannot be made.
std::optional<Bytes> tiffForm(const CGImage& image, const ImageProperties& properties);

/// Whether decoding the image's TIFF form would give its very pixels: four samples, rows without
/// padding, and no colour where alpha is 0. Reads every pixel.
bool survivesTiff(const CGImage& image);

/// Equal to decodeImage(*tiffForm(image, properties)). For an image that survives TIFF
/// (`survives`, as `survivesTiff` says) it is the image itself, otherwise the round trip.
std::optional<DecodedImage> decodedTiffForm(const CGImage& image, const ImageProperties& properties,
                                            bool survives);

}  // namespace skarnel
