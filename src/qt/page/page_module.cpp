// The module: the application object where there is none, the profile, and the entry point.
#include "platform/page_module.h"

#include <QApplication>
#include <QTimer>
#include <QWebEngineProfile>
#include <cmath>

#include "qt/page/html_reader.h"
#include "qt/page/page_view.h"
#include "qt/page/renderer_environment.h"
#include "qt/page/text_layout.h"

namespace skarnel {
namespace {

/// The application's loop, for programs that schedule no timers on it.
class ModuleRunLoop final : public NSRunLoop {
  public:
    NSTimer* scheduledTimerWithTimeInterval(double seconds, TimerAction action,
                                            bool repeats) override {
        auto timer = std::make_unique<ModuleTimer>();
        ModuleTimer& scheduled = *timer;
        scheduled.timer.setSingleShot(!repeats);
        QObject::connect(&scheduled.timer, &QTimer::timeout,
                         [&scheduled, action = std::move(action)] { action(scheduled); });
        scheduled.timer.start(static_cast<int>(seconds * 1000));
        timers_.push_back(std::move(timer));
        return timers_.back().get();
    }
    bool runMode(std::string_view, double beforeDate) override {
        QTimer limit;
        limit.setSingleShot(true);
        if (std::isfinite(beforeDate))
            limit.start(static_cast<int>(std::clamp(beforeDate, 0.0, 1e6) * 1000));
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return true;
    }

  private:
    struct ModuleTimer final : NSTimer {
        void invalidate() override { timer.stop(); }
        QTimer timer;
    };
    std::vector<std::unique_ptr<ModuleTimer>> timers_;
};

class QtPageModule final : public PageModule {
  public:
    explicit QtPageModule(const PageModuleContext& context) : context_(context) {
        application_ = makeApplicationIfMissing();
        prepareRenderer(context_.log);
        useLiberationFonts();
        // The engine must be gone before the application object, whenever the module goes.
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, &quitting_, [this] { shutDown(); });
    }

    std::unique_ptr<WebView> webView(const CGRect& frame) override {
        const auto giveBack = [this](std::unique_ptr<PageEngine> engine) {
            if (engine->isReusable()) idleEngine_ = std::move(engine);
        };
        std::unique_ptr<PageEngine> engine = std::move(idleEngine_);
        if (engine == nullptr) engine = std::make_unique<PageEngine>(profile(), context_.log);
        return std::make_unique<PageView>(std::move(engine), giveBack, context_, frame);
    }
    CGSize naturalTextSize(const StyledText& text) override {
        return skarnel::naturalTextSize(text);
    }
    std::vector<double> paragraphHeights(const StyledText& text) override {
        return skarnel::paragraphHeights(text);
    }
    StyledText styledTextOfHtml(std::u16string_view html, const TextStyle& base) override {
        return skarnel::styledTextOfHtml(html, base);
    }
    NSRunLoop& runLoop() override { return runLoop_; }

  private:
    // Nothing is lent any more by then: commands that wait have ended with the loop.
    void shutDown() {
        idleEngine_.reset();
        profile_.reset();
    }

    // Off the record and without a cache: nothing of a page outlives it.
    QWebEngineProfile& profile() {
        if (profile_ == nullptr) {
            profile_ = std::make_unique<QWebEngineProfile>();
            profile_->setHttpCacheType(QWebEngineProfile::NoCache);
            profile_->setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
            profile_->setSpellCheckEnabled(false);
        }
        return *profile_;
    }

    // In this order, so that the engine goes before the profile and that before the application.
    PageModuleContext context_;
    std::unique_ptr<QApplication> application_;
    ModuleRunLoop runLoop_;
    std::unique_ptr<QWebEngineProfile> profile_;
    std::unique_ptr<PageEngine> idleEngine_;  // of the last view: its renderer is warm
    QObject quitting_;                        // ends the connection with the module
};

}  // namespace
}  // namespace skarnel

extern "C" [[gnu::visibility("default")]] skarnel::PageModule* skarnelOpenPageModule(
    int version, const skarnel::PageModuleContext* context) {
    if (version != skarnel::kPageModuleVersion) return nullptr;
    return new skarnel::QtPageModule(*context);
}
