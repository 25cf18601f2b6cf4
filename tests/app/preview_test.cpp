#include <algorithm>

#include "controller_fixture.h"

namespace skarnel::testing_app {
namespace {

class Preview : public ControllerTest {
  protected:
    /// The lines of one refresh of a 40x30 working copy in a viewer that is large enough.
    static CallLog::Lines refresh() {
        return lines({{"getCGImageRef 40x30"},
                      defaultRender("40x30"),
                      {"NSImageFromCGImageRef 40x60", "viewer.visibleRect",
                       "imageByScalingProportionallyToSize 40x60 to 40x60", "getCGImageRef 40x60",
                       "viewer.setImage 40x60"}});
    }

    /// The lines that empty a store that holds what `storeDefaults` stores.
    static CallLog::Lines emptied() {
        return {"defaults.resetStandardUserDefaults",
                "defaults.dictionaryRepresentation",
                "defaults.removeObjectForKey alpha",
                "defaults.removeObjectForKey gradient",
                "defaults.removeObjectForKey imagePerspective",
                "defaults.removeObjectForKey offset",
                "defaults.removeObjectForKey perspectiveHeight",
                "defaults.removeObjectForKey perspectiveWidth",
                "defaults.removeObjectForKey start"};
    }

    /// The lines that store and show the defaults.
    static CallLog::Lines defaultsSet() {
        return {"defaults.setFloat 0 perspectiveWidth",
                "perspectiveWidthSlider.setFloatValue 0",
                "perspectiveWidthTextField.setStringValue 0.000000",
                "defaults.setFloat 100 perspectiveHeight",
                "perspectiveHeightSlider.setFloatValue 100",
                "perspectiveHeightTextField.setStringValue 100.000000",
                "defaults.setFloat 0 offset",
                "offsetSlider.setFloatValue 0",
                "offsetTextField.setStringValue 0.000000",
                "defaults.setFloat 0 start",
                "startSlider.setFloatValue 0",
                "startTextField.setStringValue 0.000000",
                "defaults.setFloat 7 gradient",
                "gradientSlider.setFloatValue 7",
                "gradientTextField.setStringValue 7.000000",
                "defaults.setFloat 200 alpha",
                "alphaSlider.setFloatValue 200",
                "alphaTextField.setStringValue 200.000000",
                "defaults.setFloat 50 imagePerspective",
                "imagePerspectiveSlider.setFloatValue 50",
                "imagePerspectiveTextField.setStringValue 50.000000",
                "defaults.setBool no applyBackgroundColor",
                "applyBackgroundColorButton.setState 0",
                "defaults.synchronize"};
    }
};

TEST_F(Preview, WithoutAWorkingCopyAMovedSliderDoesNothing) {
    controller.sliderChanged(nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Preview, ARefreshRendersTheWorkingCopyAndShowsItWithoutAZoomCall) {
    openPicture(40, 30);
    controller.sliderChanged(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(refresh()));
    EXPECT_EQ(window.resultView.shownImage->height(), 60);
}

TEST_F(Preview, TheSenderIsIgnored) {
    openPicture(40, 30);
    controller.sliderChanged(&window.alphaSlider);
    EXPECT_THAT(log.take(), ElementsAreArray(refresh()));
}

TEST_F(Preview, TheCompositeIsReducedOnceMoreToFit) {
    // The working copy of 80 x 60 gives 80 x 120; of that 60 / 120 = 0.5 fits, so 40 x 60.
    openPicture(80, 60);
    window.resultView.visible = {5, 7, 80, 60};
    controller.sliderChanged(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines({{"getCGImageRef 80x60"},
                                        defaultRender("80x60"),
                                        {"NSImageFromCGImageRef 80x120", "viewer.visibleRect",
                                         "imageByScalingProportionallyToSize 80x120 to 40x60",
                                         "getCGImageRef 40x60", "viewer.setImage 40x60"}})));
}

TEST_F(Preview, APhotoLargerThanTheViewerIsWorkedOnAtTheViewersSize) {
    // 4000 x 3000 in 800 x 600: 0.2 on both sides. In single precision 0.2 is 0.2 + 3e-9, so the
    // sizes pass 800 x 600 by 12e-6 and 9e-6, which is still 800 x 600 whole pixels.
    storeDefaults();
    controller.image = testImage(4000, 3000);
    controller.loadImage();
    const CGImage copy = *ImageOperations().getCGImageRef(*controller.scaledImage);
    EXPECT_EQ(copy.width(), 800);
    EXPECT_EQ(copy.height(), 600);
    EXPECT_EQ(window.resultView.shownImage->width(), 800);
    EXPECT_EQ(window.resultView.shownImage->height(), 1200);

    controller.sliderChanged(nullptr);
    EXPECT_EQ(window.resultView.shownImage->width(), 400);
    EXPECT_EQ(window.resultView.shownImage->height(), 600);
}

TEST_F(Preview, AWorkingCopyThatCannotBeConvertedEndsTheRefresh) {
    openPicture(40, 30);
    log.failOn("getCGImageRef");
    controller.sliderChanged(nullptr);
    EXPECT_THAT(log.take(), ElementsAre("getCGImageRef 40x30"));
}

TEST_F(Preview, ARenderThatYieldsNothingKeepsWhatIsShown) {
    openPicture(40, 30);
    controller.sliderChanged(nullptr);
    const CGImage before = *window.resultView.shownImage;
    log.take();
    toolkit.defaults.values["perspectiveHeight"] = 0.0F;
    controller.sliderChanged(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({{"getCGImageRef 40x30"},
                                                    settingsRead(),
                                                    {"addReflectionToCGImage 40x30 0 0 0 0 7"}})));
    EXPECT_TRUE(window.resultView.shownImage->isSame(before));
}

// A recipe's or a stored number has no bound of its own. 400 x 4,000,600 pixels would still do.
TEST_F(Preview, ACanvasThatNoMachineHoldsEndsTheRefresh) {
    openPicture(400, 300);
    for (const float offset : {2e6F, 4e7F, 7e8F}) {
        toolkit.defaults.values["offset"] = offset;
        controller.sliderChanged(nullptr);
        EXPECT_THAT(log.take(), ::testing::Not(::testing::Contains("viewer.visibleRect")))
            << offset;
        EXPECT_FALSE(window.resultView.shownImage);
    }
}

TEST_F(Preview, AResultThatCannotBeWrappedIsShownUnscaledAndFitted) {
    openPicture(40, 30);
    log.failOn("NSImageFromCGImageRef");
    controller.sliderChanged(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines({{"getCGImageRef 40x30"},
                                        defaultRender("40x30"),
                                        {"NSImageFromCGImageRef 40x60", "viewer.setImage 40x60",
                                         "viewer.zoomImageToFit controller"}})));
}

