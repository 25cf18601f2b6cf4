// The module: the application object where there is none, the pages' processes, and the entry
// point.
#include "platform/page_module.h"

#include <QApplication>
#include <QTimer>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>

#include "qt/page/html_reader.h"
#include "qt/page/page_view.h"
#include "qt/page/remote_page.h"
#include "qt/page/text_layout.h"
#include "util/log/message.h"
#include "util/walls/helper_program.h"

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

// The toolkit's remarks on this machine are of no use to who runs a command line.
void onlyErrors(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg || type == QtCriticalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

/// An application object that needs no display, for a program that has none; null when there is
/// one already.
std::unique_ptr<QApplication> makeApplicationIfMissing() {
    if (QCoreApplication::instance() != nullptr) return nullptr;
    qInstallMessageHandler(onlyErrors);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Borrowed by the application object for its life.
    static int argumentCount = 1;
    static char name[] = "skarnel";
    static char* arguments[] = {name, nullptr};
    auto application = std::make_unique<QApplication>(argumentCount, arguments);
    application->setQuitOnLastWindowClosed(false);
    return application;
}

class QtPageModule final : public PageModule {
  public:
    explicit QtPageModule(const PageModuleContext& context)
        : context_(context),
          program_(findHelperProgram(kPageRendererName)),
          application_(makeApplicationIfMissing()) {
        useLiberationFonts();
        // Processes of ours end before the application object, whenever the module goes.
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, &quitting_,
                         [this] { idlePage_.reset(); });
    }

    std::unique_ptr<WebView> webView(const CGRect& frame) override {
        if (!program_) {
            context_.log(marked("The page renderer is not installed"));
            return nullptr;
        }
        const auto giveBack = [this](std::unique_ptr<RemotePage> page) {
            if (page->isReusable()) idlePage_ = std::move(page);
        };
        std::unique_ptr<RemotePage> page = std::move(idlePage_);
        if (page == nullptr || !page->isReusable())
            page = std::make_unique<RemotePage>(*program_, context_.log);
        return std::make_unique<PageView>(std::move(page), giveBack, context_, frame);
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
    PageModuleContext context_;
    std::optional<std::string> program_;
    std::unique_ptr<QApplication> application_;  // goes after the pages
    ModuleRunLoop runLoop_;
    std::unique_ptr<RemotePage> idlePage_;  // of the last view: its renderer is warm
    QObject quitting_;                      // ends the connection with the module
};

}  // namespace
}  // namespace skarnel

extern "C" [[gnu::visibility("default")]] skarnel::PageModule* skarnelOpenPageModule(
    int version, const skarnel::PageModuleContext* context) {
    if (version != skarnel::kPageModuleVersion) return nullptr;
    return new skarnel::QtPageModule(*context);
}
