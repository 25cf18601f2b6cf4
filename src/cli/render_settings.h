// The settings of a run: defaults, the user's stored ones, and what the options say, in that order.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "imaging/cgimage.h"
#include "render/reflection.h"
#include "render/settings.h"
#include "storage/settings_store.h"

namespace skarnel::cli {

/// All that a render reads beside the picture.
struct RenderSettings {
    std::array<float, kReflectionSettings.size()> numbers;  // in the order of kReflectionSettings
    bool applyBackgroundColor = false;
    DeviceColor backgroundColor{0, 0, 0, 1};  // the viewer's, which starts black

    float number(std::string_view key) const;
    friend bool operator==(const RenderSettings&, const RenderSettings&) = default;
};

/// The number's place in RenderSettings::numbers; the key must be one of kReflectionSettings.
std::size_t indexOfSetting(std::string_view key);

RenderSettings defaultSettings();

/// The stored settings; a key that the store does not hold has its default.
RenderSettings storedSettings(const SettingsStore& store);

/// What options set; what is empty leaves the setting alone.
struct SettingOverrides {
    std::array<std::optional<float>, kReflectionSettings.size()> numbers;
    bool applyBackgroundColor = false;  // true turns it on; there is no option to turn it off
    std::optional<DeviceColor> backgroundColor;
};

RenderSettings withOverrides(RenderSettings settings, const SettingOverrides& overrides);

/// The whole render of a picture with these settings.
std::optional<ReflectionResult> renderPicture(const CGImage& picture,
                                              const RenderSettings& settings);

}  // namespace skarnel::cli
