// Drags in the viewer that do not end as they should, and the line of a text mark.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTest>
#include <QVBoxLayout>

#include "qt/annotation_line.h"
#include "qt/viewer.h"

namespace skarnel {
namespace {

constexpr IKToolMode kTools[] = {IKToolModeMove, IKToolModeSelect, IKToolModeCrop, IKToolModeRotate,
                                 IKToolModeAnnotate};

CGImage black(int width, int height) {
    const std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width * height) * 4, 255);
    return *CGImage::copyOf({bytes.data(), width, height, std::ptrdiff_t{4} * width, 4});
}

/// A picture of 200 x 100 twice as large in a viewport of 300 x 200, so that every tool has
/// something to do.
class ViewerDragsTest : public ::testing::Test {
  protected:
    ViewerDragsTest() {
        viewer.setParent(&window);
        other.setParent(&window);
        viewer.setGeometry(0, 0, 300, 200);
        other.setGeometry(0, 200, 300, 30);
        window.resize(300, 230);
        window.show();
        QApplication::setActiveWindow(&window);
        viewer.setImage(black(200, 100));
        viewer.setZoomFactor(2);
    }
    void move(QPoint to, Qt::MouseButtons buttons) {
        QMouseEvent event(QEvent::MouseMove, to, viewer.mapToGlobal(QPointF(to)), Qt::NoButton,
                          buttons, {});
        QApplication::sendEvent(&viewer, &event);
    }
    void pressAndDrag() {
        QTest::mousePress(&viewer, Qt::LeftButton, {}, {100, 100});
        move({160, 130}, Qt::LeftButton);
    }
    /// Clicks for a text mark at (30, 100), which is the image's point (40, 50): of 400 pixels 300
    /// are seen, in the middle.
    AnnotationLine& type(const QString& text) {
        viewer.setToolMode(IKToolModeAnnotate);
        viewer.setAnnotationShape(AnnotationShape::Text);
        QTest::mouseClick(&viewer, Qt::LeftButton, {}, {30, 100});
        auto* line = viewer.findChild<AnnotationLine*>();
        EXPECT_NE(line, nullptr);
        QTest::keyClicks(line, text);
        return *line;
    }

    QWidget window;
    Viewer viewer;
    QLineEdit other;
};

TEST_F(ViewerDragsTest, WhatIsForgottenInTheMiddleOfADragEndsTheDrag) {
    for (const IKToolMode tool : kTools) {
        SCOPED_TRACE(static_cast<int>(tool));
        for (const bool all : {true, false}) {
            viewer.setToolMode(tool);
            viewer.discardEdits();
            const ViewerSheet before = viewer.sheet();
            pressAndDrag();
            EXPECT_FALSE(viewer.sheet() == before);
            all ? viewer.discardEdits() : viewer.clearAnnotations();
            EXPECT_TRUE(viewer.sheet() == before);
            move({40, 40}, Qt::LeftButton);
            QTest::mouseRelease(&viewer, Qt::LeftButton, {}, {40, 40});
            EXPECT_TRUE(viewer.sheet() == before);
        }
    }
}

TEST_F(ViewerDragsTest, EscapeAndAnotherToolPutBackWhatTheDragChanged) {
    for (const IKToolMode tool : kTools) {
        SCOPED_TRACE(static_cast<int>(tool));
        for (const bool escape : {true, false}) {
            viewer.setToolMode(tool);
            const ViewerSheet before = viewer.sheet();
            pressAndDrag();
            EXPECT_FALSE(viewer.sheet() == before);
            if (escape)
                QTest::keyClick(&viewer, Qt::Key_Escape);
            else
                viewer.setToolMode(tool == IKToolModeMove ? IKToolModeCrop : IKToolModeMove);
            EXPECT_TRUE(viewer.sheet() == before);
            move({40, 40}, Qt::LeftButton);
            QTest::mouseRelease(&viewer, Qt::LeftButton, {}, {40, 40});
            EXPECT_TRUE(viewer.sheet() == before);
        }
    }
}

TEST_F(ViewerDragsTest, APictureOrAViewportOfAnotherSizeEndsTheDragAndKeepsItsOwnSize) {
    for (const IKToolMode tool : kTools) {
        SCOPED_TRACE(static_cast<int>(tool));
        viewer.setToolMode(tool);
        viewer.setImage(black(200, 100));
        pressAndDrag();
        viewer.setImage(black(120, 90));
        QTest::keyClick(&viewer, Qt::Key_Escape);
        EXPECT_EQ(viewer.sheet().view.imageSize(), (CGSize{120, 90}));
        EXPECT_FALSE(viewer.sheet().hasEdits());
        QTest::mouseRelease(&viewer, Qt::LeftButton);
        pressAndDrag();
        viewer.resize(280, 180);
        QTest::keyClick(&viewer, Qt::Key_Escape);
        EXPECT_EQ(viewer.sheet().view.viewport(), (CGSize{280, 180}));
        EXPECT_FALSE(viewer.sheet().hasEdits());
        QTest::mouseRelease(&viewer, Qt::LeftButton);
        viewer.resize(300, 200);
    }
}

