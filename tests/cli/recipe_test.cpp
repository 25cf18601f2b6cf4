// Recipes on the command line, with the program as a process.
#include <gmock/gmock.h>

#include <string>

#include "cli/pictures.h"
#include "cli/process.h"
#include "storage/temporary_folder.h"
#include "storage/whole_file.h"

namespace skarnel {
namespace {

using test::Finished;
using test::render;
using test::TemporaryFolder;
using testing::HasSubstr;

constexpr const char* kRecipe =
    R"({"skarnel":"recipe","version":1,"settings":{"perspectiveWidth":5,"perspectiveHeight":40,)"
    R"("offset":10,"start":0,"gradient":9,"alpha":150,"imagePerspective":50,)"
    R"("applyBackgroundColor":true},"background":"#204060"})";

class RecipeCommand : public testing::Test {
  protected:
    RecipeCommand() {
        test::putPicture(in_, 30, 20);
        put(recipe_, kRecipe);
    }
    static void put(const std::string& path, std::string_view text) {
        test::putBytes(path, Bytes(text.begin(), text.end()));
    }
    Bytes bytesOf(const std::string& path) { return *readWholeFile(path, 1 << 20); }

    const TemporaryFolder folder_;
    const std::string in_ = folder_ / "in.png";
    const std::string recipe_ = folder_ / "look.skarnel";
    const std::string one_ = folder_ / "one.png";
    const std::string two_ = folder_ / "two.png";
};

TEST_F(RecipeCommand, GivesWhatItsSettingsAsOptionsGive) {
    ASSERT_EQ(render({in_, "-o", one_, "--recipe", recipe_}).exitCode, 0);
    ASSERT_EQ(render({in_, "-o", two_, "--perspective-width", "5", "--perspective-height", "40",
                      "--offset", "10", "--gradient", "9", "--alpha", "150",
                      "--apply-background-color", "--background-color", "#204060"})
                  .exitCode,
              0);
    EXPECT_EQ(bytesOf(one_), bytesOf(two_));
}

TEST_F(RecipeCommand, OptionsGoOnTop) {
    ASSERT_EQ(render({in_, "-o", one_, "--recipe", recipe_, "--alpha", "20"}).exitCode, 0);
    ASSERT_EQ(render({in_, "-o", two_, "--recipe", recipe_}).exitCode, 0);
    EXPECT_NE(bytesOf(one_), bytesOf(two_));
}

TEST_F(RecipeCommand, APictureThatCarriesOneServesAsWell) {
    for (const char* name : {"carried.png", "carried.tiff", "carried.jpg"}) {
        const std::string carried = folder_ / name;
        ASSERT_EQ(render({in_, "-o", carried, "--recipe", recipe_, "--embed-recipe"}).exitCode, 0);
        ASSERT_EQ(render({in_, "-f", "-o", one_, "--recipe", carried}).exitCode, 0) << name;
        ASSERT_EQ(render({in_, "-f", "-o", two_, "--recipe", recipe_}).exitCode, 0);
        EXPECT_EQ(bytesOf(one_), bytesOf(two_)) << name;
    }
}

TEST_F(RecipeCommand, NothingIsEmbeddedUnasked) {
    ASSERT_EQ(render({in_, "-o", one_, "--recipe", recipe_}).exitCode, 0);
    const Finished finished = render({in_, "-o", two_, "--recipe", one_});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("one.png: The file carries no recipe"));
}

TEST_F(RecipeCommand, AFormatThatCannotCarryOneIsWrongUsage) {
    const std::vector<std::vector<std::string>> roads = {
        {in_, "-o", folder_ / "out.bmp"},
        {in_, "--format", "webp"},
        {"--watch", folder_.path(), "--format", "jp2"}};
    for (std::vector<std::string> road : roads) {
        road.emplace_back("--embed-recipe");
        const Finished finished = render(road);
        EXPECT_EQ(finished.exitCode, 2);
        EXPECT_THAT(finished.err, HasSubstr("Only TIFF, PNG and JPEG files can carry a recipe"));
    }
}

TEST_F(RecipeCommand, ANewerADamagedAndAMissingOneAreRefusedWithTheReason) {
    put(recipe_, R"({"skarnel":"recipe","version":9})");
    Finished finished = render({in_, "-o", one_, "--recipe", recipe_});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("version 9"));
    put(recipe_, "{");
    EXPECT_EQ(render({in_, "-o", one_, "--recipe", recipe_}).exitCode, 1);
    finished = render({in_, "-o", one_, "--recipe", folder_ / "no.skarnel"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("no.skarnel: No such file or directory"));
    EXPECT_FALSE(readWholeFile(one_, 1 << 20));
}

TEST_F(RecipeCommand, WithoutTextItNeedsAPicture) {
    const Finished finished = render({"--recipe", recipe_, "-o", one_});
    EXPECT_EQ(finished.exitCode, 2);
    EXPECT_THAT(finished.err, HasSubstr("no picture was given, and the recipe has no text"));
}

TEST_F(RecipeCommand, ContradictionsAreWrongUsage) {
    EXPECT_EQ(render({in_, "--recipe", recipe_, "--user-settings"}).exitCode, 2);
    EXPECT_EQ(render({in_, "--embed-recipe", "--sweep", "alpha=0:9:3"}).exitCode, 2);
}

TEST_F(RecipeCommand, StandardInputAndPipesServeAsWell) {
    ASSERT_EQ(render({in_, "-o", two_, "--recipe", recipe_}).exitCode, 0);
    ASSERT_EQ(render({in_, "-o", one_, "--recipe", "-"}, kRecipe).exitCode, 0);
    EXPECT_EQ(bytesOf(one_), bytesOf(two_));
    ASSERT_EQ(render({in_, "-f", "-o", one_, "--recipe", "/dev/stdin"}, kRecipe).exitCode, 0);
    EXPECT_EQ(bytesOf(one_), bytesOf(two_));
    const Finished nothing = render({in_, "-f", "-o", one_, "--recipe", "-"});
    EXPECT_EQ(nothing.exitCode, 1);
    EXPECT_THAT(nothing.err, HasSubstr("standard input: Nothing came"));
    for (const std::vector<std::string>& twice :
         {std::vector<std::string>{"-", "--recipe", "-"}, {"--html", "-", "--recipe", "-"}}) {
        const Finished finished = render(twice);
        EXPECT_EQ(finished.exitCode, 2);
        EXPECT_THAT(finished.err, HasSubstr("standard input can be read only once"));
    }
}

TEST_F(RecipeCommand, ADeviceIsRefused) {
    const Finished finished = render({in_, "-o", one_, "--recipe", "/dev/zero"});
    EXPECT_EQ(finished.exitCode, 1);
    EXPECT_THAT(finished.err, HasSubstr("/dev/zero: It is not an ordinary file"));
}

}  // namespace
}  // namespace skarnel
