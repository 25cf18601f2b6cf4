// What a screen reader is told of the widgets that the toolkit does not know.
#pragma once

namespace skarnel {

class ColorWell;
class FloatSlider;
class Viewer;

/// From now on the viewer is a picture with its size, its zoom and what tools have done to it as
/// its value, and the keys of the chosen tool in its description; a setting's slider has
/// the setting's own number and unit, and the colour well tells its colour. Each of them calls this
/// first, before anybody can ask about it; a second call does nothing.
void describeOwnWidgets();

/// Tells a screen reader that what the widget shows is another now.
void announceValue(FloatSlider& slider);
void announceValue(Viewer& viewer);
void announceColor(ColorWell& well);
/// The keys that work on the picture are others now.
void announceTool(Viewer& viewer);

}  // namespace skarnel
