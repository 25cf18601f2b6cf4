#include "qt/program_parts.h"

#include "app/standard_text_files.h"
#include "platform/page_module.h"
#include "qt/page/text_layout.h"
#include "textimaging/page_module_loader.h"
#include "textimaging/text_system.h"
#include "util/log/system_log.h"

namespace skarnel {

struct ProgramParts::Impl {
    TextSystem textSystem{TextLayout{naturalTextSize, paragraphHeights}};
    StandardTextFiles textFiles;
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

ApplicationParts ProgramParts::parts(const QString& catalogue) {
    useLiberationFonts();
    return {SettingsStore::defaultPath(),
            WindowState::defaultPath(),
            impl_->textSystem,
            impl_->textFiles,
            [this](const CGRect& frame, NSNotificationCenter& center) {
                return impl_->webView(frame, center);
            },
            catalogue};
}

}  // namespace skarnel
