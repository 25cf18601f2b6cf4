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

/// JSON's numbers are doubles. The double nearest to the float's shortest decimal form prints as
/// that form ("0.1", not "0.10000000149011612"); should it round to another float, the exact
/// double is taken.
double doubleOf(float value) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    double shortest = 0;
    std::from_chars(text.data(), end, shortest);
    return settingOfNumber(shortest) == value ? shortest : static_cast<double>(value);
}

/// Collects the members of the outermost object as they are read. No tree is built: the library's
/// trees need memory even to be destroyed.
class SettingsReader final : public nlohmann::json_sax<Json> {
  public:
    explicit SettingsReader(ParsedSettings& parsed) : parsed_(parsed) {}

    bool null() override { return take(std::nullopt); }
    bool boolean(bool value) override { return take(SettingValue(value)); }
    bool number_integer(number_integer_t value) override {
        return takeNumber(static_cast<double>(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        return takeNumber(static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t&) override { return takeNumber(value); }
    bool string(string_t& value) override {
        const std::optional<float> number = settingOfText(value);
        return take(number ? std::optional<SettingValue>(*number) : std::nullopt);
    }
    bool binary(binary_t&) override { return take(std::nullopt); }
    bool start_object(std::size_t) override {
        if (depth_ > 0) take(std::nullopt);
        ++depth_;
        return true;
    }
    bool key(string_t& value) override {
        if (depth_ == 1) key_ = value;
        return true;
    }
    bool end_object() override { return leave(); }
    bool start_array(std::size_t) override {
        const bool inside = take(std::nullopt);
        ++depth_;
        return inside;
    }
    bool end_array() override { return leave(); }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
        return false;
    }

  private:
    bool take(const std::optional<SettingValue>& value) {
        // Below the outermost object everything belongs to a value that was given up already.
        if (depth_ == 1 && value) parsed_.values.insert_or_assign(key_, *value);
        if (depth_ == 1 && !value) parsed_.whole = false;
        return depth_ > 0;  // outside there is no object, and nothing to read
    }
    bool takeNumber(double value) {
        // Nothing of ours wrote a number that a float cannot hold.
        const std::optional<float> number = settingOfNumber(value);
        return take(number ? std::optional<SettingValue>(*number) : std::nullopt);
    }
    bool leave() {
        --depth_;
        return true;
    }

    ParsedSettings& parsed_;
    std::string key_;
    int depth_ = 0;
};

std::string textOf(const SettingValue& value) {
    if (const bool* flag = std::get_if<bool>(&value)) return *flag ? "true" : "false";
    const float number = std::get<float>(value);
    if (!std::isfinite(number)) return '"' + textOfNonFinite(number) + '"';
    return Json(doubleOf(number)).dump();
}

bool isBlank(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        if (byte != ' ' && byte != '\t' && byte != '\n' && byte != '\r') return false;
    }
    return true;
}

}  // namespace

// The nearest float; none where that would be infinite. The largest float's shortest decimal form
// is a little larger than the float itself, by less than half a step.
std::optional<float> settingOfNumber(double number) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    constexpr double kHalfStep = 0x1p103;
    if (!(std::abs(number) < kLargest + kHalfStep)) return std::nullopt;
    return static_cast<float>(std::clamp(number, -kLargest, kLargest));
}

std::optional<float> settingOfText(std::string_view text) {
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

ParsedSettings parseSettings(std::span<const std::uint8_t> bytes) {
    ParsedSettings parsed;
    if (isBlank(bytes)) return parsed;
    SettingsReader reader(parsed);
    if (!Json::sax_parse(bytes.begin(), bytes.end(), &reader)) return {{}, false};
    return parsed;
}

std::string serializeSettings(const SettingValues& values) {
    std::string text = "{";
    for (const auto& [key, value] : values) {
        text += text.size() == 1 ? "\n    " : ",\n    ";
        text += Json(key).dump(-1, ' ', false, Json::error_handler_t::replace);
        text += ": " + textOf(value);
    }
    return text + (values.empty() ? "}\n" : "\n}\n");
}

}  // namespace skarnel
