// A person's whole road in a real window on an X server: open, drag, type, zoom, colour, save
// twice, copy, and read the clipboard from another process.
#include <QAction>
#include <QComboBox>
#include <QDrag>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <QUrl>

#include "application_fixture.h"
#include "qt/color_well.h"
#include "qt/float_slider.h"
#include "qt/number_field.h"
#include "qt/save_options_view.h"

namespace skarnel {
namespace {

class WindowTest : public ApplicationTest {
  protected:
    void SetUp() override {
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            GTEST_SKIP() << "needs an X server";
    }

    bool wait(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, kPatience);
    }

    /// Answers the next modal file panel with a path, as typed into its field.
    void answerOpenPanel(const QString& path) {
        auto* poll = new QTimer(&window());
        QObject::connect(poll, &QTimer::timeout, poll, [poll, path] {
            auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (panel == nullptr) return;
            poll->deleteLater();
            auto* name = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            name->setText(path);
            QTest::keyClick(name, Qt::Key_Return);
        });
        poll->start(20);
    }

    /// Saves through the sheet under a name in the test's folder, in the format of that index.
    void saveAs(std::string_view type, const QString& fileName) {
        app->actions().save->trigger();
        QFileDialog* sheet = nullptr;
        ASSERT_TRUE(wait([&] {
            sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
            return sheet != nullptr && sheet->isVisible();
        }));
        EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
        auto* options = sheet->findChild<SaveOptionsView*>(QStringLiteral("saveOptions"));
        ASSERT_NE(options, nullptr);
        options->setType(type);
        auto* name = sheet->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        // The extension has followed the format.
        EXPECT_EQ(QFileInfo(name->text()).suffix(), QFileInfo(fileName).suffix());
        name->setText(folder.filePath(fileName));
        QTest::keyClick(name, Qt::Key_Return);
        ASSERT_TRUE(wait([&] { return QFileInfo::exists(folder.filePath(fileName)); }));
        ASSERT_TRUE(wait([&] {
            return window().findChild<QFileDialog*>(QStringLiteral("savePanel")) == nullptr;
        }));
    }

    QByteArray readClipboardElsewhere(const QStringList& arguments) {
        QProcess reader;
        reader.start(QStringLiteral("xclip"),
                     QStringList{QStringLiteral("-selection"), QStringLiteral("clipboard"),
                                 QStringLiteral("-o")} +
                         arguments);
        // The other process asks this one for the bytes, so events must go on meanwhile.
        EXPECT_TRUE(wait([&] { return reader.state() == QProcess::NotRunning; }));
        return reader.readAllStandardOutput();
    }
};

// A key that two actions share, or one action has twice, does nothing at all.
TEST_F(WindowTest, EveryKeyBelongsToOneActionOnce) {
    start();
    QStringList keys;
    for (const QAction* action : window().findChildren<QAction*>())
        for (const QKeySequence& sequence : action->shortcuts()) keys << sequence.toString();
    keys.sort();
    EXPECT_GT(keys.size(), 25);
    for (qsizetype i = 1; i < keys.size(); ++i) EXPECT_NE(keys[i], keys[i - 1]) << i;
    EXPECT_EQ(app->actions().quit->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
}

TEST_F(WindowTest, FullScreenRendersAgainAndBackOnlyFits) {
    start();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window()));
    window().resize(900, 600);
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Wide.png"), 1200, 500, Qt::red)));
    ASSERT_TRUE(wait([&] { return viewer().fits(); }));
    const QImage small = viewer().shownImage();
    app->actions().fullScreen->trigger();
    EXPECT_TRUE(wait([&] { return viewer().shownImage().cacheKey() != small.cacheKey(); }));
    EXPECT_TRUE(window().isFullScreen());
    EXPECT_TRUE(viewer().fits());
    const QImage full = viewer().shownImage();
    app->actions().fullScreen->trigger();
    EXPECT_TRUE(wait([&] { return !window().isFullScreen(); }));
    settle();
    EXPECT_EQ(viewer().shownImage().cacheKey(), full.cacheKey());
}

TEST_F(WindowTest, TheDraggedResultIsNotOpenedByItsOwnWindow) {
    start();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window()));
    const QUrl file = QUrl::fromLocalFile(picture(QStringLiteral("Own.png"), 30, 30, Qt::green));
    auto* data = new QMimeData;
    data->setUrls({file});
    auto* drag = new QDrag(&viewer());
    drag->setMimeData(data);
    int refused = 0;
    QTimer::singleShot(0, &window(), [&] {  // while the drag is under way
        for (QWidget* place : {static_cast<QWidget*>(&window()), panel().viewport()}) {
            QDragEnterEvent enter({5, 5}, Qt::CopyAction, data, Qt::LeftButton, {});
            QApplication::sendEvent(place, &enter);
            QDropEvent drop(QPointF(5, 5), Qt::CopyAction, data, Qt::LeftButton, {});
            QApplication::sendEvent(place, &drop);
            if (enter.source() == &viewer() && !enter.isAccepted() && !drop.isAccepted()) ++refused;
        }
        QTest::keyClick(&window(), Qt::Key_Escape);
    });
    drag->exec(Qt::CopyAction);
    EXPECT_EQ(refused, 2);
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
}

