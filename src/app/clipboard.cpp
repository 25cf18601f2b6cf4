// Copying the full-size result to the pasteboard.
#include "app/vantera_desktop_controller.h"

namespace skarnel {

namespace {

constexpr std::int64_t kTiffCompressionLzw = 5;  // as the TIFF standard's Compression tag has it

}  // namespace

void VanteraDesktopController::putImageOnClipboard(const NSObject* /*sender*/) {
    sliderChanged(this);  // also before a copy that then fails
    if (!image) return;
    const std::optional<CGImage> bitmap = operations_.getCGImageRef(*image);
    if (!bitmap) return;
    const std::optional<CGImage> result = reflectedImage(*bitmap);
    if (!result) return;
    const std::shared_ptr<Bytes> data = toolkit_.imageFiles().dataCreateMutable();
    if (!data) return;
    const auto writer = toolkit_.imageFiles().imageDestinationCreateWithData(data, kUTTypeTIFF);
    if (!writer) return;
    writer->addImage(*result, {{std::string(kPropertyTiffCompression), kTiffCompressionLzw}});
    if (!writer->finalize()) return;

    NSPasteboard& pasteboard = toolkit_.generalPasteboard();
    pasteboard.declareTypes({NSTIFFPboardType}, nullptr);
    pasteboard.setData(*data, NSTIFFPboardType);
    if (const auto sound = completionSound()) sound->play();
}

std::shared_ptr<NSSound> VanteraDesktopController::completionSound() const {
    return harpSound;
}

}  // namespace skarnel
