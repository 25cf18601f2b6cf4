#include "recipe/recipe.h"

#include <fmt/format.h>

#include <charconv>
#include <new>

#include "recipe/base64.h"
#include "recipe/recipe_members.h"
#include "storage/settings_json.h"
#include "textimaging/serialized_text.h"
#include "util/log/message.h"

namespace skarnel {
namespace {

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

Error noMemory() {
    return {ErrorCode::OutOfMemory, "No memory left"};
}

/// The settings have one form in all files, so that a number is the same number everywhere.
std::string settingsText(const Recipe& recipe) {
    SettingValues values;
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        values.emplace(kReflectionSettings[i].key, recipe.settings[i]);
    }
    values.emplace(kApplyBackgroundColorKey, recipe.applyBackgroundColor);
    std::string text = serializeSettings(values);
    // Its lines are indented as they have to be here, except for the last one.
    constexpr std::string_view kEnd = "}\n";
    return text.replace(text.size() - kEnd.size(), kEnd.size(), "  }");
}

Result<void> checkVersion(const RecipeMembers& members) {
    if (!members.version || members.version->number == 0) {
        return damaged("The recipe does not say its version");
    }
    if (members.version->number > kRecipeVersion) {
        return {ErrorCode::Unsupported,
                filled("The recipe has version %1 and this program reads up to version %2",
                       {members.version->text, std::to_string(kRecipeVersion)})};
    }
    return {};
}

Result<void> readSettings(const RecipeMembers& members, Recipe& recipe) {
    if (!members.hasSettings) return damaged("The recipe's settings are damaged");
    auto missing = [](std::string_view key) {
        return damaged(filled("The recipe's setting \"%1\" is missing or damaged", {key}));
    };
    for (std::size_t i = 0; i < kReflectionSettings.size(); ++i) {
        const auto found = members.settings.find(kReflectionSettings[i].key);
        if (found == members.settings.end() || !std::holds_alternative<float>(found->second)) {
            return missing(kReflectionSettings[i].key);
        }
        recipe.settings[i] = std::get<float>(found->second);
    }
    const auto flag = members.settings.find(kApplyBackgroundColorKey);
    if (flag == members.settings.end() || !std::holds_alternative<bool>(flag->second)) {
        return missing(kApplyBackgroundColorKey);
    }
    recipe.applyBackgroundColor = std::get<bool>(flag->second);
    if (members.settingCount != kReflectionSettings.size() + 1) {
        return damaged("The recipe has a setting that this program does not know");
    }
    return {};
}

Result<void> readText(const RecipeMembers& members, Recipe& recipe) {
    const auto bytes = members.text ? decodeBase64(*members.text) : std::nullopt;
    if (!bytes) return damaged("The recipe's text is damaged");
    auto text = deserializeText(*bytes);
    if (!text) return damaged(filled("The recipe's text is damaged: %1", {text.error().message}));
    recipe.text = *std::move(text);
    return {};
}

Result<void> readMember(const std::string& name, const RecipeMembers& members, Recipe& recipe) {
    if (name == kRecipeMark || name == kRecipeVersionName) return {};
    if (name == kRecipeSettings) return readSettings(members, recipe);
    if (name == kRecipeText) return readText(members, recipe);
    if (name != kRecipeBackground)
        return damaged(filled("The recipe has an unknown member \"%1\"", {name}));
    const auto color = members.background ? colorOf(*members.background) : std::nullopt;
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

Result<std::string> serializeRecipe(const Recipe& recipe) try {
    std::string text = fmt::format("{{\n  \"{}\": \"{}\",\n  \"{}\": {},\n", kRecipeMark,
                                   kRecipeMarkValue, kRecipeVersionName, kRecipeVersion);
    text += fmt::format("  \"{}\": {},\n  \"{}\": \"{}\"", kRecipeSettings, settingsText(recipe),
                        kRecipeBackground, colorText(recipe.background));
    if (recipe.text) {
        const auto bytes = serializeText(*recipe.text);
        if (!bytes) return {ErrorCode::InvalidArgument, "The text cannot be kept in a recipe"};
        text += fmt::format(",\n  \"{}\": \"{}\"", kRecipeText, encodeBase64(*bytes));
    }
    return text + "\n}\n";
} catch (const std::bad_alloc&) {
    return noMemory();
}

Result<Recipe> parseRecipe(ByteView bytes) try {
    if (bytes.size() > kLargestRecipe)
        return {ErrorCode::TooLarge, "The recipe is larger than 64 MB"};
    const auto members = membersOfRecipe(bytes);
    if (!members) return members.error();
    if (members->doubled) {
        return damaged(filled("The recipe has \"%1\" twice", {*members->doubled}));
    }
    if (auto version = checkVersion(*members); !version) return version.error();
    for (const std::string_view needed : {kRecipeSettings, kRecipeBackground}) {
        if (!members->has(needed)) {
            return damaged(filled("The recipe has no \"%1\"", {needed}));
        }
    }
    Recipe recipe;
    for (const std::string& name : members->names) {
        if (auto read = readMember(name, *members, recipe); !read) return read.error();
    }
    return recipe;
} catch (const std::bad_alloc&) {
    return noMemory();
}

}  // namespace skarnel