TEST_F(Preview, AResultThatCannotBeScaledShowsNothingNew) {
    openPicture(40, 30);
    log.failOn("imageByScalingProportionallyToSize");
    controller.sliderChanged(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines({{"getCGImageRef 40x30"},
                                        defaultRender("40x30"),
                                        {"NSImageFromCGImageRef 40x60", "viewer.visibleRect",
                                         "imageByScalingProportionallyToSize 40x60 to 40x60"}})));
}

TEST_F(Preview, AScaledResultThatCannotBeConvertedShowsNothingNew) {
    openPicture(40, 30);
    log.failOn("getCGImageRef", 2);
    controller.sliderChanged(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines({{"getCGImageRef 40x30"},
                                        defaultRender("40x30"),
                                        {"NSImageFromCGImageRef 40x60", "viewer.visibleRect",
                                         "imageByScalingProportionallyToSize 40x60 to 40x60",
                                         "getCGImageRef 40x60"}})));
    EXPECT_FALSE(window.resultView.shownImage.has_value());
}

TEST_F(Preview, PerspectiveChangedIsSliderChanged) {
    openPicture(40, 30);
    controller.perspectiveChanged(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(refresh()));
    controller.scaledImage.reset();
    controller.perspectiveChanged(nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Preview, ResetEmptiesTheStoreThenStoresAndShowsEveryDefaultThenRenders) {
    openPicture(40, 30);
    toolkit.defaults.values["gradient"] = 31.0F;
    window.imagePerspectiveSlider.value = 25;
    controller.reset(nullptr);
    // The refresh reads the flag now that its key is there.
    CallLog::Lines refreshed = refresh();
    refreshed.insert(
        std::find(refreshed.begin(), refreshed.end(), "imagePerspectiveSlider.floatValue"),
        "defaults.boolForKey applyBackgroundColor");
    EXPECT_THAT(log.take(), ElementsAreArray(lines({emptied(), defaultsSet(), refreshed})));
    const std::map<std::string, DefaultsValue, std::less<>> expected{
        {"perspectiveWidth", 0.0F},
        {"perspectiveHeight", 100.0F},
        {"offset", 0.0F},
        {"start", 0.0F},
        {"gradient", 7.0F},
        {"alpha", 200.0F},
        {"imagePerspective", 50.0F},
        {"applyBackgroundColor", false}};
    EXPECT_EQ(toolkit.defaults.values, expected);
}

TEST_F(Preview, ResetRemovesEveryOtherKeyToo) {
    toolkit.defaults.values = {{"somethingElse", 3.0F}, {"applyBackgroundColor", true}};
    controller.reset(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines(
                    {{"defaults.resetStandardUserDefaults", "defaults.dictionaryRepresentation",
                      "defaults.removeObjectForKey applyBackgroundColor",
                      "defaults.removeObjectForKey somethingElse"},
                     defaultsSet()})));
    EXPECT_EQ(toolkit.defaults.values.count("somethingElse"), 0U);
    EXPECT_EQ(std::get<bool>(toolkit.defaults.values["applyBackgroundColor"]), false);
}

