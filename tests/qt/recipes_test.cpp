// Recipes in the real window: saved, opened, dropped, taken back.
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMimeData>
#include <QUrl>

#include "companions_fixture.h"
#include "recipe/recipe_file.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

class RecipesTest : public CompanionsTest {
  protected:
    /// A drop in the widget's corner; whether it was taken.
    bool dropOn(QWidget& target, const QString& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &enter);  // makes it the drag's target
        QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &drop);
        settle();
        return enter.isAccepted() && drop.isAccepted();
    }
    /// A blue PNG of 40 x 30 pixels that carries the recipe.
    QString carrier(const Recipe& recipe) {
        const QString path = picture(QStringLiteral("Carrier.png"), 40, 30, Qt::blue);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadWrite));
        const QByteArray plain = file.readAll();
        const auto carried = embedRecipe({reinterpret_cast<const std::uint8_t*>(plain.constData()),
                                          static_cast<std::size_t>(plain.size())},
                                         *serializeRecipe(recipe));
        file.seek(0);
        file.write(reinterpret_cast<const char*>(carried->data()),
                   static_cast<qint64>(carried->size()));
        return path;
    }
};

TEST_F(RecipesTest, ASavedRecipeHoldsTheSettingsAndTheBackground) {
    start();
    app->model().editNumber("alpha", 123);
    const QString path = folder.filePath(QStringLiteral("mine.skarnel"));
    ASSERT_TRUE(recipes().saveTo(path));
    const auto recipe = readRecipeFile(path.toStdString());
    ASSERT_TRUE(recipe) << recipe.error().message;
    EXPECT_EQ(recipe->settings, (std::array<float, 7>{0, 100, 0, 0, 7, 123, 50}));
    EXPECT_FALSE(recipe->applyBackgroundColor);
    EXPECT_EQ(recipe->background, (TextColor{0, 0, 0, 255}));
    EXPECT_EQ(recipe->text, std::nullopt);
}

TEST_F(RecipesTest, ANameWithoutItsEndingGetsItAndReplacesNothing) {
    start();
    const QString there = recipeFile(someRecipe(), QStringLiteral("rec.skarnel"));
    const QByteArray before = bytesOf(there);
    {
        const ScopedLogCapture log;
        EXPECT_FALSE(recipes().saveAs(folder.filePath(QStringLiteral("rec"))));
        EXPECT_EQ(log.text(),
                  "Couldn't save " + there.toStdString() + ": The file already exists\n");
    }
    EXPECT_EQ(bytesOf(there), before);
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("rec"))));
    // What stands behind a full stop need not be an ending.
    EXPECT_TRUE(recipes().saveAs(folder.filePath(QStringLiteral("v1.2"))));
    EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("v1.2.skarnel"))));
    // With its ending it is the name that the dialog has asked about.
    EXPECT_TRUE(recipes().saveAs(there));
    EXPECT_NE(bytesOf(there), before);
    EXPECT_FALSE(recipes().saveAs({}));
}

TEST_F(RecipesTest, AnOpenedRecipeSetsEverythingAsOneEntryOfUndo) {
    start();
    ASSERT_TRUE(recipes().openFrom(recipeFile(someRecipe())));
    settle();
    EXPECT_EQ(settings(), someRecipe().settings);
    EXPECT_TRUE(app->model().applyBackground());
    EXPECT_EQ(viewer().background(), QColor(0x20, 0x40, 0x60));
    EXPECT_EQ(panel().colorText().text(), QStringLiteral("#204060"));
    app->model().undo();
    settle();
    EXPECT_EQ(settings(), builtInPresets()[0].settings);
    EXPECT_FALSE(app->model().applyBackground());
    EXPECT_EQ(viewer().background(), QColor(Qt::black));
    EXPECT_EQ(panel().colorText().text(), QStringLiteral("#000000"));
    EXPECT_FALSE(app->model().history().canUndo());
    app->model().redo();
    settle();
    EXPECT_EQ(settings(), someRecipe().settings);
    EXPECT_TRUE(app->model().applyBackground());
    EXPECT_EQ(viewer().background(), QColor(0x20, 0x40, 0x60));
    EXPECT_EQ(panel().colorText().text(), QStringLiteral("#204060"));
    EXPECT_FALSE(app->model().history().canRedo());
}

