// The wait for a page: its order, its ends, its shared flag.
#include "textimaging/page_load.h"

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace skarnel {
namespace {

using ::testing::ElementsAre;
using Log = std::vector<std::string>;

class Center final : public NSNotificationCenter {
  public:
    explicit Center(Log& log) : log_(log) {}
    void addObserver(const NSObject& observer, Handler handler, std::string_view name,
                     const NSObject* object) override {
        log_.push_back("observe " + std::string(name) + (object == nullptr ? " from any" : "") +
                       (gLoaded == 0 ? ", not loaded" : ", loaded"));
        handlers[&observer] = std::move(handler);
    }
    void removeObserver(const NSObject& observer, std::string_view, const NSObject*) override {
        log_.push_back("remove");
        handlers.erase(&observer);
    }
    void postNotification(const NSNotification& notification) override {
        const auto now = handlers;
        for (const auto& [observer, handler] : now) handler(notification);
    }
    std::map<const NSObject*, Handler> handlers;

  private:
    Log& log_;
};

class Loop final : public NSRunLoop {
  public:
    explicit Loop(Log& log) : log_(log) {}
    NSTimer* scheduledTimerWithTimeInterval(double, TimerAction, bool) override { return nullptr; }
    bool runMode(std::string_view mode, double beforeDate) override {
        log_.push_back("run " + std::string(mode) + (std::isinf(beforeDate) ? " for ever" : ""));
        return round();
    }
    std::function<bool()> round = [] { return false; };

  private:
    Log& log_;
};

class View final : public WebView, private WebFrame {
  public:
    explicit View(Log& log) : log_(log) {}
    void setFrameLoadDelegate(WebFrameLoadDelegate*) override {}
    void setUIDelegate(WebUIDelegate*) override {}
    void setResourceLoadDelegate(WebResourceLoadDelegate*) override {}
    WebFrame& mainFrame() override {
        log_.push_back("mainFrame");
        return *this;
    }
    void setFrame(const CGRect&) override {}
    CGRect visibleRect() override { return {}; }
    std::optional<PixelBuffer> bitmapImageRepForCachingDisplayInRect(const CGRect&) override {
        return std::nullopt;
    }
    PaintOutcome cacheDisplayInRect(const CGRect&, PixelBuffer&) override {
        return PaintOutcome::NotPainted;
    }
    CGRect documentFrame;

  private:
    void loadRequest(const NSURLRequest& request) override {
        log_.push_back("load " + request.url);
    }
    CGRect frameViewDocumentViewFrame() override { return documentFrame; }
    Log& log_;
};

struct PageLoad : ::testing::Test {
    Log log;
    Center center{log};
    Loop loop{log};
    View view{log};
    void finishAny() { center.postNotification({WebViewProgressFinishedNotification, nullptr}); }
};

TEST_F(PageLoad, WatchesThenLoadsThenRunsTheLoopUntilTheNotification) {
    gLoaded = 1;
    int rounds = 0;
    loop.round = [&] {
        if (++rounds == 3) finishAny();
        return true;
    };
    LoadURL(view, "file:///tmp/x.html", center, loop);
    EXPECT_THAT(log, ElementsAre("mainFrame",
                                 "observe WebProgressFinishedNotification from any, not loaded",
                                 "load file:///tmp/x.html", "run NSDefaultRunLoopMode for ever",
                                 "run NSDefaultRunLoopMode for ever",
                                 "run NSDefaultRunLoopMode for ever", "remove"));
    EXPECT_EQ(gLoaded, 1);
    EXPECT_TRUE(center.handlers.empty());
}

TEST_F(PageLoad, ATextThatIsNoUrlIsNeitherLoadedNorWaitedFor) {
    gLoaded = 1;
    for (const char* url : {"", "file:///a b", "%zz"}) LoadURL(view, url, center, loop);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(gLoaded, 1);
}

TEST_F(PageLoad, TheWaitEndsWhenTheLoopCannotRunAndLeavesNoWatcher) {
    LoadURL(view, "file:///x", center, loop);
    EXPECT_EQ(log.back(), "remove");
    EXPECT_EQ(std::count(log.begin(), log.end(), "run NSDefaultRunLoopMode for ever"), 1);
    EXPECT_TRUE(center.handlers.empty());
    EXPECT_EQ(gLoaded, 0);
}

TEST_F(PageLoad, ASecondWatcherTakesTheFlagBackAndAnyViewsEndEndsEveryWait) {
    std::vector<std::string> order;
    int outerRounds = 0;
    loop.round = [&] {
        if (++outerRounds > 1) return true;
        // The first page has loaded, but before its wait looks, a second request comes in.
        finishAny();
        EXPECT_EQ(gLoaded, 1);
        View second(log);
        int innerRounds = 0;
        const auto outer = std::exchange(loop.round, [&] {
            EXPECT_EQ(gLoaded, 0);
            if (++innerRounds == 2) finishAny();
            return true;
        });
        LoadURL(second, "file:///second", center, loop);
        order.push_back("second");
        loop.round = outer;
        return true;
    };
    LoadURL(view, "file:///first", center, loop);
    order.push_back("first");
    EXPECT_THAT(order, ElementsAre("second", "first"));
    EXPECT_EQ(outerRounds, 1);  // the second page's end ended the first one's wait too
}

TEST_F(PageLoad, AWatcherTakesTheFlagBackAndIsNeverLoadedItself) {
    gLoaded = 1;
    ImageURL watcher(center);
    EXPECT_EQ(watcher.init(), &watcher);
    EXPECT_EQ(gLoaded, 0);
    EXPECT_EQ(watcher.isLoaded(), 0);
    finishAny();
    EXPECT_EQ(gLoaded, 1);
    EXPECT_EQ(watcher.isLoaded(), 0);
    gLoaded = 0;
    finishAny();  // it is not told twice
    EXPECT_EQ(gLoaded, 0);
}

TEST_F(PageLoad, TheDocumentsSizeIsTruncatedAndTwentyMore) {
    view.documentFrame = {0, 0, 412.7, 95.2};
    std::int64_t width = 0;
    std::int64_t height = 0;
    GetDocumentViewSize(&view, width, height);
    EXPECT_EQ(width, 432);
    EXPECT_EQ(height, 115);
    view.documentFrame = {0, 0, -3.9, 1e300};
    GetDocumentViewSize(&view, width, height);
    EXPECT_EQ(width, 17);
    EXPECT_EQ(height, 20);
}

TEST_F(PageLoad, WithoutAWebViewNoSizeIsWritten) {
    std::int64_t width = 5;
    std::int64_t height = 6;
    GetDocumentViewSize(nullptr, width, height);
    EXPECT_EQ(width, 5);
    EXPECT_EQ(height, 6);
}

}  // namespace
}  // namespace skarnel
