// The web view on the web engine: delegates, notification, sizes, drawing.
#pragma once

#include <QObject>
#include <QUrl>
#include <functional>
#include <memory>
#include <vector>

#include "platform/page_module.h"
#include "qt/page/page_engine.h"

namespace skarnel {

/// Wider or higher than this a page is not captured; pixels.
inline constexpr int kLargestCaptureSide = 16'384;

class PageView final : public WebView, private WebFrame {
  public:
    /// Takes an engine on loan: `giveBack` receives it when the view goes.
    using GiveBack = std::function<void(std::unique_ptr<PageEngine>)>;
    PageView(std::unique_ptr<PageEngine> engine, GiveBack giveBack,
             const PageModuleContext& context, const CGRect& frame);
    ~PageView() override;

    void setFrameLoadDelegate(WebFrameLoadDelegate* delegate) override;
    void setUIDelegate(WebUIDelegate* delegate) override;
    void setResourceLoadDelegate(WebResourceLoadDelegate* delegate) override;
    WebFrame& mainFrame() override { return *this; }
    void setFrame(const CGRect& frame) override;
    CGRect visibleRect() override;
    std::optional<PixelBuffer> bitmapImageRepForCachingDisplayInRect(const CGRect& rect) override;
    PaintOutcome cacheDisplayInRect(const CGRect& rect, PixelBuffer& bitmap) override;

  private:
    struct Resource {
        std::int32_t identifier;
        QUrl url;
    };

    void loadRequest(const NSURLRequest& request) override;
    CGRect frameViewDocumentViewFrame() override;
    void resourceRequested(const QUrl& url, bool allowed);
    void loadFinished(bool ok);

    std::unique_ptr<PageEngine> engine_;
    GiveBack giveBack_;
    PageModuleContext context_;
    CGRect frame_;
    WebFrameLoadDelegate* frameLoadDelegate_ = nullptr;
    WebResourceLoadDelegate* resourceLoadDelegate_ = nullptr;
    std::vector<Resource> loading_;
    bool hasLoaded_ = false;
};

}  // namespace skarnel
