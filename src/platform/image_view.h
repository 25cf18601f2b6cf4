// The image viewer as the controller sees it.
#pragma once

#include "imaging/cgimage.h"
#include "imaging/io/image_io.h"
#include "imaging/nscolor.h"
#include "platform/object.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// What a drag in the viewer does.
enum class IKToolMode {
    IKToolModeMove,
    IKToolModeSelect,
    IKToolModeCrop,
    IKToolModeRotate,
    IKToolModeAnnotate,
};
using enum IKToolMode;

/// A point of the viewer is one pixel of the screen. A sender may be null.
class IKImageView : public NSResponder {
  public:
    virtual void setDoubleClickOpensImageEditPanel(bool opens) = 0;
    virtual void setAutohidesScrollers(bool hides) = 0;
    virtual void setAutoresizes(bool resizes) = 0;
    virtual void setBackgroundColor(const NSColor& color) = 0;
    virtual void setCurrentToolMode(IKToolMode mode) = 0;

    /// The viewport, in points, whatever the zoom factor and the scroll position.
    virtual CGRect visibleRect() const = 0;

    /// Shows an image in place of the one before; the viewer shares its pixels. `imageProperties`
    /// may be null for none. While fitting holds, the new image is fitted too.
    virtual void setImage(const CGImage& image, const ImageProperties* imageProperties) = 0;

    /// The display scale, 1.0 = one image pixel on one point. Setting it ends fitting.
    virtual double zoomFactor() const = 0;
    virtual void setZoomFactor(double factor) = 0;

    /// Scales the display so that the whole image is seen; holds until a factor or the actual
    /// size is asked for.
    virtual void zoomImageToFit(const NSObject* sender) = 0;
    virtual void zoomImageToActualSize(const NSObject* sender) = 0;
};

}  // namespace skarnel
