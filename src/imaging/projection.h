// Projective maps of rectangles onto quadrilaterals, and drawing pictures through them.
#pragma once

#include <array>
#include <optional>

#include "imaging/cgimage.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// Where the corners of an upright rectangle go; bottom-up coordinates.
struct Quad {
    CGPoint topLeft;
    CGPoint topRight;
    CGPoint bottomLeft;
    CGPoint bottomRight;

    /// The smallest upright rectangle around the corners; NaN where a corner is.
    CGRect boundingBox() const;
    /// True for finite corners that go around once without a dent and without three on one line.
    bool isConvex() const;
    friend bool operator==(const Quad&, const Quad&) = default;
};

/// Row-major 3 x 3; (x, y) goes to (X / Z, Y / Z) with (X, Y, Z) = m (x, y, 1).
struct Homography {
    std::array<double, 9> m{1, 0, 0, 0, 1, 0, 0, 0, 1};
    CGPoint apply(CGPoint point) const;
    std::optional<Homography> inverse() const;
};

/// The projective map of (0, 0, width, height) onto the quad, corner to corner. None when there is
/// none. (Heckbert's closed form for the unit square, after scaling.)
std::optional<Homography> homographyOntoQuad(double width, double height, const Quad& quad);

/// Draws the picture, whose rectangle goes onto the convex `quad`, over transparent pixels; the
/// target's lower left corner lies at `lowerLeft`. Bilinear, clamped to the picture's edge pixels;
/// the quad's edges are covered by their distance, so that nothing wraps and nothing fringes.
/// False when there is no such map.
bool drawProjected(PixelView picture, const Quad& quad, CGPoint lowerLeft, MutablePixelView target);

}  // namespace skarnel
