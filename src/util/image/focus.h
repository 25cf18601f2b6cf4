// Drawing into an image: the image whose focus is locked is the destination of what is drawn.
#pragma once

#include <memory>
#include <optional>

#include "imaging/cgcontext.h"
#include "imaging/nscolor.h"
#include "imaging/nsimage/nsimage.h"
#include "util/geometry/geometry.h"
#include "util/image/ns_exception.h"

namespace skarnel {

/// Draws in points of the destination, bottom-up, into its pixels. A destination of fractional size
/// has the nearest whole number of pixels a side, at least 1; its points are spread evenly over
/// them, so that drawing over its whole area leaves no edge half covered. Starts with the colour
/// black, interpolation default and anti-aliasing on; what lies outside is clipped.
class NSGraphicsContext {
  public:
    /// Transparent. Raises NSException for a size without a positive side, or beyond memory.
    NSGraphicsContext(CGSize sizePoints, int pixelsWide, int pixelsHigh);

    CGSize size() const { return size_; }  // points

    void setImageInterpolation(InterpolationQuality quality);
    void setShouldAntialias(bool antialias);
    /// For fills and strokes.
    void setColor(const NSColor& color);
    /// Intersects what is drawn from now on with the rectangle.
    void clipToRect(CGRect rect);

    void fillRect(CGRect rect, CompositeOperation operation = CompositeOperation::SourceOver);
    /// With source-over, a line of one point centred on the edge.
    void strokeRect(CGRect rect);

    /// Draws the part `source` (in the image's points, bottom-up) into `destination`. The pixels
    /// are those of the representation that the image is drawn from: one of exactly the image's
    /// size, else the platform's choice, stretched to the image's size. An image that has nothing
    /// to draw, or no extent, draws nothing.
    void drawImage(const NSImage& image, CGRect destination, CGRect source,
                   CompositeOperation operation, double fraction);

    /// Draws the whole image at its size with its lower left corner at the point.
    void compositeImage(const NSImage& image, CGPoint point, CompositeOperation operation);

    /// Draws the whole representation, stretched, with source-over; a null one draws nothing.
    void drawRepresentation(const std::shared_ptr<NSImageRep>& representation, CGRect destination);

    /// What has been drawn in an area so far, as a representation of the area's size in points
    /// (initWithFocusedViewRect). Null for an area without a whole pixel.
    std::shared_ptr<NSBitmapImageRep> bitmapOfRect(CGRect rect);

    /// Whether anything was drawn.
    bool isChanged() const { return changed_; }

  private:
    friend class FocusLock;
    CGRect toPixels(CGRect rect) const;
    CGSize size_;
    double scaleX_;  // pixels a point
    double scaleY_;
    std::unique_ptr<CGContext> context_;
    bool changed_ = false;
};

/// Locks the focus on an image while it lives. Locks nest: the innermost is `current`, and locks
/// end in reverse order, each on the thread that made it.
///
/// The destination starts with what the image shows, transparent for a new one. `unlock` hands the
/// drawing to the image as its only representation, unless nothing was drawn over what it showed
/// before. A lock that ends without `unlock` (an exception) leaves the image as it was.
class FocusLock {
  public:
    /// Raises NSException for an image whose size has no positive width and height.
    explicit FocusLock(const NSImage& image);

    /// Draws into one representation of the image, in its own points and pixels; it is replaced, at
    /// its place in the list, by a bitmap of the same size. It must be one of the image's
    /// (asserted). Raises NSException as above.
    FocusLock(const NSImage& image, std::shared_ptr<NSImageRep> representation);

    FocusLock(const FocusLock&) = delete;
    FocusLock& operator=(const FocusLock&) = delete;
    ~FocusLock();

    NSGraphicsContext& context() { return context_; }
    NSGraphicsContext* operator->() { return &context_; }
    void unlock();

    /// The innermost destination of this thread; null when no focus is locked.
    static NSGraphicsContext* current();

  private:
    void enter();
    void leave();

    NSImage image_;
    std::shared_ptr<NSImageRep> representation_;  // null: the whole image
    NSGraphicsContext context_;
    NSGraphicsContext* outer_ = nullptr;
    bool locked_ = false;
};

}  // namespace skarnel
