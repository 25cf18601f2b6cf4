#include "qt/viewer.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QGestureEvent>
#include <QLineEdit>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPinchGesture>
#include <QPointingDevice>
#include <QScrollBar>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

#include "imaging/pixel_memory.h"
#include "imaging/row_source.h"

namespace skarnel {
namespace {

/// A picture of one colour, premultiplied.
CGImage plain(int width, int height, std::array<std::uint8_t, 4> pixel) {
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < width * height; ++i) bytes.insert(bytes.end(), pixel.begin(), pixel.end());
    return *CGImage::copyOf({bytes.data(), width, height, std::ptrdiff_t{4} * width, 4});
}

class ViewerTest : public ::testing::Test {
  protected:
    ViewerTest() {
        viewer.resize(400, 300);
        viewer.setBackground(QColor(0, 0, 40));
        viewer.show();
    }
    QImage grab() { return viewer.grab().toImage(); }
    void wheel(int units, QPointF at, Qt::KeyboardModifiers modifiers) {
        QWheelEvent turn(at, viewer.mapToGlobal(at), {}, {0, units}, Qt::NoButton, modifiers,
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(&viewer, &turn);
    }
    QList<QScrollBar*> bars() { return viewer.findChildren<QScrollBar*>(); }
    Viewer viewer;
};

TEST_F(ViewerTest, VisibleSizeIsTheViewportWhateverZoomAndScroll) {
    viewer.setImage(plain(100, 100, {255, 0, 0, 255}));
    const CGSize size{400, 300};
    EXPECT_EQ(viewer.viewportSize(), size);
    viewer.setZoomFactor(20);
    EXPECT_EQ(viewer.viewportSize(), size);
}

TEST_F(ViewerTest, ShowsThePictureOnItsGroundAtActualSize) {
    viewer.setImage(plain(100, 50, {255, 0, 0, 255}));
    viewer.zoomToActualSize();
    const QImage shown = grab();
    EXPECT_EQ(shown.pixelColor(149, 150), QColor(0, 0, 40));
    EXPECT_EQ(shown.pixelColor(150, 125), QColor(255, 0, 0));
    EXPECT_EQ(shown.pixelColor(249, 174), QColor(255, 0, 0));
    EXPECT_EQ(shown.pixelColor(250, 174), QColor(0, 0, 40));
}

TEST_F(ViewerTest, TransparencyShowsTheGroundOrTheCheckerboardInsideThePictureOnly) {
    viewer.setImage(plain(100, 100, {0, 0, 0, 0}));
    viewer.zoomToActualSize();
    EXPECT_EQ(grab().pixelColor(155, 105), QColor(0, 0, 40));
    viewer.setCheckerboard(true);
    const QImage shown = grab();
    // Squares of 8 pixels from the picture's corner at (150, 100).
    EXPECT_NE(shown.pixelColor(151, 101), shown.pixelColor(159, 101));
    EXPECT_EQ(shown.pixelColor(151, 101), shown.pixelColor(159, 109));
    EXPECT_EQ(shown.pixelColor(149, 101), QColor(0, 0, 40));
}

TEST_F(ViewerTest, FitFollowsTheSizeAndANewPictureUntilAFactorIsSet) {
    viewer.setImage(plain(200, 100, {255, 0, 0, 255}));
    viewer.zoomToFit();
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 2.0);
    viewer.resize(200, 300);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 1.0);
    viewer.setImage(plain(400, 100, {255, 0, 0, 255}));
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 0.5);
    viewer.setZoomFactor(3);
    viewer.resize(400, 300);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 3.0);
}

TEST_F(ViewerTest, WithoutAutoresizingTheFactorStays) {
    viewer.setImage(plain(200, 100, {255, 0, 0, 255}));
    viewer.setAutoresizes(false);
    viewer.resize(200, 300);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 2.0);
}

TEST_F(ViewerTest, ScrollBarsAreThereOnlyWhileThereIsSomethingToScroll) {
    viewer.setImage(plain(300, 200, {255, 0, 0, 255}));
    viewer.zoomToFit();
    for (QScrollBar* bar : bars()) EXPECT_FALSE(bar->isVisible());
    viewer.setZoomFactor(4);
    for (QScrollBar* bar : bars()) EXPECT_TRUE(bar->isVisible());
    viewer.zoomToFit();
    viewer.setAutohidesScrollers(false);
    for (QScrollBar* bar : bars()) EXPECT_TRUE(bar->isVisible());
}

