// Room for every text, beside the window that languages_test.cpp looks at: the marks' bar, the save
// sheet, the colour panel, alerts and short messages; in longer words, and from right to left.
#include <QColorDialog>
#include <QFileDialog>
#include <QLayout>
#include <QMessageBox>
#include <QScreen>
#include <QTranslator>

#include "application_fixture.h"
#include "layout_checks.h"
#include "qt/languages.h"
#include "qt/number_field.h"
#include "qt/number_text.h"
#include "qt/save_options_view.h"
#include "qt/setting_ranges.h"
#include "qt/settings_panel.h"
#include "qt/text_bar.h"
#include "qt/text_editor.h"

namespace skarnel {
namespace {

/// English with every text of our own longer by two fifths.
class LongWords final : public QTranslator {
  public:
    LongWords() { QCoreApplication::installTranslator(this); }
    ~LongWords() override { QCoreApplication::removeTranslator(this); }
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override {
        if (!QByteArrayView(context).startsWith("skarnel::")) return {};
        QString longer = QString::fromUtf8(text);
        const qsizetype more = (longer.size() * 2 + 4) / 5;
        for (qsizetype i = 0; i < more; ++i) longer += QLatin1Char("enarisu "[i % 8]);
        return longer.trimmed();
    }
};

constexpr const char* kLong = "long";
constexpr int kLabelMargin = 4;  // logical pixels

class LayoutTest : public ApplicationTest {
  protected:
    ~LayoutTest() override {
        app.reset();
        QApplication::setLayoutDirection(Qt::LeftToRight);
    }

    /// Once for each catalogue, for none and for longer words, in both directions.
    template <typename Look>
    void inEveryLanguage(Look look) {
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            for (const char* catalogue : {"", "de", "es", "fr", "ja", "zh_CN", kLong}) {
                const bool isLong = catalogue == kLong;
                app.reset();
                QApplication::setLayoutDirection(direction);
                const Language language(QString::fromLatin1(isLong ? "" : catalogue));
                ASSERT_TRUE(language.isSpoken()) << catalogue;
                std::optional<LongWords> words;
                if (isLong) words.emplace();
                look(std::string("in \"") + catalogue +
                     (direction == Qt::RightToLeft ? "\", mirrored" : "\""));
                app.reset();
            }
        }
    }
};

TEST_F(LayoutTest, TheWindowHasRoomForLongerWordsAndTheMarksBar) {
    inEveryLanguage([this](const std::string& where) {
        start();
        window().resize(900, 600);
        app->actions().tools[4]->trigger();
        settle();
        ASSERT_EQ(window().size(), QSize(900, 600)) << where;
        auto* ellipse = viewer().findChild<QAbstractButton*>();
        ASSERT_NE(ellipse, nullptr) << where;
        EXPECT_TRUE(ellipse->isVisible()) << where << ": the marks' bar is not there";
        expectEverythingSeen(window(), where);
        EXPECT_GE(labelMargin(window().textBar().imageButton()), kLabelMargin) << where;
        for (const SettingRange& range : kSettingRanges) {
            const QLineEdit& field = panel().field(range.key);
            for (const float end : {range.fieldMin, range.fieldMax, -0.125F}) {
                const QString number = numberText(end);
                EXPECT_LE(field.fontMetrics().horizontalAdvance(number), roomOf(field))
                    << where << ": " << range.key << " " << end;
            }
        }
    });
}

TEST_F(LayoutTest, TheSmallestWindowHasRoomForTheSettingsAndTheTextsBar) {
    inEveryLanguage([this](const std::string& where) {
        start();
        window().resize(1, 1);
        settle();
        // As small as its parts allow, where the screen has room for that beside a window's frame.
        const QSize needed = window().layout()->totalMinimumSize();
        const QSize room = window().screen()->availableSize() - QSize(16, 48);
        EXPECT_EQ(window().size(), needed.boundedTo(room).expandedTo({720, 480})) << where;
        EXPECT_LE(needed.width(), 900) << where;
        EXPECT_LE(needed.height(), 600) << where;
        window().resize(needed);
        settle();
        ASSERT_EQ(window().width(), needed.width()) << where;
        expectEverythingSeen(*window().centralWidget(), where);
    });
}

TEST_F(LayoutTest, TheSaveSheetHasRoom) {
    inEveryLanguage([this](const std::string& where) {
        start();
        app->actions().save->trigger();
        settle();
        auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
        ASSERT_NE(sheet, nullptr) << where;
        sheet->resize(sheet->minimumSizeHint());
        auto* options = sheet->findChild<SaveOptionsView*>(QStringLiteral("saveOptions"));
        ASSERT_NE(options, nullptr) << where;
        for (const std::string_view type :
             {kUTTypeTIFF, kUTTypePNG, kUTTypeJPEG, kUTTypeWebP, kUTTypeBMP}) {
            options->setType(type);
            settle();
            expectEverythingSeen(*options, where + " " + std::string(type));
            EXPECT_FALSE(isCutOff(*options)) << where;
        }
        expectEverythingSeen(*sheet, where);
        sheet->reject();
        settle();
    });
}

TEST_F(LayoutTest, TheColourPanelHasRoom) {
    inEveryLanguage([this](const std::string& where) {
        start();
        app->actions().backgroundColor->trigger();
        settle();
        QColorDialog* panel = app->toolkit().colorPanel().dialog();
        ASSERT_NE(panel, nullptr) << where;
        ASSERT_TRUE(panel->isVisible()) << where;
        expectEverythingSeen(*panel, where);
        panel->hide();
    });
}

TEST_F(LayoutTest, AnAlertHasRoom) {
    inEveryLanguage([this](const std::string& where) {
        start();
        window().textEditor().setText(StyledText());
        app->actions().imageText->trigger();
        settle();
        auto* alert = window().findChild<QMessageBox*>(QStringLiteral("alert"));
        ASSERT_NE(alert, nullptr) << where;
        expectEverythingSeen(*alert, where);
        alert->reject();
        settle();
    });
}

TEST_F(LayoutTest, AShortMessageLiesWithinThePictureWhateverItsLength) {
    const QString name(150, QLatin1Char('W'));  // without a place to break the line at
    const QString messages[] = {QStringLiteral("Saved"),
                                QStringLiteral("A message of several words ").repeated(12),
                                QStringLiteral("“%1.png” cannot be read").arg(name)};
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        app.reset();
        QApplication::setLayoutDirection(direction);
        start();
        window().resize(720, 480);
        settle();
        for (const QString& message : messages) {
            window().tell(message);
            settle();
            const auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
            EXPECT_TRUE(viewer().rect().contains(toast->geometry())) << message.toStdString();
            EXPECT_GE(toast->width(), toast->minimumSizeHint().width()) << message.toStdString();
            EXPECT_GE(toast->height(), toast->hasHeightForWidth()
                                           ? toast->heightForWidth(toast->width())
                                           : toast->sizeHint().height())
                << message.toStdString();
            EXPECT_EQ(toast->accessibleName(), message);
        }
    }
}

}  // namespace
}  // namespace skarnel