TEST_F(RecipesTest, UndoGivesTheTextBackWithTheSettingsAsOneEntry) {
    start();
    ScopedLogCapture log;  // without a page renderer the text becomes no picture
    window().textEditor().setText(StyledText(u"mine"));
    Recipe recipe = someRecipe();
    recipe.text = StyledText(u"theirs");
    recipes().openFrom(recipeFile(recipe));
    settle();
    EXPECT_EQ(window().textEditor().text().characters(), u"theirs");
    EXPECT_EQ(settings(), someRecipe().settings);
    app->model().undo();
    settle();
    EXPECT_EQ(window().textEditor().text(), StyledText(u"mine"));
    EXPECT_EQ(settings(), builtInPresets()[0].settings);
    EXPECT_EQ(viewer().background(), QColor(Qt::black));
    EXPECT_FALSE(app->model().history().canUndo());
    app->model().redo();
    settle();
    EXPECT_EQ(window().textEditor().text().characters(), u"theirs");
    EXPECT_EQ(settings(), someRecipe().settings);
    EXPECT_EQ(viewer().background(), QColor(0x20, 0x40, 0x60));
}

// A recipe's text takes a while to become a picture, and a slider can be pulled meanwhile.
TEST_F(RecipesTest, WhatIsDoneWhileASliderIsHeldComesAfterItInTheHistory) {
    start();
    int undone = 0;
    const float before = app->defaults().floatForKey("alpha");
    app->model().beginGesture(QStringLiteral("Opacity"));
    app->model().editNumber("alpha", before - 50);
    app->model().recordDone(
        QStringLiteral("Recipe"), [&] { ++undone; }, [] {});
    app->model().undo();
    EXPECT_EQ(undone, 1);
    EXPECT_EQ(app->defaults().floatForKey("alpha"), before - 50);
    app->model().undo();
    EXPECT_EQ(app->defaults().floatForKey("alpha"), before);
    app->model().endGesture();  // the slider is let go
    EXPECT_EQ(undone, 1);
}

TEST_F(RecipesTest, UndoLeavesATextThatWasTypedSince) {
    start();
    ScopedLogCapture log;
    window().textEditor().setText(StyledText(u"mine"));
    Recipe recipe = someRecipe();
    recipe.text = StyledText(u"theirs");
    recipes().openFrom(recipeFile(recipe));
    window().textEditor().setText(StyledText(u"typed since"));
    app->model().undo();
    settle();
    EXPECT_EQ(window().textEditor().text().characters(), u"typed since");
    EXPECT_EQ(settings(), builtInPresets()[0].settings);
}

TEST_F(RecipesTest, TheBackgroundGoesToTheViewerThoughTheTextHasTheFocus) {
    start();
    window().textEditor().setFocus();
    ASSERT_TRUE(recipes().takeFrom(recipeFile(someRecipe())));
    EXPECT_EQ(viewer().background(), QColor(0x20, 0x40, 0x60));
    EXPECT_EQ(window().textEditor().text().styleAt(0).color, (TextColor{255, 255, 255, 255}));
}

TEST_F(RecipesTest, ARecipeNamedAtTheStartIsOpened) {
    start({recipeFile(someRecipe())});
    EXPECT_EQ(settings(), someRecipe().settings);
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
}