TEST_F(ViewerTest, AMovedScrollBarMovesThePictureAndTheOtherWayRound) {
    viewer.setImage(plain(400, 300, {255, 0, 0, 255}));
    viewer.setZoomFactor(2);  // 800 x 600 in 400 x 300: 400 and 300 to scroll, from the middle
    QScrollBar* across = bars().at(0);
    QScrollBar* down = bars().at(1);
    EXPECT_EQ(across->maximum(), 400);
    EXPECT_EQ(across->value(), 200);
    EXPECT_EQ(down->maximum(), 300);
    EXPECT_EQ(down->value(), 150);
    across->setValue(30);
    down->setValue(290);
    EXPECT_EQ(viewer.sheet().view.scroll(), (CGPoint{30, 290}));
    QTest::keyClick(&viewer, Qt::Key_Up);
    EXPECT_EQ(down->value(), 250);
}

TEST_F(ViewerTest, CtrlWheelZoomsAtTheCursorAndTheWheelAloneScrolls) {
    viewer.setImage(plain(400, 300, {255, 0, 0, 255}));
    viewer.zoomToActualSize();
    const CGPoint under = viewer.sheet().view.toImage({100, 80});
    wheel(480, {100, 80}, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 2.0);
    EXPECT_NEAR(viewer.sheet().view.toView(under).x, 100, 1);
    EXPECT_NEAR(viewer.sheet().view.toView(under).y, 80, 1);
    const double before = viewer.sheet().view.scroll().y;
    wheel(-120, {100, 80}, {});
    EXPECT_EQ(viewer.sheet().view.scroll().y, before + 60);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 2.0);
}

TEST_F(ViewerTest, APinchOnATouchpadZoomsAtTheFingers) {
    viewer.setImage(plain(400, 300, {255, 0, 0, 255}));
    viewer.zoomToActualSize();
    const CGPoint under = viewer.sheet().view.toImage({100, 80});
    const auto send = [&](Qt::NativeGestureType type, double value) {
        const QPointF at(100, 80);
        QNativeGestureEvent event(type, QPointingDevice::primaryPointingDevice(), 2, at, at,
                                  viewer.mapToGlobal(at), value, {});
        QApplication::sendEvent(&viewer, &event);
    };
    send(Qt::BeginNativeGesture, 0);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 1.0);
    send(Qt::ZoomNativeGesture, 0.5);
    send(Qt::ZoomNativeGesture, 0.5);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 2.25);
    EXPECT_NEAR(viewer.sheet().view.toView(under).x, 100, 1);
    EXPECT_NEAR(viewer.sheet().view.toView(under).y, 80, 1);
    send(Qt::RotateNativeGesture, 30);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 2.25);
    EXPECT_DOUBLE_EQ(viewer.sheet().view.rotation(), 0);
    send(Qt::ZoomNativeGesture, -0.5);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 1.125);
}

TEST_F(ViewerTest, APinchOnAScreenZoomsAtTheFingers) {
    viewer.setImage(plain(400, 300, {255, 0, 0, 255}));
    viewer.zoomToActualSize();
    const CGPoint under = viewer.sheet().view.toImage({100, 80});
    QPinchGesture pinch;
    const auto send = [&](double factor, QPinchGesture::ChangeFlags changes) {
        pinch.setCenterPoint(viewer.mapToGlobal(QPointF(100, 80)));
        pinch.setScaleFactor(factor);
        pinch.setChangeFlags(changes);
        QGestureEvent event({&pinch});
        EXPECT_TRUE(QApplication::sendEvent(&viewer, &event));
    };
    send(1.5, QPinchGesture::ScaleFactorChanged);
    send(2.0, QPinchGesture::ScaleFactorChanged | QPinchGesture::CenterPointChanged);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 3.0);
    EXPECT_NEAR(viewer.sheet().view.toView(under).x, 100, 1);
    EXPECT_NEAR(viewer.sheet().view.toView(under).y, 80, 1);
    send(2.0, QPinchGesture::CenterPointChanged);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 3.0);
}

TEST_F(ViewerTest, DoubleClickGoesBetweenFitAndActualSize) {
    viewer.setImage(plain(800, 600, {255, 0, 0, 255}));
    viewer.zoomToFit();
    QTest::mouseDClick(&viewer, Qt::LeftButton);
    EXPECT_DOUBLE_EQ(viewer.zoomFactor(), 1.0);
    EXPECT_FALSE(viewer.fits());
    QTest::mouseDClick(&viewer, Qt::LeftButton);
    EXPECT_TRUE(viewer.fits());
}

