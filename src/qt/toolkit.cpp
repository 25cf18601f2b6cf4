#include "qt/toolkit.h"

#include <QApplication>
#include <QDir>

#include "qt/cue_player.h"
#include "qt/portal_file_dialog.h"
#include "util/resources/resource_path.h"

namespace skarnel {

QtToolkit::QtToolkit(ToolkitParts parts)
    : parts_(std::move(parts)), filePortal_(PortalFileDialog::busOfSandbox()) {}

QtColorPanel& QtToolkit::colorPanel() {
    if (!colorPanel_) colorPanel_ = std::make_unique<QtColorPanel>(center_, window_.data());
    return *colorPanel_;
}

std::unique_ptr<NSOpenPanel> QtToolkit::openPanel() {
    return std::make_unique<QtOpenPanel>(parts_.state, window_.data(), filePortal_);
}

std::shared_ptr<NSSavePanel> QtToolkit::savePanel() {
    return std::make_shared<QtSavePanel>(parts_.state, filePortal_, saveNotes_);
}

std::shared_ptr<IKSaveOptions> QtToolkit::saveOptions(const ImageProperties& imageProperties,
                                                      std::string_view imageUTType) {
    return std::make_shared<QtSaveOptions>(
        imageProperties, imageUTType, recipeText_ ? recipeText_() : std::string(), backgroundText_);
}

std::shared_ptr<NSAlert> QtToolkit::alertWithMessageText(
    std::string_view message, std::string_view defaultButton,
    const std::optional<std::string>& alternateButton,
    const std::optional<std::string>& otherButton, std::string_view informativeText) {
    std::vector<std::string> buttons{std::string(defaultButton)};
    if (alternateButton) buttons.push_back(*alternateButton);
    if (otherButton) buttons.push_back(*otherButton);
    return std::make_shared<QtAlert>(message, std::move(buttons), informativeText);
}

std::unique_ptr<WebView> QtToolkit::webView(const CGRect& frame) {
    return parts_.makeWebView ? parts_.makeWebView(frame, center_) : nullptr;
}

std::shared_ptr<NSSound> QtToolkit::soundWithContentsOfFile(std::string_view path,
                                                            bool /*byReference*/) {
    return QtSound::read(std::string(path), [this] { return parts_.state.cueMuted(); });
}

std::optional<NSImage> QtToolkit::imageNamed(std::string_view name) {
    for (const ImageType& type : imageTypes()) {
        if (!type.canRead) continue;
        for (const std::string_view extension : type.extensions)
            if (const auto path = findResource(std::string(name) + "." + std::string(extension)))
                return NSImage::initByReferencingFile(*path);
    }
    return std::nullopt;
}

void QtToolkit::beep() {
    QApplication::beep();
}

std::optional<std::string> QtToolkit::temporaryDirectory() {
    // Cleaners of temporary files remove what nobody has touched for days.
    if (!temporaryDirectory_ || !isOwnPrivateDirectory(*temporaryDirectory_)) {
        temporaryDirectory_ = privateTemporaryDirectory(QDir::tempPath().toStdString());
        imageFiles_.setPrivateFolder(temporaryDirectory_.value_or(""));
    }
    return temporaryDirectory_;
}

std::string QtToolkit::temporaryName() {
    return freshTemporaryName();
}

}  // namespace skarnel
