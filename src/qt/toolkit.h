// The toolkit of the window: every service of the controller on Qt.
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>

#include "app/standard_image_files.h"
#include "platform/toolkit.h"
#include "qt/toolkit_panels.h"
#include "qt/toolkit_services.h"

namespace skarnel {

/// What is not Qt's comes from outside and is borrowed: the user's defaults, the text system, the
/// text files and the maker of page views.
struct ToolkitParts {
    NSUserDefaults& defaults;
    WindowState& state;
    AttributedTextServices& attributedText;
    TextFiles& textFiles;
    /// Given the frame and the notification centre; may be empty, and then text cannot be imaged.
    std::function<std::unique_ptr<WebView>(const CGRect& frame, NSNotificationCenter& center)>
        makeWebView;
};

class QtToolkit final : public Toolkit {
  public:
    explicit QtToolkit(ToolkitParts parts);

    /// The window that panels belong to; before the first panel.
    void setMainWindow(QWidget* window) { window_ = window; }
    QtColorPanel& colorPanel();
    /// Asked at each save for the background as "#RRGGBB", which lies below a picture that is saved
    /// in a format without transparency.
    void setBackgroundText(std::function<std::string()> backgroundText) {
        backgroundText_ = std::move(backgroundText);
    }
    /// Where files are asked for in the desktop's dialogs; at first as the surroundings need it.
    const FilePortal& filePortal() const { return filePortal_; }
    void setFilePortal(FilePortal portal) { filePortal_ = std::move(portal); }
    /// Asked at each save for the text of the recipe that the file may carry.
    void setRecipeText(std::function<std::string()> recipeText) {
        recipeText_ = std::move(recipeText);
    }

    /// Told the path of each file that a save has written.
    void setSaved(StandardImageFiles::Saved saved) { imageFiles_.setSaved(std::move(saved)); }
    /// Told of each save that had no room for the recipe.
    void setRecipeLeftOut(StandardImageFiles::RecipeLeftOut leftOut) {
        imageFiles_.setRecipeLeftOut(std::move(leftOut));
    }
    /// Told around each save of a result.
    void setSaveNotes(SaveNotes notes) { saveNotes_ = std::move(notes); }
    /// Told of each result that has gone to the clipboard through the controller.
    void setCopied(std::function<void()> copied) { pasteboard_.setFilled(std::move(copied)); }

    NSUserDefaults& standardUserDefaults() override { return parts_.defaults; }
    NSNotificationCenter& defaultNotificationCenter() override { return center_; }
    NSRunLoop& mainRunLoop() override { return runLoop_; }
    NSBundle& mainBundle() override { return bundle_; }
    NSWorkspace& sharedWorkspace() override { return workspace_; }
    NSPasteboard& generalPasteboard() override { return pasteboard_; }
    NSColorPanel& sharedColorPanel() override { return colorPanel(); }
    ImageFiles& imageFiles() override { return imageFiles_; }
    AttributedTextServices& attributedText() override { return parts_.attributedText; }
    TextFiles& textFiles() override { return parts_.textFiles; }

    std::unique_ptr<NSOpenPanel> openPanel() override;
    std::shared_ptr<NSSavePanel> savePanel() override;
    std::shared_ptr<IKSaveOptions> saveOptions(const ImageProperties& imageProperties,
                                               std::string_view imageUTType) override;
    std::shared_ptr<NSAlert> alertWithMessageText(std::string_view message,
                                                  std::string_view defaultButton,
                                                  const std::optional<std::string>& alternateButton,
                                                  const std::optional<std::string>& otherButton,
                                                  std::string_view informativeText) override;
    std::unique_ptr<WebView> webView(const CGRect& frame) override;
    std::shared_ptr<NSSound> soundWithContentsOfFile(std::string_view path,
                                                     bool byReference) override;
    std::optional<NSImage> imageNamed(std::string_view name) override;
    void beep() override;
    std::optional<std::string> temporaryDirectory() override;
    std::string temporaryName() override;

  private:
    ToolkitParts parts_;
    FilePortal filePortal_;
    SaveNotes saveNotes_;
    QPointer<QWidget> window_;
    QtNotificationCenter center_;
    QtRunLoop runLoop_;
    QtBundle bundle_;
    QtWorkspace workspace_;
    QtPasteboard pasteboard_;
    StandardImageFiles imageFiles_;
    std::unique_ptr<QtColorPanel> colorPanel_;
    std::optional<std::string> temporaryDirectory_;
    std::function<std::string()> recipeText_;
    std::function<std::string()> backgroundText_;
};

}  // namespace skarnel