TEST_F(ViewerTest, PixelsAreSquaresAtHighZoom) {
    std::vector<std::uint8_t> two{255, 0, 0, 255, 0, 255, 0, 255};
    viewer.setImage(*CGImage::copyOf({two.data(), 2, 1, 8, 4}));
    viewer.setZoomFactor(100);
    const QImage shown = grab();
    EXPECT_EQ(shown.pixelColor(199, 150), QColor(255, 0, 0));
    EXPECT_EQ(shown.pixelColor(200, 150), QColor(0, 255, 0));
}

TEST_F(ViewerTest, ShrinkingBlendsPixelsInsteadOfDroppingThem) {
    std::vector<std::uint8_t> stripes;
    for (int i = 0; i < 800 * 4; ++i) {
        const std::uint8_t value = i % 2 == 0 ? 255 : 0;
        stripes.insert(stripes.end(), {value, value, value, 255});
    }
    viewer.setImage(*CGImage::copyOf({stripes.data(), 800, 4, 3200, 4}));
    viewer.zoomToFit();
    EXPECT_NEAR(grab().pixelColor(200, 150).red(), 128, 2);
}

TEST_F(ViewerTest, ASelectionIsCopiedPixelForPixelAndTouchesNothing) {
    viewer.setImage(plain(100, 100, {64, 0, 0, 128}));
    viewer.zoomToActualSize();
    viewer.setToolMode(IKToolModeSelect);
    const QImage before = viewer.shownImage();
    QTest::mousePress(&viewer, Qt::LeftButton, {}, {160, 110});
    QTest::mouseMove(&viewer, {180, 125});
    QTest::mouseRelease(&viewer, Qt::LeftButton, {}, {180, 125});
    const QImage selected = viewer.selectedPicture();
    EXPECT_EQ(selected.size(), QSize(20, 15));
    // 64 of 128 premultiplied is half of full red, rounded by the toolkit.
    EXPECT_NEAR(selected.pixelColor(3, 3).red(), 128, 1);
    EXPECT_EQ(selected.pixelColor(3, 3).alpha(), 128);
    EXPECT_EQ(viewer.shownImage(), before);
}

TEST_F(ViewerTest, TypedTextBecomesAMark) {
    viewer.setImage(plain(300, 200, {0, 0, 0, 255}));
    viewer.zoomToActualSize();
    viewer.setToolMode(IKToolModeAnnotate);
    viewer.setAnnotationShape(AnnotationShape::Text);
    QTest::mouseClick(&viewer, Qt::LeftButton, {}, {200, 150});
    auto* line = viewer.findChild<QLineEdit*>();
    ASSERT_NE(line, nullptr);
    QTest::keyClicks(line, QStringLiteral("peak"));
    QTest::keyClick(line, Qt::Key_Return);
    ASSERT_EQ(viewer.sheet().annotations.size(), 1U);
    EXPECT_EQ(viewer.sheet().annotations[0].text, QStringLiteral("peak"));
    viewer.clearAnnotations();
    EXPECT_TRUE(viewer.sheet().annotations.empty());
}

TEST_F(ViewerTest, AnUnchangedViewIsNotResampledAgain) {
    PicturePainter painter;
    painter.setImage(plain(200, 200, {255, 0, 0, 255}));
    ViewTransform view;
    view.setViewport({100, 100});
    view.setImageSize({200, 200});
    view.zoomToFit();
    QImage target(100, 100, QImage::Format_RGB32);
    QPainter on(&target);
    painter.paint(on, view);
    painter.paint(on, view);
    EXPECT_EQ(painter.resampleCount(), 1);
}

/// Stripes of 1000 rows, red and blue, made when they are read; `drawn` tells of a drawing of all.
class Stripes final : public RowSource {
  public:
    static constexpr int kWidth = 400;
    static constexpr int kHeight = 100'000;

    static CGImage picture(bool& drawn) {
        auto room = allocatePixelMemory(std::size_t{4} * kWidth * kHeight, PixelContents::Reserved);
        return CGImage(PixelBuffer::adopt(std::move(room), kWidth, kHeight),
                       std::make_unique<Stripes>(drawn));
    }
    explicit Stripes(bool& drawn) : drawn_(drawn) {}

    SourceRow row(int y, std::uint8_t* scratch) override {
        const QColor color = colorOf(y);
        for (int x = 0; x < kWidth; ++x, scratch += 4) {
            scratch[0] = static_cast<std::uint8_t>(color.red());
            scratch[1] = 0;
            scratch[2] = static_cast<std::uint8_t>(color.blue());
            scratch[3] = 255;
        }
        return {scratch - std::ptrdiff_t{4} * kWidth, 0, kWidth, true};
    }
    void drawAll(MutablePixelView /*target*/) override { drawn_ = true; }

    static QColor colorOf(int row) { return row / 1000 % 2 == 0 ? Qt::red : Qt::blue; }