TEST_F(RecipesTest, ADamagedRecipeChangesNothing) {
    start();
    const QString path = folder.filePath(QStringLiteral("bad.skarnel"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"skarnel":"recipe","version":2})");
    file.close();
    EXPECT_FALSE(recipes().openFrom(path));
    EXPECT_FALSE(recipes().takeFrom(path));
    EXPECT_FALSE(recipes().takeFrom(folder.filePath(QStringLiteral("missing.skarnel"))));
    settle();
    EXPECT_EQ(settings(), builtInPresets()[0].settings);
    EXPECT_FALSE(app->model().history().canUndo());
}

TEST_F(RecipesTest, SettingsAreTakenFromADropOnThePanel) {
    start();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(recipeFile(someRecipe()))});
    QWidget* target = panel().viewport();
    EXPECT_TRUE(target->acceptDrops());
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);  // makes it the drag's target
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    settle();
    EXPECT_TRUE(drop.isAccepted());
    EXPECT_EQ(settings(), someRecipe().settings);
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
}

TEST_F(RecipesTest, APictureThatCarriesOneIsAPictureOnTheViewerAndSettingsOnThePanel) {
    start();
    const QString path = carrier(someRecipe());
    ASSERT_TRUE(dropOn(viewer(), path));
    EXPECT_EQ(app->controller().saveFilename, "Carrier Reflection");
    EXPECT_EQ(app->controller().image->size(), (CGSize{40, 30}));
    EXPECT_EQ(settings(), builtInPresets()[0].settings);
    EXPECT_FALSE(app->model().applyBackground());

    const QString other = picture(QStringLiteral("Other.png"), 20, 20, Qt::red);
    ASSERT_TRUE(dropOn(viewer(), other));
    ASSERT_TRUE(dropOn(*panel().viewport(), path));
    EXPECT_EQ(settings(), someRecipe().settings);
    EXPECT_TRUE(app->model().applyBackground());
    EXPECT_EQ(app->controller().saveFilename, "Other Reflection");
    EXPECT_EQ(app->controller().image->size(), (CGSize{20, 20}));
}

TEST_F(RecipesTest, APlainPictureOnThePanelIsOpenedAndAnythingElseIsAnswered) {
    start();
    const auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    const QString plain = picture(QStringLiteral("Plain.png"), 30, 20, Qt::green);
    ASSERT_TRUE(dropOn(*panel().viewport(), plain));
    EXPECT_EQ(app->controller().saveFilename, "Plain Reflection");
    EXPECT_EQ(app->state().recentFiles(), QStringList{plain});
    EXPECT_FALSE(toast->isVisible());
    ASSERT_TRUE(dropOn(*panel().viewport(), folder.path()));
    EXPECT_TRUE(toast->isVisible());
    EXPECT_TRUE(toast->text().endsWith(QStringLiteral(": It is a folder.")))
        << toast->text().toStdString();
    EXPECT_EQ(app->controller().saveFilename, "Plain Reflection");
    EXPECT_EQ(settings(), builtInPresets()[0].settings);
}

TEST_F(RecipesTest, UnderASheetADropOnThePanelChangesNothingAndSaysSo) {
    start();
    const auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    const QString plain = picture(QStringLiteral("Plain.png"), 30, 20, Qt::green);
    app->actions().save->trigger();
    settle();
    auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
    ASSERT_NE(sheet, nullptr);
    for (const QString& each : {recipeFile(someRecipe()), carrier(someRecipe())}) {
        window().endTelling();
        ASSERT_TRUE(dropOn(*panel().viewport(), each));
        EXPECT_TRUE(toast->isVisible());
    }
    ASSERT_TRUE(dropOn(*panel().viewport(), plain));
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_EQ(app->state().recentFiles(), QStringList{plain});
    EXPECT_EQ(settings(), builtInPresets()[0].settings);
    EXPECT_FALSE(app->model().applyBackground());
    EXPECT_EQ(viewer().background(), QColor(Qt::black));
    EXPECT_FALSE(app->model().history().canUndo());
    sheet->reject();
    settle();
    ASSERT_TRUE(dropOn(*panel().viewport(), recipeFile(someRecipe())));
    EXPECT_EQ(settings(), someRecipe().settings);
}

