#include "qt/viewer_tools.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

/// A picture of 200 x 100 in the middle of a viewport of 400 x 300 at actual size: its top left
/// corner lies at (100, 100).
ViewerSheet sheet() {
    ViewerSheet made;
    made.view.setViewport({400, 300});
    made.view.setImageSize({200, 100});
    made.view.setFactor(1.0);
    return made;
}

ToolPoint at(double x, double y, Qt::KeyboardModifiers modifiers = {}) {
    return {{x, y}, modifiers};
}

void dragTool(ViewerTool& tool, ViewerSheet& on, ToolPoint from, ToolPoint to) {
    tool.press(on, from);
    tool.drag(on, to);
    tool.release(on, to);
}

TEST(SnappedAngle, SnapsToQuartersAndInStepsToFifteen) {
    struct Row {
        double degrees;
        bool steps;
        double snapped;
    };
    const Row rows[] = {{0.5, false, 0},   {3.9, false, 0},    {4.1, false, 4.1},  {92, false, 90},
                        {-88, false, -90}, {179, false, -180}, {181, false, -180}, {370, false, 10},
                        {20, true, 15},    {23, true, 30},     {-100, true, -105}, {359, true, 0}};
    for (const Row& row : rows)
        EXPECT_NEAR(snappedAngle(row.degrees, row.steps), row.snapped, 1e-9) << row.degrees;
}

TEST(PixelsBetween, CoversEveryPixelTouchedInsideTheBounds) {
    const CGRect bounds{0, 0, 200, 100};
    EXPECT_EQ(pixelsBetween({10.2, 20.8}, {30.1, 40.0}, bounds), (CGRect{10, 20, 21, 20}));
    EXPECT_EQ(pixelsBetween({30.1, 40.0}, {10.2, 20.8}, bounds), (CGRect{10, 20, 21, 20}));
    EXPECT_EQ(pixelsBetween({-50, -50}, {500, 500}, bounds), bounds);
    EXPECT_EQ(pixelsBetween({300, 10}, {400, 20}, bounds), std::nullopt);
    EXPECT_EQ(pixelsBetween({10, 10}, {10, 50}, bounds), std::nullopt);
}

TEST(MoveTool, PansWhatDoesNotFitAndCancelPutsItBack) {
    ViewerSheet on = sheet();
    on.view.setFactor(4.0);  // 800 x 400 in 400 x 300
    const auto tool = ViewerTool::create(IKToolModeMove);
    const CGPoint before = on.view.scroll();
    dragTool(*tool, on, at(200, 150), at(150, 130));
    EXPECT_EQ(on.view.scroll(), (CGPoint{before.x + 50, before.y + 20}));
    const ViewTransform moved = on.view;
    tool->press(on, at(0, 0));
    tool->drag(on, at(40, 40));
    tool->cancel(on);
    EXPECT_TRUE(on.view == moved);
}

TEST(SelectTool, DrawsAMarqueeOfWholePixelsAndAClickTakesItAway) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeSelect);
    dragTool(*tool, on, at(110, 120), at(160, 140));
    EXPECT_EQ(on.selection, (CGRect{10, 20, 50, 20}));
    tool->press(on, at(120, 120));
    tool->release(on, at(120, 120));
    EXPECT_EQ(on.selection, std::nullopt);
}

TEST(SelectTool, ShiftMakesASquare) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeSelect);
    dragTool(*tool, on, at(110, 120), at(160, 140, Qt::ShiftModifier));
    EXPECT_EQ(on.selection, (CGRect{10, 20, 20, 20}));
}

TEST(SelectTool, CancelAndEscape) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeSelect);
    dragTool(*tool, on, at(110, 120), at(160, 140));
    tool->press(on, at(200, 150));
    tool->drag(on, at(220, 170));
    tool->cancel(on);
    EXPECT_EQ(on.selection, (CGRect{10, 20, 50, 20}));
    EXPECT_TRUE(tool->key(on, Qt::Key_Escape, {}));
    EXPECT_EQ(on.selection, std::nullopt);
    EXPECT_FALSE(tool->key(on, Qt::Key_Escape, {}));
}

