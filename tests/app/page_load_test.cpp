#include "controller_fixture.h"

namespace skarnel::testing_app {
namespace {

/// A page that is never loaded; the delegate methods only pass it by.
class IdleWebView final : public WebView {
  public:
    void setFrameLoadDelegate(WebFrameLoadDelegate* /*delegate*/) override {}
    void setUIDelegate(WebUIDelegate* /*delegate*/) override {}
    void setResourceLoadDelegate(WebResourceLoadDelegate* /*delegate*/) override {}
    WebFrame& mainFrame() override { throw std::logic_error("nothing loads here"); }
    void setFrame(const CGRect& /*frame*/) override {}
    CGRect visibleRect() override { return {}; }
    std::optional<PixelBuffer> bitmapImageRepForCachingDisplayInRect(
        const CGRect& /*rect*/) override {
        return std::nullopt;
    }
    PaintOutcome cacheDisplayInRect(const CGRect& /*rect*/, PixelBuffer& /*bitmap*/) override {
        return PaintOutcome::NotPainted;
    }
};

class PageLoad : public ControllerTest {
  protected:
    /// Count, failed, completed.
    std::vector<std::int32_t> counters() const {
        return {controller.resourceCount, controller.resourceFailedCount,
                controller.resourceCompletedCount};
    }
    IdleWebView view;
};

TEST_F(PageLoad, TheFirstResourceIsNumber0AndTheSecond1) {
    EXPECT_EQ(controller.webViewIdentifierForInitialRequest(view, {"file:///a.html"}), 0);
    EXPECT_EQ(controller.webViewIdentifierForInitialRequest(view, {"file:///b.png"}), 1);
    EXPECT_THAT(counters(), ElementsAre(2, 0, 0));
}

TEST_F(PageLoad, TheCountersStartAgainForEachRequest) {
    controller.resourceCount = 3;
    controller.resourceFailedCount = 1;
    controller.resourceCompletedCount = 2;
    controller.initResourceCounters();
    EXPECT_THAT(counters(), ElementsAre(0, 0, 0));
    EXPECT_EQ(controller.webViewIdentifierForInitialRequest(view, {"file:///a.html"}), 0);
}

TEST_F(PageLoad, FinishedAndFailedResourcesAreCountedApart) {
    controller.webViewResourceDidFinishLoading(view, 0);
    controller.webViewResourceDidFinishLoading(view, 1);
    controller.webViewResourceDidFailLoading(view, 2, {ErrorCode::NotFound, "No such file"});
    EXPECT_THAT(counters(), ElementsAre(0, 1, 2));
}

TEST_F(PageLoad, ARequestIsSentAsItIs) {
    const NSURLRequest request{"file:///a%20b.html"};
    EXPECT_EQ(controller.webViewResourceWillSendRequest(view, 0, request), request);
}

TEST_F(PageLoad, StartTitleAndEndChangeNothing) {
    controller.webViewDidStartProvisionalLoad(view);
    controller.webViewDidReceiveTitle(view, "Title");
    controller.webViewDidFinishLoad(view);
    EXPECT_THAT(counters(), ElementsAre(0, 0, 0));
    EXPECT_THAT(log.take(), IsEmpty());
}

}  // namespace
}  // namespace skarnel::testing_app
