// Looks and dragging out, in the real window.
#include "qt/companions.h"

#include <QDrag>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QUrl>

#include "companions_fixture.h"
#include "qt/number_field.h"
#include "qt/preset_strip.h"
#include "qt/result_drag.h"
#include "qt/user_presets.h"

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

TEST_F(CompanionsTest, ALookIsSavedWithTheNumberThatIsStillBeingTyped) {
    start();
    NumberField& field = window().settings().field("gradient");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("7.5"));
    app->companions().saveLookAction().trigger();
    strip().finishTyping();
    choose(0);
    ASSERT_NE(settings()[4], 7.5);
    choose(12);
    EXPECT_EQ(settings()[4], 7.5);
}

TEST_F(CompanionsTest, ARemovedLookComesBackByUndo) {
    start();
    for (const float fade : {31.0F, 32.0F}) {
        app->model().editNumber("gradient", fade);
        settle();
        strip().saveCurrent();
        strip().finishTyping();
    }
    QListWidget& list = strip().list();
    ASSERT_EQ(list.count(), 14);
    list.setCurrentRow(12);
    QTest::keyClick(&list, Qt::Key_Delete);
    ASSERT_EQ(list.count(), 13);
    EXPECT_EQ(app->model().history().undoLabel(), "Remove “My Look”");
    app->actions().undo->trigger();
    ASSERT_EQ(list.count(), 14);
    EXPECT_EQ(list.item(12)->text(), QStringLiteral("My Look"));
    EXPECT_EQ(list.item(13)->text(), QStringLiteral("My Look 2"));
    choose(12);
    EXPECT_EQ(settings()[4], 31);
    app->model().undo();
    app->actions().redo->trigger();
    EXPECT_EQ(list.count(), 14) << "only the choice is made again";
    app->model().undo();
    list.setCurrentRow(12);
    QTest::keyClick(&list, Qt::Key_Delete);
    app->model().undo();
    app->model().redo();
    EXPECT_EQ(list.count(), 13);
    EXPECT_EQ(list.item(12)->text(), QStringLiteral("My Look 2"));
}

TEST_F(CompanionsTest, ARestoredLookGivesWayToOneThatHasItsNameByNow) {
    start();
    strip().saveCurrent();
    strip().finishTyping();
    QListWidget& list = strip().list();
    list.setCurrentRow(12);
    QTest::keyClick(&list, Qt::Key_Delete);
    UserPresets otherWindow(app->state());
    otherWindow.add({}, {});
    app->model().undo();
    ASSERT_EQ(list.count(), 14);
    EXPECT_EQ(list.item(12)->text(), QStringLiteral("My Look 2"));
    EXPECT_EQ(list.item(13)->text(), QStringLiteral("My Look"));
    app->model().redo();
    ASSERT_EQ(list.count(), 13);
    EXPECT_EQ(list.item(12)->text(), QStringLiteral("My Look"));
}

TEST_F(CompanionsTest, UndoLeavesALookOfTheSameNameThatAnotherWindowSaved) {
    start();
    strip().saveCurrent();
    strip().finishTyping();
    constexpr SettingNumbers kTheirs{77};
    {
        UserPresets otherWindow(app->state());
        ASSERT_TRUE(otherWindow.remove(0));
        otherWindow.add(QStringLiteral("My Look"), kTheirs);
    }
    app->model().undo();
    const QList<UserPreset> left{{QStringLiteral("My Look"), kTheirs}};
    EXPECT_EQ(UserPresets(app->state()).all(), left);
    // The strip has seen it by now; undo is still not its business.
    app->model().redo();
    app->model().undo();
    EXPECT_EQ(UserPresets(app->state()).all(), left);
}

TEST_F(CompanionsTest, SavingALookIsUndoneWithItsFirstNameAndRenamingByItself) {
    start();
    QApplication::setActiveWindow(&window());
    app->companions().showPresetsAction().setChecked(false);
    app->companions().saveLookAction().trigger();
    EXPECT_TRUE(strip().isVisible()) << "where its name is typed";
    auto* editor = strip().list().viewport()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("Fog"));
    strip().finishTyping();
    QListWidget& list = strip().list();
    ASSERT_EQ(list.item(12)->text(), QStringLiteral("Fog"));
    EXPECT_EQ(app->model().history().undoLabel(), "Save as Look");
    app->actions().undo->trigger();
    EXPECT_EQ(list.count(), 12);
    EXPECT_FALSE(app->model().history().canUndo());
    app->actions().redo->trigger();
    ASSERT_EQ(list.count(), 13);
    EXPECT_EQ(list.item(12)->text(), QStringLiteral("Fog"));
    list.item(12)->setText(QStringLiteral("Mist"));
    settle();
    EXPECT_EQ(app->model().history().undoLabel(), "Rename “Fog”");
    app->model().undo();
    EXPECT_EQ(list.item(12)->text(), QStringLiteral("Fog"));
    app->model().redo();
    EXPECT_EQ(list.item(12)->text(), QStringLiteral("Mist"));
    app->model().undo();
    app->model().undo();
    EXPECT_EQ(list.count(), 12);
}

