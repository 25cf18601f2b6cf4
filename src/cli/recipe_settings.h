// Recipes on the command line: settings taken from one, and one made of the settings.
#pragma once

#include <string>

#include "cli/render_settings.h"
#include "util/log/result.h"

namespace skarnel::cli {

/// The settings and the background of a recipe file, or of a picture that carries a recipe. The
/// error names the file.
Result<RenderSettings> settingsFromRecipe(const std::string& path);

/// The text of a recipe with these settings. Without styled text: what is rendered here is a
/// picture that was there before.
std::string recipeOfSettings(const RenderSettings& settings);

}  // namespace skarnel::cli
