#include "qt/tool_keys.h"

#include <gtest/gtest.h>

#include "qt/viewer_tools.h"

namespace skarnel {
namespace {

/// A picture of 200 x 100 in the middle of a viewport of 400 x 300, at actual size.
ViewerSheet sheet() {
    ViewerSheet made;
    made.view.setViewport({400, 300});
    made.view.setImageSize({200, 100});
    made.view.setFactor(1.0);
    return made;
}

bool press(ViewerTool& tool, ViewerSheet& on, int key, Qt::KeyboardModifiers modifiers = {}) {
    return tool.key(on, key, modifiers);
}

TEST(ArrowStep, IsAPixelOfTheScreenInWholePixelsOfThePicture) {
    const struct {
        double factor;
        int key;
        Qt::KeyboardModifiers modifiers;
        CGPoint step;
    } rows[] = {
        {1, Qt::Key_Right, {}, {1, 0}},   {1, Qt::Key_Left, {}, {-1, 0}},
        {1, Qt::Key_Up, {}, {0, -1}},     {1, Qt::Key_Down, Qt::ControlModifier, {0, 10}},
        {4, Qt::Key_Down, {}, {0, 1}},  // a quarter of a pixel would not be seen
        {0.25, Qt::Key_Down, {}, {0, 4}}, {0.25, Qt::Key_Left, Qt::ControlModifier, {-40, 0}},
    };
    for (const auto& row : rows) {
        ViewTransform view = sheet().view;
        view.setFactor(row.factor);
        EXPECT_EQ(arrowStep(view, row.key, row.modifiers), row.step) << row.factor << row.key;
    }
    EXPECT_EQ(arrowStep(sheet().view, Qt::Key_A, {}), std::nullopt);
    EXPECT_EQ(arrowStep(ViewTransform(), Qt::Key_Left, {}), std::nullopt);
}

TEST(ArrowStep, GoesWhereTheArrowPointsOnATurnedPicture) {
    ViewTransform view = sheet().view;
    // Turned clockwise by a quarter, the picture's right side lies below.
    view.setRotation(90);
    EXPECT_EQ(arrowStep(view, Qt::Key_Down, {}), (CGPoint{1, 0}));
    EXPECT_EQ(arrowStep(view, Qt::Key_Right, {}), (CGPoint{0, -1}));
    view.setRotation(170);
    EXPECT_EQ(arrowStep(view, Qt::Key_Right, {}), (CGPoint{-1, 0}));
}

TEST(MiddleOfSight, IsAShareOfWhatIsSeen) {
    ViewTransform view = sheet().view;
    EXPECT_EQ(middleOfSight(view, 0.5), (CGRect{50, 25, 100, 50}));
    // At 8 the viewport shows 50 of 200 and 37.5 of 100 pixels; scrolled into the upper left
    // corner the middle is (25, 18.75), and the quarter to each side is widened to whole pixels.
    view.setFactor(8);
    view.setScroll({0, 0});
    EXPECT_EQ(middleOfSight(view, 0.5), (CGRect{12, 9, 26, 20}));
    view.setPart({10, 10, 1, 1});
    EXPECT_EQ(middleOfSight(view, 0.01), (CGRect{10, 10, 1, 1}));
}

TEST(MovedRect, StaysInsideWithItsSize) {
    const CGRect bounds{0, 0, 200, 100};
    EXPECT_EQ(movedRect({10, 10, 50, 40}, {5, -3}, bounds), (CGRect{15, 7, 50, 40}));
    EXPECT_EQ(movedRect({10, 10, 50, 40}, {-50, 500}, bounds), (CGRect{0, 60, 50, 40}));
    EXPECT_EQ(movedRect({0, 0, 300, 40}, {10, 0}, bounds), (CGRect{0, 0, 300, 40}));
}

TEST(ResizedRect, KeepsItsCornerAndAPixel) {
    const CGRect bounds{0, 0, 200, 100};
    EXPECT_EQ(resizedRect({10, 10, 50, 40}, {5, -3}, bounds), (CGRect{10, 10, 55, 37}));
    EXPECT_EQ(resizedRect({10, 10, 50, 40}, {-500, 500}, bounds), (CGRect{10, 10, 1, 90}));
}

TEST(SelectTool, ASelectionIsMadeAndShapedByKeys) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeSelect);
    EXPECT_FALSE(press(*tool, on, Qt::Key_Right));  // which scrolls then
    ASSERT_TRUE(press(*tool, on, Qt::Key_Return));
    EXPECT_EQ(on.selection, (CGRect{50, 25, 100, 50}));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Right));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Up, Qt::ControlModifier));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Left, Qt::ShiftModifier | Qt::ControlModifier));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Down, Qt::ShiftModifier));
    EXPECT_EQ(on.selection, (CGRect{51, 15, 90, 51}));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Escape));
    EXPECT_EQ(on.selection, std::nullopt);
    EXPECT_FALSE(press(*tool, on, Qt::Key_Escape));
}