TEST_F(WindowTest, APersonsWholeRoad) {
    start();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window()));
    const QString photo = picture(QStringLiteral("Beach.png"), 2000, 1000, QColor(200, 40, 40));

    answerOpenPanel(photo);
    app->actions().open->trigger();
    ASSERT_EQ(app->controller().saveFilename, "Beach Reflection");
    EXPECT_EQ(app->state().recentFiles(), QStringList{photo});

    FloatSlider& height = panel().slider("perspectiveHeight");
    const QPoint middle = height.rect().center();
    QTest::mousePress(&height, Qt::LeftButton, {}, middle);
    QTest::mouseMove(&height, middle - QPoint(25, 0));
    QTest::mouseRelease(&height, Qt::LeftButton, {}, middle - QPoint(25, 0));
    const float dragged = app->defaults().floatForKey("perspectiveHeight");
    EXPECT_LT(dragged, 100.0F);

    NumberField& typed = panel().field("perspectiveHeight");
    typed.setFocus();
    typed.selectAll();
    QTest::keyClicks(&typed, QStringLiteral("50"));
    QTest::keyClick(&typed, Qt::Key_Return);
    settle();
    EXPECT_EQ(app->defaults().floatForKey("perspectiveHeight"), 50.0F);

    app->actions().zoom[2]->trigger();
    EXPECT_EQ(viewer().zoomFactor(), 1.0);
    app->actions().zoom[3]->trigger();
    EXPECT_TRUE(viewer().fits());

    QTest::mouseClick(&panel().colorWell(), Qt::LeftButton);
    ASSERT_TRUE(wait([&] { return app->toolkit().colorPanel().dialog()->isVisible(); }));
    app->toolkit().colorPanel().dialog()->setCurrentColor(QColor(0, 0, 255));
    EXPECT_EQ(viewer().background(), QColor(0, 0, 255));
    app->toolkit().colorPanel().dialog()->close();
    EXPECT_TRUE(window().isVisible());

    saveAs(kUTTypePNG, QStringLiteral("result.png"));
    saveAs(kUTTypeJPEG, QStringLiteral("result.jpeg"));
    const QImage png(folder.filePath(QStringLiteral("result.png")));
    EXPECT_EQ(png.size(), QSize(2000, 1500));
    EXPECT_EQ(png.pixelColor(1000, 500), QColor(200, 40, 40));
    const QImage jpeg(folder.filePath(QStringLiteral("result.jpeg")));
    EXPECT_EQ(jpeg.size(), QSize(2000, 1500));

    app->actions().copy->trigger();
    const QByteArray targets =
        readClipboardElsewhere({QStringLiteral("-t"), QStringLiteral("TARGETS")});
    EXPECT_TRUE(targets.contains("image/tiff"));
    EXPECT_FALSE(targets.contains("image/png"));
    const QByteArray tiff =
        readClipboardElsewhere({QStringLiteral("-t"), QStringLiteral("image/tiff")});
    const auto decoded = decodeImage({reinterpret_cast<const std::uint8_t*>(tiff.data()),
                                      static_cast<std::size_t>(tiff.size())});
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->image.width(), 2000);
    EXPECT_EQ(decoded->image.height(), 1500);
}

TEST_F(WindowTest, SavingAsksBeforeItOverwritesAndCancelWritesNothing) {
    start();
    const QString there = folder.filePath(QStringLiteral("there.tiff"));
    QFile old(there);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("the old picture");
    old.close();
    const QByteArray before = bytesOf(there);
    app->actions().save->trigger();
    QFileDialog* sheet = nullptr;
    ASSERT_TRUE(wait([&] {
        sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
        return sheet != nullptr && sheet->isVisible();
    }));
    auto* name = sheet->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    EXPECT_EQ(name->text(), QStringLiteral("TavelinLogo.tiff"));
    bool asked = false;
    auto* poll = new QTimer(&window());
    QObject::connect(poll, &QTimer::timeout, poll, [&asked, poll] {
        auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (question == nullptr) return;
        asked = true;
        poll->deleteLater();
        question->reject();
    });
    poll->start(20);
    name->setText(there);
    QTest::keyClick(name, Qt::Key_Return);
    ASSERT_TRUE(wait([&] { return asked; }));
    sheet->reject();
    ASSERT_TRUE(wait(
        [&] { return window().findChild<QFileDialog*>(QStringLiteral("savePanel")) == nullptr; }));
    EXPECT_EQ(bytesOf(there), before);
}

TEST_F(WindowTest, AnAlertIsASheetOfTheDefaultStyleAndClosingItEndsNothing) {
    start();
    app->controller().doAlert("There is no text to image.", "Enter text and try again.",
                              &app->resultWindow(), NSAlertStyle::Informational);
    QMessageBox* alert = nullptr;
    ASSERT_TRUE(wait([&] {
        alert = window().findChild<QMessageBox*>(QStringLiteral("alert"));
        return alert != nullptr && alert->isVisible();
    }));
    EXPECT_EQ(alert->windowModality(), Qt::WindowModal);
    EXPECT_EQ(alert->text(), QStringLiteral("There is no text to image."));
    EXPECT_EQ(alert->informativeText(), QStringLiteral("Enter text and try again."));
    EXPECT_EQ(alert->icon(), QMessageBox::Warning);
    ASSERT_EQ(alert->buttons().size(), 1);
    EXPECT_EQ(alert->buttons().front()->text(), QStringLiteral("OK"));
    alert->buttons().front()->click();
    ASSERT_TRUE(
        wait([&] { return window().findChild<QMessageBox*>(QStringLiteral("alert")) == nullptr; }));
    EXPECT_TRUE(window().isVisible());
}

}  // namespace
}  // namespace skarnel
