#include "qt/application.h"

#include <QAccessible>
#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QProgressBar>
#include <QScreen>
#include <QSplitter>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "application_fixture.h"
#include "qt/float_slider.h"
#include "qt/number_field.h"

namespace skarnel {
namespace {

TEST_F(ApplicationTest, StartsWithTheLogosReflectionAndThePlaceholder) {
    start();
    EXPECT_FALSE(viewer().shownImage().isNull());
    EXPECT_TRUE(viewer().fits());
    EXPECT_EQ(viewer().background(), QColor(Qt::black));
    EXPECT_EQ(viewer().toolMode(), IKToolModeMove);
    EXPECT_EQ(panel().colorText().text(), QStringLiteral("#000000"));
    const StyledText text = window().textEditor().text();
    EXPECT_EQ(text.characters(), u"Enter text for imaging here");
    EXPECT_EQ(text.styleAt(0).color, (TextColor{255, 255, 255, 255}));
    EXPECT_EQ(text.styleAt(0).size, 48);
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_EQ(app->resultWindow().firstResponder(), &app->imageView());
}

TEST_F(ApplicationTest, WhatChangesWithoutAPauseIsStoredAllTheSame) {
    start();
    int changes = 0;
    QTimer hand;
    QObject::connect(&hand, &QTimer::timeout, &hand,
                     [&] { app->state().setOpenFolder(QString::number(++changes)); });
    hand.start(100);
    const QString file = folder.filePath(QStringLiteral("state/window.json"));
    EXPECT_TRUE(
        QTest::qWaitFor([&] { return !WindowState(file).openFolder().isEmpty(); }, kPatience));
    EXPECT_GT(changes, 1);
}

TEST_F(ApplicationTest, ATemporaryDirectoryThatACleanerRemovedIsMadeAgain) {
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", folder.path().toUtf8());
    make();
    const auto own = app->toolkit().temporaryDirectory();
    ASSERT_TRUE(own);
    ASSERT_TRUE(QDir(QString::fromStdString(*own)).removeRecursively());
    EXPECT_EQ(app->toolkit().temporaryDirectory(), own);
    EXPECT_TRUE(isOwnPrivateDirectory(*own));
    if (before.isEmpty())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", before);
}

TEST_F(ApplicationTest, TheControllersProgressIndicatorIsThereAndHidden) {
    start();
    EXPECT_NE(app->controller().progress, nullptr);
    const auto bars = window().findChildren<QProgressBar*>();
    ASSERT_EQ(bars.size(), 1);
    EXPECT_FALSE(bars.front()->isVisible());
}

TEST_F(ApplicationTest, TheFirstWorkingCopyHasTheSizeOfTheViewerAsShown) {
    start();
    // The logo is square and larger than the viewer: its copy is as high as the viewer.
    ASSERT_TRUE(app->controller().scaledImage);
    EXPECT_NEAR(app->controller().scaledImage->size().height, viewer().viewportSize().height, 1);
}

TEST_F(ApplicationTest, ResizingFitsAgainWithoutRenderingAndSoDoesTheDivider) {
    start();
    const QImage before = viewer().shownImage();
    viewer().setZoomFactor(1.5);
    window().resize(1300, 900);
    QApplication::processEvents();
    EXPECT_TRUE(viewer().fits());
    viewer().setZoomFactor(1.5);
    window().splitter().setSizes({300, 400});
    QApplication::processEvents();
    EXPECT_TRUE(viewer().fits());
    EXPECT_EQ(viewer().shownImage(), before);
}

TEST_F(ApplicationTest, ShowingAndHidingTheTextFitsAgain) {
    start();
    for (const bool shown : {false, true, false}) {
        viewer().setZoomFactor(1.5);
        app->actions().showText->setChecked(shown);
        QApplication::processEvents();
        EXPECT_EQ(window().textShown(), shown);
        EXPECT_TRUE(viewer().fits()) << shown;
    }
}

/// The height of a preview: the working copy's composite at the default settings, which is twice as
/// high, reduced to fit the viewer and never enlarged.
double previewHeight(CGSize copy, CGSize viewer) {
    return copy.height * 2 *
           std::min({1.0, viewer.width / copy.width, viewer.height / copy.height / 2});
}

TEST_F(ApplicationTest, FullScreenRendersAgainAndBackOnlyFits) {
    start();
    window().resize(900, 600);
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Wide.png"), 1200, 500, Qt::red)));
    settle();
    const CGSize copy = app->controller().scaledImage->size();
    const QImage small = viewer().shownImage();
    window().resize(1000, 700);
    settle();
    EXPECT_EQ(viewer().shownImage().cacheKey(), small.cacheKey());

    app->actions().fullScreen->trigger();
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return window().size() == window().screen()->size(); }, kPatience));
    settle();
    EXPECT_TRUE(window().isFullScreen());
    EXPECT_TRUE(viewer().fits());
    const QImage full = viewer().shownImage();
    EXPECT_NE(full.cacheKey(), small.cacheKey());
    EXPECT_NEAR(full.height(), previewHeight(copy, viewer().viewportSize()), 2);
    EXPECT_GT(std::abs(full.height() - small.height()), 10);
    // The working copy is that of the size at which the picture was opened.
    EXPECT_EQ(app->controller().scaledImage->size(), copy);

    app->actions().fullScreen->trigger();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window().isFullScreen(); }, kPatience));
    settle();
    EXPECT_EQ(viewer().shownImage().cacheKey(), full.cacheKey());
    EXPECT_TRUE(viewer().fits());
}

