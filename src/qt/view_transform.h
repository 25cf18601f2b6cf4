// Where the viewer puts its picture: zoom, fit, scrolling, cropping and turning as arithmetic.
#pragma once

#include "util/geometry/geometry.h"

namespace skarnel {

/// Maps between image points and view points. Both grow to the right and DOWN from the top left
/// corner; image points count image pixels, view points count device pixels of the screen. So a
/// factor of 1 puts one image pixel on one device pixel, whatever the screen's scale is: that is
/// what "100 %" means. A plain value; every operation that changes something returns the change
/// in place and keeps the picture reachable (a picture smaller than the viewport is centred, a
/// larger one never leaves a gap at an edge).
class ViewTransform {
  public:
    /// Bounds of the factor, so that positions stay far inside what doubles and the painter hold.
    static constexpr double kMinFactor = 1.0 / 4096;
    static constexpr double kMaxFactor = 4096;

    /// The device pixels of a widget's side: whole, as only whole pixels can be painted.
    static double devicePixels(double logicalLength, double deviceRatio);

    /// Sizes below zero count as zero. While `fits()` the factor follows both setters.
    void setViewport(CGSize devicePixels);
    void setImageSize(CGSize imagePixels);
    /// The part of the image that is shown, in image pixels; clipped to the image. An empty
    /// rectangle shows the whole image.
    void setPart(CGRect imagePart);
    /// Clockwise, about the centre of the part that is shown.
    void setRotation(double degrees);

    CGSize viewport() const { return viewport_; }
    CGSize imageSize() const { return image_; }
    CGRect part() const { return part_; }
    double rotation() const { return degrees_; }
    double factor() const { return factor_; }
    bool fits() const { return fits_; }
    bool isEmpty() const { return part_.width <= 0 || part_.height <= 0; }

    /// The factor at which the whole shown part just fits the viewport; 1 without either.
    double fittingFactor() const;
    /// Turns the mode on: from now on the factor follows the viewport and the picture.
    void zoomToFit();
    /// Ends the mode. Keeps the middle of the viewport in place. Factors that are not finite or
    /// not above zero change nothing; others are brought into the bounds.
    void setFactor(double factor);
    /// As `setFactor`, keeping the image point under `anchor` there as far as the edges allow.
    void zoomAt(double factor, CGPoint anchor);
    /// Moves the picture by device pixels, as far as the edges allow.
    void scrollBy(double dx, double dy);
    /// Puts the top left corner of the viewport at this distance from the content's.
    void setScroll(CGPoint position);

    CGPoint toView(CGPoint image) const;
    CGPoint toImage(CGPoint view) const;
    /// The upright box around the shown part in view points. Its top left corner is whole, so
    /// that an unturned picture at a factor of 1 lies on the pixel grid.
    CGRect content() const;
    /// How far the viewport's corner is from the content's; 0 where the content fits.
    CGPoint scroll() const;
    /// The largest values of `scroll`; 0 where the content fits.
    CGPoint scrollRange() const;
    /// Whether the view point lies on the shown part.
    bool hits(CGPoint view) const;

    friend bool operator==(const ViewTransform&, const ViewTransform&) = default;

  private:
    CGSize turnedSize() const;
    void settle();

    CGSize viewport_;
    CGSize image_;
    CGRect part_;
    bool wholeImage_ = true;
    double degrees_ = 0;
    double cosine_ = 1;
    double sine_ = 0;
    double factor_ = 1;
    bool fits_ = false;
    // What lies in the middle of the viewport, in turned image units from the part's centre.
    CGPoint middle_;
};

}  // namespace skarnel
