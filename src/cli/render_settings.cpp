#include "cli/render_settings.h"

#include <cassert>

namespace skarnel::cli {

std::size_t indexOfSetting(std::string_view key) {
    std::size_t index = 0;
    while (index < kReflectionSettings.size() && kReflectionSettings[index].key != key) ++index;
    assert(index < kReflectionSettings.size());
    return index;
}

float RenderSettings::number(std::string_view key) const {
    return numbers[indexOfSetting(key)];
}

RenderSettings defaultSettings() {
    RenderSettings settings{};
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        settings.numbers[i] = kReflectionSettings[i].defaultValue;
    }
    return settings;
}

RenderSettings storedSettings(const SettingsStore& store) {
    RenderSettings settings = defaultSettings();
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        const std::string_view key = kReflectionSettings[i].key;
        if (store.contains(key)) settings.numbers[i] = store.floatForKey(key);
    }
    settings.applyBackgroundColor = store.boolForKey(kApplyBackgroundColorKey);
    return settings;
}

RenderSettings withOverrides(RenderSettings settings, const SettingOverrides& overrides) {
    for (std::size_t i = 0; i < overrides.numbers.size(); ++i) {
        if (overrides.numbers[i]) settings.numbers[i] = *overrides.numbers[i];
    }
    if (overrides.applyBackgroundColor) settings.applyBackgroundColor = true;
    if (overrides.backgroundColor) settings.backgroundColor = *overrides.backgroundColor;
    return settings;
}

std::optional<ReflectionResult> renderPicture(const CGImage& picture,
                                              const RenderSettings& settings) {
    RenderInputs inputs;
    inputs.peakOpacity = settings.number("alpha");
    if (settings.applyBackgroundColor) inputs.background = settings.backgroundColor;
    inputs.imagePerspective = settings.number("imagePerspective");
    return addReflectionToCGImage(picture, settings.number("perspectiveWidth"),
                                  settings.number("perspectiveHeight"), settings.number("offset"),
                                  settings.number("start"), settings.number("gradient"), inputs);
}

}  // namespace skarnel::cli
