// The reflection settings: their keys, order and defaults.
#pragma once

#include <array>
#include <string_view>

namespace skarnel {

struct ReflectionSetting {
    std::string_view key;
    float defaultValue;
};

/// The seven numbers in the order in which they are seeded and reset.
inline constexpr std::array<ReflectionSetting, 7> kReflectionSettings{{
    {"perspectiveWidth", 0.0F},
    {"perspectiveHeight", 100.0F},
    {"offset", 0.0F},
    {"start", 0.0F},
    {"gradient", 7.0F},
    {"alpha", 200.0F},
    {"imagePerspective", 50.0F},
}};

/// The flag; absent counts as false.
inline constexpr std::string_view kApplyBackgroundColorKey = "applyBackgroundColor";

}  // namespace skarnel