  private:
    bool& drawn_;
};

TEST_F(ViewerTest, ALargePictureIsDrawnOnlyWhereItIsShown) {
    bool drawn = false;
    viewer.setImage(Stripes::picture(drawn));
    ASSERT_GT(std::int64_t{Stripes::kWidth} * Stripes::kHeight, PicturePainter::kWholeUpTo);

    viewer.zoomToFit();  // 300 rows of 400, a row and a bit wide
    QImage shown = grab();
    EXPECT_EQ(shown.pixelColor(196, 1), QColor(0, 0, 40));
    EXPECT_NE(shown.pixelColor(199, 1), QColor(0, 0, 40));

    viewer.zoomToActualSize();
    QTest::keyClick(&viewer, Qt::Key_Down);
    const int top = static_cast<int>(viewer.sheet().view.scroll().y);
    shown = grab();
    for (int y = 0; y < 300; ++y)
        ASSERT_EQ(shown.pixelColor(200, y), Stripes::colorOf(top + y)) << y << " below " << top;
    ASSERT_LT(top / 1000, (top + 299) / 1000) << "a seam is in sight";

    viewer.setZoomFactor(0.5);
    const double middle = viewer.sheet().view.toImage({200, 150}).y;
    const int seam = static_cast<int>(std::lround(middle / 1000)) * 1000;
    const double there = viewer.sheet().view.toView({200, 1.0 * seam}).y;
    shown = grab();
    EXPECT_EQ(shown.pixelColor(200, static_cast<int>(there) - 2), Stripes::colorOf(seam - 1));
    EXPECT_EQ(shown.pixelColor(200, static_cast<int>(there) + 2), Stripes::colorOf(seam));

    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(&viewer);
    ASSERT_NE(spoken, nullptr);
    EXPECT_TRUE(spoken->text(QAccessible::Value).startsWith(QStringLiteral("400 by 100,000")));
    ASSERT_NE(spoken->imageInterface(), nullptr);
    EXPECT_EQ(spoken->imageInterface()->imageSize(), QSize(400, 100'000));
    EXPECT_FALSE(drawn);
}

TEST_F(ViewerTest, ALargePictureIsTurnedCutAndTakenWithoutBeingDrawnWhole) {
    bool drawn = false;
    const CGImage picture = Stripes::picture(drawn);
    PicturePainter painter;
    EXPECT_TRUE(painter.partOf({0, 0, 1, 1}).isNull());
    EXPECT_TRUE(painter.fittedInto({10, 10}).isNull());
    painter.setImage(picture);
    ViewTransform view;
    view.setViewport({300, 200});
    view.setImageSize({1.0 * Stripes::kWidth, 1.0 * Stripes::kHeight});
    view.setPart({100.5, 1900, 200, 200});  // a seam in its middle
    view.setRotation(90);                   // its upper half to the right
    view.setFactor(1);
    QImage target(300, 200, QImage::Format_RGB32);
    target.fill(Qt::green);
    QPainter on(&target);
    EXPECT_FALSE(painter.isPlain(view));
    painter.paint(on, view);
    painter.paint(on, view);
    EXPECT_EQ(painter.resampleCount(), 1);
    EXPECT_EQ(target.pixelColor(145, 100), Stripes::colorOf(2000));
    EXPECT_EQ(target.pixelColor(155, 100), Stripes::colorOf(1999));
    EXPECT_EQ(target.pixelColor(48, 100), QColor(Qt::green));
    EXPECT_EQ(target.pixelColor(252, 100), QColor(Qt::green));

    const QImage part = painter.partOf({5, 990, 3, 20});
    EXPECT_EQ(part.size(), QSize(3, 20));
    for (int y = 0; y < 20; ++y) EXPECT_EQ(part.pixelColor(1, y), Stripes::colorOf(990 + y)) << y;
    EXPECT_EQ(painter.fittedInto({300, 300}).size(), QSize(1, 300));
    EXPECT_FALSE(drawn);
}

TEST_F(ViewerTest, KeysScrollAndSettersReturnEarly) {
    viewer.setImage(plain(400, 300, {255, 0, 0, 255}));
    viewer.setZoomFactor(2);
    const double before = viewer.sheet().view.scroll().x;
    QTest::keyClick(&viewer, Qt::Key_Right);
    EXPECT_EQ(viewer.sheet().view.scroll().x, before + 40);
    int zooms = 0;
    QObject::connect(&viewer, &Viewer::zoomChanged, [&] { ++zooms; });
    viewer.setZoomFactor(2);
    EXPECT_EQ(zooms, 0);
}

}  // namespace
}  // namespace skarnel
