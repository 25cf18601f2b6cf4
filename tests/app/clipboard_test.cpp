#include "controller_fixture.h"

namespace skarnel::testing_app {
namespace {

class Clipboard : public ControllerTest {
  protected:
    Clipboard() {
        openPicture(40, 30);
        controller.scaledImage = testImage(8, 6);
        controller.harpSound = std::make_shared<RecordingSound>(log);
        toolkit.pasteboard.contents["text"] = {1, 2, 3};
    }

    /// The lines of bringing the preview up to date first.
    static CallLog::Lines refreshed() {
        return lines({{"getCGImageRef 8x6"},
                      defaultRender("8x6"),
                      {"NSImageFromCGImageRef 8x12", "viewer.visibleRect",
                       "imageByScalingProportionallyToSize 8x12 to 8x12", "getCGImageRef 8x12",
                       "viewer.setImage 8x12"}});
    }

    static CallLog::Lines rendered() {
        return lines({refreshed(), {"getCGImageRef 40x30"}, defaultRender("40x30")});
    }

    /// The lines of the full-size render's way to the pasteboard, up to the cue.
    static CallLog::Lines copied() {
        return {"dataCreateMutable",
                "imageDestinationCreateWithData public.tiff",
                "destination.addImage 40x60",
                "destination.finalize",
                "pasteboard.declareTypes NSTIFFPboardType owner none",
                "pasteboard.setData NSTIFFPboardType"};
    }

    void expectPasteboardUntouched() {
        const std::map<std::string, Bytes> before{{"text", {1, 2, 3}}};
        EXPECT_EQ(toolkit.pasteboard.contents, before);
    }
};

TEST_F(Clipboard, CopiesTheFullSizeRenderThenPlaysTheCue) {
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({rendered(), copied(), {"sound.play"}})));
}

TEST_F(Clipboard, APreviewThatCannotBeConvertedIsNoReasonNotToCopy) {
    log.failOn("getCGImageRef");
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({{"getCGImageRef 8x6", "getCGImageRef 40x30"},
                                                    defaultRender("40x30"),
                                                    copied(),
                                                    {"sound.play"}})));
    EXPECT_EQ(toolkit.pasteboard.contents.count("NSTIFFPboardType"), 1U);
}

TEST_F(Clipboard, APreviewWithoutAResultIsNoReasonNotToCopy) {
    log.failOn("addReflectionToCGImage");
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines({{"getCGImageRef 8x6"},
                                settingsRead(),
                                {"addReflectionToCGImage 8x6 0 100 0 0 7", "getCGImageRef 40x30"},
                                defaultRender("40x30"),
                                copied(),
                                {"sound.play"}})));
    EXPECT_EQ(toolkit.pasteboard.contents.count("NSTIFFPboardType"), 1U);
}

TEST_F(Clipboard, LeavesExactlyOneTypeAnLzwTiffOfTheFullSizeRender) {
    controller.putImageOnClipboard(nullptr);
    ASSERT_EQ(toolkit.pasteboard.contents.size(), 1U);
    const Bytes& data = toolkit.pasteboard.contents.at("NSTIFFPboardType");
    const Result<DecodedImage> read = decodeImage(data);
    ASSERT_TRUE(read.hasValue());
    EXPECT_EQ(read->type, "public.tiff");
    EXPECT_EQ(std::get<std::int64_t>(read->properties.at(std::string(kPropertyTiffCompression))),
              5);
    const CGImage expected = *controller.reflectedImage(testPicture(40, 30));
    ASSERT_EQ(read->image.width(), expected.width());
    ASSERT_EQ(read->image.height(), expected.height());
    for (int y = 0; y < expected.height(); ++y) {
        const std::uint8_t* wanted = expected.pixels().row(y);
        EXPECT_TRUE(std::equal(wanted, wanted + 4 * expected.width(), read->image.pixels().row(y)))
            << "row " << y;
    }
}

TEST_F(Clipboard, WithoutTheCueASuccessfulCopyIsSilent) {
    controller.harpSound.reset();
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({rendered(), copied()})));
    EXPECT_EQ(toolkit.pasteboard.contents.size(), 1U);
}

TEST_F(Clipboard, WithoutASourceOnlyThePreviewIsRefreshed) {
    controller.image.reset();
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(refreshed()));
    expectPasteboardUntouched();
}

TEST_F(Clipboard, StopsWhereThePictureCannotBeConverted) {
    log.failOn("getCGImageRef", 3);  // the preview's two conversions come first
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({refreshed(), {"getCGImageRef 40x30"}})));
    expectPasteboardUntouched();
}

TEST_F(Clipboard, StopsWhereTheRenderYieldsNothing) {
    log.failOn("addReflectionToCGImage", 2);
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines({refreshed(),
                                        {"getCGImageRef 40x30"},
                                        settingsRead(),
                                        {"addReflectionToCGImage 40x30 0 100 0 0 7"}})));
    expectPasteboardUntouched();
}

TEST_F(Clipboard, StopsWhereThereIsNoBuffer) {
    log.failOn("dataCreateMutable");
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({rendered(), {"dataCreateMutable"}})));
    expectPasteboardUntouched();
}

TEST_F(Clipboard, StopsWhereThereIsNoWriter) {
    log.failOn("imageDestinationCreateWithData");
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({rendered(),
                                                    {"dataCreateMutable",
                                                     "imageDestinationCreateWithData "
                                                     "public.tiff"}})));
    expectPasteboardUntouched();
}

TEST_F(Clipboard, AFailedEncodingLeavesThePasteboardAndPlaysNothing) {
    log.failOn("destination.finalize");
    controller.putImageOnClipboard(nullptr);
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines({rendered(),
                                {"dataCreateMutable", "imageDestinationCreateWithData public.tiff",
                                 "destination.addImage 40x60", "destination.finalize"}})));
    expectPasteboardUntouched();
}

TEST_F(Clipboard, TheCompletionSoundIsHandedOutAndNotPlayed) {
    EXPECT_EQ(controller.completionSound(), controller.harpSound);
    EXPECT_THAT(log.take(), IsEmpty());
}

}  // namespace
}  // namespace skarnel::testing_app
