// Choosing a photo, installing it as the source, and showing its first reflection.
#include "app/vantera_desktop_controller.h"
#include "render/fitting.h"
#include "storage/save_name.h"

namespace skarnel {

namespace {

const std::vector<std::string>& photoFileTypes() {
    static const std::vector<std::string> types{"jpg", "jpeg", "jp2",  "bmp",
                                                "png", "tif",  "tiff", "psd"};
    return types;
}

}  // namespace

void VanteraDesktopController::browse(const NSObject* /*sender*/) {
    const std::unique_ptr<NSOpenPanel> panel = toolkit_.openPanel();
    panel->setAllowsMultipleSelection(false);
    panel->setCanChooseDirectories(false);
    panel->setCanChooseFiles(true);
    panel->setCanCreateDirectories(false);
    panel->setTitle("Choose photo");
    panel->setPrompt("Choose");
    if (panel->runModalForTypes(photoFileTypes()) != NSOKButton) return;

    // The panel is asked again at each step: installing a picture runs for long enough that its
    // answer may have changed.
    for (std::size_t index = 0; index < panel->filenames().size(); ++index) {
        const std::vector<std::string> paths = panel->filenames();
        if (index < paths.size() && !paths[index].empty()) imagePathChanged(paths[index]);
    }
}

void VanteraDesktopController::imagePathChanged(const std::string& path) {
    std::optional<NSImage> opened = operations_.initByReferencingFile(path);
    if (!opened) return;
    image = std::move(opened);
    saveFilename = saveNameForPath(path);
    loadImage();
}

void VanteraDesktopController::loadImage() {
    if (!image) return;
    const CGRect visible = resultView->visibleRect();
    scaledImage.reset();
    const CGSize size = image->size();
    const CGRect fitted =
        GetDestinationRect({visible.x, visible.y, size.width, size.height}, visible);
    scaledImage = operations_.imageByScalingProportionallyToSize(*image, fitted.size());
    if (!scaledImage) return;
    const std::optional<CGImage> bitmap = operations_.getCGImageRef(*scaledImage);
    if (!bitmap) return;
    const std::optional<CGImage> result = reflectedImage(*bitmap);
    if (!result) return;
    resultView->setImage(*result, nullptr);
    resultView->zoomImageToFit(this);
}

}  // namespace skarnel
