// Recipes on the command line: settings taken from one, and one made of the settings.
#pragma once

#include <optional>
#include <string>

#include "cli/render_settings.h"
#include "platform/styled_text.h"
#include "util/log/result.h"

namespace skarnel::cli {

struct RecipeSettings {
    RenderSettings render;           // the settings and the background
    std::optional<StyledText> text;  // what the recipe's picture was made of, if it was text
};

/// From a recipe file, or from a picture that carries a recipe; "-" is standard input, of which, as
/// of a pipe, 64 MB are read at most. The error names the file.
Result<RecipeSettings> settingsFromRecipe(const std::string& path);

/// The text of a recipe with these settings and, where the picture is made of text, that text.
/// InvalidArgument for a text that cannot be kept.
Result<std::string> recipeOfSettings(const RenderSettings& settings,
                                     const std::optional<StyledText>& text);

}  // namespace skarnel::cli
