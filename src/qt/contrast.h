// How well two colours can be told apart, and colours that can.
#pragma once

#include <QColor>

namespace skarnel {

/// What text needs on its ground to be read with weak eyes.
inline constexpr double kTextContrast = 4.5;

/// The ratio of two opaque colours' luminances, each raised by 0.05, as the Web Content
/// Accessibility Guidelines define it: 1 for equal ones, 21 for black and white.
double contrast(const QColor& one, const QColor& other);

/// `over` as it is seen on an opaque ground.
QColor blended(const QColor& over, const QColor& ground);

/// Black or white, whichever is read better on the ground; 4.58 at the least.
QColor readableOn(const QColor& ground);

/// The ground itself, or the nearest one on its way away from the text on which the text is read.
QColor groundFor(const QColor& text, QColor ground);

}  // namespace skarnel