TEST(CropTool, ShowsOnlyTheCropAndEscapeShowsTheWhole) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeCrop);
    dragTool(*tool, on, at(110, 120), at(160, 140));
    EXPECT_EQ(on.view.part(), (CGRect{10, 20, 50, 20}));
    EXPECT_EQ(on.selection, std::nullopt);
    EXPECT_TRUE(on.hasEdits());
    EXPECT_TRUE(tool->key(on, Qt::Key_Escape, {}));
    EXPECT_EQ(on.view.part(), (CGRect{0, 0, 200, 100}));
}

TEST(CropTool, AStrayClickIsNoCrop) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeCrop);
    dragTool(*tool, on, at(110, 120), at(112, 160));
    EXPECT_EQ(on.view.part(), (CGRect{0, 0, 200, 100}));
}

TEST(CropTool, AStrayClickLeavesTheSelectionAsItWas) {
    ViewerSheet on = sheet();
    on.selection = CGRect{1, 2, 3, 4};
    const auto tool = ViewerTool::create(IKToolModeCrop);
    for (const ToolPoint end : {at(112, 160), at(110, 120)}) {
        const ViewerSheet before = on;
        dragTool(*tool, on, at(110, 120), end);
        EXPECT_TRUE(on == before);
    }
    dragTool(*tool, on, at(110, 120), at(160, 140));
    EXPECT_EQ(on.selection, std::nullopt);
    EXPECT_FALSE(tool->key(on, Qt::Key_Right, {}));
    EXPECT_EQ(on.setAside, std::nullopt);
}

TEST(RotateTool, TurnsByTheAngleDraggedAboutTheCentreAndSnaps) {
    ViewerSheet on = sheet();  // the centre is (200, 150)
    const auto tool = ViewerTool::create(IKToolModeRotate);
    // From the right of the centre to below it is a quarter clockwise; two degrees off snaps.
    tool->press(on, at(300, 150));
    tool->drag(on, at(203, 250));
    EXPECT_DOUBLE_EQ(on.view.rotation(), 90);
    // atan2(100, 100) is 45 degrees, which is no quarter.
    tool->drag(on, at(300, 250));
    EXPECT_NEAR(on.view.rotation(), 45, 0.3);
    tool->cancel(on);
    EXPECT_DOUBLE_EQ(on.view.rotation(), 0);
}

TEST(RotateTool, KeysTurnByOneDegreeOrFifteen) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeRotate);
    EXPECT_TRUE(tool->key(on, Qt::Key_Right, {}));
    EXPECT_TRUE(tool->key(on, Qt::Key_Right, Qt::ShiftModifier));
    EXPECT_DOUBLE_EQ(on.view.rotation(), 16);
    EXPECT_TRUE(tool->key(on, Qt::Key_Left, {}));
    EXPECT_DOUBLE_EQ(on.view.rotation(), 15);
    EXPECT_TRUE(tool->key(on, Qt::Key_Escape, {}));
    EXPECT_DOUBLE_EQ(on.view.rotation(), 0);
}

TEST(AnnotateTool, PutsEllipsesAndArrowsOnThePicture) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeAnnotate);
    dragTool(*tool, on, at(110, 110), at(150, 140));
    on.nextShape = AnnotationShape::Arrow;
    dragTool(*tool, on, at(120, 120), at(130, 160));
    ASSERT_EQ(on.annotations.size(), 2U);
    EXPECT_EQ(on.annotations[0].shape, AnnotationShape::Ellipse);
    EXPECT_EQ(on.annotations[0].from, (CGPoint{10, 10}));
    EXPECT_EQ(on.annotations[0].to, (CGPoint{50, 40}));
    EXPECT_EQ(on.annotations[1].shape, AnnotationShape::Arrow);
    EXPECT_TRUE(tool->key(on, Qt::Key_Delete, {}));
    EXPECT_EQ(on.annotations.size(), 1U);
}

