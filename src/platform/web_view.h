// The embeddable web-page renderer as the controller sees it: a page that is never on screen.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "imaging/cgimage.h"
#include "platform/object.h"
#include "util/geometry/geometry.h"
#include "util/log/result.h"

namespace skarnel {

class WebView;

/// Posted to the default notification centre by a web view, as its object, when the load of its
/// page with all that belongs to it has ended, well or badly.
inline constexpr std::string_view WebViewProgressFinishedNotification =
    "WebProgressFinishedNotification";

struct NSURLRequest {
    std::string url;  // absolute, escaped
    static NSURLRequest requestWithURL(std::string url) { return {std::move(url)}; }
    friend bool operator==(const NSURLRequest&, const NSURLRequest&) = default;
};

/// Told about the load of the page itself.
class WebFrameLoadDelegate {
  public:
    virtual void webViewDidStartProvisionalLoad(WebView& sender) = 0;
    virtual void webViewDidReceiveTitle(WebView& sender, const std::string& title) = 0;
    virtual void webViewDidFinishLoad(WebView& sender) = 0;

  protected:
    ~WebFrameLoadDelegate() = default;
};

/// Told about each resource of the page: the document itself and what it names.
class WebResourceLoadDelegate {
  public:
    /// The number that stands for the resource in the calls that follow.
    virtual std::int32_t webViewIdentifierForInitialRequest(WebView& sender,
                                                            const NSURLRequest& request) = 0;
    /// The request to send in place of the given one.
    virtual NSURLRequest webViewResourceWillSendRequest(WebView& sender, std::int32_t resource,
                                                        const NSURLRequest& request) = 0;
    virtual void webViewResourceDidFinishLoading(WebView& sender, std::int32_t resource) = 0;
    virtual void webViewResourceDidFailLoading(WebView& sender, std::int32_t resource,
                                               const Error& error) = 0;

  protected:
    ~WebResourceLoadDelegate() = default;
};

/// What a page asks of the user interface. None of it is taken up: the view's default holds.
class WebUIDelegate {
  protected:
    ~WebUIDelegate() = default;
};

class WebFrame {
  public:
    /// Starts the load and returns at once.
    virtual void loadRequest(const NSURLRequest& request) = 0;
    /// The frame of the document view inside the frame view: the laid-out document's size.
    virtual CGRect frameViewDocumentViewFrame() = 0;

  protected:
    ~WebFrame() = default;
};

enum class PaintOutcome {
    Painted,
    NotPainted,  // the page did not show its final state in time; the bitmap is to be thrown away
};

/// Delegates and the notification centre are borrowed and outlive the view.
class WebView : public NSObject {
  public:
    virtual void setFrameLoadDelegate(WebFrameLoadDelegate* delegate) = 0;
    virtual void setUIDelegate(WebUIDelegate* delegate) = 0;
    virtual void setResourceLoadDelegate(WebResourceLoadDelegate* delegate) = 0;

    virtual WebFrame& mainFrame() = 0;

    /// Sizes in units of drawing, one pixel each.
    virtual void setFrame(const CGRect& frame) = 0;
    /// In no window: the view's whole bounds.
    virtual CGRect visibleRect() = 0;

    /// A transparent bitmap of the rectangle's size, one pixel a unit; none where that is more than
    /// can be captured (logged) or memory is short.
    virtual std::optional<PixelBuffer> bitmapImageRepForCachingDisplayInRect(
        const CGRect& rect) = 0;

    /// Draws what the view shows of the rectangle into the bitmap, as large as the view is now.
    virtual PaintOutcome cacheDisplayInRect(const CGRect& rect, PixelBuffer& bitmap) = 0;
};

}  // namespace skarnel
