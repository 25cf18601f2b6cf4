// What a screen reader is told of the widgets that the toolkit does not know.
#pragma once

#include <QString>

namespace skarnel {

class ColorWell;
class FloatSlider;
class Viewer;

/// From now on the viewer is a picture with its name, its size, its zoom and what tools have done
/// to it as its value, and its name and the keys of the chosen tool in its description; a setting's
/// slider has the setting's own number and unit, the colour well tells its colour, and an announcer
/// is a notification. Each of them calls this first, before anybody can ask about it; a second call
/// does nothing.
void describeOwnWidgets();

/// Tells a screen reader that what the widget shows is another now.
void announceValue(FloatSlider& slider);
void announceValue(Viewer& viewer);
void announceColor(ColorWell& well);
/// Another picture came in: its name, its size and what is known of it are others now.
void announcePicture(Viewer& viewer);
/// What a screen reader is told of the picture: its name, its size, its zoom, what tools have done.
QString pictureText(const Viewer& viewer);
/// The keys that work on the picture are others now.
void announceTool(Viewer& viewer);

}  // namespace skarnel
