// The command from the button to the new picture: its steps, its alerts, its silent ends.
#include "text_fixture.h"

namespace skarnel::testing_app {
namespace {

class TextImaging : public TextTest {
  protected:
    std::string htmlPath() const { return folder / "first.html"; }
    std::string pagePath() const { return folder / "second.tif"; }
    CallLog::Lines htmlWritten() const {
        return lines({exported(2, "\"Hi\""),
                      {"temporaryName", "temporaryDirectory",
                       "files.writeStringToFile " + htmlPath() + " not atomically encoding 4"}});
    }
    static CallLog::Lines installed(const std::string& path, const std::string& size,
                                    const std::string& resultSize) {
        return lines({{"initByReferencingFile " + path, "viewer.visibleRect",
                       "imageByScalingProportionallyToSize " + size + " to " + size,
                       "getCGImageRef " + size},
                      defaultRender(size),
                      {"viewer.setImage " + resultSize, "viewer.zoomImageToFit controller",
                       "viewer.zoomImageToActualSize controller"}});
    }
};

TEST_F(TextImaging, TakesAllItsStepsInOrder) {
    controller.imageText(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({htmlWritten(),
                                                    viewMade("300x120"),
                                                    loaded("file://" + htmlPath()),
                                                    {"temporaryDirectory", "temporaryName"},
                                                    captured(),
                                                    knockedOut(),
                                                    written(pagePath()),
                                                    trimmed(pagePath()),
                                                    installed(pagePath(), "40x10", "40x20")})));
    EXPECT_EQ(controller.image->size(), (CGSize{40, 10}));
    EXPECT_EQ(controller.saveFilename, "second Reflection");
}

TEST_F(TextImaging, LeavesOneHtmlAndOneTiffFileForTheUserAlone) {
    controller.imageText(nullptr);
    std::vector<std::string> names = folder.names();
    std::ranges::sort(names);
    EXPECT_THAT(names, ElementsAre("first.html", "second.tif"));
    for (const std::string& name : names) {
        struct stat status {};
        ASSERT_EQ(::stat((folder / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600U) << name;
    }
}

TEST_F(TextImaging, AnEmptyTextShowsTheFirstAlertAndNothingElse) {
    window.textView.storage = StyledText();
    openPicture(40, 30);
    const NSImage before = *controller.image;
    controller.imageText(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(alertShown("There is no text to image.",
                                                        "Enter text and try again.")));
    EXPECT_THAT(folder.names(), IsEmpty());
    EXPECT_TRUE(controller.image->isSame(before));
    EXPECT_EQ(controller.saveFilename, "Beach Reflection");
}

TEST_F(TextImaging, ATextThatCannotBeExportedShowsTheFirstAlert) {
    log.failOn("text.dataFromRange HTML");
    controller.imageText(nullptr);
    const CallLog::Lines all = log.take();
    EXPECT_THAT(
        CallLog::Lines(all.end() - 3, all.end()),
        ElementsAreArray(alertShown("There is no text to image.", "Enter text and try again.")));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(TextImaging, WithoutATemporaryFolderItEndsSilently) {
    toolkit.temporaryFolder.reset();
    controller.imageText(nullptr);
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines({exported(2, "\"Hi\""), {"temporaryName", "temporaryDirectory"}})));
    EXPECT_FALSE(controller.image);
}

TEST_F(TextImaging, AFailedWriteWithAnErrorShowsTheSecondAlert) {
    log.failOn("files.writeStringToFile");
    textFiles.error = Error{ErrorCode::CannotWrite, "No space left on device"};
    controller.imageText(nullptr);
    EXPECT_THAT(log.take(),
                ElementsAreArray(
                    lines({htmlWritten(), alertShown("There was an error saving the text as HTML.",
                                                     "The text can not be imaged.")})));
    EXPECT_FALSE(controller.image);
}

TEST_F(TextImaging, AFailedWriteWithoutAnErrorEndsSilently) {
    log.failOn("files.writeStringToFile");
    controller.imageText(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(htmlWritten()));
}

TEST_F(TextImaging, APathThatCannotBeMadeIntoUrlTextEndsSilently) {
    toolkit.temporaryNames = {"/t/100%zz"};
    controller.imageText(nullptr);
    EXPECT_EQ(log.take().back(),
              "files.writeStringToFile " + (folder / "100%zz.html") + " not atomically encoding 4");
    EXPECT_FALSE(controller.image);
}

TEST_F(TextImaging, WithoutAPagePathTheSourceStaysAndTheViewerIsNotZoomed) {
    toolkit.makeWebView = [this](const CGRect& frame) -> std::unique_ptr<WebView> {
        log.add("webView", shown(frame));
        return nullptr;
    };
    openPicture(40, 30);
    const NSImage before = *controller.image;
    controller.imageText(nullptr);
    EXPECT_THAT(log.take(), ElementsAreArray(lines({htmlWritten(), {"webView 0,0 300x120"}})));
    EXPECT_TRUE(controller.image->isSame(before));
}

TEST_F(TextImaging, TheUrlIsTheEscapedPathAfterTwoSlashes) {
    toolkit.temporaryNames = {"/t/x y", "/t/page"};
    controller.imageText(nullptr);
    const CallLog::Lines all = log.take();
    EXPECT_THAT(all,
                ::testing::Contains("frame.loadRequest file://" + folder.path() + "/x%20y.html"));
}

TEST_F(TextImaging, TheHtmlFileHoldsTheMessageInUtf8) {
    window.textView.storage = StyledText(u"\u00E9<body>");
    controller.imageText(nullptr);
    const std::string html = test::fileText(htmlPath());
    EXPECT_NE(html.find("\xC3\xA9&lt;body&gt;"), std::string::npos);
    EXPECT_NE(html.find("<body bgcolor=\"#000000\">"), std::string::npos);
}

TEST_F(TextImaging, AFolderWithSeveralTrailingSlashesHasOneBeforeTheHtmlAndItsOwnBeforeTheTiff) {
    toolkit.temporaryFolder = folder.path() + "/";
    controller.imageText(nullptr);
    const CallLog::Lines all = log.take();
    EXPECT_THAT(all, ::testing::Contains("files.writeStringToFile " + htmlPath() +
                                         " not atomically encoding 4"));
    EXPECT_THAT(all, ::testing::Contains("files.writeDataToFile " + folder.path() +
                                         "//second.tif not atomically"));
}

TEST_F(TextImaging, WithoutAnEstimateThePageIs800By200) {
    log.failOn("text.initWithData");
    controller.imageText(nullptr);
    EXPECT_THAT(log.take(), ::testing::Contains("webView 0,0 800x200"));
}

TEST_F(TextImaging, ALoneLineBreakEndsInTheTrimmingAlertAndATransparentPage) {
    window.textView.storage = StyledText(u"\r");
    page.ink = page.ground;
    controller.imageText(nullptr);
    const CallLog::Lines all = log.take();
    const auto beep = std::ranges::find(all, "beep");
    ASSERT_NE(beep, all.end());
    EXPECT_THAT(
        CallLog::Lines(beep, all.end()),
        ElementsAreArray(lines({trimmingAlert(), installed(pagePath(), "432x115", "432x230")})));
    const CGImage bitmap = *controller.image->bitmap();
    for (int y = 0; y < bitmap.height(); ++y)
        for (int x = 0; x < bitmap.width(); ++x)
            ASSERT_EQ(bitmap.pixels().row(y)[4 * x + 3], 0) << x << "," << y;
}

TEST_F(TextImaging, APageThatIsNotPaintedLeavesTheSourceButTheViewerIsZoomed) {
    log.failOn("webView.cacheDisplayInRect");
    openPicture(40, 30);
    const NSImage before = *controller.image;
    controller.imageText(nullptr);
    const CallLog::Lines all = log.take();
    EXPECT_THAT(CallLog::Lines(all.end() - 2, all.end()),
                ElementsAre("initByReferencingFile " + pagePath(),
                            "viewer.zoomImageToActualSize controller"));
    EXPECT_TRUE(controller.image->isSame(before));
}

TEST_F(TextImaging, EveryRunTakesFreshNames) {
    toolkit.temporaryNames = {"/t/a", "/t/b", "/t/c", "/t/d"};
    controller.imageText(nullptr);
    controller.imageText(nullptr);
    EXPECT_EQ(folder.names().size(), 4U);
    EXPECT_EQ(controller.saveFilename, "d Reflection");
}

}  // namespace
}  // namespace skarnel::testing_app
