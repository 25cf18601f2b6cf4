// The named looks that the program comes with.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "render/settings.h"

namespace skarnel {

using SettingNumbers = std::array<float, kReflectionSettings.size()>;  // in the table's order

/// A look is the seven numbers. Whether a background is laid under the result, and which, stays as
/// the user has it.
struct Preset {
    std::string_view id;    // never shown, never changed: scripts and state files hold it
    std::string_view name;  // English; shown through the translator
    SettingNumbers settings;
    friend bool operator==(const Preset&, const Preset&) = default;
};

/// The looks in the order in which they are shown; the first one is the defaults.
std::span<const Preset> builtInPresets();

/// Null when no look has the id.
const Preset* presetWithId(std::string_view id);

/// The first look with exactly these numbers, null when there is none: the one to mark as chosen.
const Preset* presetWithSettings(const SettingNumbers& settings);

}  // namespace skarnel
