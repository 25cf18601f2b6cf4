// What stands behind a CIImage: something with an extent that can draw itself.
#pragma once

#include "imaging/ciimage.h"
#include "imaging/projection.h"

namespace skarnel {

struct CIImage::Recipe {
    virtual ~Recipe() = default;

    /// Bottom-up; see CIImage::extent.
    virtual CGRect extent() const = 0;

    /// See CIImage::rasterize; width and height are at least 1. Pixels outside the extent are
    /// transparent.
    virtual std::optional<CGImage> rasterize(CGPoint lowerLeft, int width, int height) const = 0;
};

/// An image as pixels with a place.
struct PlacedPixels {
    CGImage image;
    CGPoint lowerLeft;
};

/// The whole extent as pixels, grown outwards to whole ones. None where it is empty, infinite or
/// too large, or without memory.
std::optional<PlacedPixels> wholePixels(const CIImage& image);

/// The image under a transform; its extent is the bounding rectangle of the transformed extent.
/// Flips and moves by whole pixels copy the bytes; scaling averages over the area where it
/// shrinks and is linear where it enlarges; everything else is bilinear.
CIImage transformedImage(const CIImage& image, const AffineTransform& transform);

/// The image with its extent mapped onto the quad; none when there is no such map.
std::optional<CIImage> projectedImage(const CIImage& image, const Quad& quad);

}  // namespace skarnel
