// Sliders, fields and undo in the real window: the seven numbers agree on every road.
#include "qt/settings_panel.h"

#include <QAction>
#include <QCheckBox>
#include <QPushButton>
#include <QScrollBar>
#include <functional>
#include <utility>

#include "application_fixture.h"
#include "qt/number_field.h"
#include "qt/slider_hands.h"

namespace skarnel {
namespace {

class SettingsPanelTest : public ApplicationTest {};

/// Slider, field and stored value of one setting.
void expectAgree(Application& app, std::string_view key, float value, const QString& text) {
    SettingsPanel& panel = app.window().settings();
    EXPECT_EQ(panel.slider(key).floatValue(), value) << key;
    EXPECT_EQ(panel.field(key).text(), text) << key;
    EXPECT_EQ(app.defaults().floatForKey(key), value) << key;
}

/// A number of the settings' defaults as the panel shows it.
QString shownDefault(const SettingRange& range) {
    return QString::number(static_cast<double>(settingDefault(range.key)));
}

TEST_F(SettingsPanelTest, ADragOfAnySettingIsShownAndIsOneEntryOfUndo) {
    start();
    app->controller().sliderChanged(nullptr);
    const QImage before = viewer().shownImage();
    for (const SettingRange& range : kSettingRanges) {
        FloatSlider& slider = panel().slider(range.key);
        dragHandle(slider, roomyPixels(slider));
        const float dragged = slider.floatValue();
        EXPECT_NE(dragged, settingDefault(range.key)) << range.key;
        EXPECT_EQ(app->defaults().floatForKey(range.key), dragged);
        settle();
        EXPECT_NE(viewer().shownImage(), before) << range.key;
        const QString text = QString::number(static_cast<double>(dragged));
        expectAgree(*app, range.key, dragged, text);

        app->actions().undo->trigger();
        settle();
        expectAgree(*app, range.key, settingDefault(range.key), shownDefault(range));
        EXPECT_EQ(viewer().shownImage(), before) << range.key;
        EXPECT_FALSE(app->actions().undo->isEnabled()) << range.key;
        app->actions().redo->trigger();
        settle();
        expectAgree(*app, range.key, dragged, text);
        app->actions().undo->trigger();
        settle();
    }
}

TEST_F(SettingsPanelTest, GesturesOfDifferentSettingsAreEntriesOfTheirOwnAndGoBackInTurn) {
    start();
    for (const SettingRange& range : kSettingRanges)
        dragHandle(panel().slider(range.key), roomyPixels(panel().slider(range.key)));
    QTest::mouseClick(&panel().resetButton(), Qt::LeftButton);
    app->actions().undo->trigger();  // the reset
    for (auto range = kSettingRanges.rbegin(); range != kSettingRanges.rend(); ++range) {
        EXPECT_NE(panel().slider(range->key).floatValue(), settingDefault(range->key));
        EXPECT_TRUE(app->actions().undo->text().contains(QString::fromLatin1(range->label)));
        app->actions().undo->trigger();
        expectAgree(*app, range->key, settingDefault(range->key), shownDefault(*range));
    }
    EXPECT_FALSE(app->actions().undo->isEnabled());
}

TEST_F(SettingsPanelTest, EveryFieldReadsTheFullStopFirstAndThenTheLocalesSign) {
    const QLocale german(QLocale::German, QLocale::Germany);
    start();
    const auto typed = [&](std::string_view key, const QString& text) {
        NumberField& field = panel().field(key);
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    };
    for (const SettingRange& range : kSettingRanges) {
        typed(range.key, QStringLiteral("12.5"));
        expectAgree(*app, range.key, 12.5F, QStringLiteral("12.5"));
        // In the C locale a comma could only group digits, which is not taken.
        typed(range.key, QStringLiteral("7,5"));
        expectAgree(*app, range.key, 12.5F, QStringLiteral("12.5"));
        panel().field(range.key).setLocale(german);
        typed(range.key, QStringLiteral("7,5"));
        expectAgree(*app, range.key, 7.5F, QStringLiteral("7.5"));
        typed(range.key, QStringLiteral("1.500"));
        expectAgree(*app, range.key, 1.5F, QStringLiteral("1.5"));
        typed(range.key, QStringLiteral("1.500,5"));
        expectAgree(*app, range.key, 1.5F, QStringLiteral("1.5"));
    }
}

TEST_F(SettingsPanelTest, ADragWhoseReleaseIsLostEndsAndIsOneEntry) {
    start();
    FloatSlider& slider = panel().slider("alpha");
    const auto move = [&](QPoint to, Qt::MouseButtons buttons) {
        QMouseEvent event(QEvent::MouseMove, to, slider.mapToGlobal(QPointF(to)), Qt::NoButton,
                          buttons, {});
        QApplication::sendEvent(&slider, &event);
        settle();
    };
    const std::pair<const char*, std::function<void()>> losses[] = {
        {"a move without the button", [&] { move(handleAt(slider), Qt::NoButton); }},
        {"another window",
         [&] {
             QEvent away(QEvent::WindowDeactivate);
             QApplication::sendEvent(&slider, &away);
         }},
        {"another widget", [&] { viewer().setFocus(); }},
        {"the window hidden",
         [&] {
             app->actions().closeNoSave->trigger();
             app->raise();
         }},
    };
    for (const auto& [name, lose] : losses) {
        SCOPED_TRACE(name);
        const QPoint at = handleAt(slider);
        QApplication::setActiveWindow(&window());
        QTest::mousePress(&slider, Qt::LeftButton, {}, at);
        move(at - QPoint(20, 0), Qt::LeftButton);
        const float dragged = slider.floatValue();
        EXPECT_LT(dragged, 200.0F);
        EXPECT_TRUE(app->model().history().isGestureOpen());
        lose();
        EXPECT_FALSE(app->model().history().isGestureOpen());
        EXPECT_FALSE(slider.isSliderDown());
        // What the hand does meanwhile is not meant for the slider, nor is a late release.
        move(at - QPoint(40, 0), Qt::LeftButton);
        move(at - QPoint(40, 0), Qt::NoButton);
        QTest::mouseRelease(&slider, Qt::LeftButton, {}, at - QPoint(40, 0));
        settle();
        EXPECT_EQ(slider.floatValue(), dragged);
        app->model().undo();
        EXPECT_EQ(slider.floatValue(), 200.0F);
        EXPECT_FALSE(app->model().history().canUndo());
    }
}

TEST_F(SettingsPanelTest, EachClickOfTheMiddleButtonIsAnEntry) {
    start();
    FloatSlider& slider = panel().slider("alpha");
    const float first = slider.floatValue();
    QTest::mouseClick(&slider, Qt::MiddleButton, {}, {slider.width() / 4, slider.height() / 2});
    settle();
    const float second = slider.floatValue();
    EXPECT_LT(second, first);
    QTest::mouseClick(&slider, Qt::MiddleButton, {}, {slider.width() / 2, slider.height() / 2});
    settle();
    EXPECT_GT(slider.floatValue(), second);
    EXPECT_FALSE(app->model().history().isGestureOpen());
    app->model().undo();
    EXPECT_EQ(slider.floatValue(), second);
    app->model().undo();
    EXPECT_EQ(slider.floatValue(), first);
}

TEST_F(SettingsPanelTest, KeysOnASliderStepAndAreOneEntryWhileHeld) {
    start();
    FloatSlider& slider = panel().slider("gradient");
    slider.setFocus();
    QTest::keyPress(&slider, Qt::Key_Right);
    QTest::keyPress(&slider, Qt::Key_Right);
    QTest::keyRelease(&slider, Qt::Key_Right);
    expectAgree(*app, "gradient", 8, QStringLiteral("8"));
    app->actions().undo->trigger();
    expectAgree(*app, "gradient", 7, QStringLiteral("7"));
}

TEST_F(SettingsPanelTest, AKeyThatIsHeldInAFieldIsOneEntry) {
    start();
    NumberField& field = panel().field("perspectiveHeight");
    field.setFocus();
    for (int i = 0; i < 20; ++i) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Up, {}, {}, i > 0);
        QApplication::sendEvent(&field, &press);
    }
    QTest::keyRelease(&field, Qt::Key_Up);
    settle();
    EXPECT_EQ(app->defaults().floatForKey("perspectiveHeight"), 120.0F);
    QTest::keyClick(&field, Qt::Key_Down);
    app->model().undo();
    EXPECT_EQ(field.text(), QStringLiteral("120"));
    app->model().undo();
    EXPECT_EQ(field.text(), QStringLiteral("100"));
    EXPECT_FALSE(app->model().history().canUndo());
}

