// The window for those who use no mouse, see little, or have it read to them.
#include <QAccessible>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QToolBar>

#ifdef SKARNEL_QT_INNER_HEADERS
#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>
#endif

#include "application_fixture.h"
#include "qt/accessible_parts.h"
#include "qt/color_well.h"
#include "qt/companions.h"
#include "qt/float_slider.h"
#include "qt/focus_ring.h"
#include "qt/main_actions.h"
#include "qt/number_field.h"
#include "qt/preset_strip.h"
#include "qt/text_bar.h"

namespace skarnel {
namespace {

struct Heard {
    QAccessible::Event kind;
    const QObject* object;
    QVariant value;
};
std::vector<Heard> heard;

void hear(QAccessibleEvent* event) {
    QVariant value;
    if (event->type() == QAccessible::ValueChanged)
        value = static_cast<QAccessibleValueChangeEvent*>(event)->value();
    heard.push_back({event->type(), event->object(), value});
}

bool wasHeard(QAccessible::Event kind, const QObject& object) {
    return std::any_of(heard.begin(), heard.end(), [&](const Heard& each) {
        return each.kind == kind && each.object == &object;
    });
}

class AccessTest : public ApplicationTest {
  protected:
    AccessTest() : before_(QAccessible::installUpdateHandler(hear)) { setReader(true); }
    ~AccessTest() override {
        setReader(false);
        QAccessible::installUpdateHandler(before_);
    }

    /// As if a screen reader came or went.
    static void setReader([[maybe_unused]] bool there) {
#ifdef SKARNEL_QT_INNER_HEADERS
        QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(there);
#endif
    }
    /// Whether what happens can be heard here.
    static bool listens() {
        return QAccessible::isActive();
    }

    static QAccessibleInterface& viewOf(QWidget& widget) {
        QAccessibleInterface* view = QAccessible::queryAccessibleInterface(&widget);
        EXPECT_NE(view, nullptr);
        return *view;
    }

    PresetStrip& strip() {
        return app->companions().presets();
    }

    /// What the keyboard can reach, in the window as it stands.
    QList<QWidget*> stops() {
        QList<QWidget*> found;
        for (auto* widget : window().findChildren<QWidget*>())
            if (widget->isVisible() && widget->isEnabled() && !widget->isWindow() &&
                (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr)
                found << widget;
        return found;
    }

  private:
    QAccessible::UpdateHandler before_;
};

std::string named(const QWidget& widget) {
    return widget.metaObject()->className() + std::string(" \"") +
           widget.accessibleName().toStdString() + "\" " + widget.objectName().toStdString();
}

// A screen reader ---------------------------------------------------------------------------------

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
    if (!listens()) GTEST_SKIP() << "the toolkit's inner headers are not installed";
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
    EXPECT_EQ(view.text(QAccessible::Value), QStringLiteral("300 by 400 pixels, zoom 100 %"));
    ASSERT_NE(view.imageInterface(), nullptr);
    EXPECT_EQ(view.imageInterface()->imageSize(), QSize(300, 400));
    EXPECT_EQ(wasHeard(QAccessible::ValueChanged, viewer()), listens());
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
    if (!listens()) GTEST_SKIP() << "the toolkit's inner headers are not installed";
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

// The keyboard ------------------------------------------------------------------------------------

TEST_F(AccessTest, TheTabKeyVisitsEveryStopAndComesBack) {
    start();
    QApplication::setActiveWindow(&window());
    viewer().setFocus();
    QSet<QWidget*> visited;
    for (int i = 0; i < 200; ++i) {
        QWidget* now = QApplication::focusWidget();
        ASSERT_NE(now, nullptr);
        if (visited.contains(now) && now == &viewer()) break;
        visited.insert(now);
        QTest::keyClick(now, Qt::Key_Tab);
    }
    EXPECT_EQ(QApplication::focusWidget(), &viewer());
    for (QWidget* stop : stops()) {
        // An editable list's field has the focus for it.
        const bool inside = std::any_of(visited.begin(), visited.end(), [&](QWidget* each) {
            return each == stop || stop->isAncestorOf(each);
        });
        EXPECT_TRUE(inside) << named(*stop);
    }
}

TEST_F(AccessTest, EveryCommandIsInAMenu) {
    start();
    QList<const QAction*> inMenus;
    for (const auto* menu : window().menuBar()->findChildren<QMenu*>())
        for (const QAction* action : menu->actions()) inMenus << action;
    const MainActions& all = app->actions();
    QList<const QAction*> commands{
        all.open,      all.save,       all.saveAndEdit,  all.closeNoSave, all.quit,
        all.undo,      all.redo,       all.copy,         all.copyAsPng,   all.copySelection,
        all.paste,     all.selectAll,  all.reset,        all.playCue,     all.checkerboard,
        all.showText,  all.fullScreen, all.discardEdits, all.imageText,   all.backgroundColor,
        all.textColor, all.help,       all.about};
    for (const QAction* each : all.zoom) commands << each;
    for (const QAction* each : all.tools) commands << each;
    for (const QAction* each : all.appearance) commands << each;
    for (const QAction* command : commands)
        EXPECT_TRUE(inMenus.contains(command)) << command->text().toStdString();
    // What the tool bar offers is among them.
    for (const QAction* action : all.toolBar->actions())
        if (!action->text().isEmpty()) {
            EXPECT_TRUE(inMenus.contains(action)) << action->text().toStdString();
        }
}

TEST_F(AccessTest, TheFocusIsSeenWhereverItIs) {
    start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !strip().isWorking(); }, kPatience));
    QApplication::setActiveWindow(&window());
    // From the first Tab key on; until then nobody wants to know.
    QTest::keyClick(&viewer(), Qt::Key_Tab);
    for (QWidget* stop : stops()) {
        window().setFocus(Qt::OtherFocusReason);
        stop->clearFocus();
        const QImage before = stop->grab().toImage();
        stop->setFocus(Qt::TabFocusReason);
        // A caret may be off at this moment; the other signs do not blink.
        const bool edits = qobject_cast<QLineEdit*>(stop) != nullptr ||
                           qobject_cast<QTextEdit*>(stop) != nullptr ||
                           qobject_cast<QComboBox*>(stop) != nullptr;
        EXPECT_TRUE(edits || stop->grab().toImage() != before) << named(*stop);
    }
}

TEST_F(AccessTest, TheRingAroundThePictureComesWithAKeyAndGoesWithIt) {
    start();
    auto* ring = viewer().findChild<FocusRing*>();
    ASSERT_NE(ring, nullptr);
    QApplication::setActiveWindow(&window());
    panel().colorWell().setFocus();
    viewer().setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(ring->isVisible());
    panel().colorWell().setFocus();
    viewer().setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(ring->isVisible());
    EXPECT_EQ(ring->size(), viewer().size());
    window().resize(window().size() + QSize(40, 30));
    settle();
    EXPECT_EQ(ring->size(), viewer().size());
    panel().colorWell().setFocus();
    EXPECT_FALSE(ring->isVisible());
}

}  // namespace
}  // namespace skarnel
