#include "controller_fixture.h"
#include "util/log/system_log.h"

namespace skarnel::testing_app {
namespace {

/// The lines of `save` up to the sheet, for a source of that size.
CallLog::Lines sheetShown(const std::string& size, const std::string& file) {
    return {"TIFFRepresentation " + size,
            "imageSourceCreateWithData",
            "source.copyPropertiesAtIndex 0",
            "source.type",
            "savePanel",
            "saveOptions public.tiff",
            "saveOptions.addSaveOptionsAccessoryViewToSavePanel savePanel",
            "preferredExtension public.tiff",
            "savePanel.beginSheet directory none file " + file + " on resultWindow"};
}

class Save : public ControllerTest {
  protected:
    /// A picture is open, smaller in the viewer, and the sheet is up.
    void beginSave() {
        openPicture(40, 30);
        controller.scaledImage = testImage(8, 6);
        controller.save(nullptr);
        log.take();
        path = folder / "out.tiff";
        toolkit.lastSavePanel->chosenPath = path;
    }

    /// The lines of the sheet's end up to the render.
    static CallLog::Lines rendered() {
        return lines({{"savePanel.filename", "saveOptions.imageUTType", "getCGImageRef 40x30"},
                      defaultRender("40x30")});
    }

    CallLog::Lines written(const std::string& type) {
        return lines(
            {rendered(),
             {"imageDestinationCreateWithURL " + path + " " + type, "saveOptions.imageProperties",
              "destination.addImage 40x60", "destination.finalize"}});
    }

