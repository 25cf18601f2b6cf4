// What hands do in the window besides the straight road: keys that overlap, numbers that are typed
// and left, drops that are none.
#include <QAccessible>
#include <QAction>
#include <QClipboard>
#include <QDropEvent>
#include <QMimeData>
#include <QScreen>
#include <QUrl>

#include "application_fixture.h"
#include "qt/companions.h"
#include "qt/number_field.h"
#include "qt/recipe_commands.h"
#include "qt/slider_hands.h"

namespace skarnel {
namespace {

class WindowHandsTest : public ApplicationTest {
  protected:
    NumberField& typed(std::string_view key, const QString& text) {
        QApplication::setActiveWindow(&window());
        NumberField& field = panel().field(key);
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
        return field;
    }
    float stored(std::string_view key) { return app->defaults().floatForKey(key); }

    /// Whether the widget, or one behind it, takes the data.
    bool drop(QWidget& widget, const QMimeData& data) {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&widget, &enter);
        QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&widget, &drop);
        settle();
        return enter.isAccepted() || drop.isAccepted();
    }
};

TEST_F(WindowHandsTest, TheFullScreensMarkFollowsTheWindow) {
    start();
    window().setWindowState(Qt::WindowFullScreen);  // as a window manager does
    settle();
    EXPECT_TRUE(app->actions().fullScreen->isChecked());
    window().setWindowState(Qt::WindowNoState);
    settle();
    EXPECT_FALSE(app->actions().fullScreen->isChecked());
}

TEST_F(WindowHandsTest, TheFirstWindowIsNotLargerThanTheScreen) {
    start();
    const QSize room = window().screen()->availableSize();
    EXPECT_LE(window().width(), room.width());
    EXPECT_LE(window().height(), room.height());
}

TEST_F(WindowHandsTest, UndoKeysInAFieldAreTheWindowsUnlessSomethingTypedWaits) {
    start();
    NumberField& field = typed("perspectiveHeight", QStringLiteral("50"));
    QTest::keyClick(&field, Qt::Key_Return);
    settle();
    QTest::keyClick(&field, Qt::Key_Z, Qt::ControlModifier);
    settle();
    EXPECT_EQ(stored("perspectiveHeight"), 100.0F);
    QTest::keyClick(&field, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    settle();
    EXPECT_EQ(stored("perspectiveHeight"), 50.0F);
    typed("perspectiveHeight", QStringLiteral("77"));
    QTest::keyClick(&field, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_NE(field.text(), QStringLiteral("77"));
    EXPECT_EQ(stored("perspectiveHeight"), 50.0F);
}

TEST_F(WindowHandsTest, ATypedNumberThatWaitsIsTakenByWhateverUsesTheResult) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("b.png"), 30, 20, Qt::red)));
    typed("perspectiveHeight", QStringLiteral("50"));
    app->actions().copyAsPng->trigger();
    // 20 of the picture and half of it reflected.
    const QByteArray png = QApplication::clipboard()->mimeData()->data(QStringLiteral("image/png"));
    EXPECT_EQ(QImage::fromData(png).height(), 30);
    typed("perspectiveHeight", QStringLiteral("25"));
    EXPECT_EQ(QImage(app->companions().makeResultFile()).height(), 25);
    typed("perspectiveHeight", QStringLiteral("75"));
    app->actions().copy->trigger();
    EXPECT_EQ(stored("perspectiveHeight"), 75.0F);
    panel().colorText().setFocus();
    panel().colorText().selectAll();
    QTest::keyClicks(&panel().colorText(), QStringLiteral("#336699"));
    app->actions().copy->trigger();
    EXPECT_EQ(viewer().background(), QColor(0x33, 0x66, 0x99));
    for (QAction* save : {app->actions().save, app->actions().saveAndEdit}) {
        const float number = stored("perspectiveHeight") - 5;
        typed("perspectiveHeight", QString::number(static_cast<double>(number)));
        save->trigger();
        EXPECT_EQ(stored("perspectiveHeight"), number);
        settle();
        auto* sheet = window().findChild<QDialog*>(QStringLiteral("savePanel"));
        ASSERT_NE(sheet, nullptr);
        sheet->reject();
        settle();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    typed("perspectiveHeight", QStringLiteral("13"));
    const QString recipe = folder.filePath(QStringLiteral("r.skarnel"));
    ASSERT_TRUE(app->companions().recipes().saveTo(recipe));
    EXPECT_TRUE(bytesOf(recipe).contains("13"));
    EXPECT_EQ(stored("perspectiveHeight"), 13.0F);
    typed("perspectiveHeight", QStringLiteral("12"));
    emit window().closing();
    EXPECT_EQ(stored("perspectiveHeight"), 12.0F);
}

TEST_F(WindowHandsTest, UndoInTheMiddleOfADragLeavesTheRestOfItAnEntryOfItsOwn) {
    start();
    FloatSlider& slider = panel().slider("alpha");
    const QPoint at = handleAt(slider);
    QTest::mousePress(&slider, Qt::LeftButton, {}, at);
    QTest::mouseMove(&slider, at - QPoint(20, 0));
    app->model().undo();
    settle();
    EXPECT_EQ(slider.floatValue(), 200.0F);
    QTest::mouseMove(&slider, at - QPoint(40, 0));
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, at - QPoint(40, 0));
    settle();
    EXPECT_NE(slider.floatValue(), 200.0F);
    app->model().undo();
    EXPECT_EQ(slider.floatValue(), 200.0F);
}

TEST_F(WindowHandsTest, OfTwoOverlappingKeysEachIsAnEntry) {
    start();
    FloatSlider& slider = panel().slider("alpha");
    slider.setFocus();
    const auto press = [&](Qt::Key key, bool repeated) {
        QKeyEvent event(QEvent::KeyPress, key, {}, {}, repeated);
        QApplication::sendEvent(&slider, &event);
    };
    press(Qt::Key_Right, false);
    press(Qt::Key_Left, false);
    press(Qt::Key_Left, true);
    QTest::keyRelease(&slider, Qt::Key_Right);
    const float between = slider.floatValue();
    for (int i = 0; i < 5; ++i) press(Qt::Key_Left, true);
    QTest::keyRelease(&slider, Qt::Key_Left);
    EXPECT_LT(slider.floatValue(), between);
    app->model().undo();
    EXPECT_EQ(slider.floatValue(), between);
    app->model().undo();
    EXPECT_EQ(slider.floatValue(), 200.0F);
}

TEST_F(WindowHandsTest, EachValueOfAScreenReaderIsAnEntry) {
    start();
    FloatSlider& slider = panel().slider("alpha");
    QAccessibleInterface* view = QAccessible::queryAccessibleInterface(&slider);
    ASSERT_NE(view, nullptr);
    view->valueInterface()->setCurrentValue(150);
    view->valueInterface()->setCurrentValue(90);
    EXPECT_EQ(stored("alpha"), 90.0F);
    app->model().undo();
    EXPECT_EQ(stored("alpha"), 150.0F);
    app->model().undo();
    EXPECT_EQ(stored("alpha"), 200.0F);
}

TEST_F(WindowHandsTest, AFileDroppedOnAFieldIsNoEntry) {
    start();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(picture(QStringLiteral("D.png"), 30, 30, Qt::green))});
    data.setText(QStringLiteral("/x/D.png"));
    drop(panel().field("alpha"), data);
    EXPECT_EQ(panel().field("alpha").text(), QStringLiteral("200"));
    drop(panel().colorText(), data);
    EXPECT_EQ(panel().colorText().text(), QStringLiteral("#000000"));
}

}  // namespace
}  // namespace skarnel
