// The save panel as the user meets it: the name that is typed, the file that is written.
#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QSlider>
#include <QSpinBox>
#include <QTimer>

#include "application_fixture.h"
#include "qt/save_options_view.h"
#include "slider_hands.h"

namespace skarnel {
namespace {

class SavePanelTest : public ApplicationTest {
  protected:
    void SetUp() override { ASSERT_TRUE(QDir().mkpath(saved())); }

    QString saved() const { return folder.filePath(QStringLiteral("saved")); }
    QStringList savedFiles() const {
        return QDir(saved()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    /// Opens the sheet on the folder of saved files.
    void ask() {
        app->state().setSaveFolder(saved());
        app->actions().save->trigger();
        QApplication::processEvents();
        sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
        ASSERT_NE(sheet, nullptr);
        name = sheet->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        options = sheet->findChild<SaveOptionsView*>(QStringLiteral("saveOptions"));
        ASSERT_TRUE(name != nullptr && options != nullptr);
    }

    void type(const QString& text) {
        name->selectAll();
        QTest::keyClicks(name, text);
    }

    void press() {
        QTest::keyClick(name, Qt::Key_Return);
        QApplication::processEvents();
    }

    /// Answers the question that the next key brings up; its text is kept.
    void answerWith(QMessageBox::StandardButton button) {
        auto* poll = new QTimer(&window());
        QObject::connect(poll, &QTimer::timeout, poll, [this, poll, button] {
            auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (question == nullptr) return;
            poll->deleteLater();
            asked << question->text();
            question->button(button)->click();
        });
        poll->start(5);
    }

    QPointer<QFileDialog> sheet;
    QLineEdit* name = nullptr;
    SaveOptionsView* options = nullptr;
    QStringList asked;
};

TEST_F(SavePanelTest, WhatAKilledSaveLeftIsGoneAfterTheNextStart) {
    start({picture(QStringLiteral("some.png"), 30, 20, Qt::red)});
    app->state().setSaveFolder(folder.filePath(QStringLiteral("elsewhere")));
    ask();
    press();
    ASSERT_EQ(savedFiles().size(), 1);
    // Nobody has saved the window's state since.
    const WindowState next(folder.filePath(QStringLiteral("state/window.json")));
    EXPECT_EQ(next.saveFolder(), saved());
    QFile left(saved() + QStringLiteral("/.skarnel-0123456789abcdef.part"));
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.close();
    app.reset();
    start();
    const QStringList result{QStringLiteral("some Reflection.tiff")};
    EXPECT_TRUE(QTest::qWaitFor([&] { return savedFiles() == result; }, kPatience));
}

TEST_F(SavePanelTest, QuotationMarksAreAPartOfTheName) {
    start({picture(QStringLiteral("12\" record.png"), 30, 20, Qt::red)});
    ask();
    const QString proposed = QStringLiteral("12\" record Reflection.tiff");
    EXPECT_EQ(name->text(), proposed);
    press();
    EXPECT_EQ(savedFiles(), QStringList{proposed});
    // The question is about the file that would be replaced.
    const QByteArray before = bytesOf(saved() + QLatin1Char('/') + proposed);
    ask();
    answerWith(QMessageBox::No);
    press();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked.front().contains(proposed)) << asked.front().toStdString();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->isVisible());
    sheet->reject();
    EXPECT_EQ(bytesOf(saved() + QLatin1Char('/') + proposed), before);
}

/// Notes what a label says each time it is painted.
class Painted final : public QObject {
  public:
    explicit Painted(QLabel& label) : label_(label) { label.installEventFilter(this); }
    QStringList texts;

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) texts << label_.text();
        return false;
    }

  private:
    QLabel& label_;
};

TEST_F(SavePanelTest, ALargePictureSaysThatItIsBeingSavedAndASmallOneIsJustSaved) {
    start();
    for (const bool isLarge : {true, false}) {
        ASSERT_TRUE(app->openPicture(
            picture(QStringLiteral("p.png"), 2500, isLarge ? 1600 : 1599, Qt::red)));
        ask();
        Painted painted(*window().findChild<QLabel*>(QStringLiteral("toast")));
        press();
        EXPECT_EQ(savedFiles().size(), 1);
        const QString note = QStringLiteral("Saving “p Reflection.tiff” …");
        EXPECT_EQ(painted.texts.contains(note), isLarge);
        EXPECT_FALSE(window().findChild<QLabel*>(QStringLiteral("toast"))->isVisible());
        QDir(saved()).removeRecursively();
        ASSERT_TRUE(QDir().mkpath(saved()));
    }
}

