#include <algorithm>
#include <functional>

#include "controller_fixture.h"

namespace skarnel::testing_app {
namespace {

class Lifecycle : public ControllerTest {
  protected:
    /// The lines of the set-up up to the search for the cue.
    static CallLog::Lines soundLookedFor() {
        return {"viewer.setDoubleClickOpensImageEditPanel no",
                "viewer.setCurrentToolMode move",
                "viewer.zoomImageToFit controller",
                "viewer.setAutohidesScrollers yes",
                "viewer.setBackgroundColor rgba(0,0,0,1)",
                "viewer.setAutoresizes yes",
                "resultViewBackgroundColorTextField.setStringValue #000000",
                "bundle.pathForSoundResource harp.aif"};
    }

    /// The lines of the rest, which goes on whether there is a cue or not.
    static CallLog::Lines afterTheSound() {
        return {
            "notifications.addObserver controller NSColorPanelColorDidChangeNotification from "
            "colorPanel",
            "textView.setPostsBoundsChangedNotifications yes",
            "notifications.addObserver controller NSViewBoundsDidChangeNotification from textView",
            "notifications.addObserver controller NSViewFrameDidChangeNotification from textView",
            "textView.setFont Times 48",
            "textView.insertText \"Enter text for imaging here\"",
            "textView.setTextColor rgba(1,1,1,1) 0+27",
            "runLoop.scheduledTimerWithTimeInterval 15 repeats no"};
    }

    void start() {
        controller.init();
        controller.awakeFromNib();
        log.take();
    }
};

TEST_F(Lifecycle, InitOnAFreshStoreSeedsTheSevenNumbersInOrderAndFlushes) {
    EXPECT_EQ(controller.init(), &controller);
    EXPECT_THAT(
        log.take(),
        ElementsAre("defaults.objectForKey perspectiveWidth",
                    "defaults.setFloat 0 perspectiveWidth",
                    "defaults.objectForKey perspectiveHeight",
                    "defaults.setFloat 100 perspectiveHeight", "defaults.objectForKey offset",
                    "defaults.setFloat 0 offset", "defaults.objectForKey start",
                    "defaults.setFloat 0 start", "defaults.objectForKey gradient",
                    "defaults.setFloat 7 gradient", "defaults.objectForKey alpha",
                    "defaults.setFloat 200 alpha", "defaults.objectForKey imagePerspective",
                    "defaults.setFloat 50 imagePerspective", "defaults.synchronize"));
    EXPECT_EQ(toolkit.defaults.values.count("applyBackgroundColor"), 0U);
}

TEST_F(Lifecycle, InitLeavesAKeyAloneThatIsThereEvenWhenItsValueIsZero) {
    storeDefaults();
    toolkit.defaults.values["alpha"] = 0.0F;
    toolkit.defaults.values.erase("gradient");
    controller.init();
    EXPECT_THAT(
        log.take(),
        ElementsAre("defaults.objectForKey perspectiveWidth",
                    "defaults.objectForKey perspectiveHeight", "defaults.objectForKey offset",
                    "defaults.objectForKey start", "defaults.objectForKey gradient",
                    "defaults.setFloat 7 gradient", "defaults.objectForKey alpha",
                    "defaults.objectForKey imagePerspective", "defaults.synchronize"));
    EXPECT_EQ(std::get<float>(toolkit.defaults.values["alpha"]), 0.0F);
}

TEST_F(Lifecycle, InitSetsTheFirstState) {
    controller.openInEditor = 1;
    controller.resultViewBackgroundColor = NSColor::whiteColor();
    controller.image = testImage(2, 2);
    controller.scaledImage = testImage(2, 2);
    controller.init();
    EXPECT_EQ(controller.openInEditor, 0);
    EXPECT_EQ(controller.resultViewBackgroundColor, NSColor::blackColor());
    EXPECT_FALSE(controller.image.has_value());
    EXPECT_FALSE(controller.scaledImage.has_value());
}

TEST_F(Lifecycle, AwakeFromNibSetsEverythingUpInOrder) {
    controller.init();
    log.take();
    controller.awakeFromNib();
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines({soundLookedFor(),
                                {"soundWithContentsOfFile /resources/harp.aif by reference no"},
                                afterTheSound()})));
    EXPECT_EQ(gVanteraDesktopController, &controller);
    EXPECT_NE(controller.harpSound, nullptr);
    ASSERT_EQ(toolkit.runLoop.timers.size(), 1U);
    EXPECT_EQ(controller.clearTextTimer, toolkit.runLoop.timers[0].get());
}

TEST_F(Lifecycle, TheWholeOfTheTextIsColouredWhateverStoodThereBefore) {
    window.textView.storage = StyledText(u"abc");
    controller.awakeFromNib();
    EXPECT_THAT(log.take(), ::testing::Contains("textView.setTextColor rgba(1,1,1,1) 0+30"));
}

TEST_F(Lifecycle, AMissingSoundResourceIsNotAskedForFurtherAndSaysNothing) {
    log.failOn("bundle.pathForSoundResource");
    controller.awakeFromNib();
    EXPECT_THAT(log.take(), ElementsAreArray(lines({soundLookedFor(), afterTheSound()})));
    EXPECT_EQ(controller.harpSound, nullptr);
}

TEST_F(Lifecycle, ASoundThatCannotBeReadLeavesTheCueEmpty) {
    log.failOn("soundWithContentsOfFile");
    controller.awakeFromNib();
    EXPECT_EQ(controller.harpSound, nullptr);
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines({soundLookedFor(),
                                {"soundWithContentsOfFile /resources/harp.aif by reference no"},
                                afterTheSound()})));
}

