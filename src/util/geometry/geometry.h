// Points, sizes and rectangles in bottom-up coordinates, and pure functions on them.
#pragma once

#include <cstdint>
#include <iosfwd>

namespace skarnel {

/// A place or a shift; y grows upward.
struct CGPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

struct CGSize {
    double width = 0;
    double height = 0;
    friend bool operator==(const CGSize&, const CGSize&) = default;
};

/// An origin (the min-X, min-Y corner, which is the lower left one) and a size. Extents may be
/// zero, negative, infinite or NaN; the functions below say what they make of that.
struct CGRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    constexpr double minX() const { return x; }
    constexpr double minY() const { return y; }
    constexpr double maxX() const { return x + width; }
    constexpr double maxY() const { return y + height; }
    constexpr double midX() const { return x + width * 0.5; }
    constexpr double midY() const { return y + height * 0.5; }
    constexpr CGPoint origin() const { return {x, y}; }
    constexpr CGSize size() const { return {width, height}; }
    friend bool operator==(const CGRect&, const CGRect&) = default;
};

std::ostream& operator<<(std::ostream& out, const CGPoint& point);
std::ostream& operator<<(std::ostream& out, const CGSize& size);
std::ostream& operator<<(std::ostream& out, const CGRect& rect);

/// A value in a range that starts at `location` and extends by `length`.
struct _BTFloatRange {  // NOLINT(bugprone-reserved-identifier): the type's given name
    float value = 0;
    float location = 0;
    float length = 0;
    friend bool operator==(const _BTFloatRange&, const _BTFloatRange&) = default;
};
using BTFloatRange = _BTFloatRange;

/// Names a reference point of a rectangle; functions take any int and say what others mean.
enum Quadrant : std::int32_t {
    kQuadrantCenter = 0,
    kQuadrantMinXMinY = 1,
    kQuadrantMaxXMinY = 2,
    kQuadrantMaxXMaxY = 3,
    kQuadrantMinXMaxY = 4,
};

/// Names a side of a rectangle.
using RectEdge = std::uint64_t;
inline constexpr RectEdge kEdgeMinX = 0;
inline constexpr RectEdge kEdgeMinY = 1;
inline constexpr RectEdge kEdgeMaxX = 2;
inline constexpr RectEdge kEdgeMaxY = 3;
inline constexpr RectEdge kNoEdge = ~RectEdge{0};

BTFloatRange BTMakeFloatRange(float value, float location, float length);

/// (value - location) / length in single precision; a zero length gives an infinity or NaN.
float BTFloatRangeUnit(BTFloatRange range);

/// location + fmod(value - location, length). The remainder keeps the dividend's sign, so a value
/// below the location stays below it.
float BTFloatRangeMod(BTFloatRange range);

/// The shift from a to b.
CGPoint offsetPoint(CGPoint a, CGPoint b);

float distanceFromOrigin(CGPoint point);

/// (q + 2) rem 4 with 0 replaced by 4: 1 <-> 3, 2 <-> 4. The centre, 0, gives 2 on purpose.
std::int32_t oppositeQuadrant(std::int32_t quadrant);

CGRect rectFromSize(CGSize size);

/// Multiplies both extents; always anchored at the (minX, minY) corner, whatever the quadrant.
CGRect rectZoom(CGRect rect, float factor, std::int32_t quadrant);

/// Writes "(x,y) (widthxheight)" to the system log.
void logRect(CGRect rect);

/// The shift that brings a's reference point onto b's. Codes outside 0..4 count as (minX, minY).
CGPoint rectOffset(CGRect a, CGRect b, std::int32_t quadrant);

/// The reference point (0..4) of a that is nearest to the same point of b; ties keep the lower.
std::int32_t closestCorner(CGRect a, CGRect b);

/// The first side of b that a reaches or crosses, tried in the order max-X, min-X, max-Y, min-Y;
/// kNoEdge when a lies strictly inside.
RectEdge touchingEdgeForRectInRect(CGRect a, CGRect b);

/// a * (1 - t) + b * t for each field, rounded to whole numbers with halves away from zero.
CGRect blendRects(CGRect a, CGRect b, float t);

/// Moves a out of b over the given side so that `margin` of overlap remains, whether or not they
/// overlapped before. Any other edge code leaves a where it is.
CGRect expelRectFromRectOnEdge(CGRect a, CGRect b, RectEdge edge, float margin);

/// Moves a out of b along the shortest of the four pushes, ties in the order min-X, max-X, max-Y,
/// min-Y. A push that is NaN, whichever it is, leaves a where it is.
CGRect expelRectFromRect(CGRect a, CGRect b, float margin);

/// Moves a inside the bounds. Where a is larger than the bounds both corrections of that axis add
/// up, so that a is aligned to neither side; this is no clamp.
CGRect constrainRectToRect(CGRect a, CGRect bounds);

CGRect centerRectInRect(CGRect a, CGRect b);

/// Moves a so that its reference point lies on b's. Nothing is rounded.
CGRect alignRectInRect(CGRect a, CGRect b, std::int32_t quadrant);

/// A rectangle at (0, 0) of the given width / height that covers r's size, or fits inside it.
CGRect rectWithProportion(CGRect rect, float proportion, bool cover);

/// A rectangle at (0, 0) with inner's proportions (as a 32-bit float) that covers outer's size, or
/// fits inside it.
CGRect sizeRectInRect(CGRect inner, CGRect outer, bool cover);

/// sizeRectInRect, centred on outer.
CGRect fitRectInRect(CGRect inner, CGRect outer, bool cover);

CGRect NSOffsetRect(CGRect rect, double dx, double dy);

/// The smallest rectangle that encloses both. One with a zero or negative extent is ignored; if
/// both are such, the zero rectangle.
CGRect NSUnionRect(CGRect a, CGRect b);

/// The overlap; the zero rectangle where they only touch or do not meet.
CGRect NSIntersectionRect(CGRect a, CGRect b);

}  // namespace skarnel