TEST_F(SavePanelTest, ANameGetsTheFormatsExtensionUnlessItHasIt) {
    const struct {
        const char* typed;
        const char* written;
    } rows[] = {
        {"Beach", "Beach.tiff"},           {"Beach.2010", "Beach.2010.tiff"},
        {"Short.tif", "Short.tif"},        {"Loud.TIFF", "Loud.TIFF"},
        {"Layers.psd", "Layers.tiff"},     {"Moving.gif", "Moving.tiff"},
        {"Drawn.png", "Drawn.png"},        {"~user", "~user.tiff"},
        {"\"quoted\"", "\"quoted\".tiff"},
    };
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::red)});
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        ask();
        type(QString::fromUtf8(row.typed));
        press();
        EXPECT_EQ(savedFiles(), QStringList{QString::fromUtf8(row.written)});
        for (const QString& file : savedFiles()) QDir(saved()).remove(file);
    }
}

TEST_F(SavePanelTest, TheExtensionOfAnotherPictureFormatChoosesIt) {
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::red)});
    ask();
    // As the list of files puts it there, without a key.
    name->setText(QStringLiteral("Drawn.png"));
    press();
    EXPECT_EQ(savedFiles(), QStringList{QStringLiteral("Drawn.png")});
    EXPECT_TRUE(bytesOf(saved() + QStringLiteral("/Drawn.png")).startsWith("\x89PNG"));
}

TEST_F(SavePanelTest, AFolderThatIsTypedIsGoneInto) {
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::red)});
    ASSERT_TRUE(QDir(saved()).mkdir(QStringLiteral("in.here")));
    ask();
    type(QStringLiteral("in.here"));
    press();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->directory().absolutePath(), saved() + QStringLiteral("/in.here"));
    EXPECT_TRUE(name->text().isEmpty());
    press();
    EXPECT_TRUE(sheet->isVisible()) << "no name is no file";
    type(QStringLiteral("../Up"));
    press();
    EXPECT_EQ(savedFiles(), QStringList{QStringLiteral("Up.tiff")});
    // The file's own folder is remembered, not the one that was listed.
    EXPECT_EQ(app->state().saveFolder(), saved());
}

TEST_F(SavePanelTest, AFileIsReplacedWhenTheUserSaysSo) {
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::red)});
    QFile old(saved() + QStringLiteral("/Old.tiff"));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("the old picture");
    old.close();
    ask();
    type(QStringLiteral("Old"));
    answerWith(QMessageBox::Yes);
    press();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked.front().contains(QStringLiteral("Old.tiff")));
    EXPECT_EQ(savedFiles(), QStringList{QStringLiteral("Old.tiff")});
    EXPECT_TRUE(bytesOf(old.fileName()).startsWith("II*"));
}

TEST_F(SavePanelTest, TheWheelOverAnUnfocusedControlChangesNothing) {
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::red)});
    ask();
    for (const std::string_view type : {kUTTypePNG, kUTTypeTIFF, kUTTypeJPEG}) {
        SCOPED_TRACE(type);
        options->setType(type);
        name->setFocus();
        QApplication::processEvents();
        const ImageProperties before = options->properties();
        int turned = 0;
        for (auto* control : options->findChildren<QWidget*>()) {
            const bool isControl = qobject_cast<QSlider*>(control) != nullptr ||
                                   qobject_cast<QComboBox*>(control) != nullptr ||
                                   qobject_cast<QSpinBox*>(control) != nullptr;
            if (!isControl || !control->isVisible()) continue;
            ++turned;
            turnWheel(*control, 120);
            turnWheel(*control, -360);
            EXPECT_FALSE(control->hasFocus());
            EXPECT_NE(control->focusPolicy(), Qt::WheelFocus);
        }
        EXPECT_EQ(turned, type == kUTTypeJPEG ? 3 : 2) << "the format and its options";
        EXPECT_EQ(options->type(), type);
        EXPECT_TRUE(options->properties() == before);
    }
}

TEST_F(SavePanelTest, TheWheelTurnsAFocusedControl) {
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::red)});
    ask();
    options->setType(kUTTypeJPEG);
    QApplication::processEvents();
    auto* quality = options->findChild<QSpinBox*>();
    ASSERT_EQ(quality->value(), 90);
    quality->setFocus();
    ASSERT_TRUE(quality->hasFocus());
    turnWheel(*quality, 120);
    EXPECT_EQ(quality->value(), 91);
}

TEST_F(SavePanelTest, ADoubleClickOnTheHandleReturnsTheFirstValue) {
    start({picture(QStringLiteral("a.png"), 30, 20, Qt::red)});
    ask();
    const struct {
        std::string_view type;
        int first;
        int another;
    } rows[] = {{kUTTypePNG, 6, 2}, {kUTTypeJPEG, 90, 30}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        options->setType(row.type);
        QApplication::processEvents();
        QSlider* slider = nullptr;
        for (auto* each : options->findChildren<QSlider*>())
            if (each->isVisible()) slider = each;
        ASSERT_NE(slider, nullptr);
        EXPECT_EQ(slider->value(), row.first);
        slider->setValue(row.another);
        QTest::mouseDClick(slider, Qt::LeftButton, {}, handleAt(*slider));
        EXPECT_EQ(slider->value(), row.first);
    }
}

}  // namespace
}  // namespace skarnel