TEST_F(Lifecycle, LaunchingInstallsTheLogoAndShowsItsReflection) {
    start();
    toolkit.namedImage = testImage(40, 30);
    controller.applicationWillFinishLaunching({"launched"});
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines(
                    {{"imageNamed TavelinLogo", "viewer.visibleRect",
                      "imageByScalingProportionallyToSize 40x30 to 40x30", "getCGImageRef 40x30"},
                     defaultRender("40x30"),
                     {"viewer.setImage 40x60", "viewer.zoomImageToFit controller"}})));
    EXPECT_EQ(controller.saveFilename, "TavelinLogo");
    EXPECT_TRUE(controller.image->isSame(*toolkit.namedImage));
}

TEST_F(Lifecycle, LaunchingWithoutTheLogoShowsNothingAndSaysNothing) {
    start();
    controller.applicationWillFinishLaunching({"launched"});
    EXPECT_THAT(log.take(), ElementsAre("imageNamed TavelinLogo"));
    EXPECT_EQ(controller.saveFilename, "TavelinLogo");
    EXPECT_FALSE(controller.image.has_value());
    controller.save(nullptr);
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Lifecycle, ALogoThatCannotBeConvertedIsTheSourceAndNotShown) {
    start();
    toolkit.namedImage = testImage(40, 30);
    log.failOn("getCGImageRef");
    controller.applicationWillFinishLaunching({"launched"});
    EXPECT_THAT(log.take(), ElementsAre("imageNamed TavelinLogo", "viewer.visibleRect",
                                        "imageByScalingProportionallyToSize 40x30 to 40x30",
                                        "getCGImageRef 40x30"));
    EXPECT_EQ(controller.saveFilename, "TavelinLogo");
    EXPECT_TRUE(controller.image->isSame(*toolkit.namedImage));
    EXPECT_FALSE(window.resultView.shownImage.has_value());
}

TEST_F(Lifecycle, FullScreenBeforeAnyPictureDoesNothing) {
    start();
    controller.windowDidEnterFullScreen({"full screen"});
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Lifecycle, ResizingTheWindowFitsWhatIsShownAndRendersNothing) {
    openPicture(40, 30);
    controller.windowDidResize({"resized"});
    EXPECT_THAT(log.take(), ElementsAre("viewer.zoomImageToFit controller"));
}

TEST_F(Lifecycle, FullScreenRendersTheWorkingCopyAgainAndFitsItToTheLargerViewer) {
    openPicture(40, 30);
    window.resultView.visible = {0, 0, 1600, 1000};
    controller.windowDidEnterFullScreen({"full screen"});
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines({{"getCGImageRef 40x30"},
                                        defaultRender("40x30"),
                                        {"NSImageFromCGImageRef 40x60", "viewer.visibleRect",
                                         "imageByScalingProportionallyToSize 40x60 to 40x60",
                                         "getCGImageRef 40x60", "viewer.setImage 40x60"}})));
}

// The order in which the fields are declared is part of the class's description.
TEST_F(Lifecycle, TheThirtyOneFieldsLieInTheirOrder) {
    const VanteraDesktopController& c = controller;
    const void* const fields[] = {&c.resultWindow,
                                  &c.textView,
                                  &c.resultView,
                                  &c.saveOptions,
                                  &c.openInEditor,
                                  &c.resultViewBackgroundColor,
                                  &c.resultViewBackgroundColorTextField,
                                  &c.image,
                                  &c.scaledImage,
                                  &c.saveFilename,
                                  &c.progress,
                                  &c.perspectiveHeightSlider,
                                  &c.perspectiveWidthSlider,
                                  &c.offsetSlider,
                                  &c.startSlider,
                                  &c.gradientSlider,
                                  &c.alphaSlider,
                                  &c.imagePerspectiveSlider,
                                  &c.applyBackgroundColorButton,
                                  &c.perspectiveHeightTextField,
                                  &c.perspectiveWidthTextField,
                                  &c.offsetTextField,
                                  &c.startTextField,
                                  &c.gradientTextField,
                                  &c.alphaTextField,
                                  &c.imagePerspectiveTextField,
                                  &c.harpSound,
                                  &c.resourceCount,
                                  &c.resourceFailedCount,
                                  &c.resourceCompletedCount,
                                  &c.clearTextTimer};
    EXPECT_EQ(std::size(fields), 31U);
    EXPECT_TRUE(std::is_sorted(std::begin(fields), std::end(fields), std::less<>()));
    static_assert(std::is_same_v<decltype(c.openInEditor), std::int8_t>);
    static_assert(std::is_same_v<decltype(c.resourceCount), std::int32_t>);
    static_assert(std::is_same_v<decltype(c.resourceFailedCount), std::int32_t>);
    static_assert(std::is_same_v<decltype(c.resourceCompletedCount), std::int32_t>);
}

TEST_F(Lifecycle, TheFieldsStartEmpty) {
    EXPECT_EQ(controller.saveOptions, nullptr);
    EXPECT_EQ(controller.harpSound, nullptr);
    EXPECT_EQ(controller.clearTextTimer, nullptr);
    EXPECT_EQ(controller.saveFilename, "");
    EXPECT_EQ(controller.resourceCount, 0);
    EXPECT_EQ(controller.resourceFailedCount, 0);
    EXPECT_EQ(controller.resourceCompletedCount, 0);
}

}  // namespace
}  // namespace skarnel::testing_app
