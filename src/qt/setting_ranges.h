// The one table of the settings as the window offers them: names, ranges, steps.
#pragma once

#include <QtGlobal>
#include <array>
#include <cmath>
#include <string_view>

#include "render/settings.h"

namespace skarnel {

/// How one number is offered. The slider travels over [travelMin, travelMax] in whole steps; the
/// field also takes what lies beyond, within [fieldMin, fieldMax]: the formulas take any number,
/// and the ends of the travel are only where a hand seldom wants to go. The handle then rests at
/// its end while slider, field and store all hold the number typed.
struct SettingRange {
    std::string_view key;
    const char* label;  // translatable
    const char* unit;   // shown behind the field
    const char* hint;   // tool tip and accessible description
    float travelMin;
    float travelMax;
    float step;      // of a drag and of an arrow key
    float pageStep;  // of Page Up and Page Down
    float fieldMin;
    float fieldMax;
};

enum class SettingGroup { Reflection, Fade, Turn };

/// In the order in which they act on the picture, which is the order on the panel: three of the
/// reflection's shape, three of its fade, the turn of the whole.
inline constexpr std::array<SettingRange, 7> kSettingRanges{{
    {"perspectiveHeight", QT_TRANSLATE_NOOP("skarnel::SettingsPanel", "Height"), "%",
     QT_TRANSLATE_NOOP("skarnel::SettingsPanel",
                       "Height of the reflection, in percent of the picture's"),
     1, 200, 1, 10, -1000, 1000},
    {"perspectiveWidth", QT_TRANSLATE_NOOP("skarnel::SettingsPanel", "Width"), "%",
     QT_TRANSLATE_NOOP("skarnel::SettingsPanel",
                       "Widening of the reflection at its far edge, in percent of the picture's "
                       "width on each side"),
     -40, 100, 1, 10, -49, 1000},
    {"offset", QT_TRANSLATE_NOOP("skarnel::SettingsPanel", "Gap"), "%",
     QT_TRANSLATE_NOOP("skarnel::SettingsPanel",
                       "Gap between picture and reflection, in percent of the reflection's height"),
     -50, 100, 1, 10, -1000, 1000},
    {"start", QT_TRANSLATE_NOOP("skarnel::SettingsPanel", "Start"), "%",
     QT_TRANSLATE_NOOP("skarnel::SettingsPanel",
                       "Lift of the fade, in percent of the reflection's height"),
     -100, 100, 1, 10, -1000, 1000},
    {"gradient", QT_TRANSLATE_NOOP("skarnel::SettingsPanel", "Gradient"), "/10",
     QT_TRANSLATE_NOOP("skarnel::SettingsPanel",
                       "Steepness of the fade, in tenths of its exponent"),
     0, 50, 0.5F, 5, -1000, 1000},
    {"alpha", QT_TRANSLATE_NOOP("skarnel::SettingsPanel", "Opacity"), "/255",
     QT_TRANSLATE_NOOP("skarnel::SettingsPanel",
                       "Peak opacity of the reflection; above 255 bright parts turn dark"),
     0, 255, 1, 16, 0, 10000},
    {"imagePerspective", QT_TRANSLATE_NOOP("skarnel::SettingsPanel", "Turn"), "%",
     QT_TRANSLATE_NOOP("skarnel::SettingsPanel",
                       "Turn of the whole picture in perspective: level at 0, 50 and 100, "
                       "strongest at 25 and 75"),
     0, 100, 0.5F, 5, -1000, 1000},
}};

constexpr const SettingRange* settingRange(std::string_view key) {
    for (const SettingRange& range : kSettingRanges)
        if (range.key == key) return &range;
    return nullptr;
}

constexpr float settingDefault(std::string_view key) {
    for (const ReflectionSetting& setting : kReflectionSettings)
        if (setting.key == key) return setting.defaultValue;
    return 0;
}

/// Positions of a slider: 0 .. travelPositions(range), one a step.
inline int travelPositions(const SettingRange& range) {
    return static_cast<int>(std::lround((range.travelMax - range.travelMin) / range.step));
}

inline float valueAtPosition(const SettingRange& range, int position) {
    return range.travelMin + static_cast<float>(position) * range.step;
}

/// The nearest position; the ends for what lies beyond them, the start for NaN.
inline int positionOfValue(const SettingRange& range, float value) {
    if (!(value > range.travelMin)) return 0;
    if (value >= range.travelMax) return travelPositions(range);
    return static_cast<int>(std::lround((value - range.travelMin) / range.step));
}

}  // namespace skarnel