TEST_F(ApplicationTest, WhatTheWindowRemembersIsWrittenAMomentLater) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Beach.png"), 30, 20, Qt::red)));
    const QString path = folder.filePath(QStringLiteral("state/window.json"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFile::exists(path); }, kPatience));
    EXPECT_EQ(WindowState(path).recentFiles(),
              QStringList{folder.filePath(QStringLiteral("Beach.png"))});
    window().resize(911, 633);
    const auto width = [&] {
        QWidget stand;
        return stand.restoreGeometry(WindowState(path).geometry()) ? stand.width() : 0;
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return width() == 911; }, kPatience));
}

TEST_F(ApplicationTest, ZoomAndToolCommandsGoByTheirNumbers) {
    start();
    app->actions().zoom[2]->trigger();
    EXPECT_EQ(viewer().zoomFactor(), 1.0);
    app->actions().zoom[0]->trigger();
    EXPECT_EQ(viewer().zoomFactor(), 0.7071068);
    app->actions().zoom[1]->trigger();
    EXPECT_EQ(viewer().zoomFactor(), 0.7071068 * 1.414214);
    app->actions().zoom[3]->trigger();
    EXPECT_TRUE(viewer().fits());
    for (int tool = 4; tool >= 0; --tool) {
        app->actions().tools[static_cast<std::size_t>(tool)]->trigger();
        EXPECT_EQ(static_cast<int>(viewer().toolMode()), tool);
    }
}

TEST_F(ApplicationTest, TheSaveSheetAsksForTheFormatOnce) {
    start();
    app->actions().save->trigger();
    QApplication::processEvents();
    auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->findChild<QWidget*>(QStringLiteral("saveFormat"))->isVisible());
    EXPECT_FALSE(sheet->findChild<QWidget*>(QStringLiteral("fileTypeCombo"))->isVisible());
    EXPECT_EQ(sheet->labelText(QFileDialog::LookIn), QStringLiteral("Save in:"));
    sheet->reject();
}

TEST_F(ApplicationTest, QuietTextAndTheEdgesOfBoxesAreSeenInTheLightAndInTheDark) {
    start();
    const auto lightness = [](const QColor& color) { return color.lightness(); };
    for (const std::size_t appearance : {2U, 1U, 2U}) {
        app->actions().appearance[appearance]->trigger();
        QApplication::processEvents();
        const int window = lightness(panel().palette().color(QPalette::Window));
        const QList<QLabel*> labels = panel().findChildren<QLabel*>();
        const auto unit = std::find_if(labels.begin(), labels.end(), [](const QLabel* label) {
            return label->text() == QStringLiteral("/255");
        });
        ASSERT_NE(unit, labels.end());
        const QColor text = (*unit)->palette().color((*unit)->foregroundRole());
        EXPECT_GT(std::abs(lightness(text) - window), 120) << appearance;
        // The style draws an edge at 5/7 of the window role's lightness.
        const QWidget* const boxes[] = {&panel().applyBackground(), &panel().field("alpha")};
        for (const QWidget* box : boxes)
            EXPECT_GT(
                std::abs(lightness(box->palette().color(QPalette::Window).darker(140)) - window),
                50)
                << appearance;
    }
}

