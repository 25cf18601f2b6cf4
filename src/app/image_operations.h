// The picture work of the controller's commands, gathered so that a test can watch and fail it.
#pragma once

#include <optional>
#include <string>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"
#include "imaging/nsimage/nsimage.h"
#include "render/reflection.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// A new image of one bitmap representation, one point a pixel.
NSImage NSImageFromCGImageRef(const CGImage& image);

/// Every function is the pure one of the same name; none of them keeps state.
class ImageOperations {
  public:
    ImageOperations() = default;
    ImageOperations(const ImageOperations&) = delete;
    ImageOperations& operator=(const ImageOperations&) = delete;
    virtual ~ImageOperations() = default;

    /// None when no image object can be made for the path.
    virtual std::optional<NSImage> initByReferencingFile(const std::string& path);

    /// None when the image has nothing to draw.
    virtual std::optional<NSImage> imageByScalingProportionallyToSize(const NSImage& image,
                                                                      CGSize size);
    /// None when the image cannot be encoded or read back.
    virtual std::optional<CGImage> getCGImageRef(const NSImage& image);
    virtual std::optional<NSImage> NSImageFromCGImageRef(const CGImage& image);
    virtual std::optional<Bytes> TIFFRepresentation(const NSImage& image);

    /// The whole render; none when any step before the turn yields nothing.
    virtual std::optional<CGImage> addReflectionToCGImage(const CGImage& image, float perspectiveW,
                                                          float perspectiveH,
                                                          float reflectionOffset,
                                                          float gradientOffset, float gradient,
                                                          const RenderInputReaders& readers);
};

}  // namespace skarnel
