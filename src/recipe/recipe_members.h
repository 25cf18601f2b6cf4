// A recipe's file taken apart: its members as they stand there, not yet understood.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/io/image_io.h"
#include "storage/settings_store.h"

namespace skarnel {

/// The members' names.
inline constexpr std::string_view kRecipeMark = "skarnel";
inline constexpr std::string_view kRecipeMarkValue = "recipe";
inline constexpr std::string_view kRecipeVersionName = "version";
inline constexpr std::string_view kRecipeSettings = "settings";
inline constexpr std::string_view kRecipeBackground = "background";
inline constexpr std::string_view kRecipeText = "text";

struct RecipeMembers {
    std::vector<std::string> names;        // in the file's order, each once
    std::optional<std::string> doubled;    // a member or a setting that is there twice
    std::optional<std::uint64_t> version;  // a whole number that is not negative
    std::optional<std::string> background;
    std::optional<std::string> text;

    bool hasSettings = false;      // as an object
    SettingValues settings;        // those of a type that a setting can have
    std::size_t settingCount = 0;  // of any type

    bool has(std::string_view name) const;
};

/// None for bytes that are no JSON object with the recipe's mark. They may be nested as deeply as
/// they like: no tree is built of them, and what lies below the settings is passed over.
std::optional<RecipeMembers> membersOfRecipe(ByteView bytes);

}  // namespace skarnel
