#include "recipe/recipe_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "recipe/xmp_packet.h"

namespace skarnel {
namespace {

namespace fs = std::filesystem;
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

TEST(RecipeFile, ThereIsRoomForItInThreeFormatsAndInAJpegToACertainLength) {
    const auto empty = embedRecipe(bytesOf(kPng), "");
    ASSERT_TRUE(empty);
    // A JPEG's segment has 65,535 bytes, 2 of them for its length and 29 for what kind it is.
    const std::size_t longest = 65'535 - 2 - 29 - xmpPacketOf(*empty)->size();
    const std::string fits(longest, 'a');
    const std::string tooLong(longest + 1, 'a');
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG})
        EXPECT_TRUE(roomForRecipe(type, fits)) << type;
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG})
        EXPECT_TRUE(roomForRecipe(type, tooLong)) << type;
    const auto room = roomForRecipe(kUTTypeJPEG, tooLong);
    ASSERT_FALSE(room);
    EXPECT_EQ(room.error().code, ErrorCode::TooLarge);
    // It is the escaped text that needs room: "&lt;" for each of these.
    EXPECT_TRUE(roomForRecipe(kUTTypeJPEG, std::string(longest / 4, '<')));
    EXPECT_FALSE(roomForRecipe(kUTTypeJPEG, std::string(longest / 4 + 1, '<')));
    for (const std::string_view type : {kUTTypeWebP, kUTTypeBMP, ""sv}) {
        const auto none = roomForRecipe(type, "{}");
        ASSERT_FALSE(none) << type;
        EXPECT_EQ(none.error().code, ErrorCode::Unsupported) << type;
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
    // Some editors put a byte order mark before what they save.
    const auto marked = readRecipe(bytesOf("\xEF\xBB\xBF" + text));
    ASSERT_TRUE(marked) << marked.error().message;
    EXPECT_EQ(*marked, someRecipe());
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

class RecipeOnDisk : public testing::Test {
  protected:
    RecipeOnDisk() {
        std::string pattern = (fs::temp_directory_path() / "recipe-XXXXXX").string();
        folder_ = ::mkdtemp(pattern.data());
    }
    ~RecipeOnDisk() override { fs::remove_all(folder_); }

    std::string put(const char* name, std::string_view text) const {
        std::ofstream(folder_ / name, std::ios::binary) << text;
        return (folder_ / name).string();
    }
    static std::string reasonFor(const std::string& path) {
        const auto recipe = readRecipeFile(path);
        return recipe ? "none" : recipe.error().message;
    }
    fs::path folder_;
};

TEST_F(RecipeOnDisk, IsReadAndAFailureNamesItsCause) {
    const auto recipe = readRecipeFile(put("a.skarnel", *serializeRecipe(someRecipe())));
    ASSERT_TRUE(recipe) << recipe.error().message;
    EXPECT_EQ(*recipe, someRecipe());
    const auto missing = readRecipeFile(folder_ / "b.skarnel");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, ErrorCode::NotFound);
    EXPECT_EQ(missing.error().message, "No such file or directory");
    EXPECT_EQ(reasonFor(put("empty.skarnel", "")), "The file is empty");
    EXPECT_EQ(reasonFor(folder_), "It is a folder");
}

TEST_F(RecipeOnDisk, DevicesAndPipesAreNotOpened) {
    EXPECT_EQ(reasonFor("/dev/zero"), "It is not an ordinary file");
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    // Nobody writes: opening it would never end.
    EXPECT_EQ(reasonFor(pipe), "It is not an ordinary file");
}

TEST_F(RecipeOnDisk, OneThatCannotBeOpenedNamesItsCause) {
    const std::string path = put("a.skarnel", *serializeRecipe(someRecipe()));
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none = {0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::string reason = reasonFor(path);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(reason, "Too many open files");
}

TEST_F(RecipeOnDisk, NoMoreIsReadThanCanBeARecipe) {
    // 100 GB that are not there: reading them would not end within the test's time.
    constexpr std::uintmax_t kHuge = std::uintmax_t{100} << 30;
    const std::string none = put("zeros", "");
    fs::resize_file(none, kHuge);
    EXPECT_EQ(reasonFor(none), "The file carries no recipe");
    const std::string film = put("film", "RIFF");
    fs::resize_file(film, kHuge);
    EXPECT_EQ(reasonFor(film), "The file carries no recipe");
    const std::string animation = put("animation", "GIF89a");
    fs::resize_file(animation, kHuge);
    EXPECT_EQ(reasonFor(animation), "The file carries no recipe");
    const std::string text = put("text", "{");
    fs::resize_file(text, kHuge);
    EXPECT_EQ(reasonFor(text), "The recipe is larger than 64 MB");
    const std::string picture = put("picture", kPng);
    fs::resize_file(picture, kHuge);
    EXPECT_EQ(reasonFor(picture), "The file is too large");
}

}  // namespace
}  // namespace skarnel
