// Loading a page and waiting for it, through the main loop.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/notification_center.h"
#include "platform/run_loop.h"
#include "platform/web_view.h"

namespace skarnel {

/// Whether the page that is waited for has loaded. One for the whole process: a second watcher
/// takes it back, and the end of any view's load sets it for every wait there is.
extern std::uint8_t gLoaded;

/// The load watcher. Takes `gLoaded` back when it is made ready and sets it at the first progress
/// notification of any web view.
class ImageURL : public NSObject {
  public:
    explicit ImageURL(NSNotificationCenter& center) : center_(center) {}

    /// Called once, before the load begins.
    ImageURL* init();
    void webPageFinishedLoading(const NSNotification& notification);
    /// Always false: the flag that counts is `gLoaded`. Nothing calls it.
    std::int8_t isLoaded() const { return m_loaded; }

  private:
    std::int8_t m_loaded = 0;
    NSNotificationCenter& center_;
};

/// Loads and returns when the page has loaded or the loop cannot run any more; there is no time
/// limit, and everything that the loop delivers goes on meanwhile. A text that is no URL is not
/// loaded and not waited for.
void LoadURL(WebView& webView, std::string_view url, NSNotificationCenter& center,
             NSRunLoop& runLoop);

/// The laid-out document's width and height, truncated, and 20 more each. Without a web view
/// nothing is written.
void GetDocumentViewSize(WebView* webView, std::int64_t& width, std::int64_t& height);

}  // namespace skarnel
