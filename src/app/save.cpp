// Saving the full-size result to a file of the user's choice.
#include "app/vantera_desktop_controller.h"
#include "util/log/system_log.h"

namespace skarnel {

namespace {

std::string proposedFileName(const std::string& base, const std::optional<std::string>& extension) {
    return extension ? base + "." + *extension : base + ".tiff";
}

constexpr std::string_view kNoPicture = "The picture has no pixels, or there is no memory for them";

/// The window stays silent then; whoever wonders where the file is finds the cause in the log.
void logUnsaved(const std::string& name, std::string_view cause) {
    systemLog("Couldn't save " + name + ": " + std::string(cause));
}

}  // namespace

void VanteraDesktopController::save(const NSObject* /*sender*/) {
    if (!image) return;
    const std::optional<TIFFData> data = operations_.TIFFRepresentation(*image);
    if (!data) return logUnsaved(saveFilename, kNoPicture);
    const auto source = toolkit_.imageFiles().imageSourceCreateWithData(*data);
    if (!source) return logUnsaved(saveFilename, "The picture's form cannot be read");
    // The properties are the source picture's, not the rendered result's.
    const ImageProperties properties = source->copyPropertiesAtIndex(0);
    const std::string type = source->type();

    const std::shared_ptr<NSSavePanel> panel = toolkit_.savePanel();
    saveOptions = toolkit_.saveOptions(properties, type);
    saveOptions->addSaveOptionsAccessoryViewToSavePanel(*panel);
    const std::string file =
        proposedFileName(saveFilename, toolkit_.imageFiles().preferredExtension(type));
    panel->beginSheet(
        std::nullopt, file, *resultWindow,
        [this](NSSavePanel& ended, int returnCode, void* contextInfo) {
            savePanelDidEnd(ended, returnCode, contextInfo);
        },
        nullptr);
}

void VanteraDesktopController::savePanelDidEnd(NSSavePanel& panel, int returnCode,
                                               void* /*contextInfo*/) {
    if (returnCode != NSOKButton) return;
    if (!image) return logUnsaved(saveFilename, "There is no picture any more");
    const std::string path = panel.filename();
    const std::string type = saveOptions->imageUTType();
    const std::optional<CGImage> bitmap = operations_.getCGImageRef(*image);
    if (!bitmap) return logUnsaved(path, kNoPicture);
    const std::optional<CGImage> result = reflectedImage(*bitmap);
    if (!result) return logUnsaved(path, "The result is empty, or there is no memory for it");
    const auto writer = toolkit_.imageFiles().imageDestinationCreateWithURL(path, type);
    if (!writer) return logUnsaved(path, "It cannot be written as " + type);
    writer->addImage(*result, saveOptions->imageProperties());
    // A failed write is silent for the user; the writer has logged its cause and kept the old file.
    (void)writer->finalize();
}

void VanteraDesktopController::saveAndEdit(const NSObject* /*sender*/) {
    openInEditor = 1;
    save(this);
}

void VanteraDesktopController::closeNoSave(const NSObject* /*sender*/) {
    resultWindow->orderOut(this);
}

}  // namespace skarnel
