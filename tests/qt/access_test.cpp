// The window read aloud: names, roles, values, and what is told when they change.
#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QToolBar>

#include "access_fixture.h"
#include "qt/color_well.h"
#include "qt/float_slider.h"
#include "qt/main_actions.h"
#include "qt/number_field.h"

namespace skarnel {
namespace {

TEST_F(AccessTest, EveryStopOfTheKeyboardHasANameAndARole) {
    start();
    app->actions().tools[4]->trigger();  // with the bar for marks
    settle();
    EXPECT_GT(stops().size(), 45);
    for (QWidget* widget : stops()) {
        QAccessibleInterface& view = viewOf(*widget);
        EXPECT_FALSE(view.text(QAccessible::Name).trimmed().isEmpty()) << named(*widget);
        EXPECT_NE(view.role(), QAccessible::NoRole) << named(*widget);
        EXPECT_NE(view.role(), QAccessible::Client) << named(*widget);
        EXPECT_TRUE(view.state().focusable) << named(*widget);
    }
}

TEST_F(AccessTest, ASettingIsASliderAndAFieldWithNameValueAndHint) {
    start();
    const struct {
        const char* key;
        const char* name;
        const char* value;
        double least, most, step;
    } rows[] = {
        {"perspectiveHeight", "Height", "100 %", 1, 200, 1},
        {"perspectiveWidth", "Width", "0 %", -40, 100, 1},
        {"offset", "Gap", "0 %", -50, 100, 1},
        {"start", "Start", "0 %", -100, 100, 1},
        {"gradient", "Gradient", "7 /10", 0, 50, 0.5},
        {"alpha", "Opacity", "200 /255", 0, 255, 1},
        {"imagePerspective", "Turn", "50 %", 0, 100, 0.5},
    };
    for (const auto& row : rows) {
        QAccessibleInterface& slider = viewOf(panel().slider(row.key));
        EXPECT_EQ(slider.role(), QAccessible::Slider);
        EXPECT_EQ(slider.text(QAccessible::Name), QLatin1String(row.name));
        EXPECT_EQ(slider.text(QAccessible::Value), QLatin1String(row.value));
        EXPECT_FALSE(slider.text(QAccessible::Description).isEmpty()) << row.name;
        ASSERT_NE(slider.valueInterface(), nullptr);
        EXPECT_EQ(slider.valueInterface()->minimumValue(), QVariant(row.least)) << row.name;
        EXPECT_EQ(slider.valueInterface()->maximumValue(), QVariant(row.most)) << row.name;
        EXPECT_EQ(slider.valueInterface()->minimumStepSize(), QVariant(row.step)) << row.name;

        QAccessibleInterface& field = viewOf(panel().field(row.key));
        EXPECT_EQ(field.role(), QAccessible::EditableText);
        EXPECT_EQ(field.text(QAccessible::Name),
                  QLatin1String(row.name) + QLatin1String(", number"));
        EXPECT_EQ(field.text(QAccessible::Value),
                  QString::fromLatin1(row.value).section(QLatin1Char(' '), 0, 0));
        EXPECT_FALSE(field.text(QAccessible::Description).isEmpty()) << row.name;
    }
}

TEST_F(AccessTest, ASettingIsChangedThroughTheInterfaceAsByAHand) {
    start();
    QAccessibleInterface& slider = viewOf(panel().slider("gradient"));
    slider.valueInterface()->setCurrentValue(12.5);
    settle();
    EXPECT_EQ(app->defaults().floatForKey("gradient"), 12.5F);
    EXPECT_EQ(slider.valueInterface()->currentValue(), QVariant(12.5));
}

TEST_F(AccessTest, AChangedSettingIsAnnouncedWithItsOwnNumber) {
    ASSERT_TRUE(listens()) << "needs the toolkit's inner headers, package qt6-base-private-dev";
    start();
    FloatSlider& slider = panel().slider("gradient");
    heard.clear();
    slider.setFocus();
    QTest::keyClick(&slider, Qt::Key_Right);
    ASSERT_TRUE(wasHeard(QAccessible::ValueChanged, slider));
    EXPECT_EQ(viewOf(slider).valueInterface()->currentValue(), QVariant(7.5));

    // A number that was typed, between two positions of the handle.
    heard.clear();
    NumberField& field = panel().field("gradient");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("7.6"));
    QTest::keyClick(&field, Qt::Key_Return);
    settle();
    EXPECT_TRUE(wasHeard(QAccessible::ValueChanged, slider));
    EXPECT_TRUE(wasHeard(QAccessible::TextInserted, field));
    EXPECT_NEAR(viewOf(slider).valueInterface()->currentValue().toDouble(), 7.6, 1e-6);

