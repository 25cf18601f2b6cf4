// The picture alone, in the place where it stands in the result.
#include "qt/compare_overlay.h"

#include <QAction>
#include <QMenu>

#include "companions_fixture.h"

namespace skarnel {
namespace {

class CompareTest : public CompanionsTest {
  protected:
    /// Shows the result of a blue picture of 60 x 40 on black.
    void startWithBlue(int width = 60, int height = 40) {
        start();
        ASSERT_TRUE(app->openPicture(picture(QStringLiteral("blue.png"), width, height, Qt::blue)));
        settle();
        viewer().setFocus();
    }

    CompareOverlay& overlay() { return *viewer().findChild<CompareOverlay*>(); }
    QAction& compare() { return app->companions().compareAction(); }

    /// The box around the pixels of the picture's full blue; in device pixels of the viewer.
    QRect blueBox() {
        const QImage shot = viewer().grab().toImage();
        QRect box;
        for (int y = 0; y < shot.height(); ++y) {
            for (int x = 0; x < shot.width(); ++x) {
                const QColor color = shot.pixelColor(x, y);
                if (color.blue() > 250 && color.red() < 5) box |= QRect(x, y, 1, 1);
            }
        }
        return box;
    }

    /// A rectangle of the shown image in the viewer, without what is scrolled out of it.
    QRect inViewer(QRectF image) {
        const ViewTransform& view = viewer().sheet().view;
        const CGPoint corner = view.toView({image.left(), image.top()});
        const CGPoint end = view.toView({image.right(), image.bottom()});
        const CGSize port = view.viewport();
        return QRectF(QPointF(corner.x, corner.y), QPointF(end.x, end.y))
            .intersected(QRectF(0, 0, port.width, port.height))
            .toRect();
    }

    QRect blueWhileHeld() {
        QTest::keyPress(&viewer(), Qt::Key_Space);
        EXPECT_TRUE(overlay().isVisible());
        const QRect box = blueBox();
        QTest::keyRelease(&viewer(), Qt::Key_Space);
        return box;
    }
};

TEST_F(CompareTest, ThePictureAloneIsShownWhileTheSpaceBarIsHeld) {
    start();
    EXPECT_FALSE(overlay().isVisible());
    viewer().setFocus();
    QTest::keyPress(&viewer(), Qt::Key_Space);
    EXPECT_TRUE(overlay().isVisible());
    EXPECT_EQ(overlay().size(), viewer().size());
    QTest::keyRelease(&viewer(), Qt::Key_Space);
    EXPECT_FALSE(overlay().isVisible());
}

TEST_F(CompareTest, LosingTheFocusEndsTheComparison) {
    start();
    QTest::keyPress(&viewer(), Qt::Key_Space);
    ASSERT_TRUE(overlay().isVisible());
    QFocusEvent out(QEvent::FocusOut);
    QApplication::sendEvent(&viewer(), &out);
    EXPECT_FALSE(overlay().isVisible());
}

TEST_F(CompareTest, FittedThePictureStaysTheUpperHalfOfTheResult) {
    startWithBlue();
    ASSERT_EQ(viewer().shownImage().size(), QSize(60, 80));
    viewer().zoomToFit();
    const QRect place = inViewer({0, 0, 60, 40});
    EXPECT_EQ(blueWhileHeld(), place);
    // Nor was it elsewhere in the result, whose reflection is nowhere full blue.
    EXPECT_EQ(blueBox().topLeft(), place.topLeft());
}

TEST_F(CompareTest, ZoomedAndScrolledItStays) {
    startWithBlue(300, 200);
    ASSERT_EQ(viewer().shownImage().width() * 4, viewer().shownImage().height() * 3);
    const double width = viewer().shownImage().width();
    viewer().setZoomFactor(8);
    QWheelEvent wheel({20, 20}, viewer().mapToGlobal(QPointF(20, 20)), {30, 50}, {}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&viewer(), &wheel);
    const QRect place = inViewer({0, 0, width, width * 2 / 3});
    ASSERT_GT(viewer().sheet().view.scroll().x, 0);
    ASSERT_FALSE(place.isEmpty());
    EXPECT_EQ(blueWhileHeld(), place);
}

TEST_F(CompareTest, ZoomingWhileItIsShownTakesItAlong) {
    startWithBlue();
    QTest::keyPress(&viewer(), Qt::Key_Space);
    viewer().setZoomFactor(2);
    EXPECT_EQ(blueBox(), inViewer({0, 0, 60, 40}));
    EXPECT_EQ(blueBox().size(), QSize(120, 80));
    QTest::keyRelease(&viewer(), Qt::Key_Space);
}

TEST_F(CompareTest, BesideAWidenedReflectionItStandsInTheMiddle) {
    startWithBlue();
    app->model().editNumber("perspectiveWidth", 20);
    settle();
    // A fifth of 60 more on each side.
    ASSERT_EQ(viewer().shownImage().size(), QSize(84, 80));
    EXPECT_EQ(blueWhileHeld(), inViewer({12, 0, 60, 40}));
}

TEST_F(CompareTest, OfATurnedResultItStandsWhereItWasBeforeTheTurn) {
    startWithBlue();
    app->model().editNumber("imagePerspective", 25);
    settle();
    // The sides move in by a fifth of 60, and a fifth of 80 comes on above and below.
    ASSERT_EQ(viewer().shownImage().size(), QSize(36, 112));
    EXPECT_EQ(blueWhileHeld(), inViewer({-12, 16, 60, 40}));
}

TEST_F(CompareTest, AResultThatIsShownShrunkStandsThereAsSmall) {
    startWithBlue(3000, 2000);
    const QSize shown = viewer().shownImage().size();
    const QRect place = inViewer({0, 0, 1.0 * shown.width(), shown.height() / 2.0});
    const QRect seen = blueWhileHeld();
    EXPECT_NEAR(seen.left(), place.left(), 1);
    EXPECT_NEAR(seen.top(), place.top(), 1);
    EXPECT_NEAR(seen.width(), place.width(), 2);
    EXPECT_NEAR(seen.height(), place.height(), 2);
}

TEST_F(CompareTest, TheMenuKeepsItShownUntilTheSpaceBar) {
    startWithBlue();
    EXPECT_FALSE(compare().associatedObjects().isEmpty());
    EXPECT_TRUE(compare().text().contains(QLatin1Char('\t'))) << "its key is shown";
    compare().trigger();
    EXPECT_TRUE(overlay().isVisible());
    QFocusEvent out(QEvent::FocusOut);
    QApplication::sendEvent(&viewer(), &out);
    EXPECT_TRUE(overlay().isVisible());
    QTest::keyClick(&viewer(), Qt::Key_Space);
    EXPECT_FALSE(overlay().isVisible());
    EXPECT_FALSE(compare().isChecked());
    compare().trigger();
    compare().trigger();
    EXPECT_FALSE(overlay().isVisible());
}

TEST_F(CompareTest, PinnedItFollowsTheSettings) {
    startWithBlue();
    compare().trigger();
    EXPECT_EQ(blueBox(), inViewer({0, 0, 60, 40}));
    app->model().editNumber("perspectiveWidth", 20);
    settle();
    EXPECT_EQ(blueBox(), inViewer({12, 0, 60, 40}));
}

}  // namespace
}  // namespace skarnel
