#include "recipe/recipe_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "recipe/xmp_packet.h"

namespace skarnel {
namespace {

using namespace std::string_view_literals;

ByteView bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

Recipe someRecipe() {
    Recipe recipe = Recipe::defaults();
    recipe.settings[1] = 42;
    recipe.text = StyledText(u"<&\">");
    return recipe;
}

constexpr std::string_view kPng =
    "\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\1\0\0\0\1\x08\0\0\0\0\0\0\0\0\0\0\0\0IEND\xAE\x42\x60\x82"sv;

TEST(RecipeFile, ThreeFormatsCanCarryOne) {
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG}) {
        EXPECT_TRUE(canCarryRecipe(type)) << type;
    }
    for (const std::string_view type : {kUTTypeWebP, kUTTypeBMP, kUTTypeJPEG2000, ""sv}) {
        EXPECT_FALSE(canCarryRecipe(type)) << type;
    }
}

TEST(RecipeFile, APictureGivesBackTheRecipeItCarries) {
    const auto picture = embedRecipe(bytesOf(kPng), *serializeRecipe(someRecipe()));
    ASSERT_TRUE(picture) << picture.error().message;
    const auto recipe = readRecipe(*picture);
    ASSERT_TRUE(recipe) << recipe.error().message;
    EXPECT_EQ(*recipe, someRecipe());
}

TEST(RecipeFile, MarkupInTheRecipeDoesNotEndThePacket) {
    // A hostile or odd text must come back as it was, and the reader must see it as damage, not
    // as something cut short: 8 characters that XML gives a meaning to.
    const auto picture = embedRecipe(bytesOf(kPng), "</skarnel:recipe>&amp;\"");
    const auto recipe = readRecipe(*picture);
    ASSERT_FALSE(recipe);
    EXPECT_EQ(recipe.error().code, ErrorCode::UnknownFormat);
}

TEST(RecipeFile, ARecipesOwnFileIsReadAsItIs) {
    const std::string text = *serializeRecipe(someRecipe());
    EXPECT_EQ(*readRecipe(bytesOf(text)), someRecipe());
    EXPECT_EQ(*readRecipe(bytesOf(" \r\n\t" + text)), someRecipe());
}

TEST(RecipeFile, OtherFilesCarryNone) {
    for (const std::string_view file : {kPng, ""sv, "  "sv, "GIF89a"sv, "<svg/>"sv}) {
        const auto recipe = readRecipe(bytesOf(file));
        ASSERT_FALSE(recipe);
        EXPECT_EQ(recipe.error().code, ErrorCode::NotFound);
    }
}

TEST(RecipeFile, APacketOfAnotherProgramIsNoRecipe) {
    for (const std::string_view packet : {"<x:xmpmeta/>"sv, "<skarnel:recipe>{}"sv,
                                          "</skarnel:recipe>{}<skarnel:recipe>"sv, ""sv}) {
        const auto picture = withXmpPacket(bytesOf(kPng), packet);
        ASSERT_TRUE(picture);
        const auto recipe = readRecipe(*picture);
        ASSERT_FALSE(recipe) << packet;
        EXPECT_EQ(recipe.error().code, ErrorCode::NotFound) << packet;
    }
}

TEST(RecipeFile, ReadsFromDiskAndNamesTheCauseOfAFailure) {
    std::string pattern = (std::filesystem::temp_directory_path() / "recipe-XXXXXX").string();
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    std::ofstream(folder / "a.skarnel") << *serializeRecipe(someRecipe());
    const auto recipe = readRecipeFile((folder / "a.skarnel").string());
    ASSERT_TRUE(recipe) << recipe.error().message;
    EXPECT_EQ(*recipe, someRecipe());
    const auto missing = readRecipeFile((folder / "b.skarnel").string());
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ErrorCode::NotFound);
    EXPECT_EQ(missing.error().message, "No such file or directory");
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace skarnel
