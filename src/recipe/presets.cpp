#include "recipe/presets.h"

#include <algorithm>

namespace skarnel {
namespace {

// width, height, gap, start, gradient, opacity, turn
constexpr std::array<Preset, 12> kPresets{{
    {"mirror", "Mirror", {0, 100, 0, 0, 7, 200, 50}},
    {"subtle-floor", "Subtle Floor", {0, 30, 0, 0, 14, 96, 50}},
    {"glossy-table", "Glossy Table", {3, 55, 0, 0, 11, 190, 50}},
    {"tall-mirror", "Tall Mirror", {0, 150, 0, 0, 6, 230, 50}},
    {"still-water", "Still Water", {6, 80, 0, 25, 5, 170, 50}},
    {"stage", "Stage", {28, 42, 0, 0, 10, 200, 50}},
    {"floating", "Floating", {4, 40, 18, 0, 14, 130, 50}},
    {"shop-window", "Shop Window", {0, 22, 4, 0, 18, 210, 50}},
    {"card-left", "Card to the Left", {0, 45, 1, 0, 12, 170, 42}},
    {"card-right", "Card to the Right", {0, 45, 1, 0, 12, 170, 58}},
    {"cover", "Cover", {0, 35, 0, 0, 14, 150, 32}},
    {"twin", "Twin", {0, 100, 3, 0, 0, 255, 50}},
}};

}  // namespace

std::span<const Preset> builtInPresets() {
    return kPresets;
}

const Preset* presetWithId(std::string_view id) {
    const auto found = std::find_if(kPresets.begin(), kPresets.end(),
                                    [&](const Preset& preset) { return preset.id == id; });
    return found == kPresets.end() ? nullptr : &*found;
}

const Preset* presetWithSettings(const SettingNumbers& settings) {
    const auto found = std::find_if(kPresets.begin(), kPresets.end(), [&](const Preset& preset) {
        return preset.settings == settings;
    });
    return found == kPresets.end() ? nullptr : &*found;
}

}  // namespace skarnel
