// Recipes inside saved pictures: what the save panel offers, and what a file carries.
#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>

#include "companions_fixture.h"
#include "qt/save_options_view.h"
#include "recipe/recipe_file.h"

namespace skarnel {
namespace {

class CarriedRecipesTest : public CompanionsTest {};

TEST_F(CarriedRecipesTest, TheSaveOptionsOfferTheRecipeAndDoNotChooseIt) {
    SaveOptionsView view({}, std::string(kUTTypePNG));
    EXPECT_EQ(view.findChild<QCheckBox*>(QStringLiteral("keepRecipe")), nullptr);
    view.offerRecipe("{}");
    auto* keep = view.findChild<QCheckBox*>(QStringLiteral("keepRecipe"));
    ASSERT_NE(keep, nullptr);
    EXPECT_FALSE(keep->isChecked());
    EXPECT_FALSE(view.properties().contains(kPropertyRecipe));
    QSignalSpy changes(&view, &SaveOptionsView::changed);
    keep->click();
    EXPECT_EQ(changes.size(), 1);
    EXPECT_EQ(std::get<std::string>(view.properties().at(std::string(kPropertyRecipe))), "{}");
    view.setType(kUTTypeBMP);
    EXPECT_FALSE(keep->isEnabled());
    EXPECT_FALSE(view.properties().contains(kPropertyRecipe));
}

TEST_F(CarriedRecipesTest, ASavedFileCarriesTheRecipeWhereItIsAskedFor) {
    start();
    app->model().editNumber("alpha", 77);
    const std::string path = folder.filePath(QStringLiteral("out.tiff")).toStdString();
    auto destination = app->toolkit().imageFiles().imageDestinationCreateWithURL(path, kUTTypeTIFF);
    const auto image = ImageOperations().getCGImageRef(*app->controller().image);
    destination->addImage(*image, {{std::string(kPropertyRecipe), recipes().currentText()}});
    ASSERT_TRUE(destination->finalize());
    const auto recipe = readRecipeFile(path);
    ASSERT_TRUE(recipe) << recipe.error().message;
    EXPECT_EQ(recipe->settings[5], 77);
}

TEST_F(CarriedRecipesTest, TheSaveOptionsAreGreyWithAToolTipWhereTheRecipeIsTooLarge) {
    SaveOptionsView view({}, std::string(kUTTypePNG));
    // The frame around the text takes some hundred bytes of the 65,504.
    view.offerRecipe(std::string(65'000, ' '));
    auto* keep = view.findChild<QCheckBox*>(QStringLiteral("keepRecipe"));
    keep->click();
    const QString tip = keep->toolTip();
    view.setType(kUTTypeJPEG);
    EXPECT_TRUE(keep->isEnabled());
    EXPECT_EQ(keep->toolTip(), tip);

    SaveOptionsView large({}, std::string(kUTTypePNG));
    large.offerRecipe(std::string(65'505, ' '));
    keep = large.findChild<QCheckBox*>(QStringLiteral("keepRecipe"));
    keep->click();
    EXPECT_TRUE(large.properties().contains(kPropertyRecipe));
    large.setType(kUTTypeJPEG);
    EXPECT_FALSE(keep->isEnabled());
    EXPECT_EQ(keep->toolTip().toStdString(),
              "The recipe is too large for a JPEG file, which has room for 65,504 bytes");
    EXPECT_FALSE(large.properties().contains(kPropertyRecipe));
    large.setType(kUTTypeTIFF);
    EXPECT_TRUE(keep->isEnabled());
    EXPECT_EQ(keep->toolTip(), tip);
    EXPECT_TRUE(large.properties().contains(kPropertyRecipe));
}

TEST_F(CarriedRecipesTest, ARecipeThatDoesNotFitIsLeftOutOfThePictureWhichIsTold) {
    start();
    const std::string path = folder.filePath(QStringLiteral("large.jpeg")).toStdString();
    auto destination = app->toolkit().imageFiles().imageDestinationCreateWithURL(path, kUTTypeJPEG);
    const auto image = ImageOperations().getCGImageRef(*app->controller().image);
    destination->addImage(*image, {{std::string(kPropertyRecipe), std::string(70'000, ' ')}});
    EXPECT_TRUE(destination->finalize());
    settle();
    EXPECT_TRUE(decodeImageFile(path));
    EXPECT_FALSE(readRecipeFile(path));
    const auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    EXPECT_TRUE(toast->isVisible());
    EXPECT_EQ(toast->text().toStdString(),
              "“large.jpeg” was saved without its settings: The recipe is too large for a JPEG "
              "file, which has room for 65,504 bytes.");
}

TEST_F(CarriedRecipesTest, StyledTextSurvivesInsideEveryFormatThatCarriesARecipe) {
    start();
    Recipe recipe = someRecipe();
    StyledText text;
    TextStyle large;
    large.family = "Helvetica";
    large.size = 36;
    large.weight = kTextWeightBold;
    large.color = {0xC0, 0x20, 0x10, 0xFF};
    text.append(u"Größe 日本\n", large);
    TextStyle small;
    small.slant = TextSlant::Italic;
    small.underline = TextUnderline::Single;
    text.append(u"second", small);
    text.setAlignment(0, TextAlignment::Left);
    text.setAlignment(1, TextAlignment::Center);
    recipe.text = text;
    const std::string embedded = *serializeRecipe(recipe);
    const auto image = ImageOperations().getCGImageRef(*app->controller().image);
    for (const std::string_view type : {kUTTypePNG, kUTTypeTIFF, kUTTypeJPEG}) {
        const std::string path = folder.filePath(QStringLiteral("carrier")).toStdString() + "." +
                                 std::string(*preferredExtensionOfType(type));
        const auto write = [&](const ImageProperties& properties) {
            auto destination =
                app->toolkit().imageFiles().imageDestinationCreateWithURL(path, type);
            destination->addImage(*image, properties);
            return destination->finalize();
        };
        ASSERT_TRUE(write({}));
        EXPECT_FALSE(readRecipeFile(path)) << path << " carries one unasked";
        ASSERT_TRUE(write({{std::string(kPropertyRecipe), embedded}}));
        const auto read = readRecipeFile(path);
        ASSERT_TRUE(read) << path << ": " << read.error().message;
        EXPECT_EQ(read->settings, recipe.settings) << path;
        EXPECT_EQ(read->text, recipe.text) << path;
    }
}

}  // namespace
}  // namespace skarnel
