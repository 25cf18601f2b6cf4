#include "controller_fixture.h"

namespace skarnel::testing_app {
namespace {

/// The lines before the user answers.
CallLog::Lines panelShown() {
    return {"openPanel",
            "openPanel.setAllowsMultipleSelection no",
            "openPanel.setCanChooseDirectories no",
            "openPanel.setCanChooseFiles yes",
            "openPanel.setCanCreateDirectories no",
            "openPanel.setTitle Choose photo",
            "openPanel.setPrompt Choose",
            "openPanel.runModalForTypes jpg jpeg jp2 bmp png tif tiff psd"};
}

class PhotoInput : public ControllerTest {
  protected:
    PhotoInput() { storeDefaults(); }

    /// A real file with a picture of that size.
    std::string pictureFile(const std::string& name, int width, int height,
                            std::string_view type = kUTTypePNG) {
        const std::string path = folder / name;
        const Result<Bytes> bytes = encodeImage(testPicture(width, height), type);
        test::putFile(path, {bytes->begin(), bytes->end()});
        return path;
    }

    /// The lines of installing a picture that is smaller than the viewer.
    static CallLog::Lines installed(const std::string& path, const std::string& size,
                                    const std::string& resultSize) {
        return lines({{"initByReferencingFile " + path, "viewer.visibleRect",
                       "imageByScalingProportionallyToSize " + size + " to " + size,
                       "getCGImageRef " + size},
                      defaultRender(size),
                      {"viewer.setImage " + resultSize, "viewer.zoomImageToFit controller"}});
    }

    test::TemporaryFolder folder;
};

TEST_F(PhotoInput, BrowseInstallsTheChosenPhoto) {
    const std::string path = pictureFile("Beach.png", 40, 30);
    toolkit.openPanelScript.paths = {path};
    controller.browse(nullptr);
    // The paths are asked for twice at each step: for their count and for the path itself; a last
    // count ends the loop.
    EXPECT_THAT(log.take(), ElementsAreArray(lines({panelShown(),
                                                    {"openPanel.filenames", "openPanel.filenames"},
                                                    installed(path, "40x30", "40x60"),
                                                    {"openPanel.filenames"}})));
    EXPECT_EQ(controller.saveFilename, "Beach Reflection");
}

TEST_F(PhotoInput, BrowseChangesNothingWhenThePanelIsCancelled) {
    toolkit.openPanelScript = {NSCancelButton, {"/a.png"}, nullptr};
    controller.browse(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(panelShown()));
    EXPECT_FALSE(controller.image.has_value());
    EXPECT_EQ(controller.saveFilename, "");
}

TEST_F(PhotoInput, BrowseTakesOnlyTheAnswerOneForAConfirmation) {
    for (const int answer : {-1, 2, 1000}) {
        toolkit.openPanelScript = {answer, {"/a.png"}, nullptr};
        controller.browse(nullptr);
        EXPECT_THAT(log.take(), ElementsAreArray(panelShown())) << answer;
    }
}

TEST_F(PhotoInput, BrowseWithoutAnyPathOnlyAsksForThem) {
    controller.browse(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({panelShown(), {"openPanel.filenames"}})));
}

TEST_F(PhotoInput, BrowseSkipsAnEmptyPath) {
    toolkit.openPanelScript.paths = {"", "/no/such/file"};
    controller.browse(nullptr);
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines({panelShown(),
                                {"openPanel.filenames", "openPanel.filenames",
                                 "openPanel.filenames", "openPanel.filenames",
                                 "initByReferencingFile /no/such/file", "openPanel.filenames"}})));
}

TEST_F(PhotoInput, BrowseAsksForTheListAgainAtEachStep) {
    // Each answer is a list that grew since the last one: the paths are taken from the list as it
    // is by then, and the loop goes on while the index is below the count as it is by then.
    int asked = 0;
    toolkit.openPanelScript.onFilenames = [&asked](OpenPanelScript& script) {
        ++asked;
        script.paths = {"/first" + std::to_string(asked)};
        if (asked >= 3) script.paths.push_back("/second" + std::to_string(asked));
    };
    controller.browse(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines(
                    {panelShown(),
                     {"openPanel.filenames", "openPanel.filenames", "initByReferencingFile /first2",
                      "openPanel.filenames", "openPanel.filenames",
                      "initByReferencingFile /second4", "openPanel.filenames"}})));
}