TEST_F(RecipesTest, ARecipeFileOnTheViewerIsOpenedAsFromTheFileManager) {
    start();
    ScopedLogCapture log;
    Recipe recipe = someRecipe();
    recipe.text = StyledText(u"theirs");
    ASSERT_TRUE(dropOn(viewer(), recipeFile(recipe)));
    EXPECT_EQ(settings(), someRecipe().settings);
    EXPECT_EQ(window().textEditor().text().characters(), u"theirs");
    EXPECT_EQ(app->actions().undo->text(), QStringLiteral("&Undo Recipe"));
    app->model().undo();
    settle();
    // On the panel it gives its settings alone.
    ASSERT_TRUE(dropOn(*panel().viewport(), recipeFile(recipe)));
    EXPECT_EQ(settings(), someRecipe().settings);
    EXPECT_NE(window().textEditor().text().characters(), u"theirs");
    EXPECT_EQ(app->actions().undo->text(), QStringLiteral("&Undo Taken Settings"));
}

TEST_F(RecipesTest, AnOpenedRecipesTextKeepsItsStylesAndAlignments) {
    start();
    Recipe recipe = someRecipe();
    StyledText text;
    text.append(u"left\nmiddle\nright", TextStyle());
    const TextAlignment alignments[] = {TextAlignment::Left, TextAlignment::Center,
                                        TextAlignment::Right};
    for (std::size_t i = 0; i < 3; ++i) text.setAlignment(i, alignments[i]);
    recipe.text = text;
    recipes().openFrom(recipeFile(recipe));
    EXPECT_EQ(window().textEditor().text().characters(), text.characters());
    EXPECT_EQ(window().textEditor().text().alignments(), text.alignments());
}

TEST_F(RecipesTest, ARecipesTextThatBecomesNoPictureIsToldWithItsReasonAndTheTitleStays) {
    const std::string tooLarge =
        "A page of 73623 by 24347 pixels is too large to capture; at most 16384 by 16384 are";
    const struct {
        std::string logged;
        const char* told;
    } rows[] = {
        {tooLarge,
         "“a.skarnel”: A page of 73623 by 24347 pixels is too large to capture; at most 16384 by "
         "16384 are."},
        {"something else", "The text of “a.skarnel” cannot be made a picture."},
    };
    std::string reason;
    makeWebView = [&](const CGRect&, NSNotificationCenter&) {
        systemLog(reason);
        return nullptr;
    };
    start();
    const QString title = window().windowTitle();
    Recipe recipe = someRecipe();
    recipe.text = StyledText(u"too large");
    auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    for (const auto& row : rows) {
        reason = row.logged;
        ScopedLogCapture log;
        EXPECT_FALSE(app->openPicture(recipeFile(recipe)));
        EXPECT_TRUE(toast->isVisible());
        EXPECT_EQ(toast->text().toStdString(), row.told);
        EXPECT_EQ(window().windowTitle(), title);
        EXPECT_EQ(log.text(), row.logged + "\n") << "the log has it, too";
    }
}

TEST_F(RecipesTest, TheSizesOfARecipesTextAreBroughtIntoTheirRange) {
    start();
    Recipe recipe = someRecipe();
    recipe.text = StyledText();
    const double sizes[] = {0.25, 1, 48, 10'000, 20'000};
    for (const double size : sizes) {
        TextStyle style;
        style.size = size;
        recipe.text->append(u"x", style);
    }
    recipes().openFrom(recipeFile(recipe));
    const StyledText text = window().textEditor().text();
    ASSERT_EQ(text.length(), 5U);
    const double expected[] = {1, 1, 48, 10'000, 10'000};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(text.styleAt(i).size, expected[i]) << i;
}

}  // namespace
}  // namespace skarnel
