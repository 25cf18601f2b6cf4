#include "recipe/recipe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <string>

namespace skarnel {
namespace {

using ::testing::HasSubstr;

ByteView bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

Recipe someRecipe() {
    Recipe recipe = Recipe::defaults();
    recipe.settings = {12.5F, 61, 0.1F, -3, 6.25F, 300, 31};
    recipe.applyBackgroundColor = true;
    recipe.background = {0x12, 0xAB, 0x00, 0xFF};
    return recipe;
}

constexpr std::string_view kSettings =
    R"("settings":{"perspectiveWidth":0,"perspectiveHeight":100,"offset":0,"start":0,"gradient":7,)"
    R"("alpha":200,"imagePerspective":50,"applyBackgroundColor":false})";

std::string recipeText(std::string_view members) {
    return R"({"skarnel":"recipe","version":1,)" + std::string(members) + "}";
}

std::string whole(std::string_view more = "") {
    std::string members(kSettings);
    members += R"(,"background":"#000000")";
    members += more;
    return recipeText(members);
}

ErrorCode codeOf(std::string_view text) {
    const auto recipe = parseRecipe(bytesOf(text));
    EXPECT_FALSE(recipe) << text;
    return recipe ? ErrorCode::Failed : recipe.error().code;
}

std::string messageOf(std::string_view text) {
    const auto recipe = parseRecipe(bytesOf(text));
    return recipe ? "" : recipe.error().message;
}

TEST(Recipe, DefaultsAreTheSettingsDefaultsOverBlackWithoutText) {
    const Recipe recipe = Recipe::defaults();
    EXPECT_EQ(recipe.settings, (std::array<float, 7>{0, 100, 0, 0, 7, 200, 50}));
    EXPECT_FALSE(recipe.applyBackgroundColor);
    EXPECT_EQ(recipe.background, (TextColor{0, 0, 0, 255}));
    EXPECT_EQ(recipe.text, std::nullopt);
}

TEST(Recipe, WrittenAsAPersonWouldReadIt) {
    EXPECT_EQ(*serializeRecipe(someRecipe()),
              "{\n"
              "  \"skarnel\": \"recipe\",\n"
              "  \"version\": 1,\n"
              "  \"settings\": {\n"
              "    \"alpha\": 300.0,\n"
              "    \"applyBackgroundColor\": true,\n"
              "    \"gradient\": 6.25,\n"
              "    \"imagePerspective\": 31.0,\n"
              "    \"offset\": 0.1,\n"
              "    \"perspectiveHeight\": 61.0,\n"
              "    \"perspectiveWidth\": 12.5,\n"
              "    \"start\": -3.0\n"
              "  },\n"
              "  \"background\": \"#12AB00\"\n"
              "}\n");
}

TEST(Recipe, ReadsBackWhatWasWritten) {
    const Recipe recipe = someRecipe();
    const auto back = parseRecipe(bytesOf(*serializeRecipe(recipe)));
    ASSERT_TRUE(back) << back.error().message;
    EXPECT_EQ(*back, recipe);
}

TEST(Recipe, KeepsTheOpacityOfTheBackground) {
    Recipe recipe = someRecipe();
    recipe.background.alpha = 0x80;
    const std::string text = *serializeRecipe(recipe);
    EXPECT_THAT(text, HasSubstr("\"#12AB0080\""));
    EXPECT_EQ(*parseRecipe(bytesOf(text)), recipe);
}

TEST(Recipe, NumbersKeepTheirBits) {
    Recipe recipe = Recipe::defaults();
    recipe.settings = {
        std::numeric_limits<float>::max(),      -0.0F, std::numeric_limits<float>::denorm_min(),
        std::numeric_limits<float>::infinity(), 0.1F,  1.0F / 3,
        std::numeric_limits<float>::quiet_NaN()};
    const auto back = parseRecipe(bytesOf(*serializeRecipe(recipe)));
    ASSERT_TRUE(back) << back.error().message;
    for (std::size_t i = 0; i < recipe.settings.size(); ++i) {
        EXPECT_EQ(std::bit_cast<std::uint32_t>(back->settings[i]),
                  std::bit_cast<std::uint32_t>(recipe.settings[i]))
            << i;
    }
}

TEST(Recipe, KeepsStyledTextWithUnpairedSurrogates) {
    Recipe recipe = Recipe::defaults();
    TextStyle style;
    style.family = "Nimbus Roman";
    style.weight = kTextWeightBold;
    recipe.text = StyledText(u"Tür \xD800 \u53cd\u5c04\n", style, TextAlignment::Center);
    const auto back = parseRecipe(bytesOf(*serializeRecipe(recipe)));
    ASSERT_TRUE(back) << back.error().message;
    EXPECT_EQ(back->text, recipe.text);
}

TEST(Recipe, ATextWithoutASerialisedFormIsRefused) {
    Recipe recipe = Recipe::defaults();
    TextStyle style;
    style.size = -1;
    recipe.text = StyledText(u"x", style);
    const auto text = serializeRecipe(recipe);
    ASSERT_FALSE(text);
    EXPECT_EQ(text.error().code, ErrorCode::InvalidArgument);
}

TEST(Recipe, OrderAndBlanksDoNotMatter) {
    const std::string text = "\n { \"background\" : \"#0a0B0c\" ,\t" + std::string(kSettings) +
                             ", \"version\":1,\"skarnel\":\"recipe\"}  \n";
    const auto recipe = parseRecipe(bytesOf(text));
    ASSERT_TRUE(recipe) << recipe.error().message;
    EXPECT_EQ(recipe->background, (TextColor{10, 11, 12, 255}));
}

TEST(Recipe, OtherFilesAreNoRecipes) {
    for (const std::string_view text : {"", "{", "[]", "1", "null", "{}", R"({"version":1})",
                                        R"({"skarnel":"settings","version":1})", R"({"skarnel":1})",
                                        "\xFF\xD8\xFF", R"({"version":1,})"}) {
        EXPECT_EQ(codeOf(text), ErrorCode::UnknownFormat) << text;
    }
}

TEST(Recipe, OneThatIsCutOffOrBrokenIsNoStranger) {
    const std::string text = whole();
    EXPECT_EQ(codeOf(text.substr(0, text.size() - 1)), ErrorCode::Damaged);
    for (const std::size_t size : {text.size() - 1, text.size() / 2, std::size_t{30}}) {
        EXPECT_EQ(messageOf(text.substr(0, size)), "The recipe is cut off") << size;
    }
    // Before the mark nothing tells what it was going to be.
    EXPECT_EQ(messageOf(text.substr(0, 5)), "This is not a recipe, or only the beginning of one");
    EXPECT_EQ(messageOf(R"({"skarnel":"recipe",!})"), "The recipe is damaged at byte 21");
    EXPECT_EQ(messageOf(R"({"skarnel":"recipe","version":1} x)"),
              "The recipe is damaged at byte 34");
}

TEST(Recipe, ANewerVersionIsRefusedWithBothVersions) {
    const std::string_view text = R"({"skarnel":"recipe","version":2,"settings":{"shine":1}})";
    EXPECT_EQ(codeOf(text), ErrorCode::Unsupported);
    EXPECT_EQ(messageOf(text), "The recipe has version 2 and this program reads up to version 1");
    EXPECT_EQ(codeOf(R"({"skarnel":"recipe","version":18446744073709551615})"),
              ErrorCode::Unsupported);
    // Beyond 64 bits it is no less a newer one; 10^30 has 31 digits, of which 24 are told.
    EXPECT_EQ(messageOf(R"({"skarnel":"recipe","version":18446744073709551616})"),
              "The recipe has version 18446744073709551616 and this program reads up to version 1");
    EXPECT_EQ(messageOf(R"({"skarnel":"recipe","version":1)" + std::string(30, '0') + "}"),
              "The recipe has version 1" + std::string(23, '0') +
                  " and this program reads up to version 1");
}

TEST(Recipe, AVersionThatIsNoneIsDamage) {
    for (const std::string_view version :
         {"0", "-1", "1.0", "1.5", "\"1\"", "null", "true", "1e999"}) {
        const std::string text = R"({"skarnel":"recipe","version":)" + std::string(version) + "}";
        const auto recipe = parseRecipe(bytesOf(text));
        ASSERT_FALSE(recipe) << text;
        EXPECT_NE(recipe.error().code, ErrorCode::Unsupported) << text;
    }
    EXPECT_EQ(messageOf(R"({"skarnel":"recipe"})"), "The recipe does not say its version");
}

TEST(Recipe, DamageIsNamed) {
    const struct {
        std::string text;
        std::string message;
    } rows[] = {
        {recipeText(kSettings), "The recipe has no \"background\""},
        {recipeText(R"("background":"#000000")"), "The recipe has no \"settings\""},
        {recipeText(R"("settings":[],"background":"#000000")"),
         "The recipe's settings are damaged"},
        {recipeText(R"("settings":{},"background":"#000000")"),
         "The recipe's setting \"perspectiveWidth\" is missing or damaged"},
        {whole(R"(,"shine":1)"), "The recipe has an unknown member \"shine\""},
        {whole(R"(,"background":"#111111")"), "The recipe has \"background\" twice"},
        {whole(R"(,"text":1)"), "The recipe's text is damaged"},
        {whole(R"(,"text":"Zg=")"), "The recipe's text is damaged"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(codeOf(row.text), ErrorCode::Damaged);
        EXPECT_EQ(messageOf(row.text), row.message);
    }
    EXPECT_THAT(messageOf(whole(R"(,"text":"Zg==")")), HasSubstr("The recipe's text is damaged: "));
}

TEST(Recipe, ASettingOfTheWrongTypeIsNamed) {
    std::string text = whole();
    text.replace(text.find("\"gradient\":7"), 12, "\"gradient\":true");
    EXPECT_EQ(messageOf(text), "The recipe's setting \"gradient\" is missing or damaged");
    for (const std::string_view value : {"\"wide\"", "\"nan:\"", "1e39", "-1e300"}) {
        text = whole();
        text.replace(text.find("\"gradient\":7"), 12, "\"gradient\":" + std::string(value));
        EXPECT_EQ(messageOf(text), "The recipe's setting \"gradient\" is missing or damaged");
    }
    text = whole();
    text.replace(text.find("applyBackgroundColor"), 20, "applyForegroundColor");
    EXPECT_EQ(messageOf(text),
              "The recipe's setting \"applyBackgroundColor\" is missing or damaged");
    text = whole();
    text.replace(text.find("Color\":false"), 12, "Color\":0");
    EXPECT_EQ(messageOf(text),
              "The recipe's setting \"applyBackgroundColor\" is missing or damaged");
}

TEST(Recipe, AnUnknownSettingIsRefused) {
    std::string text = whole();
    text.replace(text.find("\"alpha\":200"), 11, "\"alpha\":200,\"shine\":1");
    EXPECT_EQ(messageOf(text), "The recipe has a setting that this program does not know");
}

TEST(Recipe, AColourIsSixOrEightDigits) {
    for (const std::string_view color :
         {"\"\"", "\"#\"", "\"#00000\"", "\"#0000000\"", "\"#00000g\"", "\"000000#\"",
          "\"#-10000\"", "0", "null"}) {
        const std::string text =
            recipeText(std::string(kSettings) + ",\"background\":" + std::string(color));
        EXPECT_EQ(messageOf(text), "The recipe's background is no colour") << color;
    }
}

TEST(Recipe, DeepNestingIsSurvived) {
    const std::string text =
        whole(",\"text\":" + std::string(200'000, '[') + std::string(200'000, ']'));
    EXPECT_EQ(codeOf(text), ErrorCode::Damaged);
}

// Two million levels: whatever is as deep as the file is nested ends at the stack's end.
TEST(Recipe, DeepNestingIsSurvivedInEveryPlace) {
    const std::string deep = std::string(2'000'000, '[') + std::string(2'000'000, ']');
    std::string text = whole();
    text.replace(text.find("200"), 3, deep);
    EXPECT_EQ(messageOf(text), "The recipe's setting \"alpha\" is missing or damaged");
    text = whole();
    text.replace(text.find("\"#000000\""), 9, deep);
    EXPECT_EQ(messageOf(text), "The recipe's background is no colour");
    EXPECT_EQ(messageOf(whole(",\"shine\":" + deep)), "The recipe has an unknown member \"shine\"");
    EXPECT_EQ(codeOf(deep), ErrorCode::UnknownFormat);
}

TEST(Recipe, AMemberBelowTheSettingsIsNoMember) {
    // Only the outermost object's members count, and of what lies below only the settings.
    EXPECT_EQ(codeOf(R"({"a":{"skarnel":"recipe","version":1}})"), ErrorCode::UnknownFormat);
    EXPECT_EQ(codeOf(R"([{"skarnel":"recipe","version":1}])"), ErrorCode::UnknownFormat);
    std::string text = whole();
    text.replace(text.find("200"), 3, R"({"alpha":200})");
    EXPECT_EQ(messageOf(text), "The recipe's setting \"alpha\" is missing or damaged");
    EXPECT_EQ(messageOf(whole(R"(,"a":{"b":1,"b":2})")), "The recipe has an unknown member \"a\"");
    text = whole();
    text.replace(text.find("\"alpha\":200"), 11, "\"alpha\":200,\"alpha\":100");
    EXPECT_EQ(messageOf(text), "The recipe has \"alpha\" twice");
}

TEST(Recipe, EveryCutOffTextIsRefused) {
    const std::string text = *serializeRecipe(someRecipe());
    for (std::size_t size = 0; size + 2 < text.size(); ++size) {
        EXPECT_FALSE(parseRecipe(bytesOf(std::string_view(text).substr(0, size)))) << size;
    }
}

TEST(Recipe, MoreThanSixtyFourMegabytesAreRefusedUnread) {
    const std::string text = whole() + std::string((std::size_t{64} << 20), ' ');
    EXPECT_EQ(codeOf(text), ErrorCode::TooLarge);
}

}  // namespace
}  // namespace skarnel
