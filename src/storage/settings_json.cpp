#include "storage/settings_json.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>

namespace skarnel {
namespace {

using Json = nlohmann::json;

constexpr std::string_view kNanPrefix = "nan:";
constexpr std::uint32_t kUsualNan = 0x7fc00000;

std::string textOfNonFinite(float value) {
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    const auto bits = std::bit_cast<std::uint32_t>(value);
    if (bits == kUsualNan) return "nan";
    std::array<char, 8> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), bits, 16).ptr;
    return std::string(kNanPrefix).append(digits.data(), end);
}

std::optional<float> nonFiniteOfText(std::string_view text) {
    if (text == "inf") return std::numeric_limits<float>::infinity();
    if (text == "-inf") return -std::numeric_limits<float>::infinity();
    if (text == "nan") return std::bit_cast<float>(kUsualNan);
    if (!text.starts_with(kNanPrefix)) return std::nullopt;
    text.remove_prefix(kNanPrefix.size());
    std::uint32_t bits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    const float value = std::bit_cast<float>(bits);
    return std::isnan(value) ? std::optional<float>(value) : std::nullopt;
}

/// The float nearest to a double; none where that would be infinite. The largest float's shortest
/// decimal form is a little larger than the float itself, by less than half a step.
std::optional<float> nearestFloat(double value) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    constexpr double kHalfStep = 0x1p103;
    if (!(std::abs(value) < kLargest + kHalfStep)) return std::nullopt;
    return static_cast<float>(std::clamp(value, -kLargest, kLargest));
}

/// JSON's numbers are doubles. The double nearest to the float's shortest decimal form prints as
/// that form ("0.1", not "0.10000000149011612"); should it round to another float, the exact
/// double is taken.
double doubleOf(float value) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    double shortest = 0;
    std::from_chars(text.data(), end, shortest);
    const std::optional<float> back = nearestFloat(shortest);
    const bool same =
        back && std::bit_cast<std::uint32_t>(*back) == std::bit_cast<std::uint32_t>(value);
    return same ? shortest : static_cast<double>(value);
}

std::optional<SettingValue> valueOf(const Json& json) {
    if (json.is_boolean()) return SettingValue(json.get<bool>());
    if (json.is_string()) {
        if (const std::optional<float> value = nonFiniteOfText(json.get_ref<const std::string&>()))
            return SettingValue(*value);
        return std::nullopt;
    }
    if (!json.is_number()) return std::nullopt;
    // Nothing of ours wrote a number that a float cannot hold.
    const std::optional<float> number = nearestFloat(json.get<double>());
    return number ? std::optional<SettingValue>(*number) : std::nullopt;
}

Json jsonOf(const SettingValue& value) {
    if (const bool* flag = std::get_if<bool>(&value)) return *flag;
    const float number = std::get<float>(value);
    if (!std::isfinite(number)) return textOfNonFinite(number);
    return doubleOf(number);
}

bool isBlank(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        if (byte != ' ' && byte != '\t' && byte != '\n' && byte != '\r') return false;
    }
    return true;
}

}  // namespace

ParsedSettings parseSettings(std::span<const std::uint8_t> bytes) {
    ParsedSettings parsed;
    if (isBlank(bytes)) return parsed;
    const Json json = Json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (!json.is_object()) {
        parsed.whole = false;
        return parsed;
    }
    for (const auto& [key, member] : json.items()) {
        if (const std::optional<SettingValue> value = valueOf(member)) {
            parsed.values.emplace(key, *value);
        } else {
            parsed.whole = false;
        }
    }
    return parsed;
}

std::string serializeSettings(const SettingValues& values) {
    Json json = Json::object();
    for (const auto& [key, value] : values) json[key] = jsonOf(value);
    return json.dump(4, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace skarnel
