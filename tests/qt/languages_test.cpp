// The window in its languages: keys that differ, and room for every text.
#include "qt/languages.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QScrollBar>
#include <QSet>
#include <QToolBar>

#include "application_fixture.h"
#include "layout_checks.h"
#include "qt/cause_text.h"
#include "qt/float_slider.h"
#include "qt/number_field.h"
#include "qt/save_options_view.h"
#include "recipe/presets.h"
#include "recipe/recipe.h"

namespace skarnel {
namespace {

// Which language ----------------------------------------------------------------------------------

TEST(Languages, TheFirstThatIsSpokenIsChosen) {
    const struct {
        const char* name;
        QStringList wanted;
        const char* catalogue;
    } rows[] = {
        {"plain", {"de"}, "de"},
        {"with a country", {"de-AT", "de"}, "de"},
        {"with an underscore and an encoding", {"fr_CA.UTF-8"}, "fr"},
        {"without a catalogue", {"nb-NO"}, ""},
        {"the next one", {"nb-NO", "es-ES"}, "es"},
        {"English before others", {"en-GB", "de-DE"}, ""},
        {"the C locale before others", {"C", "de-DE"}, ""},
        {"none", {}, ""},
        {"simplified Chinese", {"zh-CN"}, "zh_CN"},
        {"simplified Chinese by its script", {"zh-Hans-SG"}, "zh_CN"},
        {"Chinese", {"zh"}, "zh_CN"},
        {"traditional Chinese", {"zh-TW"}, ""},
        {"traditional Chinese by its script", {"zh-Hant-HK", "ja-JP"}, "ja"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(catalogueFor(row.wanted), QLatin1String(row.catalogue)) << row.name;
}

// The window --------------------------------------------------------------------------------------

QString without(QString text, const QString& part) {
    return text.remove(part);
}

class LanguagesTest : public ApplicationTest {
  protected:
    ~LanguagesTest() override {
        app.reset();
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }

    /// The window in a language; English for an empty name.
    void startIn(const char* catalogue) {
        app.reset();
        language.reset();
        language = std::make_unique<Language>(QString::fromLatin1(catalogue));
        ASSERT_TRUE(language->isSpoken()) << catalogue;
        start();
    }

    std::unique_ptr<Language> language;
};

TEST_F(LanguagesTest, SayTheFileMenu) {
    const struct {
        const char* catalogue;
        const char* title;
    } rows[] = {{"", "&File"},      {"de", "&Datei"},       {"es", "&Archivo"},
                {"fr", "&Fichier"}, {"ja", "ファイル(&F)"}, {"zh_CN", "文件(&F)"}};
    for (const auto& row : rows) {
        startIn(row.catalogue);
        EXPECT_EQ(window().menuBar()->actions().front()->text(), QString::fromUtf8(row.title));
    }
}

TEST_F(LanguagesTest, ALanguageWithoutCatalogueSaysSo) {
    EXPECT_FALSE(Language(QStringLiteral("tlh")).isSpoken());
    EXPECT_TRUE(Language(QString()).isSpoken());
}

TEST_F(LanguagesTest, TheLooksAndTheSettingsAreTranslatedToo) {
    startIn("de");
    for (const Preset& preset : builtInPresets()) {
        const QString name =
            QCoreApplication::translate("skarnel::PresetStrip", preset.name.data());
        EXPECT_NE(name, QString::fromUtf8(preset.name.data())) << preset.name;
    }
    EXPECT_EQ(panel().slider("perspectiveHeight").accessibleName(), QStringLiteral("Höhe"));
    EXPECT_EQ(panel().field("offset").accessibleName(), QStringLiteral("Abstand, Zahl"));
}

TEST_F(LanguagesTest, TheToolkitSpeaksTheLanguageToo) {
    startIn("de");
    ASSERT_TRUE(language->isSpokenByToolkit())
        << "the toolkit's catalogues are not installed; tools/install-packages test";
    EXPECT_EQ(QCoreApplication::translate("QPlatformTheme", "Cancel"), QStringLiteral("Abbrechen"));
}

TEST_F(LanguagesTest, WhatIsWrittenIntoThePictureAndTheAlertsStaysEnglish) {
    startIn("ja");
    EXPECT_EQ(window().textEditor().text().characters(), u"Enter text for imaging here");
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
}

TEST_F(LanguagesTest, AnEndedLanguageLeavesEnglish) {
    startIn("fr");
    startIn("");
    EXPECT_EQ(app->actions().undo->text(), QStringLiteral("&Undo"));
}

TEST_F(LanguagesTest, TheUndoCommandNamesTheChange) {
    startIn("de");
    EXPECT_EQ(app->actions().undo->text(), QStringLiteral("&Rückgängig"));
    app->model().changeNumber(QStringLiteral("Höhe"), "perspectiveHeight", 30);
    EXPECT_EQ(app->actions().undo->text(), QStringLiteral("&Rückgängig: Höhe"));
}

TEST_F(LanguagesTest, ToolButtonsAreNamedWithoutTheKeyOfTheMenu) {
    for (const char* catalogue : {"", "ja"}) {
        startIn(catalogue);
        const QWidget* open = app->actions().toolBar->widgetForAction(app->actions().open);
        EXPECT_EQ(open->accessibleName(),
                  *catalogue == 0 ? QStringLiteral("Open") : QStringLiteral("開く"));
    }
}

TEST_F(LanguagesTest, ARecipesFaultIsToldInTheLanguage) {
    startIn("de");
    const struct {
        const char* file;
        const char* told;
    } rows[] = {
        {"{}", "Das ist kein Rezept"},
        {"{", "Das ist kein Rezept oder nur der Anfang eines Rezepts"},
        {R"({"skarnel":"recipe",)", "Das Rezept ist abgeschnitten"},
        {R"({"skarnel":"recipe",!)", "Das Rezept ist bei Byte 21 beschädigt"},
        {R"({"skarnel":"recipe","version":7})",
         "Das Rezept hat Version 7, dieses Programm liest bis Version 1"},
        {R"({"skarnel":"recipe"})", "Das Rezept nennt seine Version nicht"},
        {R"({"skarnel":"recipe","version":1,"version":1})", "Das Rezept enthält „version“ zweimal"},
        {R"({"skarnel":"recipe","version":1,"background":"#000000"})",
         "Im Rezept fehlt „settings“"},
    };
    for (const auto& row : rows) {
        const std::string_view text(row.file);
        const auto recipe =
            parseRecipe({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        ASSERT_FALSE(recipe);
        EXPECT_EQ(causeText(recipe.error()), QString::fromUtf8(row.told)) << text;
    }
    EXPECT_EQ(causeText({ErrorCode::Failed, "Something else"}), QStringLiteral("Something else"));
}

TEST_F(LanguagesTest, CausesOfFilesMemoryAndPagesAreToldInTheLanguage) {
    startIn("de");
    const struct {
        const char* english;
        const char* told;
    } rows[] = {
        {"No memory left", "Es ist kein Arbeitsspeicher mehr frei"},
        {"Permission denied", "Die Berechtigung fehlt"},
        {"No free name for a temporary file", "Kein freier Name für eine temporäre Datei"},
        {"The file was written, but its folder could not be flushed: Input/output error",
         "Die Datei wurde geschrieben, ihr Ordner konnte aber nicht gesichert werden: "
         "Ein-/Ausgabefehler"},
        {"The recipe's text is damaged: The styled text is of a newer version",
         "Der Text des Rezepts ist beschädigt: Der gestaltete Text hat eine neuere Version"},
        {"A page of 20000 by 9 pixels is too large to capture; at most 16384 by 16384 are",
         "Eine Seite von 20000 mal 9 Pixel ist zu groß zum Abbilden; höchstens 16384 mal 16384 "
         "gehen"},
        {"The page renderer ended in the middle of a page; it is started again",
         "Die Seitendarstellung endete mitten in einer Seite; sie wird neu gestartet"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(causeText({ErrorCode::Failed, row.english}), QString::fromUtf8(row.told));
    app.reset();
    language.reset();
    EXPECT_EQ(causeText({ErrorCode::Failed, "No memory left"}), QStringLiteral("No memory left"));
}

// Keys --------------------------------------------------------------------------------------------

QChar keyOf(const QString& text) {
    const qsizetype at = without(text, QStringLiteral("&&")).indexOf(QLatin1Char('&'));
    return at < 0 ? QChar() : without(text, QStringLiteral("&&")).at(at + 1).toUpper();
}

void expectDifferentKeys(const QStringList& texts, const std::string& where) {
    QSet<QChar> seen;
    for (const QString& text : texts) {
        const QChar key = keyOf(text);
        EXPECT_FALSE(key.isNull()) << where << ": no key in " << text.toStdString();
        EXPECT_FALSE(seen.contains(key)) << where << ": again in " << text.toStdString();
        seen.insert(key);
    }
}

void expectDifferentKeysBelow(const QMenu& menu, const std::string& where) {
    QStringList texts;
    for (const QAction* action : menu.actions()) {
        if (action->isSeparator()) continue;
        texts << action->text();
        if (action->menu() != nullptr)
            expectDifferentKeysBelow(*action->menu(), where + " > " + action->text().toStdString());
    }
    expectDifferentKeys(texts, where);
}

TEST_F(LanguagesTest, EveryCommandHasAKeyOfItsOwnInItsMenu) {
    for (const char* catalogue : {"", "de", "es", "fr", "ja", "zh_CN"}) {
        startIn(catalogue);
        // One key may not stand for a menu and for a button of the window as well.
        QStringList texts;
        for (const QAction* action : window().menuBar()->actions()) {
            texts << action->text();
            expectDifferentKeysBelow(*action->menu(),
                                     std::string(catalogue) + ": " + action->text().toStdString());
        }
        for (const auto* button : window().findChildren<QAbstractButton*>())
            if (!keyOf(button->text()).isNull()) texts << button->text();
        EXPECT_EQ(texts.size(), 9);
        expectDifferentKeys(texts, std::string(catalogue) + ": the window");
    }
}

TEST_F(LanguagesTest, EverySaveOptionHasAKeyOfItsOwn) {
    for (const char* catalogue : {"", "de", "es", "fr", "ja", "zh_CN"}) {
        const Language spoken(QString::fromLatin1(catalogue));
        SaveOptionsView view({}, std::string(kUTTypeJPEG));
        view.offerRecipe("{}");
        QStringList texts;
        for (const auto* label : view.findChildren<QLabel*>())
            if (label->buddy() != nullptr && label->buddy()->focusPolicy() != Qt::NoFocus)
                texts << label->text();
        for (const auto* button : view.findChildren<QAbstractButton*>())
            if (!button->text().isEmpty()) texts << button->text();
        texts.removeDuplicates();  // two formats name their compression alike
        // Format, compression, quality, and keeping the settings.
        EXPECT_EQ(texts.size(), 4) << catalogue;
        expectDifferentKeys(texts, catalogue);
    }
}

// Room --------------------------------------------------------------------------------------------

TEST_F(LanguagesTest, NothingIsCutOffInASmallWindow) {
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        for (const char* catalogue : {"", "de", "es", "fr", "ja", "zh_CN"}) {
            QApplication::setLayoutDirection(direction);
            startIn(catalogue);
            window().resize(900, 600);
            settle();
            ASSERT_EQ(window().size(), QSize(900, 600)) << catalogue;
            expectEverythingSeen(window(), std::string(catalogue) +
                                               (direction == Qt::RightToLeft ? " mirrored" : ""));
            EXPECT_EQ(panel().verticalScrollBar()->maximum(), 0) << catalogue << " scrolls";
            EXPECT_GE(viewer().width(), 420)
                << catalogue << ": the panel leaves the picture no room";
        }
    }
}

TEST_F(LanguagesTest, MirroredThePanelIsOnTheLeftAndThePictureIsNot) {
    QApplication::setLayoutDirection(Qt::RightToLeft);
    startIn("");
    EXPECT_LT(panel().mapTo(&window(), QPoint()).x(), viewer().mapTo(&window(), QPoint()).x());
    // The picture's left edge is at the bar's left end in every direction of writing.
    for (const auto* bar : viewer().findChildren<QScrollBar*>())
        if (bar->orientation() == Qt::Horizontal) {
            EXPECT_EQ(bar->layoutDirection(), Qt::LeftToRight);
        }
}

}  // namespace
}  // namespace skarnel
