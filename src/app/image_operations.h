// The picture work of the controller's commands, gathered so that a test can watch and fail it.
#pragma once

#include <optional>
#include <string>

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"
#include "imaging/nsimage/nsimage.h"
#include "imaging/nsimage/tiff_data.h"
#include "render/placement.h"
#include "render/reflection.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// A new image of one bitmap representation, one point a pixel.
NSImage NSImageFromCGImageRef(const CGImage& image);

/// As the command line has it at its default limit: a stored number can ask for a canvas that no
/// machine holds. What the sliders travel over stays below for pictures of up to 300 megapixels,
/// since the reflection's bytes are a signed 32-bit number.
inline constexpr std::int64_t kMostResultPixels = kResultFactor * DecodeLimits{}.maxPixels;

/// Every function is the pure one of the same name; none of them keeps state. Those that may give
/// none do so without memory, too, where the pure ones raise std::bad_alloc.
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
    virtual std::optional<TIFFData> TIFFRepresentation(const NSImage& image);

    /// The whole render; none when any step before the turn yields nothing, or when the canvas
    /// would have more than kMostResultPixels.
    virtual std::optional<CGImage> addReflectionToCGImage(const CGImage& image, float perspectiveW,
                                                          float perspectiveH,
                                                          float reflectionOffset,
                                                          float gradientOffset, float gradient,
                                                          const RenderInputReaders& readers);

    /// An image of a captured page, of the bitmap's size; none when it cannot be made.
    virtual std::optional<NSImage> imageWithBitmap(const CGImage& bitmap);
    virtual std::optional<CIImage> CIImageMakeFirtsPixelColorTransparent(const CIImage& image);
    virtual std::optional<CGImage> CIImageGetCGImage(const CIImage& image);
    /// Raises NSException for an image without a bitmap.
    virtual CGRect usedRect(const NSImage& image, std::int32_t tolerance);
    /// None when the result cannot be read back; raises NSException for an empty canvas.
    virtual std::optional<NSImage> scaleImageToSize(const NSImage& image, CGSize size, bool trim,
                                                    std::int32_t tolerance, bool expand,
                                                    bool scaleUp);
};

}  // namespace skarnel
