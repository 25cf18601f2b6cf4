// The settings file's form: one JSON object of numbers, flags and, for what JSON has no number
// for, texts.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "storage/settings_store.h"

namespace skarnel {

struct ParsedSettings {
    SettingValues values;
    bool whole = true;  // false: something was there that is not in `values`
};

/// What one of the file's values means, for files that hold settings among other things: a JSON
/// number, and the text of a number that JSON has none for. None for what no float can hold, and
/// for any other text.
std::optional<float> settingOfNumber(double number);
std::optional<float> settingOfText(std::string_view text);

/// Reads what can be read. Bytes are hostile. Nothing at all (an empty file) is whole.
ParsedSettings parseSettings(std::span<const std::uint8_t> bytes);

/// Sorted by key, one key a line, ended by a line end. A finite float is written as the shortest
/// number that reads back to its very bits; others as "inf", "-inf", "nan", or "nan:7fc00001"
/// with their bits.
std::string serializeSettings(const SettingValues& values);

}  // namespace skarnel