TEST_F(SettingsPanelTest, ATypedNumberIsTakenExactlyAlsoBeyondTheTravelAndOffTheSteps) {
    start();
    NumberField& field = panel().field("alpha");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("300.25"));
    QTest::keyClick(&field, Qt::Key_Return);
    expectAgree(*app, "alpha", 300.25F, QStringLiteral("300.25"));
    EXPECT_EQ(panel().slider("alpha").value(), 255);
    app->actions().undo->trigger();
    expectAgree(*app, "alpha", 200, QStringLiteral("200"));
}

TEST_F(SettingsPanelTest, NonsenseGoesBackToTheStoredNumber) {
    start();
    NumberField& field = panel().field("offset");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("much"));
    QTest::keyClick(&field, Qt::Key_Return);
    expectAgree(*app, "offset", 0, QStringLiteral("0"));
    EXPECT_FALSE(app->actions().undo->isEnabled());
}

TEST_F(SettingsPanelTest, TheTurnReadsTheSlidersFloatNotItsPosition) {
    start();
    app->model().changeNumber(QStringLiteral("Turn"), "imagePerspective", 33.37F);
    expectAgree(*app, "imagePerspective", 33.37F, QStringLiteral("33.37"));
    EXPECT_EQ(app->controller().imagePerspectiveSlider->floatValue(), 33.37F);
}

