#include "qt/application.h"

#include <QAccessible>
#include <QAction>
#include <QBuffer>
#include <QCheckBox>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSplitter>
#include <QStyleOptionSlider>
#include <QUrl>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "application_fixture.h"
#include "qt/color_well.h"
#include "qt/float_slider.h"
#include "qt/number_field.h"

namespace skarnel {
namespace {

/// Slider, field and stored value of one setting.
void expectAgree(Application& app, std::string_view key, float value, const QString& text) {
    SettingsPanel& panel = app.window().settings();
    EXPECT_EQ(panel.slider(key).floatValue(), value) << key;
    EXPECT_EQ(panel.field(key).text(), text) << key;
    EXPECT_EQ(app.defaults().floatForKey(key), value) << key;
}

/// Where the handle's middle is when the slider stands at a position.
QPoint handleAt(const FloatSlider& slider) {
    QStyleOptionSlider option;
    option.initFrom(&slider);
    option.minimum = slider.minimum();
    option.maximum = slider.maximum();
    option.sliderPosition = slider.sliderPosition();
    option.sliderValue = slider.value();
    option.orientation = Qt::Horizontal;
    return slider.style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
        .center();
}

void turnWheel(QWidget& widget, int units, Qt::KeyboardModifiers modifiers = {}) {
    const QPointF middle = widget.rect().center();
    QWheelEvent turn(middle, widget.mapToGlobal(middle), {}, {0, units}, Qt::NoButton, modifiers,
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &turn);
}

void dropOn(QWidget& widget, const QMimeData& data) {
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&widget, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&widget, &drop);
}

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

TEST_F(ApplicationTest, TheFirstWorkingCopyHasTheSizeOfTheViewerAsShown) {
    start();
    // The logo is square and larger than the viewer: its copy is as high as the viewer.
    ASSERT_TRUE(app->controller().scaledImage);
    EXPECT_NEAR(app->controller().scaledImage->size().height, viewer().viewportSize().height, 1);
}

TEST_F(ApplicationTest, ADragWritesTheKeyAtOnceAndRendersOnceForAllItsMoves) {
    start();
    app->controller().sliderChanged(nullptr);
    FloatSlider& slider = panel().slider("perspectiveHeight");
    const QImage before = viewer().shownImage();
    int shown = 0;
    QObject::connect(&app->model(), &SettingsModel::numberChanged, &viewer(), [&] { ++shown; });
    const QPoint from = handleAt(slider);
    QTest::mousePress(&slider, Qt::LeftButton, {}, from);
    QTest::mouseMove(&slider, from + QPoint(-10, 0));
    QTest::mouseMove(&slider, from + QPoint(-30, 0));
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, from + QPoint(-30, 0));
    const float dragged = slider.floatValue();
    EXPECT_LT(dragged, 100.0F);
    EXPECT_EQ(app->defaults().floatForKey("perspectiveHeight"), dragged);
    settle();
    EXPECT_NE(viewer().shownImage(), before);
    expectAgree(*app, "perspectiveHeight", dragged, QString::number(static_cast<double>(dragged)));
    app->actions().undo->trigger();
    settle();
    expectAgree(*app, "perspectiveHeight", 100, QStringLiteral("100"));
    settle();
    EXPECT_EQ(viewer().shownImage(), before);
    EXPECT_FALSE(app->actions().undo->isEnabled());
    app->actions().redo->trigger();
    expectAgree(*app, "perspectiveHeight", dragged, QString::number(static_cast<double>(dragged)));
}

