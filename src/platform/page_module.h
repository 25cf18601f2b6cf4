// The page renderer as a module that is loaded at first use: what it offers, and its entry point.
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/notification_center.h"
#include "platform/run_loop.h"
#include "platform/styled_text.h"
#include "platform/web_view.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// What the module borrows from the program; outlives it.
struct PageModuleContext {
    NSNotificationCenter* notificationCenter = nullptr;
    std::function<void(std::string_view line)> log;
};

/// Main thread only. Where the program has no application object of the window toolkit, the module
/// makes one that needs no display and owns it. Web views go before the module.
class PageModule {
  public:
    virtual ~PageModule() = default;

    /// Null when the renderer cannot be started.
    virtual std::unique_ptr<WebView> webView(const CGRect& frame) = 0;

    /// Width and height of the text laid out without a width limit; points.
    virtual CGSize naturalTextSize(const StyledText& text) = 0;
    /// How high each paragraph is then, in order; pixels.
    virtual std::vector<double> paragraphHeights(const StyledText& text) = 0;

    /// The text of somebody else's HTML; what its markup leaves open is as in `base`. Nothing that
    /// it names is fetched.
    virtual StyledText styledTextOfHtml(std::u16string_view html, const TextStyle& base) = 0;

    /// The loop of the application object, for a program that has none of its own.
    virtual NSRunLoop& runLoop() = 0;
};

/// File name of the program in which the module has pages drawn.
inline constexpr const char* kPageRendererName = "skarnel-page-renderer";

/// Raised with every change of what passes between program and module.
inline constexpr int kPageModuleVersion = 1;

/// The module's one exported function; null when the versions differ. The caller deletes the
/// module before it ends, and the shared library stays loaded.
using OpenPageModule = PageModule* (*)(int version, const PageModuleContext* context);
inline constexpr const char* kOpenPageModuleSymbol = "skarnelOpenPageModule";

}  // namespace skarnel
