// One colour panel for two purposes: the background and the text.
#include <QAction>
#include <QColorDialog>

#include "application_fixture.h"
#include "qt/color_well.h"

namespace skarnel {
namespace {

class ColorsTest : public ApplicationTest {};

TEST_F(ColorsTest, TheColourPanelColoursTheBackgroundWhateverElseHasTheFocus) {
    start();
    panel().colorWell().click();
    QColorDialog* dialog = app->toolkit().colorPanel().dialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(dialog->isModal());
    EXPECT_TRUE(dialog->testOption(QColorDialog::ShowAlphaChannel));
    dialog->setCurrentColor(QColor(255, 0, 0, 128));
    EXPECT_EQ(viewer().background(), QColor(255, 0, 0, 128));
    EXPECT_EQ(panel().colorText().text(), QStringLiteral("#FF0000"));
    EXPECT_EQ(panel().colorWell().color(), QColor(255, 0, 0, 128));
    EXPECT_EQ(window().textEditor().palette().color(QPalette::Base), QColor(255, 0, 0));
}

TEST_F(ColorsTest, TheColourPanelColoursTextWhileTheTextHasTheFocus) {
    start();
    window().textEditor().setFocus();
    window().textEditor().selectAll();
    EXPECT_EQ(app->resultWindow().firstResponder(), &app->textView());
    app->actions().textColor->trigger();
    app->toolkit().colorPanel().dialog()->setCurrentColor(QColor(0, 255, 0));
    EXPECT_EQ(viewer().background(), QColor(Qt::black));
    EXPECT_EQ(panel().colorText().text(), QStringLiteral("#000000"));
    EXPECT_EQ(window().textEditor().text().styleAt(3).color, (TextColor{0, 255, 0, 255}));
}

TEST_F(ColorsTest, AClickOnTheViewerOrTheWellTakesTheFocusFromTheText) {
    start();
    window().textEditor().setFocus();
    QTest::mouseClick(&viewer(), Qt::LeftButton);
    EXPECT_EQ(app->resultWindow().firstResponder(), &app->imageView());
    window().textEditor().setFocus();
    QTest::mouseClick(&panel().colorWell(), Qt::LeftButton);
    EXPECT_NE(app->resultWindow().firstResponder(), &app->textView());
    app->toolkit().colorPanel().dialog()->setCurrentColor(Qt::blue);
    EXPECT_EQ(viewer().background(), QColor(Qt::blue));
}

TEST_F(ColorsTest, ATypedColourTextPicksTheColourAndNonsenseGoesBack) {
    start();
    QLineEdit& field = panel().colorText();
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("ff3300"));
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(viewer().background(), QColor(0xFF, 0x33, 0x00));
    EXPECT_EQ(field.text(), QStringLiteral("#FF3300"));
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("reddish"));
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(field.text(), QStringLiteral("#FF3300"));
}

TEST_F(ColorsTest, LeavingTheColourTextForTheTextStillColoursTheBackground) {
    start();
    QLineEdit& field = panel().colorText();
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("#102030"));
    window().textEditor().setFocus();
    EXPECT_EQ(viewer().background(), QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(window().textEditor().text().styleAt(0).color, (TextColor{255, 255, 255, 255}));
}

TEST_F(ColorsTest, TheColourPanelHidesWithTheWindowAndComesBackWithIt) {
    start();
    panel().colorWell().click();
    QColorDialog* dialog = app->toolkit().colorPanel().dialog();
    ASSERT_TRUE(dialog->isVisible());
    app->actions().closeNoSave->trigger();
    EXPECT_FALSE(window().isVisible());
    EXPECT_FALSE(dialog->isVisible());
    app->raise();
    EXPECT_TRUE(dialog->isVisible());
    // One that the user had closed stays closed.
    dialog->close();
    app->actions().closeNoSave->trigger();
    app->raise();
    EXPECT_TRUE(window().isVisible());
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(ColorsTest, TheColourPanelStandsBesideThePictureAtFirst) {
    start();
    panel().colorWell().click();
    const QRect shown = app->toolkit().colorPanel().dialog()->frameGeometry();
    const QPoint middle = viewer().mapToGlobal(viewer().rect().center());
    EXPECT_FALSE(shown.contains(middle));
    EXPECT_GE(shown.left(), window().frameGeometry().left());
}

}  // namespace
}  // namespace skarnel
