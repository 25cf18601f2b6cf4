// A recipe's file taken apart: its members as they stand there, not yet understood.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/io/image_io.h"
#include "storage/settings_store.h"
#include "util/log/result.h"

namespace skarnel {

/// The members' names.
inline constexpr std::string_view kRecipeMark = "skarnel";
inline constexpr std::string_view kRecipeMarkValue = "recipe";
inline constexpr std::string_view kRecipeVersionName = "version";
inline constexpr std::string_view kRecipeSettings = "settings";
inline constexpr std::string_view kRecipeBackground = "background";
inline constexpr std::string_view kRecipeText = "text";

struct RecipeVersion {
    double number = 0;  // whole and not negative; as near as a double comes
    std::string text;   // as it stands there, cut where it is absurdly long
};

struct RecipeMembers {
    std::vector<std::string> names;      // in the file's order, each once
    std::optional<std::string> doubled;  // a member or a setting that is there twice
    std::optional<RecipeVersion> version;
    std::optional<std::string> background;
    std::optional<std::string> text;

    bool hasSettings = false;      // as an object
    SettingValues settings;        // those of a type that a setting can have
    std::size_t settingCount = 0;  // of any type

    bool has(std::string_view name) const;
};

/// UnknownFormat for bytes that are no JSON object with the recipe's mark, Damaged where the object
/// ends too soon or breaks off behind its mark. They may be nested as deeply as they like: no tree
/// is built of them, and what lies below the settings is passed over.
Result<RecipeMembers> membersOfRecipe(ByteView bytes);

}  // namespace skarnel