TEST_F(Preview, ResetFailsLoudlyWhenTheKeysChangeUnderTheEnumeration) {
    openPicture(40, 30);
    toolkit.defaults.keysChangeOnRemoval = true;
    EXPECT_THROW(controller.reset(nullptr), EnumerationMutationError);
    EXPECT_THAT(log.take(), ElementsAre("defaults.resetStandardUserDefaults",
                                        "defaults.dictionaryRepresentation",
                                        "defaults.removeObjectForKey alpha"));
}

class Render : public ControllerTest {
  protected:
    Render() { storeDefaults(); }
};

TEST_F(Render, ReadsFiveKeysThenAlphaThenTheFlagThenTheSlider) {
    toolkit.defaults.values["perspectiveWidth"] = 10.0F;
    toolkit.defaults.values["perspectiveHeight"] = 50.0F;
    toolkit.defaults.values["offset"] = 20.0F;
    toolkit.defaults.values["start"] = 30.0F;
    toolkit.defaults.values["gradient"] = 10.0F;
    toolkit.defaults.values["applyBackgroundColor"] = true;
    const std::optional<CGImage> result = controller.reflectedImage(testPicture(100, 40));
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines(
            {settingsRead(),
             {"addReflectionToCGImage 100x40 10 50 20 30 10", "defaults.objectForKey alpha",
              "defaults.floatForKey alpha", "defaults.objectForKey applyBackgroundColor",
              "defaults.boolForKey applyBackgroundColor", "imagePerspectiveSlider.floatValue"}})));
    // An inset of 10 on each side; 20 rows of reflection and 4 of gap under 40 of picture.
    EXPECT_EQ(result->width(), 120);
    EXPECT_EQ(result->height(), 64);
}