    heard.clear();
    app->model().undo();
    settle();
    EXPECT_TRUE(wasHeard(QAccessible::ValueChanged, slider));
}

TEST_F(AccessTest, ThePictureTellsItsSizeAndZoom) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("wide.png"), 300, 200, Qt::red)));
    heard.clear();
    app->actions().zoom[2]->trigger();
    QAccessibleInterface& view = viewOf(viewer());
    EXPECT_EQ(view.role(), QAccessible::Graphic);
    EXPECT_EQ(view.text(QAccessible::Name), QStringLiteral("Picture"));
    // The picture's rows and as many of its reflection.
    EXPECT_EQ(view.text(QAccessible::Value),
              QStringLiteral("wide Reflection; 300 by 400 pixels, zoom 100 %"));
    ASSERT_NE(view.imageInterface(), nullptr);
    EXPECT_EQ(view.imageInterface()->imageSize(), QSize(300, 400));
    // A screen reader's bus passes on new values of those objects alone that have one to ask for.
    EXPECT_TRUE(wasHeard(QAccessible::ValueChanged, viewer()));
    ASSERT_NE(view.valueInterface(), nullptr);
    EXPECT_EQ(view.valueInterface()->currentValue(), QVariant(100.0));
    view.valueInterface()->setCurrentValue(250.0);
    EXPECT_EQ(viewer().zoomFactor(), 2.5);
    view.valueInterface()->setCurrentValue(view.valueInterface()->minimumValue());
    EXPECT_EQ(viewer().zoomFactor(), 1.0 / 4096);
    app->actions().zoom[2]->trigger();
    EXPECT_EQ(window()
                  .findChild<QToolBar*>(QStringLiteral("toolBar"))
                  ->findChild<QLabel*>()
                  ->accessibleName(),
              QStringLiteral("Zoom: 100 %"));
}

TEST_F(AccessTest, TheColourWellIsAButtonThatTellsItsColour) {
    start();
    ColorWell& well = panel().colorWell();
    QAccessibleInterface& view = viewOf(well);
    EXPECT_EQ(view.role(), QAccessible::Button);
    EXPECT_EQ(view.text(QAccessible::Name), QStringLiteral("Background colour"));
    EXPECT_EQ(view.text(QAccessible::Value), QStringLiteral("#000000"));
    heard.clear();
    well.setColor(QColor(0x20, 0x40, 0x60, 51));
    EXPECT_EQ(wasHeard(QAccessible::DescriptionChanged, well), listens());
    EXPECT_TRUE(
        view.text(QAccessible::Description).startsWith(QStringLiteral("#204060, opacity 20 %")));
    ASSERT_NE(view.actionInterface(), nullptr);
    int pressed = 0;
    QObject::connect(&well, &ColorWell::clicked, &well, [&] { ++pressed; });
    view.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(pressed, 1);
    app->toolkit().colorPanel().dialog()->close();
}

TEST_F(AccessTest, ChecksListsAndMessagesAreTold) {
    start();
    QAccessibleInterface& check = viewOf(panel().applyBackground());
    EXPECT_EQ(check.role(), QAccessible::CheckBox);
    EXPECT_FALSE(check.state().checked);
    heard.clear();
    panel().applyBackground().click();
    EXPECT_TRUE(check.state().checked);
    EXPECT_EQ(wasHeard(QAccessible::StateChanged, panel().applyBackground()), listens());

    QAccessibleInterface& looks = viewOf(strip().list());
    EXPECT_EQ(looks.role(), QAccessible::List);
    ASSERT_EQ(looks.childCount(), 12);
    EXPECT_EQ(looks.child(1)->text(QAccessible::Name), QStringLiteral("Subtle Floor"));
    EXPECT_FALSE(looks.text(QAccessible::Description).isEmpty());

    heard.clear();
    window().tell(QStringLiteral("Something happened."));
    const auto alert = std::find_if(heard.begin(), heard.end(), [](const Heard& each) {
        return each.kind == QAccessible::Alert;
    });
    ASSERT_TRUE(listens()) << "needs the toolkit's inner headers, package qt6-base-private-dev";
    ASSERT_NE(alert, heard.end());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(const_cast<QObject*>(alert->object))
                  ->text(QAccessible::Name),
              QStringLiteral("Something happened."));
}

TEST_F(AccessTest, AToolTellsThatItIsChosen) {
    start();
    QWidget* crop = app->actions().toolBar->widgetForAction(app->actions().tools[2]);
    QAccessibleInterface& view = viewOf(*crop);
    EXPECT_EQ(view.text(QAccessible::Name), QStringLiteral("Crop"));
    EXPECT_TRUE(view.state().checkable);
    EXPECT_FALSE(view.state().checked);
    app->actions().tools[2]->trigger();
    EXPECT_TRUE(view.state().checked);
}

}  // namespace
}  // namespace skarnel