TEST_F(ApplicationTest, KeysOnASliderStepAndAreOneEntryWhileHeld) {
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

TEST_F(ApplicationTest, ATypedNumberIsTakenExactlyAlsoBeyondTheTravelAndOffTheSteps) {
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

TEST_F(ApplicationTest, NonsenseGoesBackToTheStoredNumber) {
    start();
    NumberField& field = panel().field("offset");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("much"));
    QTest::keyClick(&field, Qt::Key_Return);
    expectAgree(*app, "offset", 0, QStringLiteral("0"));
    EXPECT_FALSE(app->actions().undo->isEnabled());
}

TEST_F(ApplicationTest, TheTurnReadsTheSlidersFloatNotItsPosition) {
    start();
    app->model().changeNumber(QStringLiteral("Turn"), "imagePerspective", 33.37F);
    expectAgree(*app, "imagePerspective", 33.37F, QStringLiteral("33.37"));
    EXPECT_EQ(app->controller().imagePerspectiveSlider->floatValue(), 33.37F);
}

TEST_F(ApplicationTest, ResetShowsSixDecimalsAndIsOneEntryOfUndo) {
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

TEST_F(ApplicationTest, DoubleClickOnTheHandleReturnsTheDefault) {
    start();
    app->model().changeNumber(QStringLiteral("Opacity"), "alpha", 40);
    FloatSlider& slider = panel().slider("alpha");
    QTest::mouseDClick(&slider, Qt::LeftButton, {}, handleAt(slider));
    expectAgree(*app, "alpha", 200, QStringLiteral("200"));
}

TEST_F(ApplicationTest, TheWheelTurnsOnlyAFocusedSlider) {
    start();
    FloatSlider& slider = panel().slider("start");
    window().viewer().setFocus();
    turnWheel(slider, 120);
    expectAgree(*app, "start", 0, QStringLiteral("0"));
    slider.setFocus();
    turnWheel(slider, 120);
    turnWheel(slider, 120);
    EXPECT_GT(slider.floatValue(), 0.0F);
    app->actions().undo->trigger();
    expectAgree(*app, "start", 0, QStringLiteral("0"));
}

TEST_F(ApplicationTest, SettingsSurviveARestartAndSeedNothingThatIsThere) {
    start();
    app->model().changeNumber(QStringLiteral("Gap"), "offset", 12.5F);
    app->persist();
    app.reset();
    start();
    expectAgree(*app, "offset", 12.5F, QStringLiteral("12.5"));
    EXPECT_FALSE(app->defaults().objectForKey("applyBackgroundColor"));
}

TEST_F(ApplicationTest, TheColourPanelColoursTheBackgroundWhateverElseHasTheFocus) {
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

TEST_F(ApplicationTest, TheColourPanelColoursTextWhileTheTextHasTheFocus) {
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

TEST_F(ApplicationTest, AClickOnTheViewerOrTheWellTakesTheFocusFromTheText) {
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

TEST_F(ApplicationTest, ATypedColourTextPicksTheColourAndNonsenseGoesBack) {
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

TEST_F(ApplicationTest, LeavingTheColourTextForTheTextStillColoursTheBackground) {
    start();
    QLineEdit& field = panel().colorText();
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("#102030"));
    window().textEditor().setFocus();
    EXPECT_EQ(viewer().background(), QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(window().textEditor().text().styleAt(0).color, (TextColor{255, 255, 255, 255}));
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

TEST_F(ApplicationTest, OpeningAPictureNamesTheSaveAndForgetsTheToolsWork) {
    start();
    app->actions().tools[1]->trigger();
    viewer().selectAll();
    EXPECT_TRUE(app->actions().copySelection->isEnabled());
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Beach.2010.png"), 60, 40, Qt::red)));
    EXPECT_EQ(app->controller().saveFilename, "Beach.2010 Reflection");
    EXPECT_FALSE(viewer().sheet().hasEdits());
    EXPECT_FALSE(app->actions().copySelection->isEnabled());
    EXPECT_EQ(viewer().shownImage().size(), QSize(60, 80));
    EXPECT_EQ(app->state().recentFiles(),
              QStringList{folder.filePath(QStringLiteral("Beach.2010.png"))});
}

TEST_F(ApplicationTest, OfSeveralPicturesTheFirstIsOpenedAndTheOthersAreRecent) {
    const QString first = picture(QStringLiteral("First.png"), 30, 30, Qt::green);
    const QString second = picture(QStringLiteral("Second.png"), 30, 30, Qt::blue);
    const QString third = picture(QStringLiteral("Third.png"), 30, 30, Qt::red);
    start({first, second});
    EXPECT_EQ(app->controller().saveFilename, "First Reflection");
    EXPECT_EQ(app->state().recentFiles(), (QStringList{first, second}));
    app->openPictures({third, second});
    EXPECT_EQ(app->controller().saveFilename, "Third Reflection");
    EXPECT_EQ(app->state().recentFiles(), (QStringList{third, second, first}));
    app->openPictures({});
    EXPECT_EQ(app->controller().saveFilename, "Third Reflection");
}

TEST_F(ApplicationTest, UnderASheetAPictureFromElsewhereWaitsAmongTheRecentOnes) {
    start();
    const QString path = picture(QStringLiteral("Later.png"), 30, 30, Qt::green);
    app->actions().save->trigger();
    QApplication::processEvents();
    auto* sheet = window().findChild<QFileDialog*>(QStringLiteral("savePanel"));
    ASSERT_NE(sheet, nullptr);
    app->openPictures({path});
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_EQ(app->state().recentFiles(), QStringList{path});
    sheet->reject();
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

TEST_F(ApplicationTest, TheColourPanelStandsBesideThePictureAtFirst) {
    start();
    panel().colorWell().click();
    const QRect shown = app->toolkit().colorPanel().dialog()->frameGeometry();
    const QPoint middle = viewer().mapToGlobal(viewer().rect().center());
    EXPECT_FALSE(shown.contains(middle));
    EXPECT_GE(shown.left(), window().frameGeometry().left());
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

TEST_F(ApplicationTest, AFileThatIsNoPictureIsAnsweredAndChangesNothing) {
    start();
    const QString path = folder.filePath(QStringLiteral("notes.png"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("just text");
    file.close();
    const QImage before = viewer().shownImage();
    EXPECT_FALSE(app->openPicture(path));
    EXPECT_FALSE(app->openPicture(folder.filePath(QStringLiteral("missing.png"))));
    auto* toast = window().findChild<QLabel*>(QStringLiteral("toast"));
    ASSERT_NE(toast, nullptr);
    EXPECT_TRUE(toast->isVisible());
    EXPECT_TRUE(toast->text().contains(QStringLiteral("missing.png")));
    EXPECT_EQ(viewer().shownImage(), before);
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_TRUE(app->state().recentFiles().isEmpty());
}

TEST_F(ApplicationTest, ADroppedPictureIsOpenedAndAForeignDropIsAnswered) {
    start();
    const QString path = picture(QStringLiteral("Dropped.png"), 30, 30, Qt::green);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    dropOn(window(), data);
    EXPECT_EQ(app->controller().saveFilename, "Dropped Reflection");
    QMimeData foreign;
    foreign.setUrls({QUrl(QStringLiteral("https://skarnel.example/a.png"))});
    dropOn(window(), foreign);
    EXPECT_TRUE(window().findChild<QLabel*>(QStringLiteral("toast"))->isVisible());
    EXPECT_EQ(app->controller().saveFilename, "Dropped Reflection");
}

TEST_F(ApplicationTest, CopyPutsExactlyOneTypeOnTheClipboardAtFullSize) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Big.png"), 3000, 2000, Qt::red)));
    app->actions().copy->trigger();
    const QMimeData* item = QApplication::clipboard()->mimeData();
    EXPECT_EQ(item->formats(), QStringList{QStringLiteral("image/tiff")});
    const QByteArray bytes = item->data(QStringLiteral("image/tiff"));
    const auto decoded = decodeImage({reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                      static_cast<std::size_t>(bytes.size())});
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->image.width(), 3000);
    EXPECT_EQ(decoded->image.height(), 4000);
}

TEST_F(ApplicationTest, CopyAsPngPutsOnlyPngThere) {
    start();
    ASSERT_TRUE(app->openPicture(picture(QStringLiteral("Small.png"), 30, 20, Qt::red)));
    app->actions().copyAsPng->trigger();
    const QMimeData* item = QApplication::clipboard()->mimeData();
    EXPECT_EQ(item->formats(), QStringList{QStringLiteral("image/png")});
    const QImage image = QImage::fromData(item->data(QStringLiteral("image/png")));
    EXPECT_EQ(image.size(), QSize(30, 40));
    EXPECT_EQ(image.pixelColor(3, 3), QColor(Qt::red));
}

TEST_F(ApplicationTest, APastedPictureTakesTheRoadOfAPhoto) {
    start();
    QImage red(12, 10, QImage::Format_RGBA8888);
    red.fill(QColor(255, 0, 0, 100));
    auto* data = new QMimeData;
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    red.save(&buffer, "PNG");
    data->setData(QStringLiteral("image/png"), png);
    QApplication::clipboard()->setMimeData(data);
    app->actions().paste->trigger();
    EXPECT_EQ(app->controller().saveFilename, "Pasted Picture Reflection");
    EXPECT_EQ(viewer().shownImage().size(), QSize(12, 20));
    EXPECT_TRUE(app->state().recentFiles().isEmpty());
}

TEST_F(ApplicationTest, AClipboardWithoutAPictureIsAnswered) {
    start();
    QApplication::clipboard()->setText(QStringLiteral("words"));
    app->actions().paste->trigger();
    EXPECT_EQ(app->controller().saveFilename, "TavelinLogo");
    EXPECT_TRUE(window().findChild<QLabel*>(QStringLiteral("toast"))->isVisible());
}

TEST_F(ApplicationTest, CloseWithoutSavingHidesAndRaisingShowsTheWindowAgain) {
    start();
    app->actions().closeNoSave->trigger();
    EXPECT_FALSE(window().isVisible());
    app->raise();
    EXPECT_TRUE(window().isVisible());
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
