// Light, dark, or as the desktop has it.
#pragma once

#include <QString>

namespace skarnel {

enum class Appearance { System, Light, Dark };

/// "", "light", "dark"; anything else is the system's.
Appearance appearanceNamed(const QString& name);
QString appearanceName(Appearance appearance);

/// Gives the whole application the palette. The system's own is the platform's, or dark where the
/// desktop asks for dark and the platform has brought a light one all the same.
void applyAppearance(Appearance appearance);

/// Whether the palette in force is a dark one.
bool isDarkPalette();

}  // namespace skarnel