TEST_F(SettingsPanelTest, ResetShowsSixDecimalsAndIsOneEntryOfUndo) {
    start();
    app->model().changeNumber(QStringLiteral("Height"), "perspectiveHeight", 55);
    app->model().changeNumber(QStringLiteral("Turn"), "imagePerspective", 25);
    QTest::mouseClick(&panel().applyBackground(), Qt::LeftButton, {},
                      QPoint(8, panel().applyBackground().height() / 2));
    EXPECT_TRUE(app->defaults().boolForKey("applyBackgroundColor"));
    QTest::mouseClick(&panel().resetButton(), Qt::LeftButton);
    expectAgree(*app, "perspectiveWidth", 0, QStringLiteral("0.000000"));
    expectAgree(*app, "perspectiveHeight", 100, QStringLiteral("100.000000"));
    expectAgree(*app, "imagePerspective", 50, QStringLiteral("50.000000"));
    EXPECT_FALSE(panel().applyBackground().isChecked());
    app->actions().undo->trigger();
    expectAgree(*app, "perspectiveHeight", 55, QStringLiteral("55"));
    expectAgree(*app, "imagePerspective", 25, QStringLiteral("25"));
    EXPECT_TRUE(panel().applyBackground().isChecked());
}

TEST_F(SettingsPanelTest, DoubleClickOnTheHandleReturnsTheDefault) {
    start();
    for (const SettingRange& range : kSettingRanges) {
        app->model().changeNumber(QStringLiteral("Some"), range.key, 33);
        FloatSlider& slider = panel().slider(range.key);
        QTest::mouseDClick(&slider, Qt::LeftButton, {}, handleAt(slider));
        expectAgree(*app, range.key, settingDefault(range.key), shownDefault(range));
        app->actions().undo->trigger();
        expectAgree(*app, range.key, 33, QStringLiteral("33"));
    }
}

TEST_F(SettingsPanelTest, TheWheelTurnsOnlyAFocusedSlider) {
    start();
    for (const SettingRange& range : kSettingRanges) {
        FloatSlider& slider = panel().slider(range.key);
        // Downwards where the default is the end of the travel.
        const int notch = slider.value() == slider.maximum() ? -120 : 120;
        window().viewer().setFocus();
        turnWheel(slider, notch);
        expectAgree(*app, range.key, settingDefault(range.key), shownDefault(range));
        slider.setFocus();
        turnWheel(slider, notch);
        turnWheel(slider, notch);
        EXPECT_NE(slider.floatValue(), settingDefault(range.key)) << range.key;
        app->actions().undo->trigger();
        expectAgree(*app, range.key, settingDefault(range.key), shownDefault(range));
    }
}

TEST_F(SettingsPanelTest, SettingsSurviveARestartAndSeedNothingThatIsThere) {
    start();
    app->model().changeNumber(QStringLiteral("Gap"), "offset", 12.5F);
    app->persist();
    app.reset();
    start();
    expectAgree(*app, "offset", 12.5F, QStringLiteral("12.5"));
    EXPECT_FALSE(app->defaults().objectForKey("applyBackgroundColor"));
}

TEST_F(SettingsPanelTest, TheRowsMoveTogetherBeforeAnythingHasToBeScrolled) {
    start();
    SettingsPanel alone(app->model());
    const QSize wide = alone.sizeHint();
    const auto pitch = [&] {
        settle();
        return alone.field("offset").y() - alone.field("perspectiveWidth").y();
    };
    alone.resize(wide);
    alone.show();
    const int roomy = pitch();
    EXPECT_EQ(alone.verticalScrollBar()->maximum(), 0);
    alone.resize(wide.width(), wide.height() - 20);
    EXPECT_LT(pitch(), roomy);
    EXPECT_EQ(alone.verticalScrollBar()->maximum(), 0);
    alone.resize(wide.width(), wide.height() - 200);
    settle();
    EXPECT_GT(alone.verticalScrollBar()->maximum(), 0);
    alone.resize(wide);
    EXPECT_EQ(pitch(), roomy);
}

}  // namespace
}  // namespace skarnel
