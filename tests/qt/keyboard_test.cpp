// The window without a mouse: every stop, every command, the tools, and where the focus is.
#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QSet>
#include <QTextEdit>
#include <QToolBar>

#include "access_fixture.h"
#include "qt/color_well.h"
#include "qt/focus_ring.h"
#include "qt/main_actions.h"
#include "qt/text_bar.h"

namespace skarnel {
namespace {

class KeyboardTest : public AccessTest {};

TEST_F(KeyboardTest, TheTabKeyVisitsEveryStopAndComesBack) {
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

/// All menus that hang on the bar, those within menus too.
void collect(const QMenu& menu, QSet<const QAction*>& into) {
    for (const QAction* action : menu.actions()) {
        into.insert(action);
        if (action->menu() != nullptr) collect(*action->menu(), into);
    }
}

/// A command that somebody can give: with a text and something that listens.
bool isCommand(const QAction& action) {
    // A tool bar makes one to show itself, which nothing offers here.
    const bool isBarsOwn = qobject_cast<const QToolBar*>(action.parent()) != nullptr;
    return !isBarsOwn && !action.isSeparator() && !action.text().isEmpty() &&
           action.menu() == nullptr;
}

TEST_F(KeyboardTest, EveryCommandIsInAMenu) {
    start();
    QSet<const QAction*> inMenus;
    for (const QAction* top : window().menuBar()->actions())
        if (top->menu() != nullptr) collect(*top->menu(), inMenus);
    // Every command that the window or the application has made, wherever it is shown.
    QSet<const QAction*> commands;
    for (const QObject* maker :
         {static_cast<QObject*>(&window()), static_cast<QObject*>(app.get())})
        for (const auto* action : maker->findChildren<QAction*>())
            if (isCommand(*action)) commands.insert(action);
    for (const QAction* each : commands)
        EXPECT_TRUE(inMenus.contains(each)) << each->text().toStdString();
    // The walk has met the tool bar's, the recipes', the looks' and the sound's.
    EXPECT_GT(commands.size(), 40);
    for (const char* text : {"Open Recipe…", "Save Recipe…", "Take Settings From…", "Show Looks"}) {
        const bool met = std::any_of(commands.begin(), commands.end(), [&](const QAction* each) {
            return QString(each->text()).remove(QLatin1Char('&')) == QString::fromUtf8(text);
        });
        EXPECT_TRUE(met) << text;
    }
}

/// What a tool tip gives as a key: in brackets behind the name.
QString keyInTip(const QString& tip) {
    static const QRegularExpression key(
        QStringLiteral("\\((((Ctrl|Shift|Alt|Meta)\\+)+.|F\\d+|[^()]*\\+[A-Za-z]+)\\)$"));
    return key.match(tip).captured(1);
}

TEST_F(KeyboardTest, EveryKeyThatAToolTipNamesIsThatOfACommand) {
    EXPECT_EQ(keyInTip(QStringLiteral("Zoom out (Ctrl+-)")), QStringLiteral("Ctrl+-"));
    EXPECT_EQ(keyInTip(QStringLiteral("Full screen (F11)")), QStringLiteral("F11"));
    EXPECT_EQ(keyInTip(QStringLiteral("Image (Ctrl+Return)")), QStringLiteral("Ctrl+Return"));
    EXPECT_EQ(keyInTip(QStringLiteral("Width (0 to 100)")), QString());
    start();
    QSet<QString> keys;
    for (const auto* action : window().findChildren<QAction*>())
        for (const QKeySequence& key : action->shortcuts())
            keys << key.toString(QKeySequence::NativeText);
    QSet<QString> named;
    for (const auto* widget : window().findChildren<QWidget*>())
        named << keyInTip(widget->toolTip());
    for (const auto* action : window().findChildren<QAction*>())
        named << keyInTip(action->toolTip());
    named.remove({});
    for (const QString& each : named) EXPECT_TRUE(keys.contains(each)) << each.toStdString();
    EXPECT_TRUE(named.contains(QStringLiteral("Ctrl+O")));
    EXPECT_TRUE(named.contains(QStringLiteral("Ctrl+B")));
}

TEST_F(KeyboardTest, TheUsualKeysStyleTheTextThatHasTheFocusAndNoOther) {
    start();
    TextEditor& editor = window().textEditor();
    QApplication::setActiveWindow(&window());
    const auto style = [&] { return editor.text().styleAt(0); };
    editor.selectAll();
    const TextStyle plain = style();
    ASSERT_LT(plain.weight, kTextWeightBold);
    viewer().setFocus();
    for (const Qt::Key key : {Qt::Key_B, Qt::Key_I, Qt::Key_U})
        QTest::keyClick(&viewer(), key, Qt::ControlModifier);
    EXPECT_EQ(style(), plain);

    editor.setFocus();
    editor.selectAll();
    QTest::keyClick(&editor, Qt::Key_B, Qt::ControlModifier);
    EXPECT_GE(style().weight, kTextWeightBold);
    QTest::keyClick(&editor, Qt::Key_I, Qt::ControlModifier);
    EXPECT_NE(style().slant, TextSlant::Upright);
    QTest::keyClick(&editor, Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(style().underline, TextUnderline::Single);
    for (const QAction* each : window().textBar().styleActions()) EXPECT_TRUE(each->isChecked());
    for (const Qt::Key key : {Qt::Key_B, Qt::Key_I, Qt::Key_U})
        QTest::keyClick(&editor, key, Qt::ControlModifier);
    EXPECT_EQ(style(), plain);
    EXPECT_EQ(editor.text().length(), editor.toPlainText().size());
}

TEST_F(KeyboardTest, WhatKeysDoOnThePictureIsTold) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("wide.png"), 300, 200, Qt::red)));
    app->actions().zoom[2]->trigger();
    QAccessibleInterface& view = viewOf(viewer());
    const QString plain = view.text(QAccessible::Description);
    heard.clear();
    app->actions().tools[1]->trigger();
    EXPECT_EQ(wasHeard(QAccessible::DescriptionChanged, viewer()), listens());
    EXPECT_TRUE(view.text(QAccessible::Description)
                    .startsWith(plain + QStringLiteral(". Return begins a selection")));
    viewer().setFocus();
    heard.clear();
    QTest::keyClick(&viewer(), Qt::Key_Return);
    EXPECT_EQ(wasHeard(QAccessible::ValueChanged, viewer()), listens());
    EXPECT_TRUE(view.text(QAccessible::Value).contains(QStringLiteral("; selected ")));
    app->actions().tools[2]->trigger();
    QTest::keyClick(&viewer(), Qt::Key_Return);
    QTest::keyClick(&viewer(), Qt::Key_Return);
    EXPECT_TRUE(view.text(QAccessible::Value).contains(QStringLiteral("; cropped to ")));
    EXPECT_FALSE(view.text(QAccessible::Value).contains(QStringLiteral("; selected ")));
    app->actions().tools[3]->trigger();
    QTest::keyClick(&viewer(), Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_TRUE(view.text(QAccessible::Value).contains(QStringLiteral("; turned by 15°")));
    app->actions().tools[4]->trigger();
    heard.clear();
    QTest::keyClick(&viewer(), Qt::Key_Return);
    EXPECT_EQ(wasHeard(QAccessible::ValueChanged, viewer()), listens());
    EXPECT_TRUE(view.text(QAccessible::Value).contains(QStringLiteral("; marks: 1, the last")));
    for (QAction* tool : app->actions().tools) {
        tool->trigger();
        EXPECT_FALSE(view.text(QAccessible::Description).isEmpty());
    }
}

TEST_F(KeyboardTest, ATextMarkIsTypedAndMovedWithoutAMouse) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("wide.png"), 300, 200, Qt::red)));
    app->actions().tools[4]->trigger();
    viewer().setAnnotationShape(AnnotationShape::Text);
    QApplication::setActiveWindow(&window());
    viewer().setFocus();
    QTest::keyClick(&viewer(), Qt::Key_Return);
    auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->accessibleName(), QStringLiteral("Text on the picture"));
    QTest::keyClicks(line, QStringLiteral("Here"));
    QTest::keyClick(line, Qt::Key_Return);
    ASSERT_EQ(viewer().sheet().annotations.size(), 1U);
    EXPECT_EQ(QApplication::focusWidget(), &viewer());
    const CGPoint before = viewer().sheet().annotations[0].from;
    QTest::keyClick(&viewer(), Qt::Key_Right);
    EXPECT_GT(viewer().sheet().annotations[0].from.x, before.x);
    EXPECT_EQ(viewer().sheet().annotations[0].from.y, before.y);
}

TEST_F(KeyboardTest, TheFocusIsSeenWhereverItIs) {
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

TEST_F(KeyboardTest, TheRingAroundThePictureComesWithAKeyAndGoesWithIt) {
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
