// Each request for memory of writing and reading a recipe in turn is refused: the reason is that,
// or the result is the right one.
#include <gtest/gtest.h>

#include "imaging/io/pictures.h"
#include "memory/refuse_each.h"
#include "recipe/recipe_file.h"
#include "storage/temporary_folder.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

Recipe styledRecipe() {
    Recipe recipe = Recipe::defaults();
    TextStyle bold;
    bold.family = "A family with a name of more than a few letters";
    bold.weight = kTextWeightBold;
    recipe.text = StyledText(u"A text of two styles\nand two paragraphs, ", bold);
    recipe.text->append(u"the second one plain", {});
    return recipe;
}

class RecipeWithoutMemory : public ::testing::TestWithParam<Refusal> {
  protected:
    void SetUp() override {
        if (!canRefuseMemory()) GTEST_SKIP() << "a sanitizer has a malloc of its own";
    }

    /// `work` gives a Result that is equal to `expected` or says that memory is short.
    template <typename Expected, typename Work>
    void expectRightOrOutOfMemory(const char* name, const Expected& expected, Work work) {
        refuseEach(name, GetParam(), [&] {
            const auto result = work();
            return result ? *result == expected : result.error().code == ErrorCode::OutOfMemory;
        });
    }

    const Recipe recipe_ = styledRecipe();
    const std::string text_ = *serializeRecipe(recipe_);
    const ByteView bytes_{reinterpret_cast<const std::uint8_t*>(text_.data()), text_.size()};
};

TEST_P(RecipeWithoutMemory, IsNotWritten) {
    expectRightOrOutOfMemory("serializeRecipe", text_, [&] { return serializeRecipe(recipe_); });
}

TEST_P(RecipeWithoutMemory, IsNotRead) {
    expectRightOrOutOfMemory("parseRecipe", recipe_, [&] { return parseRecipe(bytes_); });
}

TEST_P(RecipeWithoutMemory, IsNotPutIntoAPictureNorFoundThere) {
    for (const std::string_view type : {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG}) {
        const Bytes picture = *encodeImage(randomValidPicture(9, 7, 3), type);
        const Bytes with = *embedRecipe(picture, text_);
        expectRightOrOutOfMemory("embedRecipe", with, [&] { return embedRecipe(picture, text_); });
        expectRightOrOutOfMemory("readRecipe", recipe_, [&] { return readRecipe(with); });
    }
}

TEST_P(RecipeWithoutMemory, HasRoomOrOneLearnsThatThereIsNoMemory) {
    refuseEach("roomForRecipe", GetParam(), [&] {
        const auto room = roomForRecipe(kUTTypeJPEG, text_);
        return room || room.error().code == ErrorCode::OutOfMemory;
    });
    const std::string tooLong(70'000, 'a');
    refuseEach("roomForRecipe", GetParam(), [&] {
        const auto room = roomForRecipe(kUTTypeJPEG, tooLong);
        return !room && (room.error().code == ErrorCode::TooLarge ||
                         room.error().code == ErrorCode::OutOfMemory);
    });
    refuseEach("roomForRecipe", GetParam(), [&] {
        const auto room = roomForRecipe("a type that nobody knows, of many letters", text_);
        return !room && (room.error().code == ErrorCode::Unsupported ||
                         room.error().code == ErrorCode::OutOfMemory);
    });
}

TEST_P(RecipeWithoutMemory, IsNotReadFromAFile) {
    const test::TemporaryFolder folder;
    const std::string path = folder / "a recipe's file.skarnel";
    test::putFile(path, text_);
    expectRightOrOutOfMemory("readRecipeFile", recipe_, [&] { return readRecipeFile(path); });
}

INSTANTIATE_TEST_SUITE_P(Once_AndFromThenOn, RecipeWithoutMemory,
                         ::testing::Values(Refusal::Once, Refusal::FromThenOn),
                         [](const auto& row) { return nameOf(row.param); });

}  // namespace
}  // namespace skarnel
