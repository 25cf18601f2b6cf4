// Fakes of the panels and alerts, with the user's answers scripted.
#pragma once

#include <functional>

#include "call_log.h"
#include "platform/panels.h"

namespace skarnel::testing_app {

/// What the user does in the open panel.
struct OpenPanelScript {
    int answer = NSOKButton;
    std::vector<std::string> paths;
    /// Called each time that the paths are asked for, before they are given.
    std::function<void(OpenPanelScript&)> onFilenames;
};

class RecordingOpenPanel final : public NSOpenPanel {
  public:
    ~RecordingOpenPanel() override;
    RecordingOpenPanel(CallLog& log, OpenPanelScript& script) : log_(log), script_(script) {}
    void setAllowsMultipleSelection(bool allows) override {
        log_.add("openPanel.setAllowsMultipleSelection", yesNo(allows));
    }
    void setCanChooseDirectories(bool can) override {
        log_.add("openPanel.setCanChooseDirectories", yesNo(can));
    }
    void setCanChooseFiles(bool can) override {
        log_.add("openPanel.setCanChooseFiles", yesNo(can));
    }
    void setCanCreateDirectories(bool can) override {
        log_.add("openPanel.setCanCreateDirectories", yesNo(can));
    }
    void setTitle(std::string_view title) override { log_.add("openPanel.setTitle", title); }
    void setPrompt(std::string_view prompt) override { log_.add("openPanel.setPrompt", prompt); }
    int runModalForTypes(const std::vector<std::string>& types) override {
        std::string all;
        for (const std::string& type : types) all += (all.empty() ? "" : " ") + type;
        log_.add("openPanel.runModalForTypes", all);
        return script_.answer;
    }
    std::vector<std::string> filenames() const override {
        log_.add("openPanel.filenames");
        if (script_.onFilenames) script_.onFilenames(script_);
        return script_.paths;
    }

  private:
    CallLog& log_;
    OpenPanelScript& script_;
};

class RecordingSavePanel final : public NSSavePanel {
  public:
    ~RecordingSavePanel() override;
    explicit RecordingSavePanel(CallLog& log) : log_(log) { log_.name(*this, "savePanel"); }
    void beginSheet(const std::optional<std::string>& directory, std::string_view file,
                    NSWindow& modalForWindow, DidEnd didEnd, void* contextInfo) override {
        log_.add("savePanel.beginSheet",
                 "directory " + directory.value_or("none") + " file " + std::string(file) + " on " +
                     log_.nameOf(&modalForWindow) + (contextInfo == nullptr ? "" : " context"));
        didEnd_ = std::move(didEnd);
    }
    std::string filename() const override {
        log_.add("savePanel.filename");
        return chosenPath;
    }
    /// The user closes the sheet.
    void end(int returnCode) { didEnd_(*this, returnCode, nullptr); }

    std::string chosenPath;

  private:
    CallLog& log_;
    DidEnd didEnd_;
};

class RecordingSaveOptions final : public IKSaveOptions {
  public:
    ~RecordingSaveOptions() override;
    RecordingSaveOptions(CallLog& log, ImageProperties startProperties, std::string_view startType)
        : properties(std::move(startProperties)), type(startType), log_(log) {}
    void addSaveOptionsAccessoryViewToSavePanel(NSSavePanel& panel) override {
        log_.add("saveOptions.addSaveOptionsAccessoryViewToSavePanel", log_.nameOf(&panel));
    }
    std::string imageUTType() const override {
        log_.add("saveOptions.imageUTType");
        return type;
    }
    ImageProperties imageProperties() const override {
        log_.add("saveOptions.imageProperties");
        return properties;
    }
    ImageProperties properties;
    std::string type;

  private:
    CallLog& log_;
};

class RecordingColorPanel final : public NSColorPanel {
  public:
    ~RecordingColorPanel() override;
    explicit RecordingColorPanel(CallLog& log) : log_(log) { log_.name(*this, "colorPanel"); }
    NSColor color() const override {
        log_.add("colorPanel.color");
        return chosen;
    }
    void orderFront(const NSObject* sender) override {
        log_.add("colorPanel.orderFront", log_.nameOf(sender));
    }
    NSColor chosen = NSColor::whiteColor();

  private:
    CallLog& log_;
};

class RecordingAlert final : public NSAlert {
  public:
    ~RecordingAlert() override;
    explicit RecordingAlert(CallLog& log) : log_(log) {}
    void setAlertStyle(NSAlertStyle style) override {
        log_.add("alert.setAlertStyle", std::to_string(static_cast<int>(style)));
    }
    int runModal() override {
        log_.add("alert.runModal");
        return NSOKButton;
    }
    void beginSheet(NSWindow& modalForWindow, const NSObject* modalDelegate, DidEnd didEnd,
                    void* contextInfo) override {
        log_.add("alert.beginSheet", "on " + log_.nameOf(&modalForWindow) + " delegate " +
                                         log_.nameOf(modalDelegate) + (didEnd ? " didEnd" : "") +
                                         (contextInfo == nullptr ? "" : " context"));
    }

  private:
    CallLog& log_;
};

}  // namespace skarnel::testing_app
