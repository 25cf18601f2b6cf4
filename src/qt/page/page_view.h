// The web view on the web engine: delegates, notification, sizes, drawing.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <vector>

#include "platform/page_module.h"
#include "qt/page/remote_page.h"

namespace skarnel {

class PageView final : public WebView, private WebFrame {
  public:
    /// Takes a page on loan: `giveBack` receives it when the view goes.
    using GiveBack = std::function<void(std::unique_ptr<RemotePage>)>;
    PageView(std::unique_ptr<RemotePage> page, GiveBack giveBack, const PageModuleContext& context,
             const CGRect& frame);
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
    void loadRequest(const NSURLRequest& request) override;
    CGRect frameViewDocumentViewFrame() override;
    void resourceRequested(const QString& address, bool allowed);
    void loadFinished(bool ok);

    std::unique_ptr<RemotePage> page_;
    GiveBack giveBack_;
    PageModuleContext context_;
    CGRect frame_;
    WebFrameLoadDelegate* frameLoadDelegate_ = nullptr;
    WebResourceLoadDelegate* resourceLoadDelegate_ = nullptr;
    std::vector<std::int32_t> loading_;  // the resources that are on their way
    bool hasLoaded_ = false;
};

}  // namespace skarnel