    test::TemporaryFolder folder;
    std::string path;
};

TEST_F(Save, ShowsTheSheetWithTheSourcesPropertiesAndTheProposedName) {
    openPicture(40, 30);
    controller.save(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(sheetShown("40x30", "Beach Reflection.tiff")));
    EXPECT_EQ(controller.saveOptions, toolkit.lastSaveOptions);
    EXPECT_EQ(std::get<std::int64_t>(
                  toolkit.lastSaveOptions->properties.at(std::string(kPropertyPixelWidth))),
              40);
}

TEST_F(Save, ProposesTheLogosNameRightAfterTheStart) {
    toolkit.namedImage = testImage(40, 30);
    storeDefaults();
    controller.applicationWillFinishLaunching({"launched"});
    log.take();
    controller.save(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(sheetShown("40x30", "TavelinLogo.tiff")));
}

TEST_F(Save, ProposesTiffForATypeWithoutAnExtension) {
    openPicture(40, 30);
    log.failOn("preferredExtension");
    controller.save(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(sheetShown("40x30", "Beach Reflection.tiff")));
}

TEST_F(Save, WithoutASourcePictureDoesNothing) {
    controller.save(nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(controller.saveOptions, nullptr);
}

TEST_F(Save, StopsWhereThePictureCannotBeEncoded) {
    openPicture(40, 30);
    log.failOn("TIFFRepresentation");
    controller.save(nullptr);
    EXPECT_THAT(log.take(), ElementsAre("TIFFRepresentation 40x30"));
}

TEST_F(Save, StopsWhereTheDataAreNoImageSource) {
    openPicture(40, 30);
    log.failOn("imageSourceCreateWithData");
    controller.save(nullptr);
    EXPECT_THAT(log.take(), ElementsAre("TIFFRepresentation 40x30", "imageSourceCreateWithData"));
    EXPECT_EQ(toolkit.lastSavePanel, nullptr);
}

TEST_F(Save, EverySaveHasOptionsOfItsOwn) {
    beginSave();
    const auto first = controller.saveOptions;
    controller.save(nullptr);
    EXPECT_NE(controller.saveOptions, first);
}

TEST_F(Save, ASecondSaveWhileASheetIsUpLeavesTheFirstItsPathAndTakesItsOptions) {
    beginSave();
    const auto first = toolkit.lastSavePanel;
    controller.save(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(sheetShown("40x30", "Beach Reflection.tiff")));
    ASSERT_NE(toolkit.lastSavePanel, first);
    // The options are those of the last save, whichever sheet ends.
    toolkit.lastSaveOptions->type = kUTTypePNG;
    first->end(NSOKButton);
    EXPECT_THAT(log.take(), ElementsAreArray(written("public.png")));
    EXPECT_EQ(decodeImageFile(path)->type, "public.png");
    toolkit.lastSavePanel->end(NSCancelButton);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(Save, WritesTheFullSizeRenderInTheChosenFormatToTheChosenPath) {
    beginSave();
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_THAT(log.take(), ElementsAreArray(written("public.tiff")));
    const Result<DecodedImage> read = decodeImageFile(path);
    ASSERT_TRUE(read.hasValue());
    EXPECT_EQ(read->type, "public.tiff");
    EXPECT_EQ(read->image.width(), 40);
    EXPECT_EQ(read->image.height(), 60);
}

TEST_F(Save, WritesAnotherFormatWithItsOptionsWhenThatIsChosen) {
    beginSave();
    toolkit.lastSaveOptions->type = kUTTypeJPEG;
    const auto sizeAt = [this](double quality) {
        toolkit.lastSaveOptions->properties[std::string(kPropertyLossyQuality)] = quality;
        toolkit.lastSavePanel->end(NSOKButton);
        return test::fileText(path).size();
    };
    const std::size_t coarse = sizeAt(0.1);
    EXPECT_THAT(log.take(), ElementsAreArray(written("public.jpeg")));
    EXPECT_EQ(decodeImageFile(path)->type, "public.jpeg");
    EXPECT_GT(sizeAt(1.0), coarse);
}

TEST_F(Save, CancellingWritesNothing) {
    beginSave();
    for (const int code : {NSCancelButton, -1, 2}) {
        toolkit.lastSavePanel->end(code);
        EXPECT_THAT(log.take(), IsEmpty()) << code;
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(Save, StopsWhereThereIsNoSourceAnyMore) {
    beginSave();
    controller.image.reset();
    const ScopedLogCapture captured;
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(captured.text(), "Couldn't save Beach Reflection: There is no picture any more\n");
}

TEST_F(Save, StopsWhereThePictureCannotBeConverted) {
    beginSave();
    log.failOn("getCGImageRef");
    const ScopedLogCapture captured;
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_THAT(log.take(), ElementsAre("savePanel.filename", "saveOptions.imageUTType",
                                        "getCGImageRef 40x30"));
    EXPECT_EQ(captured.text(), "Couldn't save " + path +
                                   ": The picture has no pixels, or there is no memory for them\n");
}

TEST_F(Save, StopsWhereTheRenderYieldsNothing) {
    beginSave();
    toolkit.defaults.values["perspectiveHeight"] = 0.0F;
    const ScopedLogCapture captured;
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_EQ(captured.text(),
              "Couldn't save " + path + ": The result is empty, or there is no memory for it\n");
    EXPECT_THAT(log.take(),
                ElementsAreArray(
                    lines({{"savePanel.filename", "saveOptions.imageUTType", "getCGImageRef 40x30"},
                           settingsRead(),
                           {"addReflectionToCGImage 40x30 0 0 0 0 7"}})));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(Save, StopsWhereTheTypeCannotBeWritten) {
    beginSave();
    toolkit.lastSaveOptions->type = kUTTypePSD;
    const ScopedLogCapture captured;
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_EQ(captured.text(),
              "Couldn't save " + path + ": It cannot be written as com.adobe.photoshop-image\n");
    EXPECT_THAT(log.take(), ElementsAreArray(lines({rendered(),
                                                    {"imageDestinationCreateWithURL " + path +
                                                     " com.adobe.photoshop-image"}})));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(Save, AFailedWriteIsSilentForTheUserKeepsTheOldFileAndLogsTheCause) {
    beginSave();
    test::putFile(path, "the old file");
    // Over 65,535 pixels a JPEG cannot be; the writer finds that out when it encodes.
    toolkit.lastSaveOptions->type = kUTTypeJPEG;
    controller.image = testImage(1, 40000);
    toolkit.defaults.values["perspectiveHeight"] = 100.0F;
    const ScopedLogCapture captured;
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines(
                    {{"savePanel.filename", "saveOptions.imageUTType", "getCGImageRef 1x40000"},
                     defaultRender("1x40000"),
                     {"imageDestinationCreateWithURL " + path + " public.jpeg",
                      "saveOptions.imageProperties", "destination.addImage 1x80000",
                      "destination.finalize"}})));
    EXPECT_EQ(test::fileText(path), "the old file");
    EXPECT_THAT(captured.text(), ::testing::StartsWith("Couldn't write " + path + ": "));
}

TEST_F(Save, AFolderThatCannotBeWrittenToIsSilentForTheUserAndLogged) {
    beginSave();
    path = folder / "no such folder/out.tiff";
    toolkit.lastSavePanel->chosenPath = path;
    const ScopedLogCapture captured;
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_THAT(log.take(), ElementsAreArray(written("public.tiff")));
    EXPECT_EQ(captured.text(), "Couldn't write " + path + ": The folder does not exist\n");
}

TEST_F(Save, LeavesTheViewerAlone) {
    beginSave();
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_FALSE(window.resultView.shownImage.has_value());
}

TEST_F(Save, SaveAndEditRaisesTheFlagForGoodAndSavesAsSaveDoes) {
    openPicture(40, 30);
    EXPECT_EQ(controller.openInEditor, 0);
    controller.saveAndEdit(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(sheetShown("40x30", "Beach Reflection.tiff")));
    EXPECT_EQ(controller.openInEditor, 1);
    path = folder / "out.tiff";
    toolkit.lastSavePanel->chosenPath = path;
    toolkit.lastSavePanel->end(NSOKButton);
    EXPECT_THAT(log.take(), ElementsAreArray(written("public.tiff")));
    EXPECT_EQ(controller.openInEditor, 1);
}

TEST_F(Save, SaveAndEditWithoutASourceOnlyRaisesTheFlag) {
    controller.saveAndEdit(nullptr);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(controller.openInEditor, 1);
}

TEST_F(Save, CloseWithoutSavingHidesTheWindowAndClearsNothing) {
    openPicture(40, 30);
    controller.closeNoSave(nullptr);
    EXPECT_THAT(log.take(), ElementsAre("window.orderOut controller"));
    EXPECT_TRUE(controller.image.has_value());
}

}  // namespace
}  // namespace skarnel::testing_app
