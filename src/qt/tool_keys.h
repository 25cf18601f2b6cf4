// What keys do to a frame or a mark on the picture, as arithmetic.
#pragma once

#include <Qt>
#include <optional>

#include "qt/view_transform.h"

namespace skarnel {

/// Either of the two keys that say "do it".
bool isEnterKey(int key);

/// How far an arrow key moves something on the picture: along one of the picture's sides, a pixel
/// of the screen in whole image pixels, at least one; with Ctrl ten times as far. It goes where the
/// arrow points, also where the picture is turned. None for other keys.
std::optional<CGPoint> arrowStep(const ViewTransform& view, int key,
                                 Qt::KeyboardModifiers modifiers);

/// Whole image pixels in the middle of what is in sight, `share` of it in each direction; at least
/// one pixel. The view must not be empty.
CGRect middleOfSight(const ViewTransform& view, double share);

/// The rectangle pushed by a step, as far as the bounds allow.
CGRect movedRect(CGRect rect, CGPoint step, CGRect bounds);

/// The same with its right and lower edges pushed alone; a pixel stays in each direction.
CGRect resizedRect(CGRect rect, CGPoint step, CGRect bounds);

}  // namespace skarnel
