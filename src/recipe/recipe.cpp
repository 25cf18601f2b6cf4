#include "recipe/recipe.h"

#include <fmt/format.h>

#include <charconv>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "recipe/base64.h"
#include "storage/settings_json.h"
#include "textimaging/serialized_text.h"

namespace skarnel {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLargestFile = std::size_t{64} << 20;
constexpr std::string_view kMark = "skarnel";
constexpr std::string_view kMarkValue = "recipe";

Error damaged(std::string message) {
    return {ErrorCode::Damaged, std::move(message)};
}

std::string colorText(const TextColor& color) {
    std::string text = fmt::format("#{:02X}{:02X}{:02X}", color.red, color.green, color.blue);
    if (color.alpha != 255) text += fmt::format("{:02X}", color.alpha);
    return text;
}

/// "#RRGGBB" or "#RRGGBBAA", in any letter case.
std::optional<TextColor> colorOf(std::string_view text) {
    if ((text.size() != 7 && text.size() != 9) || text[0] != '#') return std::nullopt;
    std::array<std::uint8_t, 4> parts{0, 0, 0, 255};
    for (std::size_t i = 0; 1 + 2 * i < text.size(); ++i) {
        const char* begin = text.data() + 1 + 2 * i;
        const auto [end, error] = std::from_chars(begin, begin + 2, parts[i], 16);
        if (error != std::errc() || end != begin + 2) return std::nullopt;
    }
    return TextColor{parts[0], parts[1], parts[2], parts[3]};
}

/// The settings have one form in all files, so that a number is the same number everywhere.
Json settingsJson(const Recipe& recipe) {
    SettingValues values;
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        values.emplace(kReflectionSettings[i].key, recipe.settings[i]);
    }
    values.emplace(kApplyBackgroundColorKey, recipe.applyBackgroundColor);
    return Json::parse(serializeSettings(values));
}

/// Parses the text into `json`. A member that is there twice would hide one of its two values:
/// it is an error here, where the library lets the last one win.
Result<void> parseStrictly(ByteView bytes, Json& json) {
    std::vector<std::set<std::string, std::less<>>> seen;
    std::string doubled;
    const Json::parser_callback_t watch = [&](int, Json::parse_event_t event, Json& part) {
        using Event = Json::parse_event_t;
        if (event == Event::object_start) seen.emplace_back();
        if (event == Event::object_end) seen.pop_back();
        if (event == Event::key && !seen.back().insert(part.get<std::string>()).second) {
            doubled = part.get<std::string>();
        }
        return true;
    };
    json = Json::parse(bytes.begin(), bytes.end(), watch, false);
    if (json.is_discarded() || !json.is_object() || !json.contains(kMark) ||
        json[kMark] != kMarkValue) {
        return {ErrorCode::UnknownFormat, "This is not a recipe"};
    }
    if (!doubled.empty()) return damaged(fmt::format("The recipe has \"{}\" twice", doubled));
    return {};
}

Result<void> checkVersion(const Json& json) {
    const auto version = json.find("version");
    if (version == json.end() || !version->is_number_unsigned() || *version == 0U) {
        return damaged("The recipe does not say its version");
    }
    if (*version > static_cast<unsigned>(kRecipeVersion)) {
        return {ErrorCode::Unsupported,
                fmt::format("The recipe has version {} and this program reads up to version {}",
                            version->dump(), kRecipeVersion)};
    }
    return {};
}

Result<void> readSettings(const Json& json, Recipe& recipe) {
    if (!json.is_object()) return damaged("The recipe's settings are damaged");
    const std::string text = json.dump();
    const ParsedSettings parsed =
        parseSettings({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    auto missing = [](std::string_view key) {
        return damaged(fmt::format("The recipe's setting \"{}\" is missing or damaged", key));
    };
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        const auto found = parsed.values.find(kReflectionSettings[i].key);
        if (found == parsed.values.end() || !std::holds_alternative<float>(found->second)) {
            return missing(kReflectionSettings[i].key);
        }
        recipe.settings[i] = std::get<float>(found->second);
    }
    const auto flag = parsed.values.find(kApplyBackgroundColorKey);
    if (flag == parsed.values.end() || !std::holds_alternative<bool>(flag->second)) {
        return missing(kApplyBackgroundColorKey);
    }
    recipe.applyBackgroundColor = std::get<bool>(flag->second);
    if (!parsed.whole || json.size() != kReflectionSettings.size() + 1) {
        return damaged("The recipe has a setting that this program does not know");
    }
    return {};
}

Result<void> readText(const Json& json, Recipe& recipe) {
    const auto bytes =
        json.is_string() ? decodeBase64(json.get_ref<const std::string&>()) : std::nullopt;
    if (!bytes) return damaged("The recipe's text is damaged");
    auto text = deserializeText(*bytes);
    if (!text) return damaged("The recipe's text is damaged: " + text.error().message);
    recipe.text = *std::move(text);
    return {};
}

Result<void> readMember(const std::string& name, const Json& value, Recipe& recipe) {
    if (name == kMark || name == "version") return {};
    if (name == "settings") return readSettings(value, recipe);
    if (name == "text") return readText(value, recipe);
    if (name != "background")
        return damaged(fmt::format("The recipe has an unknown member \"{}\"", name));
    const auto color =
        value.is_string() ? colorOf(value.get_ref<const std::string&>()) : std::nullopt;
    if (!color) return damaged("The recipe's background is no colour");
    recipe.background = *color;
    return {};
}

}  // namespace

Recipe Recipe::defaults() {
    Recipe recipe;
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        recipe.settings[i] = kReflectionSettings[i].defaultValue;
    }
    return recipe;
}

Result<std::string> serializeRecipe(const Recipe& recipe) {
    Json json;
    json[std::string(kMark)] = kMarkValue;
    json["version"] = kRecipeVersion;
    json["settings"] = settingsJson(recipe);
    json["background"] = colorText(recipe.background);
    if (recipe.text) {
        const auto bytes = serializeText(*recipe.text);
        if (!bytes) return {ErrorCode::InvalidArgument, "The text cannot be kept in a recipe"};
        json["text"] = encodeBase64(*bytes);
    }
    return json.dump(2) + "\n";
}

Result<Recipe> parseRecipe(ByteView bytes) {
    if (bytes.size() > kLargestFile)
        return {ErrorCode::TooLarge, "The recipe is larger than 64 MB"};
    Json json;
    if (auto parsed = parseStrictly(bytes, json); !parsed) return parsed.error();
    if (auto version = checkVersion(json); !version) return version.error();
    for (const char* needed : {"settings", "background"}) {
        if (!json.contains(needed)) return damaged(fmt::format("The recipe has no \"{}\"", needed));
    }
    Recipe recipe;
    for (const auto& [name, value] : json.items()) {
        if (auto read = readMember(name, value, recipe); !read) return read.error();
    }
    return recipe;
}

}  // namespace skarnel
