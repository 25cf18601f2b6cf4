// The toolkit: the shared objects of the application and the makers of new ones.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "imaging/nsimage/nsimage.h"
#include "platform/attributed_text.h"
#include "platform/image_files.h"
#include "platform/notification_center.h"
#include "platform/panels.h"
#include "platform/run_loop.h"
#include "platform/services.h"
#include "platform/text_files.h"
#include "platform/user_defaults.h"
#include "platform/web_view.h"
#include "util/geometry/geometry.h"

namespace skarnel {

/// Main thread only. What it hands out by reference lives as long as the toolkit.
class Toolkit {
  public:
    Toolkit() = default;
    Toolkit(const Toolkit&) = delete;
    Toolkit& operator=(const Toolkit&) = delete;
    virtual ~Toolkit() = default;

    virtual NSUserDefaults& standardUserDefaults() = 0;
    virtual NSNotificationCenter& defaultNotificationCenter() = 0;
    virtual NSRunLoop& mainRunLoop() = 0;
    virtual NSBundle& mainBundle() = 0;
    virtual NSWorkspace& sharedWorkspace() = 0;
    virtual NSPasteboard& generalPasteboard() = 0;
    virtual NSColorPanel& sharedColorPanel() = 0;
    virtual ImageFiles& imageFiles() = 0;
    virtual AttributedTextServices& attributedText() = 0;
    virtual TextFiles& textFiles() = 0;

    /// Never null.
    virtual std::unique_ptr<NSOpenPanel> openPanel() = 0;
    virtual std::shared_ptr<NSSavePanel> savePanel() = 0;
    virtual std::shared_ptr<IKSaveOptions> saveOptions(const ImageProperties& imageProperties,
                                                       std::string_view imageUTType) = 0;
    /// An alert with a message, up to three buttons (none: left out) and an informative text.
    virtual std::shared_ptr<NSAlert> alertWithMessageText(
        std::string_view message, std::string_view defaultButton,
        const std::optional<std::string>& alternateButton,
        const std::optional<std::string>& otherButton, std::string_view informativeText) = 0;

    /// A page renderer's view in no window; null when there is none to be had.
    virtual std::unique_ptr<WebView> webView(const CGRect& frame) = 0;

    /// Null when the file cannot be read as a sound. `byReference` false reads it at once.
    virtual std::shared_ptr<NSSound> soundWithContentsOfFile(std::string_view path,
                                                             bool byReference) = 0;

    /// The application's image resource of that name, none when it is missing.
    virtual std::optional<NSImage> imageNamed(std::string_view name) = 0;

    /// The system alert sound.
    virtual void beep() = 0;

    /// The directory for temporary files, with or without a final separator; none when its UTF-8
    /// form cannot be had. It is private to the user.
    virtual std::optional<std::string> temporaryDirectory() = 0;

    /// A fresh path, as tmpnam gives it; callers use its last component only.
    virtual std::string temporaryName() = 0;
};

}  // namespace skarnel
