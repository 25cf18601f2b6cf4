// Looks and dragging out, in the real window.
#include "qt/companions.h"

#include <QDrag>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QUrl>

#include "companions_fixture.h"
#include "qt/preset_strip.h"
#include "qt/result_drag.h"

namespace skarnel {
namespace {

// Looks ----------------------------------------------------------------------------------------

TEST_F(CompanionsTest, ALookSetsItsSevenNumbersAsOneEntryOfUndo) {
    start();
    choose(5);
    EXPECT_EQ(settings(), builtInPresets()[5].settings);
    EXPECT_EQ(app->model().history().undoLabel(), "Stage");
    app->model().undo();
    settle();
    EXPECT_EQ(settings(), builtInPresets()[0].settings);
    EXPECT_FALSE(app->model().history().canUndo());
}

TEST_F(CompanionsTest, ALookLeavesTheBackgroundAlone) {
    start();
    app->model().editApplyBackground(true);
    choose(3);
    EXPECT_TRUE(app->model().applyBackground());
}

TEST_F(CompanionsTest, TheLookWithTheSettingsIsMarkedAndNoneWithOthers) {
    start();
    choose(2);
    ASSERT_EQ(strip().list().selectedItems().size(), 1);
    EXPECT_EQ(strip().list().selectedItems().front()->text(), QStringLiteral("Glossy Table"));
    app->model().editNumber("gradient", 33);
    settle();
    EXPECT_TRUE(strip().list().selectedItems().isEmpty());
    app->model().editNumber("gradient", builtInPresets()[2].settings[4]);
    settle();
    EXPECT_EQ(strip().list().selectedItems().size(), 1);
}

TEST_F(CompanionsTest, AResetMarksTheLookOfTheDefaults) {
    start();
    choose(5);
    app->actions().reset->trigger();
    ASSERT_EQ(strip().list().selectedItems().size(), 1);
    EXPECT_EQ(strip().list().selectedItems().front()->text(), QStringLiteral("Mirror"));
}

TEST_F(CompanionsTest, ThumbnailsAreMadeAfterTheFirstPictureOneByOne) {
    start();
    EXPECT_TRUE(strip().isWorking());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    const QImage first = strip().list().item(0)->icon().pixmap(84, 60).toImage();
    const QImage twin = strip().list().item(11)->icon().pixmap(84, 60).toImage();
    EXPECT_NE(first, twin);
    const QImage before = first;
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("red.png"), 300, 200, Qt::red)));
    ASSERT_TRUE(QTest::qWaitFor([&] { return strip().isWorking(); }, kPatience));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    const QImage after = strip().list().item(0)->icon().pixmap(84, 60).toImage();
    EXPECT_NE(after, before);
    EXPECT_EQ(after.pixelColor(42, 20), QColor(Qt::red));
}

TEST_F(CompanionsTest, ThumbnailsWaitWhileSettingsChange) {
    constexpr int kDrag = 1000;  // milliseconds: all twelve take less when nothing changes
    constexpr int kLongest = 250;
    start();
    QElapsedTimer drag;
    QElapsedTimer sinceChange;
    drag.start();
    sinceChange.start();
    float value = 1;
    while (drag.elapsed() < kDrag) {
        app->model().editNumber("gradient", value += 0.5F);
        sinceChange.restart();
        QTest::qWait(1);
        if (sinceChange.elapsed() > kLongest) GTEST_SKIP() << "too busy a machine for a drag";
        ASSERT_TRUE(strip().isWorking()) << "after " << drag.elapsed() << " ms";
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
}

TEST_F(CompanionsTest, TheUsersLookIsSavedRenamedAndRemoved) {
    start();
    app->model().editNumber("gradient", 33);
    settle();
    strip().saveCurrent();
    QListWidget& list = strip().list();
    ASSERT_EQ(list.count(), 13);
    EXPECT_EQ(list.item(12)->text(), QStringLiteral("My Look"));
    list.item(12)->setText(QStringLiteral("Foggy"));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            const QJsonArray kept = app->state().value(QStringLiteral("presets")).toArray();
            return kept.size() == 1 &&
                   kept.at(0).toObject().value(QStringLiteral("name")) == QStringLiteral("Foggy");
        },
        kPatience));
    choose(0);
    choose(12);
    EXPECT_EQ(settings()[4], 33);
    list.setCurrentRow(12);
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_EQ(list.count(), 12);
}

TEST_F(CompanionsTest, ALookOfTheProgramsCannotBeRemoved) {
    start();
    strip().list().setCurrentRow(0);
    QTest::keyClick(&strip().list(), Qt::Key_Delete);
    EXPECT_EQ(strip().list().count(), 12);
}