TEST(CropTool, AFrameIsMadeShapedAndAppliedByKeys) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeCrop);
    EXPECT_FALSE(press(*tool, on, Qt::Key_Right));
    ASSERT_TRUE(press(*tool, on, Qt::Key_Return));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Left, Qt::ControlModifier));
    EXPECT_EQ(on.selection, (CGRect{40, 25, 100, 50}));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Enter));
    EXPECT_EQ(on.view.part(), (CGRect{40, 25, 100, 50}));
    EXPECT_EQ(on.selection, std::nullopt);
    EXPECT_TRUE(press(*tool, on, Qt::Key_Escape));
    EXPECT_EQ(on.view.part(), (CGRect{0, 0, 200, 100}));
}

TEST(CropTool, EscapeOrAnotherToolGivesTheFrameUpAndTheSelectionComesBack) {
    ViewerSheet on = sheet();
    on.selection = CGRect{1, 2, 3, 4};
    const auto tool = ViewerTool::create(IKToolModeCrop);
    press(*tool, on, Qt::Key_Return);
    EXPECT_TRUE(press(*tool, on, Qt::Key_Escape));
    EXPECT_EQ(on.selection, (CGRect{1, 2, 3, 4}));
    press(*tool, on, Qt::Key_Return);
    tool->leave(on);
    EXPECT_EQ(on.selection, (CGRect{1, 2, 3, 4}));
    // Arrows are for frames alone, and a selection is none.
    EXPECT_FALSE(press(*tool, on, Qt::Key_Right));
    tool->leave(on);
    EXPECT_EQ(on.selection, (CGRect{1, 2, 3, 4}));
    EXPECT_EQ(on.view.part(), (CGRect{0, 0, 200, 100}));
}

TEST(AnnotateTool, AMarkIsPlacedMovedAndKeptByKeys) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeAnnotate);
    EXPECT_FALSE(press(*tool, on, Qt::Key_Right));
    ASSERT_TRUE(press(*tool, on, Qt::Key_Return));
    ASSERT_EQ(on.annotations.size(), 1U);
    // A quarter of 200 x 100 about (100, 50), in whole pixels: 75 to 125 and 37.5 to 62.5.
    EXPECT_EQ(on.annotations[0].from, (CGPoint{75, 37}));
    EXPECT_EQ(on.annotations[0].to, (CGPoint{125, 63}));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Right, Qt::ControlModifier));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Up, Qt::ShiftModifier));
    EXPECT_EQ(on.annotations[0].from, (CGPoint{85, 37}));
    EXPECT_EQ(on.annotations[0].to, (CGPoint{135, 62}));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Return));
    EXPECT_FALSE(press(*tool, on, Qt::Key_Right));
    EXPECT_FALSE(press(*tool, on, Qt::Key_Escape));
    on.nextShape = AnnotationShape::Arrow;
    press(*tool, on, Qt::Key_Return);
    ASSERT_EQ(on.annotations.size(), 2U);
    EXPECT_EQ(on.annotations[1].from, (CGPoint{75, 63}));
    EXPECT_EQ(on.annotations[1].to, (CGPoint{125, 37}));
    EXPECT_TRUE(press(*tool, on, Qt::Key_Escape));
    EXPECT_EQ(on.annotations.size(), 1U);
}

TEST(AnnotateTool, AMarkStaysOnThePicture) {
    ViewerSheet on = sheet();
    const auto tool = ViewerTool::create(IKToolModeAnnotate);
    press(*tool, on, Qt::Key_Return);
    for (int i = 0; i < 30; ++i) press(*tool, on, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(on.annotations[0].from, (CGPoint{75, 74}));
    EXPECT_EQ(on.annotations[0].to, (CGPoint{125, 100}));
}

TEST(AnnotateTool, ATextIsAskedForInTheMiddleAndFollowsTheKeysOnceItIsThere) {
    ViewerSheet on = sheet();
    on.nextShape = AnnotationShape::Text;
    const auto tool = ViewerTool::create(IKToolModeAnnotate);
    ASSERT_TRUE(press(*tool, on, Qt::Key_Return));
    EXPECT_TRUE(on.annotations.empty());
    const std::optional<CGPoint> place = tool->takeTextPlace();
    EXPECT_EQ(place, (CGPoint{75, 50}));
    EXPECT_FALSE(press(*tool, on, Qt::Key_Right));
    on.annotations.push_back({AnnotationShape::Text, *place, *place, QStringLiteral("x"), {}});
    EXPECT_TRUE(press(*tool, on, Qt::Key_Right));
    EXPECT_EQ(on.annotations[0].from, (CGPoint{76, 50}));
    EXPECT_EQ(on.annotations[0].to, (CGPoint{76, 50}));
}

TEST(Tools, WithoutAPictureKeysDoNothing) {
    for (const IKToolMode mode : {IKToolModeSelect, IKToolModeCrop, IKToolModeAnnotate}) {
        ViewerSheet nothing;
        const auto tool = ViewerTool::create(mode);
        EXPECT_FALSE(press(*tool, nothing, Qt::Key_Return));
        EXPECT_TRUE(nothing == ViewerSheet());
    }
}

}  // namespace
}  // namespace skarnel
