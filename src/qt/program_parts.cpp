#include "qt/program_parts.h"

#include "platform/page_module.h"
#include "qt/page/text_layout.h"
#include "textimaging/page_module_loader.h"
#include "textimaging/text_system.h"
#include "util/log/system_log.h"

namespace skarnel {
namespace {

class NoTextFiles final : public TextFiles {
  public:
    TextWriteOutcome writeStringToFile(std::u16string_view, std::string_view, Atomically,
                                       std::int32_t) override {
        return {};
    }
    bool writeDataToFile(ByteView, std::string_view, Atomically) override { return false; }
};

}  // namespace

struct ProgramParts::Impl {
    TextSystem textSystem{TextLayout{naturalTextSize, paragraphHeights}};
    NoTextFiles textFiles;
    std::unique_ptr<PageModule> pageModule;

    std::unique_ptr<WebView> webView(const CGRect& frame, NSNotificationCenter& center) {
        if (!pageModule) {
            auto loaded = loadPageModule({&center, [](std::string_view line) { systemLog(line); }});
            if (!loaded) {
                systemLog("The page renderer cannot be loaded: " + loaded.error().message);
                return nullptr;
            }
            pageModule = *std::move(loaded);
        }
        return pageModule->webView(frame);
    }
};

ProgramParts::ProgramParts() : impl_(std::make_unique<Impl>()) {}
ProgramParts::~ProgramParts() = default;

ApplicationParts ProgramParts::parts() {
    useLiberationFonts();
    return {SettingsStore::defaultPath(), WindowState::defaultPath(), impl_->textSystem,
            impl_->textFiles, [this](const CGRect& frame, NSNotificationCenter& center) {
                return impl_->webView(frame, center);
            }};
}

}  // namespace skarnel