TEST_F(ViewerDragsTest, ADragWhoseReleaseGotLostEndsWhereThePointerWasSeenLast) {
    for (const IKToolMode tool : kTools) {
        SCOPED_TRACE(static_cast<int>(tool));
        viewer.setToolMode(tool);
        pressAndDrag();
        const ViewTransform dragged = viewer.sheet().view;
        const auto marks = viewer.sheet().annotations;
        move({40, 40}, Qt::NoButton);
        const ViewerSheet ended = viewer.sheet();
        if (tool != IKToolModeCrop) {
            EXPECT_TRUE(ended.view == dragged);
        }
        EXPECT_TRUE(ended.annotations == marks);
        move({20, 60}, Qt::NoButton);
        move({20, 60}, Qt::LeftButton);  // a button that was pressed elsewhere
        EXPECT_TRUE(viewer.sheet() == ended);
        QTest::mouseRelease(&viewer, Qt::LeftButton);
    }
    EXPECT_EQ(viewer.sheet().annotations.size(), 1U);
}

TEST_F(ViewerDragsTest, ADoubleClickZoomsWithEveryToolButTheOneThatMarks) {
    for (const IKToolMode tool : kTools) {
        SCOPED_TRACE(static_cast<int>(tool));
        viewer.setToolMode(tool);
        viewer.zoomToFit();  // 1.5, the width
        const ViewerSheet before = viewer.sheet();
        QTest::mouseDClick(&viewer, Qt::RightButton, {}, {150, 100});
        EXPECT_TRUE(viewer.sheet() == before);
        QTest::mouseDClick(&viewer, Qt::LeftButton, {}, {150, 100});
        QTest::mouseRelease(&viewer, Qt::LeftButton, {}, {150, 100});
        EXPECT_EQ(viewer.fits(), tool == IKToolModeAnnotate);
        EXPECT_DOUBLE_EQ(viewer.zoomFactor(), tool == IKToolModeAnnotate ? 1.5 : 1.0);
        EXPECT_FALSE(viewer.sheet().hasEdits());
    }
}

/// A marquee of 30 x 15 pixels from (40, 50) on, and over it a crop frame that a key began.
void selectAndFrame(Viewer& viewer) {
    viewer.setToolMode(IKToolModeSelect);
    QTest::mousePress(&viewer, Qt::LeftButton, {}, {30, 100});
    QMouseEvent drag(QEvent::MouseMove, QPointF(90, 130), viewer.mapToGlobal(QPointF(90, 130)),
                     Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(&viewer, &drag);
    QTest::mouseRelease(&viewer, Qt::LeftButton, {}, {90, 130});
    ASSERT_EQ(viewer.sheet().selection, (CGRect{40, 50, 30, 15}));
    viewer.setToolMode(IKToolModeCrop);
    QTest::keyClick(&viewer, Qt::Key_Return);
    ASSERT_NE(viewer.sheet().selection, (CGRect{40, 50, 30, 15}));
}

TEST_F(ViewerDragsTest, AFrameDoesNotOutliveItsPicture) {
    selectAndFrame(viewer);
    viewer.discardEdits();
    EXPECT_FALSE(viewer.sheet().hasEdits());
    viewer.setImage(black(20, 10));
    viewer.setToolMode(IKToolModeSelect);
    EXPECT_EQ(viewer.sheet().selection, std::nullopt);

    viewer.setImage(black(200, 100));
    selectAndFrame(viewer);
    viewer.discardEdits();
    viewer.selectAll();
    // The marquee is no frame that Return would apply and Escape give up.
    QTest::keyClick(&viewer, Qt::Key_Escape);
    EXPECT_EQ(viewer.sheet().selection, (CGRect{0, 0, 200, 100}));
}

TEST_F(ViewerDragsTest, WhatAFrameHasSetAsideFollowsThePicturesSize) {
    selectAndFrame(viewer);
    viewer.setImage(black(100, 200));  // half as wide, twice as high
    QTest::keyClick(&viewer, Qt::Key_Escape);
    EXPECT_EQ(viewer.sheet().selection, (CGRect{20, 100, 15, 30}));
}

TEST_F(ViewerDragsTest, EscapeDropsATextAndReturnKeepsIt) {
    AnnotationLine& line = type(QStringLiteral("abc"));
    QTest::keyClick(&line, Qt::Key_Escape);
    EXPECT_FALSE(line.isVisible());
    EXPECT_TRUE(viewer.sheet().annotations.empty());
    EXPECT_TRUE(viewer.hasFocus());
}

TEST_F(ViewerDragsTest, AFocusThatTheUserTookElsewhereStaysThere) {
    AnnotationLine& line = type(QStringLiteral("abc"));
    EXPECT_TRUE(line.hasFocus());
    other.setFocus(Qt::MouseFocusReason);
    EXPECT_TRUE(other.hasFocus());
    ASSERT_EQ(viewer.sheet().annotations.size(), 1U);
    EXPECT_EQ(viewer.sheet().annotations[0].text, QStringLiteral("abc"));
}

TEST_F(ViewerDragsTest, ATextThatIsTypedFollowsZoomAndSize) {
    AnnotationLine& line = type(QStringLiteral("abc"));
    EXPECT_EQ(line.x(), 30);
    QTest::keyClick(&viewer, Qt::Key_Left);  // 40 pixels to the picture's left
    EXPECT_EQ(line.x(), 70);
    viewer.setImage(black(400, 300));
    QTest::keyClick(&line, Qt::Key_Return);
    ASSERT_EQ(viewer.sheet().annotations.size(), 1U);
    EXPECT_EQ(viewer.sheet().annotations[0].from, (CGPoint{80, 150}));
}

}  // namespace
}  // namespace skarnel
