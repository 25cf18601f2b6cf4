// As much of the toolkit as the commands of text imaging use, without a window.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/standard_image_files.h"
#include "app/standard_text_files.h"
#include "cli/interrupt.h"
#include "platform/page_module.h"
#include "platform/toolkit.h"
#include "textimaging/text_system.h"

namespace skarnel::cli {

/// Delivers to whoever is registered when it is posted.
class PlainNotificationCenter final : public NSNotificationCenter {
  public:
    void addObserver(const NSObject& observer, Handler handler, std::string_view name,
                     const NSObject* object) override;
    void removeObserver(const NSObject& observer, std::string_view name,
                        const NSObject* object) override;
    void postNotification(const NSNotification& notification) override;

  private:
    struct Registration {
        const NSObject* observer;
        Handler handler;
        std::string_view name;
        const NSObject* object;
    };
    std::vector<Registration> registrations_;
};

/// Collects the alerts instead of showing them. What text imaging does not use raises.
class TextToolkit final : public Toolkit {
  public:
    /// Borrows the module, which posts to `center`.
    TextToolkit(PageModule& module, NSNotificationCenter& center);

    /// Message and informative text of each alert.
    const std::vector<std::string>& alerts() const { return alerts_; }

    NSUserDefaults& standardUserDefaults() override;
    NSNotificationCenter& defaultNotificationCenter() override { return center_; }
    NSRunLoop& mainRunLoop() override { return module_.runLoop(); }
    NSBundle& mainBundle() override;
    NSWorkspace& sharedWorkspace() override;
    NSPasteboard& generalPasteboard() override;
    NSColorPanel& sharedColorPanel() override;
    ImageFiles& imageFiles() override { return imageFiles_; }
    AttributedTextServices& attributedText() override { return textSystem_; }
    TextFiles& textFiles() override { return textFiles_; }
    std::unique_ptr<NSOpenPanel> openPanel() override;
    std::shared_ptr<NSSavePanel> savePanel() override;
    std::shared_ptr<IKSaveOptions> saveOptions(const ImageProperties&, std::string_view) override;
    std::shared_ptr<NSAlert> alertWithMessageText(std::string_view message, std::string_view,
                                                  const std::optional<std::string>&,
                                                  const std::optional<std::string>&,
                                                  std::string_view informativeText) override;
    std::unique_ptr<WebView> webView(const CGRect& frame) override;
    std::shared_ptr<NSSound> soundWithContentsOfFile(std::string_view, bool) override;
    std::optional<NSImage> imageNamed(std::string_view) override;
    void beep() override {}
    std::optional<std::string> temporaryDirectory() override;
    std::string temporaryName() override;

  private:
    PageModule& module_;
    NSNotificationCenter& center_;
    TextSystem textSystem_;
    StandardImageFiles imageFiles_;
    StandardTextFiles textFiles_;
    FolderGoneAtInterrupt folder_;
    std::vector<std::string> alerts_;
    int names_ = 0;
};

}  // namespace skarnel::cli