TEST_F(PhotoInput, APathWithoutAnImageObjectChangesNothing) {
    openPicture(40, 30);
    const NSImage before = *controller.image;
    controller.imagePathChanged(folder / "missing.png");
    EXPECT_THAT(log.take(), ElementsAre("initByReferencingFile " + (folder / "missing.png")));
    EXPECT_TRUE(controller.image->isSame(before));
    EXPECT_EQ(controller.saveFilename, "Beach Reflection");
}

TEST_F(PhotoInput, APhotoIsShrunkByOneFactorSoThatBothSidesFit) {
    // 400 x 100 into 100 x 75: the width decides, 100 / 400 = 0.25, so 100 x 25.
    window.resultView.visible = {0, 0, 100, 75};
    const std::string path = pictureFile("wide.png", 400, 100);
    controller.imagePathChanged(path);
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(
            lines({{"initByReferencingFile " + path, "viewer.visibleRect",
                    "imageByScalingProportionallyToSize 400x100 to 100x25", "getCGImageRef 100x25"},
                   defaultRender("100x25"),
                   {"viewer.setImage 100x50", "viewer.zoomImageToFit controller"}})));
}

TEST_F(PhotoInput, AFileThatCannotBeDecodedKeepsWhatIsShownButIsTheSourceFromThenOn) {
    openPicture(40, 30);
    controller.sliderChanged(nullptr);
    const CGImage before = *window.resultView.shownImage;
    log.take();
    const std::string path = folder / "broken.png";
    test::putFile(path, "this is no picture");

    controller.imagePathChanged(path);
    EXPECT_THAT(log.take(), ElementsAre("initByReferencingFile " + path, "viewer.visibleRect",
                                        "imageByScalingProportionallyToSize 0x0 to 0x0"));
    EXPECT_EQ(controller.saveFilename, "broken Reflection");
    EXPECT_FALSE(controller.image->isValid());
    EXPECT_TRUE(window.resultView.shownImage->isSame(before));

    // Saving and copying do nothing until another picture is opened.
    controller.save(nullptr);
    EXPECT_THAT(log.take(), ElementsAre("TIFFRepresentation 0x0"));
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), ElementsAre("getCGImageRef 0x0"));
    EXPECT_TRUE(toolkit.pasteboard.contents.empty());
}

TEST_F(PhotoInput, LoadImageWithoutASourceDoesNothing) {
    controller.loadImage();
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(PhotoInput, LoadImageStopsWhereTheWorkingCopyCannotBeConverted) {
    controller.image = testImage(40, 30);
    log.failOn("getCGImageRef");
    controller.loadImage();
    EXPECT_THAT(log.take(), ElementsAre("viewer.visibleRect",
                                        "imageByScalingProportionallyToSize 40x30 to 40x30",
                                        "getCGImageRef 40x30"));
    EXPECT_TRUE(controller.scaledImage.has_value());
    EXPECT_FALSE(window.resultView.shownImage.has_value());
}

TEST_F(PhotoInput, LoadImageStopsWhereTheRenderYieldsNothing) {
    toolkit.defaults.values["perspectiveHeight"] = 0.0F;
    controller.image = testImage(40, 30);
    controller.loadImage();
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines(
                    {{"viewer.visibleRect", "imageByScalingProportionallyToSize 40x30 to 40x30",
                      "getCGImageRef 40x30"},
                     settingsRead(),
                     {"addReflectionToCGImage 40x30 0 0 0 0 7"}})));
    EXPECT_FALSE(window.resultView.shownImage.has_value());
}

TEST_F(PhotoInput, LoadImageReplacesTheWorkingCopy) {
    openPicture(40, 30);
    controller.image = testImage(20, 10);
    controller.loadImage();
    EXPECT_EQ(controller.scaledImage->size(), (CGSize{20, 10}));
}

TEST_F(PhotoInput, OnlyTheSizeOfTheVisibleRectangleDecidesTheWorkingCopy) {
    window.resultView.visible = {-300, 1000, 20, 15};
    controller.image = testImage(40, 30);
    controller.loadImage();
    EXPECT_EQ(controller.scaledImage->size(), (CGSize{20, 15}));
}

}  // namespace
}  // namespace skarnel::testing_app
