// Two hundred hostile texts: none of them reaches the network or a file, all are drawn as typed.
#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include "page_fixture.h"

namespace skarnel::test_page {
namespace {

/// Listens on this machine and counts who comes.
class Listener {
  public:
    Listener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (::bind(socket_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
            ::listen(socket_, 64) != 0 ||
            ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size) != 0)
            ADD_FAILURE() << "cannot listen";
        port = ::ntohs(address.sin_port);
    }
    ~Listener() { ::close(socket_); }
    int connections() const {
        int count = 0;
        for (int c = ::accept(socket_, nullptr, nullptr); c >= 0;
             c = ::accept(socket_, nullptr, nullptr)) {
            ++count;
            ::close(c);
        }
        return count;
    }
    int port = 0;

  private:
    int socket_;
};

/// Notes whoever opens a file.
class Watch {
  public:
    explicit Watch(const std::string& path) : queue_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        if (::inotify_add_watch(queue_, path.c_str(), IN_OPEN | IN_ACCESS) < 0)
            ADD_FAILURE() << "cannot watch";
    }
    ~Watch() { ::close(queue_); }
    bool wasOpened() const {
        char events[4096];
        return ::read(queue_, events, sizeof events) > 0;
    }

  private:
    int queue_;
};

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

// 25 ways to name an address, by 8 addresses.
std::vector<std::string> payloads(const std::string& file, int port) {
    const std::string host = "127.0.0.1:" + std::to_string(port);
    const std::vector<std::string> addresses{
        "http://" + host + "/x", "https://" + host + "/x",
        "//" + host + "/x",      "file://" + file,
        "ftp://" + host + "/x",  "ws://" + host + "/x",
        "../../../" + file,      "javascript:fetch('http://" + host + "/x')"};
    const std::vector<std::string> ways{
        "<script src='@'></script>",
        "<script>location='@'</script>",
        "</span></p></body><script src=@></script>",
        "<img src='@'>",
        "<img src=x onerror=\"location='@'\">",
        "<svg onload=\"fetch('@')\"><image href='@'/></svg>",
        "<link rel=stylesheet href='@'>",
        "<style>@import '@';</style>",
        "</style><style>body{background:url(@)}</style>",
        "<iframe src='@'></iframe>",
        "<object data='@'></object>",
        "<embed src='@'>",
        "<a href='@' ping='@'>press</a>",
        "<meta http-equiv=refresh content='0;url=@'>",
        "<base href='@'><img src=a>",
        "<video poster='@' src='@' autoplay></video>",
        "<form action='@'><input autofocus onfocus=submit()></form>",
        "<!DOCTYPE x [<!ENTITY e SYSTEM '@'>]><x>&e;</x>",
        "<?xml-stylesheet href='@'?>",
        "&lt;img src=@&gt;&#60;img src=@&#62;&amp;",
        "\xE2\x80\xAE<gmi crs='@'>\xE2\x80\xAC",
        "\xE2\x81\xA6@\xE2\x81\xA9\xE2\x80\xAB@",
        "<body background='@'><BODY onload=alert(1)>",
        "%3Cscript src=@%3E <%= @ %> {{@}} ${@}",
        "<template><math><mtext><img src=@></mtext></math></template>-->]]>",
    };
    std::vector<std::string> all;
    for (std::string way : ways)
        for (const std::string& address : addresses) {
            std::string payload = way;
            for (std::size_t at = payload.find('@'); at != std::string::npos;
                 at = payload.find('@', at + address.size()))
                payload.replace(at, 1, address);
            all.push_back(payload);
        }
    return all;
}

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

    const std::string canary_ = folder_ / "canary.png";
    const Listener listener_;
    std::unique_ptr<Watch> watch_;
};

TEST_F(Untrusted, TypedTextsAreDrawnAsTypedAndReachNothing) {
    const std::vector<std::string> all = payloads(canary_, listener_.port);
    ASSERT_EQ(all.size(), 200U);
    for (const std::string& payload : all) {
        const StyledText text(utf16FromUtf8(payload), styleOf(12));
        const Capture page = drawn(text);
        ASSERT_EQ(page.outcome, PaintOutcome::Painted) << payload;
        // As wide and as high as the very characters are, with a margin of 8 on each side.
        const CGSize natural = module().naturalTextSize(text);
        EXPECT_NEAR(page.document.width, natural.width + 16, 0.02 * natural.width + 4) << payload;
        EXPECT_NEAR(page.document.height, natural.height + 16, 1) << payload;
    }
    EXPECT_EQ(listener_.connections(), 0);
    EXPECT_FALSE(watch_->wasOpened());
}

TEST_F(Untrusted, PastedRichTextReachesNothing) {
    for (const std::string& payload : payloads(canary_, listener_.port)) {
        const StyledText text = module().styledTextOfHtml(
            utf16FromUtf8("<html><body>before " + payload + " after</body></html>"), styleOf(12));
        if (text.isEmpty()) continue;
        const Capture page = drawn(text);
        EXPECT_EQ(page.outcome, PaintOutcome::Painted) << payload;
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
