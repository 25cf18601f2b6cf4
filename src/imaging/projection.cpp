#include "imaging/projection.h"

#include <algorithm>
#include <cmath>

#include "imaging/kernels/pixel_ops.h"
#include "imaging/kernels/turn.h"

namespace skarnel {
namespace {

double cross(CGPoint a, CGPoint b, CGPoint c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// A side as a signed distance: positive inside.
struct Side {
    double a, b, c;
    double distance(double x, double y) const { return a * x + b * y + c; }
};

Side sideThrough(CGPoint from, CGPoint to, double inward) {
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const double a = -(to.y - from.y) / length * inward;
    const double b = (to.x - from.x) / length * inward;
    return {a, b, -(a * from.x + b * from.y)};
}

std::array<Side, 4> sidesOf(const Quad& quad) {
    const double inward = cross(quad.bottomLeft, quad.bottomRight, quad.topRight) > 0 ? 1.0 : -1.0;
    return {sideThrough(quad.bottomLeft, quad.bottomRight, inward),
            sideThrough(quad.bottomRight, quad.topRight, inward),
            sideThrough(quad.topRight, quad.topLeft, inward),
            sideThrough(quad.topLeft, quad.bottomLeft, inward)};
}

/// One axis of a bilinear sample: never beyond the edge pixels' centres.
struct AxisSample {
    int first;
    int second;
    int weight;
};

AxisSample sampleAxis(double position, int size) {
    const double centre = std::clamp(position - 0.5, 0.0, size - 1.0);
    const int first = static_cast<int>(centre);
    return {first, std::min(first + 1, size - 1),
            static_cast<int>((centre - first) * kernels::kLerpUnit)};
}

void samplePixel(PixelView picture, double u, double v, std::uint8_t* target) {
    const AxisSample x = sampleAxis(u, picture.width);
    const AxisSample y = sampleAxis(v, picture.height);
    const std::uint8_t* upper = picture.row(y.first);
    const std::uint8_t* lower = picture.row(y.second);
    for (int k = 0; k < 4; ++k) {
        const std::ptrdiff_t left = std::ptrdiff_t{4} * x.first + k;
        const std::ptrdiff_t right = std::ptrdiff_t{4} * x.second + k;
        target[k] =
            kernels::lerpByte(kernels::lerpByte(upper[left], upper[right], x.weight),
                              kernels::lerpByte(lower[left], lower[right], x.weight), y.weight);
    }
}

}  // namespace

CGRect Quad::boundingBox() const {
    const auto [left, right] = std::minmax({topLeft.x, topRight.x, bottomLeft.x, bottomRight.x});
    const auto [low, high] = std::minmax({topLeft.y, topRight.y, bottomLeft.y, bottomRight.y});
    return {left, low, right - left, high - low};
}

bool Quad::isConvex() const {
    const double turns[4] = {
        cross(bottomLeft, bottomRight, topRight), cross(bottomRight, topRight, topLeft),
        cross(topRight, topLeft, bottomLeft), cross(topLeft, bottomLeft, bottomRight)};
    const auto allOf = [&](auto test) { return std::all_of(turns, turns + 4, test); };
    return allOf([](double turn) { return std::isfinite(turn) && turn > 0; }) ||
           allOf([](double turn) { return std::isfinite(turn) && turn < 0; });
}

CGPoint Homography::apply(CGPoint point) const {
    const double z = m[6] * point.x + m[7] * point.y + m[8];
    return {(m[0] * point.x + m[1] * point.y + m[2]) / z,
            (m[3] * point.x + m[4] * point.y + m[5]) / z};
}

std::optional<Homography> Homography::inverse() const {
    const auto minor = [&](int a, int b, int c, int d) {
        const auto at = [&](int i) { return m[static_cast<std::size_t>(i)]; };
        return at(a) * at(d) - at(b) * at(c);
    };
    const double determinant =
        m[0] * minor(4, 5, 7, 8) - m[1] * minor(3, 5, 6, 8) + m[2] * minor(3, 4, 6, 7);
    if (!std::isfinite(determinant) || determinant == 0) return std::nullopt;
    Homography result{{minor(4, 5, 7, 8), minor(2, 1, 8, 7), minor(1, 2, 4, 5), minor(5, 3, 8, 6),
                       minor(0, 2, 6, 8), minor(2, 0, 5, 3), minor(3, 4, 6, 7), minor(1, 0, 7, 6),
                       minor(0, 1, 3, 4)}};
    for (double& value : result.m) value /= determinant;
    return result;
}

std::optional<Homography> homographyOntoQuad(double width, double height, const Quad& quad) {
    if (!(width > 0) || !(height > 0) || !quad.isConvex()) return std::nullopt;
    // The unit square's corners in order: (0, 0), (1, 0), (1, 1), (0, 1).
    const CGPoint p0 = quad.bottomLeft;
    const CGPoint p1 = quad.bottomRight;
    const CGPoint p2 = quad.topRight;
    const CGPoint p3 = quad.topLeft;
    const double dx1 = p1.x - p2.x;
    const double dy1 = p1.y - p2.y;
    const double dx2 = p3.x - p2.x;
    const double dy2 = p3.y - p2.y;
    const double sx = p0.x - p1.x + p2.x - p3.x;
    const double sy = p0.y - p1.y + p2.y - p3.y;
    const double determinant = dx1 * dy2 - dx2 * dy1;
    const double g = (sx * dy2 - dx2 * sy) / determinant;
    const double h = (dx1 * sy - sx * dy1) / determinant;
    return Homography{{(p1.x - p0.x + g * p1.x) / width, (p3.x - p0.x + h * p3.x) / height, p0.x,
                       (p1.y - p0.y + g * p1.y) / width, (p3.y - p0.y + h * p3.y) / height, p0.y,
                       g / width, h / height, 1.0}};
}

bool drawProjected(PixelView picture, const Quad& quad, CGPoint lowerLeft,
                   MutablePixelView target) {
    const auto forward = homographyOntoQuad(picture.width, picture.height, quad);
    const auto back = forward ? forward->inverse() : std::nullopt;
    if (!back) return false;
    const std::array<Side, 4> sides = sidesOf(quad);
    for (int row = 0; row < target.height; ++row) {
        const double y = lowerLeft.y + (target.height - 1 - row) + 0.5;
        std::uint8_t* out = target.row(row);
        for (int column = 0; column < target.width; ++column, out += 4) {
            const double x = lowerLeft.x + column + 0.5;
            double covered = 1;
            for (const Side& side : sides)
                covered *= std::clamp(side.distance(x, y) + 0.5, 0.0, 1.0);
            if (covered <= 0) continue;
            const CGPoint from = back->apply({x, y});
            samplePixel(picture, from.x, picture.height - from.y, out);
            kernels::scalar::scaleRow(out, out,
                                      static_cast<std::uint8_t>(std::lround(covered * 255)), 1);
        }
    }
    return true;
}

}  // namespace skarnel
