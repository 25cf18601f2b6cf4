// The toolkit as a recorder: every fake writes to one shared log, and a test asserts all of it.
#pragma once

#include <deque>
#include <functional>
#include <stdexcept>

#include "call_log.h"
#include "platform/toolkit.h"
#include "platform/web_view.h"
#include "recording_images.h"
#include "recording_panels.h"
#include "recording_services.h"

namespace skarnel::testing_app {

class RecordingToolkit final : public Toolkit {
  public:
    ~RecordingToolkit() override;
    NSUserDefaults& standardUserDefaults() override { return defaults; }
    NSNotificationCenter& defaultNotificationCenter() override { return notifications; }
    NSRunLoop& mainRunLoop() override { return runLoop; }
    NSBundle& mainBundle() override { return bundle; }
    NSWorkspace& sharedWorkspace() override { return workspace; }
    NSPasteboard& generalPasteboard() override { return pasteboard; }
    NSColorPanel& sharedColorPanel() override { return colorPanel; }
    ImageFiles& imageFiles() override { return files; }
    AttributedTextServices& attributedText() override { return given(textServices); }
    TextFiles& textFiles() override { return given(textFilesService); }

    std::unique_ptr<NSOpenPanel> openPanel() override {
        log.add("openPanel");
        return std::make_unique<RecordingOpenPanel>(log, openPanelScript);
    }
    std::shared_ptr<NSSavePanel> savePanel() override {
        log.add("savePanel");
        return lastSavePanel = std::make_shared<RecordingSavePanel>(log);
    }
    std::shared_ptr<IKSaveOptions> saveOptions(const ImageProperties& imageProperties,
                                               std::string_view imageUTType) override {
        log.add("saveOptions", imageUTType);
        return lastSaveOptions =
                   std::make_shared<RecordingSaveOptions>(log, imageProperties, imageUTType);
    }
    std::shared_ptr<NSAlert> alertWithMessageText(std::string_view message,
                                                  std::string_view defaultButton,
                                                  const std::optional<std::string>& alternateButton,
                                                  const std::optional<std::string>& otherButton,
                                                  std::string_view informativeText) override {
        log.add("alert", "\"" + std::string(message) + "\" \"" + std::string(defaultButton) +
                             "\" " + alternateButton.value_or("none") + " " +
                             otherButton.value_or("none") + " \"" + std::string(informativeText) +
                             "\"");
        return std::make_shared<RecordingAlert>(log);
    }
    std::unique_ptr<WebView> webView(const CGRect& frame) override {
        if (!makeWebView) throw std::logic_error("the test gave no web view");
        return makeWebView(frame);
    }
    std::shared_ptr<NSSound> soundWithContentsOfFile(std::string_view path,
                                                     bool byReference) override {
        log.add("soundWithContentsOfFile",
                std::string(path) + " by reference " + yesNo(byReference));
        if (log.fails("soundWithContentsOfFile")) return nullptr;
        return std::make_shared<RecordingSound>(log);
    }
    std::optional<NSImage> imageNamed(std::string_view name) override {
        log.add("imageNamed", name);
        return namedImage;
    }
    void beep() override { log.add("beep"); }
    std::optional<std::string> temporaryDirectory() override {
        log.add("temporaryDirectory");
        return temporaryFolder;
    }
    std::string temporaryName() override {
        log.add("temporaryName");
        if (temporaryNames.empty()) throw std::logic_error("the test gave no more names");
        std::string name = temporaryNames.front();
        temporaryNames.pop_front();
        return name;
    }

    CallLog log;
    RecordingDefaults defaults{log};
    RecordingNotificationCenter notifications{log};
    RecordingRunLoop runLoop{log};
    RecordingBundle bundle{log};
    RecordingWorkspace workspace{log};
    RecordingPasteboard pasteboard{log};
    RecordingColorPanel colorPanel{log};
    RecordingImageFiles files{log};
    OpenPanelScript openPanelScript;
    std::optional<NSImage> namedImage;  // what every image resource is; none = missing
    std::shared_ptr<RecordingSavePanel> lastSavePanel;
    std::shared_ptr<RecordingSaveOptions> lastSaveOptions;

    // Given by the tests that image text.
    AttributedTextServices* textServices = nullptr;
    TextFiles* textFilesService = nullptr;
    std::function<std::unique_ptr<WebView>(const CGRect&)> makeWebView;
    std::optional<std::string> temporaryFolder;
    std::deque<std::string> temporaryNames;

  private:
    template <typename T>
    static T& given(T* service) {
        if (service == nullptr) throw std::logic_error("the test gave no such service");
        return *service;
    }
};

}  // namespace skarnel::testing_app