TEST_F(ApplicationTest, CloseWithoutSavingHidesAndRaisingShowsTheWindowAgain) {
    start();
    EXPECT_EQ(window().windowTitle(), QStringLiteral("TavelinLogo — Skarnel"));
    EXPECT_EQ(app->actions().closeNoSave->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_W));
    app->actions().closeNoSave->trigger();
    EXPECT_FALSE(window().isVisible());
    app->raise();
    EXPECT_TRUE(window().isVisible());
}

TEST_F(ApplicationTest, RaisingAMinimisedWindowKeepsItMaximisedOrFullScreen) {
    start();
    for (const Qt::WindowState size :
         {Qt::WindowNoState, Qt::WindowMaximized, Qt::WindowFullScreen}) {
        SCOPED_TRACE(static_cast<int>(size));
        window().setWindowState(size);
        settle();
        window().setWindowState(window().windowState() | Qt::WindowMinimized);
        settle();
        ASSERT_TRUE(window().isMinimized());
        app->raise();
        settle();
        EXPECT_TRUE(window().isVisible());
        EXPECT_EQ(window().windowState() & ~Qt::WindowActive, Qt::WindowStates(size));
    }
}

/// What the environment holds while a window is shown.
class TokenWatch final : public QObject {
  public:
    std::vector<ActivationToken> seen;
    bool eventFilter(QObject* /*window*/, QEvent* event) override {
        if (event->type() == QEvent::Show) seen.push_back(ActivationToken::ofEnvironment());
        return false;
    }
};

TEST_F(ApplicationTest, ATokenIsInTheEnvironmentWhileTheWindowIsRaisedAndNotAfter) {
    start();
    TokenWatch watch;
    window().installEventFilter(&watch);
    // One of an earlier start is not shown for another.
    for (const ActivationToken& token :
         {ActivationToken{"gnome-shell/42", "launcher-7_TIME815"}, ActivationToken{"one", ""},
          ActivationToken{"", "other"}, ActivationToken{}}) {
        SCOPED_TRACE(token.activation.toStdString() + "," + token.startup.toStdString());
        window().hide();
        watch.seen.clear();
        app->raise(token);
        ASSERT_FALSE(watch.seen.empty());
        EXPECT_TRUE(watch.seen.back() == token);
        EXPECT_TRUE(ActivationToken::ofEnvironment() == ActivationToken());
        qputenv("XDG_ACTIVATION_TOKEN", "old");
        qputenv("DESKTOP_STARTUP_ID", "old");
    }
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qunsetenv("DESKTOP_STARTUP_ID");
}

TEST_F(ApplicationTest, TheWindowsStateIsApartFromTheSettingsAndUntouchedByReset) {
    start();
    app->actions().playCue->setChecked(false);
    app->actions().checkerboard->setChecked(true);
    window().splitter().setSizes({300, 300});
    const QByteArray divided = window().splitter().saveState();
    app->actions().reset->trigger();
    app->persist();
    app.reset();
    start();
    EXPECT_FALSE(app->actions().playCue->isChecked());
    EXPECT_TRUE(viewer().checkerboard());
    EXPECT_EQ(window().splitter().saveState(), divided);
    EXPECT_FALSE(app->defaults().objectForKey("checkerboard"));
}

TEST_F(ApplicationTest, TypingEndsThePlaceholdersTimer) {
    start();
    EXPECT_NE(app->controller().clearTextTimer, nullptr);
    window().textEditor().setFocus();
    QTest::keyClicks(&window().textEditor(), QStringLiteral("a"));
    EXPECT_EQ(app->controller().clearTextTimer, nullptr);
}

TEST_F(ApplicationTest, EveryControlHasANameAndTheKeyboardReachesIt) {
    start();
    for (QWidget* widget : window().findChildren<QWidget*>()) {
        if (!(widget->focusPolicy() & Qt::TabFocus) || !widget->isVisible()) continue;
        auto* accessible = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(accessible, nullptr);
        EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty())
            << widget->metaObject()->className() << ' ' << widget->objectName().toStdString();
    }
    for (const SettingRange& range : kSettingRanges) {
        EXPECT_TRUE(panel().slider(range.key).focusPolicy() & Qt::TabFocus);
        EXPECT_TRUE(panel().field(range.key).focusPolicy() & Qt::TabFocus);
    }
}

}  // namespace
}  // namespace skarnel
