// Recipes on their way: in a file of their own, and inside the pictures that they made.
#pragma once

#include <string>
#include <string_view>

#include "imaging/io/image_io.h"
#include "recipe/recipe.h"
#include "util/log/result.h"

namespace skarnel {

/// The dictionary's entry that asks for a recipe inside the written file; its value is the recipe's
/// text. No reader ever puts it there, so what was typed does not travel on unasked.
inline constexpr std::string_view kPropertyRecipe = "{Skarnel}.Recipe";

/// Whether a type of file can carry a recipe: TIFF, PNG and JPEG.
bool canCarryRecipe(std::string_view typeIdentifier);

/// Whether a file of that type has room for the recipe's text, as `embedRecipe` finds once there is
/// a file; the reason where it has not.
Result<void> roomForRecipe(std::string_view typeIdentifier, std::string_view recipeText);

/// The encoded picture with the recipe's text in its XMP packet. Fails as `withXmpPacket` does, and
/// where the picture would not be whole any more.
Result<Bytes> embedRecipe(ByteView picture, std::string_view recipeText);

/// The recipe in the bytes of a recipe file or of a picture that carries one. The bytes are
/// hostile. NotFound for any other file and for none; the rest as `parseRecipe`.
Result<Recipe> readRecipe(ByteView file);

/// The same with the bytes of an ordinary file; the reason where they cannot be had. Its first
/// bytes are looked at before the rest is read: 64 MB of a recipe, 4 GB of a picture.
Result<Recipe> readRecipeFile(const std::string& path);

}  // namespace skarnel
