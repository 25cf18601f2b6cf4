// A bitmap that is drawn into: fills, images, clipping, saved states and snapshots.
#pragma once

#include <memory>
#include <optional>

#include "imaging/cgimage.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// The numbers are the platform's interpolation codes.
enum class InterpolationQuality { Default = 0, None = 1, Low = 2, High = 3 };

/// The numbers are the platform's compositing operations.
enum class CompositeOperation { Copy = 1, SourceOver = 2, DestinationIn = 7 };

/// Straight (not premultiplied) components, each nominally 0..1; drawing clamps them.
struct DeviceColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const DeviceColor&, const DeviceColor&) = default;
};

/// A premultiplied RGBA8 bitmap in device RGB with a drawing state. Coordinates are bottom-up
/// (origin in the lower left corner), may be fractional, and what lies outside is clipped.
class CGContext {
  public:
    /// Transparent. None when a side is below 1, too large for 32-bit sizes, or memory is short.
    static std::unique_ptr<CGContext> create(int width, int height);

    /// Draws into the given pixels, which it takes over as they are.
    explicit CGContext(PixelBuffer pixels);

    int width() const;
    int height() const;
    MutablePixelView pixels();

    /// The state: clip, fill and stroke colour, interpolation, anti-aliasing, operation.
    void saveState();
    /// Without a saved state does nothing.
    void restoreState();

    void setFillColor(const DeviceColor& color);
    void setStrokeColor(const DeviceColor& color);
    void setInterpolationQuality(InterpolationQuality quality);
    void setShouldAntialias(bool antialias);
    void setCompositeOperation(CompositeOperation operation);

    /// Intersects the clip; edges inside a pixel cover it by area when anti-aliasing is on, and
    /// by the pixel's centre otherwise.
    void clipToRect(const CGRect& rect);

    /// Makes the covered pixels transparent, whatever the operation.
    void clearRect(const CGRect& rect);

    /// Fills with the fill colour and the current operation.
    void fillRect(const CGRect& rect);

    /// Strokes the outline with the stroke colour, the line centred on the edge.
    void strokeRect(const CGRect& rect, double lineWidth = 1.0);
    /// The same with upright lines of `line.width` and level ones of `line.height`.
    void strokeRect(const CGRect& rect, CGSize line);

    /// Draws the whole image into the rectangle, stretched as needed. A whole-pixel rectangle of
    /// the image's own size is composited pixel by pixel, without resampling. Raises std::bad_alloc
    /// without memory, as all drawing does: nothing or a part would pass for the picture.
    void drawImage(const CGImage& image, const CGRect& destination);

    /// Draws `source` (bottom-up, in the image's pixels) into `destination` at an opacity of 0..1.
    void drawImage(const CGImage& image, const CGRect& source, const CGRect& destination,
                   CompositeOperation operation, double fraction);

    /// A copy of the pixels as they are now; none without memory.
    std::optional<CGImage> createImage() const;

    /// Hands the pixels over without copying; the context is empty afterwards.
    CGImage takeImage() &&;

    ~CGContext();

  private:
    struct State;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace skarnel
