#include "qt/tool_keys.h"

#include <algorithm>
#include <cmath>

#include "qt/viewer_tools.h"

namespace skarnel {
namespace {

constexpr double kFarStep = 10;  // with Ctrl

/// A step of one device pixel; down is positive.
std::optional<CGPoint> directionOf(int key) {
    switch (key) {
        case Qt::Key_Left:
            return CGPoint{-1, 0};
        case Qt::Key_Right:
            return CGPoint{1, 0};
        case Qt::Key_Up:
            return CGPoint{0, -1};
        case Qt::Key_Down:
            return CGPoint{0, 1};
        default:
            return std::nullopt;
    }
}

double pushed(double from, double step, double least, double most) {
    return std::clamp(from + step, least, std::max(least, most));
}

}  // namespace

bool isEnterKey(int key) {
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

std::optional<CGPoint> arrowStep(const ViewTransform& view, int key,
                                 Qt::KeyboardModifiers modifiers) {
    const std::optional<CGPoint> direction = directionOf(key);
    if (!direction || view.isEmpty()) return std::nullopt;
    const CGPoint from = view.toImage({0, 0});
    const CGPoint to = view.toImage(*direction);
    const CGPoint across{to.x - from.x, to.y - from.y};
    const double length = std::max(1.0, std::round(std::hypot(across.x, across.y))) *
                          (modifiers.testFlag(Qt::ControlModifier) ? kFarStep : 1);
    if (std::abs(across.x) >= std::abs(across.y))
        return CGPoint{std::copysign(length, across.x), 0};
    return CGPoint{0, std::copysign(length, across.y)};
}

CGRect middleOfSight(const ViewTransform& view, double share) {
    const CGRect part = view.part();
    const CGSize port = view.viewport();
    const CGPoint middle = view.toImage({port.width / 2, port.height / 2});
    const double x = std::clamp(middle.x, part.minX(), part.maxX());
    const double y = std::clamp(middle.y, part.minY(), part.maxY());
    const double width = std::min(part.width, port.width / view.factor()) * share / 2;
    const double height = std::min(part.height, port.height / view.factor()) * share / 2;
    return pixelsBetween({x - width, y - height}, {x + width, y + height}, part)
        .value_or(CGRect{part.x, part.y, 1, 1});
}

CGRect movedRect(CGRect rect, CGPoint step, CGRect bounds) {
    rect.x = pushed(rect.x, step.x, bounds.minX(), bounds.maxX() - rect.width);
    rect.y = pushed(rect.y, step.y, bounds.minY(), bounds.maxY() - rect.height);
    return rect;
}

CGRect resizedRect(CGRect rect, CGPoint step, CGRect bounds) {
    rect.width = pushed(rect.width, step.x, 1, bounds.maxX() - rect.x);
    rect.height = pushed(rect.height, step.y, 1, bounds.maxY() - rect.y);
    return rect;
}

}  // namespace skarnel
