#include "textimaging/page_load.h"

#include <string>

#include "textimaging/url_text.h"
#include "util/geometry/integers.h"

namespace skarnel {
namespace {

constexpr std::int64_t kDocumentMargin = 20;

}  // namespace

std::uint8_t gLoaded = 0;

ImageURL* ImageURL::init() {
    gLoaded = 0;
    center_.addObserver(
        *this, [this](const NSNotification& notification) { webPageFinishedLoading(notification); },
        WebViewProgressFinishedNotification, nullptr);
    return this;
}

void ImageURL::webPageFinishedLoading(const NSNotification&) {
    center_.removeObserver(*this, WebViewProgressFinishedNotification, nullptr);
    gLoaded = 1;
}

void LoadURL(WebView& webView, std::string_view url, NSNotificationCenter& center,
             NSRunLoop& runLoop) {
    if (!isValidURLText(url)) return;
    const NSURLRequest request = NSURLRequest::requestWithURL(std::string(url));
    WebFrame& mainFrame = webView.mainFrame();
    ImageURL watcher(center);
    watcher.init();
    mainFrame.loadRequest(request);
    while (gLoaded == 0 && runLoop.runMode(NSDefaultRunLoopMode, kDistantFuture)) {
    }
    // A wait that the loop ended was never told, and its watcher goes now.
    if (gLoaded == 0) center.removeObserver(watcher, WebViewProgressFinishedNotification, nullptr);
}

void GetDocumentViewSize(WebView* webView, std::int64_t& width, std::int64_t& height) {
    if (webView == nullptr) return;
    const CGRect frame = webView->mainFrame().frameViewDocumentViewFrame();
    width = toInt64(frame.width) + kDocumentMargin;
    height = toInt64(frame.height) + kDocumentMargin;
}

}  // namespace skarnel
