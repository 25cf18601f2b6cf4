// The styled text as an HTML page on the viewer's background colour, and how much room it takes.
#include "app/vantera_desktop_controller.h"
#include "textimaging/html_writer.h"

namespace skarnel {

void VanteraDesktopController::estimateTextSize(CGSize& size) {
    const NSAttributedString& storage = textView->textStorage();
    if (storage.isEmpty()) return;
    AttributedTextServices& services = toolkit_.attributedText();
    const std::optional<Bytes> data = services.dataFromRange(
        storage, {0, storage.length()}, {DocumentType::NSRTFDTextDocumentType, kEncodingUTF8});
    if (!data) return;
    // Measured is what the serialised form gives back, never the view's own text.
    const Result<StyledText> copy = services.initWithData(*data);
    if (!copy) return;
    size = services.size(*copy);
}

std::optional<std::u16string> VanteraDesktopController::getHTMLMessage(std::int32_t encoding,
                                                                       CGSize& estimatedSize) {
    const NSAttributedString& storage = textView->textStorage();
    if (storage.isEmpty()) return std::nullopt;
    estimateTextSize(estimatedSize);
    AttributedTextServices& services = toolkit_.attributedText();
    const std::optional<Bytes> data = services.dataFromRange(
        storage, {0, storage.length()}, {DocumentType::NSHTMLTextDocumentType, encoding});
    if (!data) return std::nullopt;
    const std::optional<std::u16string> message = services.stringWithData(*data, encoding);
    if (!message) return std::nullopt;
    return withBodyBackground(*message, backgroundColorString());
}

}  // namespace skarnel