TEST_F(CompanionsTest, TheMarkedLooksPictureKeepsItsColours) {
    start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    QListWidget& list = strip().list();
    const auto shot = [&](int row) {
        list.clearSelection();
        if (row >= 0) list.item(row)->setSelected(true);
        list.horizontalScrollBar()->setValue(0);
        return list.viewport()->grab(list.visualItemRect(list.item(1))).toImage();
    };
    const QImage marked = shot(1);
    const QImage plain = shot(0);
    ASSERT_NE(marked, plain) << "there is a frame";
    const QRect inside(marked.width() / 2 - 20, 16, 40, 24);
    EXPECT_EQ(marked.copy(inside), plain.copy(inside));
}

TEST_F(CompanionsTest, ArrowsSayWhereMoreLooksFollow) {
    start();
    QListWidget& list = strip().list();
    window().resize(700, 600);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return list.horizontalScrollBar()->maximum() > 0; }, kPatience));
    auto* left = list.findChild<QAbstractButton*>(QStringLiteral("moreLooksLeft"));
    auto* right = list.findChild<QAbstractButton*>(QStringLiteral("moreLooksRight"));
    ASSERT_TRUE(left && right);
    list.horizontalScrollBar()->setValue(0);
    EXPECT_FALSE(left->isVisible());
    EXPECT_TRUE(right->isVisible());
    EXPECT_EQ(right->geometry().right(), list.rect().right());
    right->click();
    EXPECT_GT(list.horizontalScrollBar()->value(), 0);
    EXPECT_TRUE(left->isVisible());
    list.horizontalScrollBar()->setValue(list.horizontalScrollBar()->maximum());
    EXPECT_FALSE(right->isVisible());
    left->click();
    EXPECT_TRUE(right->isVisible());
}

TEST_F(CompanionsTest, FromRightToLeftMoreLooksFollowOnTheLeft) {
    start();
    QListWidget& list = strip().list();
    window().resize(700, 600);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return list.horizontalScrollBar()->maximum() > 0; }, kPatience));
    window().setLayoutDirection(Qt::RightToLeft);
    auto* left = list.findChild<QAbstractButton*>(QStringLiteral("moreLooksLeft"));
    auto* right = list.findChild<QAbstractButton*>(QStringLiteral("moreLooksRight"));
    ASSERT_TRUE(left && right);
    const auto isSeen = [&](int row) {
        return list.viewport()->rect().contains(list.visualItemRect(list.item(row)));
    };
    list.horizontalScrollBar()->setValue(0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return isSeen(0); }, kPatience));
    const QRect first = list.visualItemRect(list.item(0));
    EXPECT_GT(first.left(), list.visualItemRect(list.item(1)).left());
    EXPECT_FALSE(right->isVisible());
    EXPECT_TRUE(left->isVisible());
    EXPECT_EQ(left->geometry().left(), 0);
    left->click();
    EXPECT_GT(list.visualItemRect(list.item(0)).left(), first.left());
    EXPECT_TRUE(right->isVisible());
    list.horizontalScrollBar()->setValue(list.horizontalScrollBar()->maximum());
    EXPECT_TRUE(isSeen(list.count() - 1));
    EXPECT_FALSE(left->isVisible());
    right->click();
    EXPECT_TRUE(left->isVisible());
}

TEST_F(CompanionsTest, APastedNameIsCutToTheLongestThatALookMayHave) {
    start();
    QApplication::setActiveWindow(&window());
    strip().saveCurrent();
    auto* editor = strip().list().viewport()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    editor->insert(QString(30'000, u'x'));
    strip().finishTyping();
    EXPECT_EQ(strip().list().item(12)->text(), QString(200, u'x'));
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
