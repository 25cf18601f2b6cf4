#include "cli/recipe_settings.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "cli/options.h"
#include "recipe/recipe_file.h"
#include "storage/whole_file.h"
#include "util/log/message.h"

namespace skarnel::cli {
namespace {

constexpr double kFull = 255.0;

/// A component of a colour that came from bytes; nothing else can be in a recipe.
std::uint8_t byteOf(double component) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(component, 0.0, 1.0) * kFull));
}

Error noMemory() {
    return {ErrorCode::OutOfMemory, "No memory left"};
}

bool isPipe(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

/// From standard input, a pipe or a file. Of a pipe no more than the largest recipe is read.
Result<Recipe> recipeFrom(const std::string& path) {
    const bool isStream = path == kStandardStream;
    if (!isStream && !isPipe(path)) return readRecipeFile(path);
    const auto bytes = isStream ? readDescriptor(STDIN_FILENO, kLargestRecipe)
                                : readWholeFile(path, kLargestRecipe);
    if (!bytes) return bytes.error();
    if (bytes->empty()) return {ErrorCode::CannotRead, "Nothing came"};
    return readRecipe(*bytes);
}

}  // namespace

Result<RecipeSettings> settingsFromRecipe(const std::string& path) try {
    Result<Recipe> recipe = recipeFrom(path);
    if (!recipe) {
        const std::string& cause = recipe.error().message;
        return {recipe.error().code, path == kStandardStream ? filled("standard input: %1", {cause})
                                                             : path + ": " + cause};
    }
    RenderSettings settings = defaultSettings();
    settings.numbers = recipe->settings;
    settings.applyBackgroundColor = recipe->applyBackgroundColor;
    const TextColor& color = recipe->background;
    settings.backgroundColor = {color.red / kFull, color.green / kFull, color.blue / kFull,
                                color.alpha / kFull};
    return RecipeSettings{settings, std::move(recipe->text)};
} catch (const std::bad_alloc&) {
    return noMemory();
}

Result<std::string> recipeOfSettings(const RenderSettings& settings,
                                     const std::optional<StyledText>& text) try {
    Recipe recipe;
    recipe.settings = settings.numbers;
    recipe.applyBackgroundColor = settings.applyBackgroundColor;
    const DeviceColor& color = settings.backgroundColor;
    recipe.background = {byteOf(color.red), byteOf(color.green), byteOf(color.blue),
                         byteOf(color.alpha)};
    recipe.text = text;
    return serializeRecipe(recipe);
} catch (const std::bad_alloc&) {
    return noMemory();
}

}  // namespace skarnel::cli
