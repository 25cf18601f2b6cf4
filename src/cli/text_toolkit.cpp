#include "cli/text_toolkit.h"

#include <stdexcept>

namespace skarnel::cli {
namespace {

// Our own bug: a command that this toolkit does not serve.
[[noreturn]] void notServed() {
    throw std::logic_error("not a part of imaging text");
}

class SilentAlert final : public NSAlert {
  public:
    void setAlertStyle(NSAlertStyle) override {}
    int runModal() override { return NSOKButton; }
    void beginSheet(NSWindow&, const NSObject*, DidEnd, void*) override {}
};

}  // namespace

void PlainNotificationCenter::addObserver(const NSObject& observer, Handler handler,
                                          std::string_view name, const NSObject* object) {
    registrations_.push_back({&observer, std::move(handler), name, object});
}

void PlainNotificationCenter::removeObserver(const NSObject& observer, std::string_view name,
                                             const NSObject* object) {
    std::erase_if(registrations_, [&](const Registration& each) {
        return each.observer == &observer && each.name == name &&
               (object == nullptr || each.object == object);
    });
}

void PlainNotificationCenter::postNotification(const NSNotification& notification) {
    const std::vector<Registration> now = registrations_;
    for (const Registration& each : now)
        if (each.name == notification.name &&
            (each.object == nullptr || each.object == notification.object))
            each.handler(notification);
}

TextToolkit::TextToolkit(PageModule& module, NSNotificationCenter& center)
    : module_(module),
      center_(center),
      textSystem_({[&module](const StyledText& text) { return module.naturalTextSize(text); },
                   [&module](const StyledText& text) { return module.paragraphHeights(text); }}) {
    imageFiles_.setPrivateFolder(folder_.path());
}

std::shared_ptr<NSAlert> TextToolkit::alertWithMessageText(std::string_view message,
                                                           std::string_view,
                                                           const std::optional<std::string>&,
                                                           const std::optional<std::string>&,
                                                           std::string_view informativeText) {
    alerts_.push_back(std::string(message) + " " + std::string(informativeText));
    return std::make_shared<SilentAlert>();
}

std::unique_ptr<WebView> TextToolkit::webView(const CGRect& frame) {
    return module_.webView(frame);
}

std::optional<std::string> TextToolkit::temporaryDirectory() {
    if (folder_.path().empty()) return std::nullopt;
    return folder_.path();
}

// The folder is this object's own, so that counting is enough.
std::string TextToolkit::temporaryName() {
    return folder_.path() + "/text" + std::to_string(++names_);
}

NSUserDefaults& TextToolkit::standardUserDefaults() {
    notServed();
}
NSBundle& TextToolkit::mainBundle() {
    notServed();
}
NSWorkspace& TextToolkit::sharedWorkspace() {
    notServed();
}
NSPasteboard& TextToolkit::generalPasteboard() {
    notServed();
}
NSColorPanel& TextToolkit::sharedColorPanel() {
    notServed();
}
std::unique_ptr<NSOpenPanel> TextToolkit::openPanel() {
    notServed();
}
std::shared_ptr<NSSavePanel> TextToolkit::savePanel() {
    notServed();
}
std::shared_ptr<IKSaveOptions> TextToolkit::saveOptions(const ImageProperties&, std::string_view) {
    notServed();
}
std::shared_ptr<NSSound> TextToolkit::soundWithContentsOfFile(std::string_view, bool) {
    notServed();
}
std::optional<NSImage> TextToolkit::imageNamed(std::string_view) {
    notServed();
}

}  // namespace skarnel::cli