TEST_F(CompanionsTest, ANameThatIsStillBeingTypedIsTakenAtTheEnd) {
    start();
    QApplication::setActiveWindow(&window());
    strip().saveCurrent();
    auto* editor = strip().list().viewport()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("Typed name"));
    app->takeTyped();
    const QJsonArray kept = app->state().value(QStringLiteral("presets")).toArray();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept[0].toObject().value(QStringLiteral("name")), QStringLiteral("Typed name"));
}

TEST_F(CompanionsTest, TheStripIsHiddenAndRememberedSo) {
    start();
    EXPECT_TRUE(strip().isVisible());
    app->companions().showPresetsAction().trigger();
    EXPECT_FALSE(strip().isVisible());
    EXPECT_FALSE(app->state().value(QStringLiteral("presetsShown")).toBool(true));
}

TEST(PresetThumbnail, ALookWithoutAResultHasNoPicture) {
    const std::vector<std::uint8_t> bytes(16, 255);
    const CGImage source = *CGImage::copyOf({bytes.data(), 2, 2, 8, 4});
    // A vertical scale of 0 leaves no reflection.
    EXPECT_TRUE(presetThumbnail(source, {0, 0, 0, 0, 7, 200, 50}).isNull());
    EXPECT_FALSE(presetThumbnail(source, {0, 100, 0, 0, 7, 200, 50}).isNull());
}

// Drag ---------------------------------------------------------------------------------------

TEST_F(CompanionsTest, TheDraggedFileIsThePngOfTheFullResult) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Beach.png"), 300, 200, Qt::red)));
    const QString path = app->companions().makeResultFile();
    EXPECT_TRUE(path.endsWith(QStringLiteral("/Beach Reflection.png"))) << path.toStdString();
    // Picture and reflection of 200 rows each.
    EXPECT_EQ(QImage(path).size(), QSize(300, 400));
}

class ResultDragTest : public CompanionsTest {
  protected:
    void SetUp() override {
        start();
        ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Beach.png"), 300, 200, Qt::red)));
        settle();
        auto* drag = viewer().findChild<ResultDrag*>();
        ASSERT_NE(drag, nullptr);
        drag->setCarry([this](QDrag& carried) {
            urls << carried.mimeData()->urls();
            icon = carried.pixmap().size();
        });
    }
    /// A drag from the picture's middle, where it is red.
    void dragBy(int pixels, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        const QPoint from = viewer().rect().center();
        QTest::mousePress(&viewer(), Qt::LeftButton, keys, from);
        const QPoint to = from + QPoint(pixels, 0);
        QMouseEvent move(QEvent::MouseMove, to, viewer().mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, keys);
        QApplication::sendEvent(&viewer(), &move);
        QTest::mouseRelease(&viewer(), Qt::LeftButton, keys, to);
    }
    QList<QUrl> urls;
    QSize icon;
};

TEST_F(ResultDragTest, ADragOverTheThresholdTakesTheResultOutAsAFile) {
    dragBy(QApplication::startDragDistance());
    ASSERT_EQ(urls.size(), 1);
    ASSERT_TRUE(urls.front().isLocalFile());
    const QString path = urls.front().toLocalFile();
    EXPECT_EQ(QFileInfo(path).fileName(), QStringLiteral("Beach Reflection.png"));
    EXPECT_TRUE(
        path.startsWith(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)));
    // Full size, whatever the window shows: the picture's rows and as many of its reflection.
    EXPECT_EQ(QImage(path).size(), QSize(300, 400));
    EXPECT_FALSE(icon.isEmpty());
}

TEST_F(ResultDragTest, AStirOfTheHandIsNoDrag) {
    dragBy(QApplication::startDragDistance() - 1);
    EXPECT_TRUE(urls.isEmpty());
}

TEST_F(ResultDragTest, WhatCanBeScrolledIsMovedInsteadUnlessAltIsHeld) {
    viewer().setZoomFactor(20);
    const CGPoint before = viewer().sheet().view.scroll();
    dragBy(40);
    EXPECT_TRUE(urls.isEmpty());
    EXPECT_NE(viewer().sheet().view.scroll(), before);
    const CGPoint moved = viewer().sheet().view.scroll();
    dragBy(40, Qt::AltModifier);
    EXPECT_EQ(urls.size(), 1);
    EXPECT_EQ(viewer().sheet().view.scroll(), moved);
}

TEST_F(ResultDragTest, OtherToolsKeepTheirDrag) {
    app->actions().tools[1]->trigger();
    dragBy(40);
    EXPECT_TRUE(urls.isEmpty());
    EXPECT_TRUE(viewer().sheet().selection.has_value());
}

TEST_F(CompanionsTest, TheGuideIsInTheHelpMenu) {
    start();
    EXPECT_FALSE(app->companions().guideAction().associatedObjects().isEmpty());
}

}  // namespace
}  // namespace skarnel
