// The rasteriser: every step, every failure row, the delegate's methods.
#include "text_fixture.h"

namespace skarnel::testing_app {
namespace {

class PageRasteriser : public TextTest {
  protected:
    PageRasteriser() { toolkit.temporaryNames = {"/var/tmp/page"}; }

    std::string pagePath() const { return folder / "page.tif"; }
    CallLog::Lines untilCaptured() const {
        return lines({viewMade("300x120"),
                      loaded("file:///x.html"),
                      {"temporaryDirectory", "temporaryName"},
                      captured()});
    }
    std::optional<std::string> rasterise() {
        return controller.imageURL("file:///x.html", {150, 30});
    }

    /// The pixel of the written file.
    std::array<int, 4> pixel(int x, int y) const {
        const CGImage bitmap = *NSImage::initByReferencingFile(pagePath())->bitmap();
        const std::uint8_t* at = bitmap.pixels().row(y) + std::ptrdiff_t{4} * x;
        return {at[0], at[1], at[2], at[3]};
    }
};

TEST_F(PageRasteriser, TakesItsStepsInOrder) {
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_THAT(log.take(), ElementsAreArray(lines({untilCaptured(), knockedOut(),
                                                    written(pagePath()), trimmed(pagePath())})));
    const NSImage file = *NSImage::initByReferencingFile(pagePath());
    EXPECT_EQ(file.size(), (CGSize{40, 10}));
    EXPECT_EQ(pixel(0, 0), (std::array<int, 4>{255, 255, 255, 255}));
}

TEST_F(PageRasteriser, TheFirstFileIsCompressedWithLzw) {
    log.failOn("scaleImageToSize");
    rasterise();
    const Bytes data = *NSImage::initByReferencingFile(pagePath())->TIFFRepresentation();
    const Result<DecodedImage> file = decodeImageFile(pagePath());
    ASSERT_TRUE(file);
    EXPECT_EQ(std::get<std::int64_t>(file->properties.at(std::string(kPropertyTiffCompression))),
              5);
}

TEST_F(PageRasteriser, WithoutUrlTextNothingIsLoaded) {
    controller.resourceCount = 7;
    EXPECT_EQ(controller.imageURL(std::nullopt, {150, 30}), std::nullopt);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(controller.resourceCount, 0);
}

TEST_F(PageRasteriser, WithoutAWebViewThereIsNoPath) {
    toolkit.makeWebView = [this](const CGRect& frame) -> std::unique_ptr<WebView> {
        log.add("webView", shown(frame));
        return nullptr;
    };
    EXPECT_EQ(rasterise(), std::nullopt);
    EXPECT_THAT(log.take(), ElementsAre("webView 0,0 300x120"));
}

TEST_F(PageRasteriser, ATextThatIsNoUrlIsNotLoadedAndTheViewIsCapturedAsItStands) {
    EXPECT_EQ(controller.imageURL("not a url", {150, 30}), pagePath());
    EXPECT_THAT(log.take(), ElementsAreArray(lines({viewMade("300x120"),
                                                    {"temporaryDirectory", "temporaryName"},
                                                    captured(),
                                                    knockedOut(),
                                                    written(pagePath()),
                                                    trimmed(pagePath())})));
}

TEST_F(PageRasteriser, WithoutATemporaryFolderThePageWasLoadedForNothing) {
    toolkit.temporaryFolder.reset();
    EXPECT_EQ(rasterise(), std::nullopt);
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines(
                    {viewMade("300x120"), loaded("file:///x.html"), {"temporaryDirectory"}})));
}