TEST_F(Render, WithoutItsKeyThePeakOpacityIs200) {
    const CGImage with200 = *controller.reflectedImage(testPicture(20, 10));
    toolkit.defaults.values["alpha"] = 100.0F;
    const CGImage with100 = *controller.reflectedImage(testPicture(20, 10));
    log.take();
    toolkit.defaults.values.erase("alpha");
    const CGImage without = *controller.reflectedImage(testPicture(20, 10));
    EXPECT_THAT(log.take(), ElementsAreArray(lines({settingsRead(),
                                                    {"addReflectionToCGImage 20x10 0 100 0 0 7",
                                                     "defaults.objectForKey alpha",
                                                     "defaults.objectForKey applyBackgroundColor",
                                                     "imagePerspectiveSlider.floatValue"}})));
    // The first row of the reflection: its alpha is trunc(255 * 200 / 255) and ... * 100.
    EXPECT_EQ(with200.pixels().row(10)[3], 200);
    EXPECT_EQ(with100.pixels().row(10)[3], 100);
    EXPECT_EQ(without.pixels().row(10)[3], 200);
}

TEST_F(Render, TheFlagCountsOnlyWhenItIsThereAndTrue) {
    controller.resultViewBackgroundColor = NSColor::colorWithDeviceRed(1, 0, 0, 1);
    const auto lastRow = [this] {
        return controller.reflectedImage(testPicture(8, 6))->pixels().row(11)[3];
    };
    EXPECT_EQ(lastRow(), 0);  // the far edge of the reflection is transparent
    toolkit.defaults.values["applyBackgroundColor"] = false;
    EXPECT_EQ(lastRow(), 0);
    toolkit.defaults.values["applyBackgroundColor"] = true;
    EXPECT_EQ(lastRow(), 255);
}

TEST_F(Render, AHalfTransparentBackgroundFillsTheWholeCanvas) {
    controller.resultViewBackgroundColor = NSColor::colorWithDeviceRed(1, 0, 0, 0.5);
    toolkit.defaults.values["applyBackgroundColor"] = true;
    toolkit.defaults.values["offset"] = 50.0F;
    const CGImage result = *controller.reflectedImage(testPicture(8, 6));
    const std::uint8_t* gap = result.pixels().row(7);  // below the 6 rows of the picture
    EXPECT_NEAR(gap[3], 127.5, 0.5);                   // 0.5 * 255, rounded either way
    EXPECT_EQ(gap[0], gap[3]);                         // premultiplied pure red
    EXPECT_EQ(gap[1], 0);
    EXPECT_EQ(gap[2], 0);
}

TEST_F(Render, AnEarlyEndDoesNotReadOn) {
    toolkit.defaults.values["perspectiveHeight"] = 0.0F;
    EXPECT_FALSE(controller.reflectedImage(testPicture(8, 6)).has_value());
    EXPECT_THAT(log.take(), ElementsAreArray(
                                lines({settingsRead(), {"addReflectionToCGImage 8x6 0 0 0 0 7"}})));
}

TEST_F(Render, ACanvasThatCannotBeMadeReadsNeitherFlagNorSlider) {
    // (4e9 / 100 + 1) * 6 rows pass 32 bits after the reflection was shaped.
    toolkit.defaults.values["offset"] = 4e10F;
    EXPECT_FALSE(controller.reflectedImage(testPicture(8, 6)).has_value());
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines({settingsRead(),
                                {"addReflectionToCGImage 8x6 0 100 4e+10 0 7",
                                 "defaults.objectForKey alpha", "defaults.floatForKey alpha"}})));
}

TEST_F(Render, TheTurnTakesTheSlidersFloatAndNeitherItsKeyNorAWholeNumber) {
    // 100 x 100 gives 100 x 200. At 25.4 the sine of -2 pi * 0.254 is -0.999684, so the inset is
    // trunc(20 * 0.999684) = 19 and the shift 40 * 0.999684 = 39.987: 62 wide and
    // trunc(200 + 79.97) = 279 high. A whole 25 would give 60 x 280, the stored 50 no turn.
    window.imagePerspectiveSlider.value = 25.4F;
    const CGImage turned = *controller.reflectedImage(testPicture(100, 100));
    EXPECT_EQ(turned.width(), 62);
    EXPECT_EQ(turned.height(), 279);
    window.imagePerspectiveSlider.value = 25;
    const CGImage whole = *controller.reflectedImage(testPicture(100, 100));
    EXPECT_EQ(whole.width(), 60);
    EXPECT_EQ(whole.height(), 280);
}

}  // namespace
}  // namespace skarnel::testing_app
