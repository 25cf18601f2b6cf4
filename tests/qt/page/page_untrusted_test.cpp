// Two hundred hostile texts: none of them reaches the network or a file, all are drawn as typed.
#include "page_fixture.h"
#include "untrusted.h"

namespace skarnel::test_page {
namespace {

/// Counts what a page asks for.
class Counter final : public WebResourceLoadDelegate {
  public:
    std::int32_t webViewIdentifierForInitialRequest(WebView&,
                                                    const NSURLRequest& request) override {
        last = request.url;
        return requests++;
    }
    NSURLRequest webViewResourceWillSendRequest(WebView&, std::int32_t,
                                                const NSURLRequest& request) override {
        return request;
    }
    void webViewResourceDidFinishLoading(WebView&, std::int32_t) override { ++finished; }
    void webViewResourceDidFailLoading(WebView&, std::int32_t, const Error&) override { ++failed; }
    int requests = 0;
    int finished = 0;
    int failed = 0;
    std::string last;
};

class Untrusted : public PageTest {
  protected:
    Untrusted() {
        std::ofstream(canary_) << "secret";
        watch_ = std::make_unique<Watch>(canary_);
    }

    // Draws the text and checks that its page asked for itself and for nothing else.
    Capture drawn(const StyledText& text) {
        const std::string path = put(documentOf(text, "#000000"));
        const CGSize size = module().naturalTextSize(text);
        Counter counter;
        const std::unique_ptr<WebView> view =
            module().webView({0, 0, 2 * size.width, 4 * size.height});
        view->setResourceLoadDelegate(&counter);
        LoadURL(*view, "file://" + path, Module::shared().center, module().runLoop());
        EXPECT_EQ(counter.requests, 1) << counter.last;
        EXPECT_EQ(counter.finished, 1);
        EXPECT_EQ(counter.failed, 0);
        return captured(*view);
    }

    // As wide and as high as the very characters are, with a margin of 8 on each side, and with ink
    // all over that width but for the bearings of its ends.
    void expectDrawnWhole(const Capture& page, const StyledText& text) {
        ASSERT_EQ(page.outcome, PaintOutcome::Painted);
        const CGSize natural = module().naturalTextSize(text);
        EXPECT_NEAR(page.document.width, natural.width + 16, 0.02 * natural.width + 4);
        EXPECT_NEAR(page.document.height, natural.height + 16, 1);
        const auto [width, height] = usedSize(page.bytes, page.width, page.height);
        EXPECT_GT(width, 0.95 * natural.width - 4);
        EXPECT_GT(height, 5);
    }

    const std::string canary_ = folder_ / "canary.png";
    const Listener listener_;
    std::unique_ptr<Watch> watch_;
};

// Without this, nobody who comes and nothing that is opened would be no news.
TEST_F(Untrusted, TheWitnessesSeeWhoComesAndWhatIsOpened) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    address.sin_port = ::htons(static_cast<std::uint16_t>(listener_.port));
    EXPECT_EQ(listener_.connections(), 0);
    const int visitor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::connect(visitor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listener_.connections(), 1);
    ::close(visitor);
    EXPECT_FALSE(watch_->wasOpened());
    std::ifstream opened(canary_);
    EXPECT_TRUE(watch_->wasOpened());
}

TEST_F(Untrusted, TypedTextsAreDrawnAsTypedAndReachNothing) {
    const std::vector<std::string> all = payloads(canary_, listener_.port);
    ASSERT_EQ(all.size(), 200U);
    for (const std::string& payload : all) {
        SCOPED_TRACE(payload);
        const StyledText text(utf16FromUtf8(payload), styleOf(12));
        expectDrawnWhole(drawn(text), text);
    }
    EXPECT_EQ(listener_.connections(), 0);
    EXPECT_FALSE(watch_->wasOpened());
}

TEST_F(Untrusted, PastedRichTextReachesNothingAndItsTextIsDrawn) {
    for (const Payload& payload : payloadsWithText(canary_, listener_.port)) {
        SCOPED_TRACE(payload.typed);
        const StyledText text =
            module().styledTextOfHtml(utf16FromUtf8(pageOf(payload.typed)), styleOf(12));
        ASSERT_EQ(utf8FromUtf16(text.characters()), payload.pasted);
        expectDrawnWhole(drawn(text), text);
    }
    EXPECT_EQ(listener_.connections(), 0);
    EXPECT_FALSE(watch_->wasOpened());
}

TEST_F(Untrusted, AFamilysNameReachesNothing) {
    for (const std::string& payload : payloads(canary_, listener_.port)) {
        TextStyle style = styleOf(12);
        style.family = "x\";}</style>" + payload;
        drawn(StyledText(u"name", style));
    }
    EXPECT_EQ(listener_.connections(), 0);
    EXPECT_FALSE(watch_->wasOpened());
}

// The wall behind the escaping: a page that was not escaped asks, and is refused.
TEST_F(Untrusted, EvenAnUnescapedPageReachesNothing) {
    for (const std::string& payload : payloads(canary_, listener_.port)) {
        const std::string path = put("<!DOCTYPE html><body>" + payload + "</body>");
        const std::unique_ptr<WebView> view = loadedView(path, {100, 30});
        captured(*view);
    }
    EXPECT_EQ(listener_.connections(), 0);
    EXPECT_FALSE(watch_->wasOpened());
}

}  // namespace
}  // namespace skarnel::test_page