TEST_F(PageRasteriser, AFolderThatEndsInASlashGivesADoubledSeparator) {
    toolkit.temporaryFolder = folder.path() + "/";
    EXPECT_EQ(rasterise(), folder.path() + "//page.tif");
    struct stat status {};
    ASSERT_EQ(::stat(pagePath().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(PageRasteriser, APageTooLargeToCaptureWritesNothingAndStillGivesItsPath) {
    log.failOn("webView.bitmapImageRepForCachingDisplayInRect");
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_EQ(log.take().back(), "webView.bitmapImageRepForCachingDisplayInRect 0,0 432x115");
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(PageRasteriser, APageThatIsNotPaintedInTimeWritesNothingAndStillGivesItsPath) {
    log.failOn("webView.cacheDisplayInRect");
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_THAT(log.take(), ElementsAreArray(untilCaptured()));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(PageRasteriser, WithoutAnImageOfTheCaptureNothingIsWrittenOrTrimmed) {
    log.failOn("imageWithBitmap");
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_EQ(log.take().back(), "imageWithBitmap 432x115");
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(PageRasteriser, WithoutABitmapNoFileIsWrittenButTrimmingIsTried) {
    log.failOn("getCGImageRef");
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines({untilCaptured(),
                                        {"imageWithBitmap 432x115", "getCGImageRef 432x115",
                                         "initByReferencingFile " + pagePath()}})));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(PageRasteriser, AFailedKnockOutWritesTheCaptureAsItWas) {
    log.failOn("CIImageMakeFirtsPixelColorTransparent");
    log.failOn("scaleImageToSize");
    rasterise();
    EXPECT_THAT(log.take(),
                ElementsAreArray(lines({untilCaptured(),
                                        {"imageWithBitmap 432x115", "getCGImageRef 432x115",
                                         "CIImageMakeFirtsPixelColorTransparent 432x115"},
                                        written(pagePath()),
                                        measured(pagePath())})));
    EXPECT_EQ(pixel(0, 0), (std::array<int, 4>{0, 0, 0, 255}));
}

TEST_F(PageRasteriser, AKnockOutThatCannotBeRasterisedWritesTheCaptureAsItWas) {
    log.failOn("CIImageGetCGImage");
    log.failOn("scaleImageToSize");
    rasterise();
    EXPECT_EQ(pixel(0, 0), (std::array<int, 4>{0, 0, 0, 255}));
}

TEST_F(PageRasteriser, WithoutADestinationNothingIsWrittenOrReported) {
    log.failOn("imageDestinationCreateWithURL");
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_THAT(
        log.take(),
        ElementsAreArray(lines({untilCaptured(),
                                knockedOut(),
                                {"imageDestinationCreateWithURL " + pagePath() + " public.tiff",
                                 "initByReferencingFile " + pagePath()}})));
}

TEST_F(PageRasteriser, AFailedWriteIsNotReported) {
    log.failOn("destination.finalize");
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_THAT(log.take(), ElementsAreArray(lines({untilCaptured(),
                                                    knockedOut(),
                                                    written(pagePath()),
                                                    {"initByReferencingFile " + pagePath()}})));
}

TEST_F(PageRasteriser, WithoutATrimmedCopyTheUntrimmedFileStays) {
    log.failOn("scaleImageToSize");
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_THAT(log.take(), ElementsAreArray(lines({untilCaptured(), knockedOut(),
                                                    written(pagePath()), measured(pagePath())})));
    EXPECT_EQ(NSImage::initByReferencingFile(pagePath())->size(), (CGSize{432, 115}));
    EXPECT_EQ(pixel(0, 0)[3], 0);
    EXPECT_EQ(pixel(30, 20)[3], 255);
}

TEST_F(PageRasteriser, ABlankPageShowsTheTrimmingAlertAndStaysUntrimmed) {
    page.ink = page.ground;
    EXPECT_EQ(rasterise(), pagePath());
    // Nothing is used of 432 x 115: (432, 114, -431, -114).
    EXPECT_THAT(log.take(),
                ElementsAreArray(
                    lines({untilCaptured(),
                           knockedOut(),
                           written(pagePath()),
                           {"initByReferencingFile " + pagePath(), "usedRect 432x115 tolerance 10",
                            "scaleImageToSize 432x115 to -431x-114 trim yes tolerance 10 expand no "
                            "scaleUp no"},
                           trimmingAlert()})));
    EXPECT_EQ(NSImage::initByReferencingFile(pagePath())->size(), (CGSize{432, 115}));
    EXPECT_EQ(pixel(431, 114)[3], 0);
}

TEST_F(PageRasteriser, AnyFailureInsideTheTrimmingShowsItsAlert) {
    log.failOn("usedRect");  // raises what is no exception class at all
    EXPECT_EQ(rasterise(), pagePath());
    const CallLog::Lines all = log.take();
    const CallLog::Lines tail(all.end() - 4, all.end());
    EXPECT_THAT(tail,
                ElementsAreArray(lines({{"usedRect 432x115 tolerance 10"}, trimmingAlert()})));
}

TEST_F(PageRasteriser, AFileThatCannotBeDecodedHasNoBitmapAndShowsTheTrimmingAlert) {
    log.failOn("destination.finalize");
    test::putFile(pagePath(), "no picture");
    EXPECT_EQ(rasterise(), pagePath());
    const CallLog::Lines all = log.take();
    EXPECT_THAT(CallLog::Lines(all.end() - 3, all.end()), ElementsAreArray(trimmingAlert()));
}

TEST_F(PageRasteriser, WithoutTheTrimmedCopysDataTheFileStays) {
    log.failOn("TIFFRepresentation");
    EXPECT_EQ(rasterise(), pagePath());
    EXPECT_EQ(log.take().back(), "TIFFRepresentation 40x10");
    EXPECT_EQ(NSImage::initByReferencingFile(pagePath())->size(), (CGSize{432, 115}));
}

TEST_F(PageRasteriser, TheFilesAreForTheUserAlone) {
    rasterise();
    struct stat status {};
    ASSERT_EQ(::stat(pagePath().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(PageRasteriser, TheViewsFrameIsTwiceAsWideAndFourTimesAsHighAsTheEstimate) {
    controller.imageURL("file:///x.html", {12.25, 0.5});
    EXPECT_EQ(log.take().front(), "webView 0,0 24.5x2");
}

TEST_F(PageRasteriser, ResourcesAreNumberedFromZeroForEveryRequest) {
    RecordingWebView view(log, {}, page);
    const NSURLRequest request{"file:///x.html"};
    controller.resourceCount = controller.resourceFailedCount = controller.resourceCompletedCount =
        9;
    controller.initResourceCounters();
    EXPECT_EQ(controller.webViewIdentifierForInitialRequest(view, request), 0);
    EXPECT_EQ(controller.webViewIdentifierForInitialRequest(view, request), 1);
    EXPECT_EQ(controller.resourceCount, 2);
    EXPECT_EQ(controller.webViewResourceWillSendRequest(view, 0, request), request);
    controller.webViewResourceDidFinishLoading(view, 0);
    controller.webViewResourceDidFailLoading(view, 1, {});
    controller.webViewResourceDidFailLoading(view, 1, {});
    EXPECT_EQ(controller.resourceCompletedCount, 1);
    EXPECT_EQ(controller.resourceFailedCount, 2);
    controller.initResourceCounters();
    EXPECT_EQ(controller.webViewIdentifierForInitialRequest(view, request), 0);
    EXPECT_EQ(controller.resourceCompletedCount, 0);
    EXPECT_EQ(controller.resourceFailedCount, 0);
}

TEST_F(PageRasteriser, TheRestOfTheDelegateDoesNothing) {
    RecordingWebView view(log, {}, page);
    log.take();
    controller.webViewDidStartProvisionalLoad(view);
    controller.webViewDidReceiveTitle(view, "title");
    controller.webViewDidFinishLoad(view);
    controller.updateResourceStatus();
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(gLoaded, 0);
    EXPECT_EQ(controller.resourceCount, 0);
}

TEST_F(PageRasteriser, APageThatNeverFinishesKeepsTheLoopRunning) {
    int rounds = 0;
    toolkit.runLoop.onRun = [&] { return ++rounds < 1000; };
    rasterise();
    EXPECT_EQ(rounds, 1000);  // and only the loop's own end ended it
}

TEST_F(PageRasteriser, ASecondRequestDuringTheWaitEndsBothByOneNotification) {
    toolkit.temporaryNames = {"/t/inner", "/t/outer"};
    int rounds = 0;
    std::optional<std::string> inner;
    toolkit.runLoop.onRun = [&] {
        if (++rounds == 1) {
            inner = controller.imageURL("file:///inner.html", {10, 10});
        } else {
            toolkit.notifications.postNotification({WebViewProgressFinishedNotification, nullptr});
        }
        return true;
    };
    EXPECT_EQ(controller.imageURL("file:///outer.html", {20, 20}), folder / "outer.tif");
    EXPECT_EQ(inner, folder / "inner.tif");
    EXPECT_EQ(rounds, 2);
}

}  // namespace
}  // namespace skarnel::testing_app