TEST(AnnotateTool, AClickLeavesNoMarkAndATextAsksForItsPlaceOnce) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeAnnotate);
    dragTool(*tool, on, at(110, 110), at(111, 111));
    EXPECT_TRUE(on.annotations.empty());
    on.nextShape = AnnotationShape::Text;
    tool->press(on, at(140, 130));
    EXPECT_EQ(tool->takeTextPlace(), (CGPoint{40, 30}));
    EXPECT_EQ(tool->takeTextPlace(), std::nullopt);
    EXPECT_TRUE(on.annotations.empty());
}

TEST(ViewerSheet, EditsGoOverToAPictureOfAnotherSize) {
    ViewerSheet on = sheet();
    on.view.setPart({20, 10, 100, 50});
    on.selection = CGRect{40, 20, 20, 10};
    on.annotations.push_back({AnnotationShape::Arrow, {50, 50}, {100, 25}, {}, Qt::red});
    on.setImageSize({400, 300});  // twice as wide, three times as high
    EXPECT_EQ(on.view.part(), (CGRect{40, 30, 200, 150}));
    EXPECT_EQ(on.selection, (CGRect{80, 60, 40, 30}));
    EXPECT_EQ(on.annotations[0].from, (CGPoint{100, 150}));
    EXPECT_EQ(on.annotations[0].to, (CGPoint{200, 75}));
}

TEST(ViewerSheet, AWholePictureStaysWhole) {
    ViewerSheet on = sheet();
    on.setImageSize({37, 11});
    EXPECT_EQ(on.view.part(), (CGRect{0, 0, 37, 11}));
}

TEST(ViewerSheet, DiscardingForgetsEveryEdit) {
    ViewerSheet on = sheet();
    on.view.setPart({20, 10, 100, 50});
    on.view.setRotation(30);
    on.selection = CGRect{40, 20, 20, 10};
    on.annotations.push_back({AnnotationShape::Arrow, {50, 50}, {100, 25}, {}, Qt::red});
    EXPECT_TRUE(on.hasEdits());
    on.discardEdits();
    EXPECT_FALSE(on.hasEdits());
    EXPECT_EQ(on, sheet());
}

TEST(ViewerSheet, EditsOfAnEarlierSheetComeBackInTheSizeOfThePicture) {
    ViewerSheet then = sheet();
    then.view.setPart({20, 10, 100, 50});
    then.view.setRotation(30);
    then.selection = CGRect{40, 20, 20, 10};
    then.annotations.push_back({AnnotationShape::Arrow, {50, 50}, {100, 25}, {}, Qt::red});
    ViewerSheet now = sheet();
    now.view.setImageSize({400, 300});  // twice as wide, three times as high
    now.annotations.push_back({AnnotationShape::Ellipse, {1, 1}, {9, 9}, {}, Qt::blue});
    now.nextColor = Qt::green;
    now.takeEdits(then);
    EXPECT_EQ(now.view.part(), (CGRect{40, 30, 200, 150}));
    EXPECT_EQ(now.view.rotation(), 30);
    EXPECT_EQ(now.view.factor(), 1);
    EXPECT_EQ(now.selection, (CGRect{80, 60, 40, 30}));
    ASSERT_EQ(now.annotations.size(), 1U);
    EXPECT_EQ(now.annotations[0].from, (CGPoint{100, 150}));
    EXPECT_EQ(now.annotations[0].to, (CGPoint{200, 75}));
    EXPECT_EQ(now.annotations[0].color, QColor(Qt::red));
    EXPECT_EQ(now.nextColor, QColor(Qt::green));
}

TEST(ViewerSheet, AnEarlierSheetsFrameForCroppingIsGivenUpForTheSelection) {
    ViewerSheet then = sheet();
    then.selection = CGRect{0, 0, 200, 100};
    then.setAside = CGRect{40, 20, 20, 10};
    ViewerSheet now = sheet();
    now.takeEdits(then);
    EXPECT_EQ(now.selection, (CGRect{40, 20, 20, 10}));
    EXPECT_EQ(now.setAside, std::nullopt);
    EXPECT_TRUE(now.showsWhole());
}

}  // namespace
}  // namespace skarnel
