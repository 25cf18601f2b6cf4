#include "util/geometry/geometry.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "util/log/system_log.h"

namespace skarnel {

std::ostream& operator<<(std::ostream& out, const CGPoint& point) {
    const auto before = out.precision(17);
    out << '(' << point.x << ", " << point.y << ')';
    out.precision(before);
    return out;
}

std::ostream& operator<<(std::ostream& out, const CGSize& size) {
    const auto before = out.precision(17);
    out << size.width << 'x' << size.height;
    out.precision(before);
    return out;
}

std::ostream& operator<<(std::ostream& out, const CGRect& rect) {
    return out << '{' << rect.origin() << ' ' << rect.size() << '}';
}

BTFloatRange BTMakeFloatRange(float value, float location, float length) {
    return {value, location, length};
}

float BTFloatRangeUnit(BTFloatRange range) {
    return (range.value - range.location) / range.length;
}

float BTFloatRangeMod(BTFloatRange range) {
    const float difference = range.value - range.location;
    const double remainder =
        std::fmod(static_cast<double>(difference), static_cast<double>(range.length));
    return static_cast<float>(static_cast<double>(range.location) + remainder);
}

CGPoint offsetPoint(CGPoint a, CGPoint b) {
    return {b.x - a.x, b.y - a.y};
}

float distanceFromOrigin(CGPoint point) {
    return static_cast<float>(std::hypot(point.x, point.y));
}

std::int32_t oppositeQuadrant(std::int32_t quadrant) {
    // The sum is formed in 64 bits so that the largest codes do not overflow.
    const auto remainder = static_cast<std::int32_t>((std::int64_t{quadrant} + 2) % 4);
    return remainder == 0 ? 4 : remainder;
}

CGRect rectFromSize(CGSize size) {
    return {0, 0, size.width, size.height};
}

CGRect rectZoom(CGRect rect, float factor, std::int32_t /*quadrant*/) {
    const double wide = static_cast<double>(factor);
    return {rect.x, rect.y, rect.width * wide, rect.height * wide};
}

void logRect(CGRect rect) {
    systemLogFormat("(%f,%f) (%fx%f)", rect.x, rect.y, rect.width, rect.height);
}

CGPoint rectOffset(CGRect a, CGRect b, std::int32_t quadrant) {
    if (quadrant == kQuadrantCenter) return {b.midX() - a.midX(), b.midY() - a.midY()};
    const bool right = quadrant == kQuadrantMaxXMinY || quadrant == kQuadrantMaxXMaxY;
    const bool top = quadrant == kQuadrantMaxXMaxY || quadrant == kQuadrantMinXMaxY;
    return {right ? b.maxX() - a.maxX() : b.x - a.x, top ? b.maxY() - a.maxY() : b.y - a.y};
}

std::int32_t closestCorner(CGRect a, CGRect b) {
    std::int32_t best = kQuadrantCenter;
    float bestDistance = distanceFromOrigin(rectOffset(a, b, best));
    for (std::int32_t quadrant = kQuadrantMinXMinY; quadrant <= kQuadrantMinXMaxY; ++quadrant) {
        const float distance = distanceFromOrigin(rectOffset(a, b, quadrant));
        if (distance < bestDistance) {
            best = quadrant;
            bestDistance = distance;
        }
    }
    return best;
}

RectEdge touchingEdgeForRectInRect(CGRect a, CGRect b) {
    if (a.maxX() >= b.maxX()) return kEdgeMaxX;
    if (a.x <= b.x) return kEdgeMinX;
    if (a.maxY() >= b.maxY()) return kEdgeMaxY;
    if (a.y <= b.y) return kEdgeMinY;
    return kNoEdge;
}

CGRect blendRects(CGRect a, CGRect b, float t) {
    const double u = static_cast<double>(1.0F - t);
    const double v = static_cast<double>(t);
    const auto blend = [u, v](double from, double to) { return std::round(from * u + to * v); };
    return {blend(a.x, b.x), blend(a.y, b.y), blend(a.width, b.width), blend(a.height, b.height)};
}

CGRect expelRectFromRectOnEdge(CGRect a, CGRect b, RectEdge edge, float margin) {
    const double wide = static_cast<double>(margin);
    switch (edge) {
        case kEdgeMinX:
            return NSOffsetRect(a, -(a.maxX() - b.x - wide), 0);
        case kEdgeMinY:
            return NSOffsetRect(a, 0, -(a.maxY() - b.y - wide));
        case kEdgeMaxX:
            return NSOffsetRect(a, b.maxX() - a.x - wide, 0);
        case kEdgeMaxY:
            return NSOffsetRect(a, 0, b.maxY() - a.y - wide);
        default:
            return a;
    }
}

CGRect expelRectFromRect(CGRect a, CGRect b, float margin) {
    const auto pushMinX = static_cast<float>(a.maxX() - b.x);
    const auto pushMaxX = static_cast<float>(b.maxX() - a.x);
    const auto pushMaxY = static_cast<float>(b.maxY() - a.y);
    const auto pushMinY = static_cast<float>(a.maxY() - b.y);
    // A push that is not a number equals nothing and has no shortest beside it: std::min would
    // find one or not by the order of its arguments.
    if (std::isnan(pushMinX) || std::isnan(pushMaxX) || std::isnan(pushMaxY) ||
        std::isnan(pushMinY))
        return a;
    const float least = std::min({pushMinX, pushMaxX, pushMaxY, pushMinY});
    const auto less = [margin](float push) { return static_cast<double>(push - margin); };
    if (pushMinX == least) return NSOffsetRect(a, -less(pushMinX), 0);
    if (pushMaxX == least) return NSOffsetRect(a, less(pushMaxX), 0);
    if (pushMaxY == least) return NSOffsetRect(a, 0, less(pushMaxY));
    if (pushMinY == least) return NSOffsetRect(a, 0, -less(pushMinY));
    return a;
}

CGRect constrainRectToRect(CGRect a, CGRect bounds) {
    double dx = 0;
    double dy = 0;
    if (a.maxX() > bounds.maxX()) dx += bounds.maxX() - a.maxX();
    if (a.maxY() > bounds.maxY()) dy += bounds.maxY() - a.maxY();
    if (bounds.x > a.x) dx += bounds.x - a.x;
    if (bounds.y > a.y) dy += bounds.y - a.y;
    return NSOffsetRect(a, dx, dy);
}

CGRect centerRectInRect(CGRect a, CGRect b) {
    return alignRectInRect(a, b, kQuadrantCenter);
}

CGRect alignRectInRect(CGRect a, CGRect b, std::int32_t quadrant) {
    const CGPoint shift = rectOffset(a, b, quadrant);
    return NSOffsetRect(a, shift.x, shift.y);
}

CGRect rectWithProportion(CGRect rect, float proportion, bool cover) {
    const double wide = static_cast<double>(proportion);
    const CGRect keepsWidth{0, 0, rect.width, rect.width / wide};
    const CGRect keepsHeight{0, 0, wide * rect.height, rect.height};
    return cover ? NSUnionRect(keepsWidth, keepsHeight)
                 : NSIntersectionRect(keepsWidth, keepsHeight);
}

CGRect sizeRectInRect(CGRect inner, CGRect outer, bool cover) {
    return rectWithProportion(outer, static_cast<float>(inner.width / inner.height), cover);
}

CGRect fitRectInRect(CGRect inner, CGRect outer, bool cover) {
    return centerRectInRect(sizeRectInRect(inner, outer, cover), outer);
}

CGRect NSOffsetRect(CGRect rect, double dx, double dy) {
    return {rect.x + dx, rect.y + dy, rect.width, rect.height};
}

CGRect NSUnionRect(CGRect a, CGRect b) {
    const bool aIsEmpty = a.width <= 0 || a.height <= 0;
    const bool bIsEmpty = b.width <= 0 || b.height <= 0;
    if (aIsEmpty && bIsEmpty) return {};
    if (aIsEmpty) return b;
    if (bIsEmpty) return a;
    const double x = std::min(a.x, b.x);
    const double y = std::min(a.y, b.y);
    return {x, y, std::max(a.maxX(), b.maxX()) - x, std::max(a.maxY(), b.maxY()) - y};
}

CGRect NSIntersectionRect(CGRect a, CGRect b) {
    if (a.maxX() <= b.x || b.maxX() <= a.x || a.maxY() <= b.y || b.maxY() <= a.y) return {};
    const double x = std::max(a.x, b.x);
    const double y = std::max(a.y, b.y);
    return {x, y, std::min(a.maxX(), b.maxX()) - x, std::min(a.maxY(), b.maxY()) - y};
}

}  // namespace skarnel
