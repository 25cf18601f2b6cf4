#include "cli/recipe_settings.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "recipe/recipe_file.h"

namespace skarnel::cli {
namespace {

constexpr double kFull = 255.0;

/// A component of a colour that came from bytes; nothing else can be in a recipe.
std::uint8_t byteOf(double component) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(component, 0.0, 1.0) * kFull));
}

}  // namespace

Result<RecipeSettings> settingsFromRecipe(const std::string& path) {
    Result<Recipe> recipe = readRecipeFile(path);
    if (!recipe) return {recipe.error().code, path + ": " + recipe.error().message};
    RenderSettings settings = defaultSettings();
    settings.numbers = recipe->settings;
    settings.applyBackgroundColor = recipe->applyBackgroundColor;
    const TextColor& color = recipe->background;
    settings.backgroundColor = {color.red / kFull, color.green / kFull, color.blue / kFull,
                                color.alpha / kFull};
    return RecipeSettings{settings, std::move(recipe->text)};
}

std::string recipeOfSettings(const RenderSettings& settings) {
    Recipe recipe;
    recipe.settings = settings.numbers;
    recipe.applyBackgroundColor = settings.applyBackgroundColor;
    const DeviceColor& color = settings.backgroundColor;
    recipe.background = {byteOf(color.red), byteOf(color.green), byteOf(color.blue),
                         byteOf(color.alpha)};
    // Only a text can be refused, and there is none.
    return *serializeRecipe(recipe);
}

}  // namespace skarnel::cli
