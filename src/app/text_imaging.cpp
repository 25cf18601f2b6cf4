// The command that makes the typed text the source picture.
#include "app/vantera_desktop_controller.h"
#include "textimaging/path_text.h"
#include "textimaging/url_text.h"

namespace skarnel {
namespace {

// The page is twice as wide and four times as high as the estimate: 800 by 200 when there is none.
constexpr CGSize kSizeWithoutEstimate{400, 50};

}  // namespace

void VanteraDesktopController::imageText(const NSObject*) {
    CGSize estimatedSize = kSizeWithoutEstimate;
    const std::optional<std::u16string> html = getHTMLMessage(kEncodingUTF8, estimatedSize);
    if (!html) {
        doAlert("There is no text to image.", "Enter text and try again.", resultWindow,
                NSAlertStyle::Informational);
        return;
    }
    const std::string name = lastPathComponent(toolkit_.temporaryName());
    const std::optional<std::string> folder = toolkit_.temporaryDirectory();
    if (!folder) return;
    const std::string path = byAppendingPathComponent(*folder, name) + ".html";
    const TextWriteOutcome outcome =
        toolkit_.textFiles().writeStringToFile(*html, path, Atomically::No, kEncodingUTF8);
    if (!outcome.written) {
        if (outcome.error)
            doAlert("There was an error saving the text as HTML.", "The text can not be imaged.",
                    resultWindow, NSAlertStyle::Informational);
        return;
    }
    const std::optional<std::string> urlText = EncodeStringTrimmingWhitespace(path);
    if (!urlText) return;
    const std::optional<std::string> page = imageURL("file://" + *urlText, estimatedSize);
    if (!page) return;
    imagePathChanged(*page);
    resultView->zoomImageToActualSize(this);
}

}  // namespace skarnel
