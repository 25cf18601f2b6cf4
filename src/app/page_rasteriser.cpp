// A page, given by its URL, as a trimmed picture file: load, capture, knock out, write, trim.
#include "app/vantera_desktop_controller.h"
#include "textimaging/page_load.h"
#include "textimaging/path_text.h"

namespace skarnel {
namespace {

constexpr double kHeightReserve = 4.0;           // the page while it loads, over the estimate
constexpr std::int32_t kTrimTolerance = 10;      // steps of 8 bits
constexpr std::int64_t kTiffCompressionLzw = 5;  // the format's own number

}  // namespace

std::optional<std::string> VanteraDesktopController::imageURL(const std::optional<std::string>& url,
                                                              const CGSize& inSize) {
    initResourceCounters();
    if (!url) return std::nullopt;
    const std::unique_ptr<WebView> webView =
        toolkit_.webView({0, 0, inSize.width + inSize.width, inSize.height * kHeightReserve});
    if (webView == nullptr) return std::nullopt;
    webView->setFrameLoadDelegate(this);
    webView->setUIDelegate(this);
    webView->setResourceLoadDelegate(this);
    LoadURL(*webView, *url, toolkit_.defaultNotificationCenter(), toolkit_.mainRunLoop());
    const std::optional<std::string> folder = toolkit_.temporaryDirectory();
    if (!folder) return std::nullopt;
    const std::string name = lastPathComponent(toolkit_.temporaryName());
    // Joined as plain text, so that a folder that ends in "/" gives a doubled separator.
    const std::string path = *folder + "/" + name + ".tif";
    imageWebView(*webView, path);
    return path;
}

void VanteraDesktopController::imageWebView(WebView& webView, const std::string& path) {
    std::int64_t width = 0;
    std::int64_t height = 0;
    GetDocumentViewSize(&webView, width, height);
    webView.setFrame({0, 0, static_cast<double>(width), static_cast<double>(height)});
    std::optional<PixelBuffer> capture =
        webView.bitmapImageRepForCachingDisplayInRect(webView.visibleRect());
    if (!capture) return;
    if (webView.cacheDisplayInRect(webView.visibleRect(), *capture) != PaintOutcome::Painted)
        return;
    const std::optional<NSImage> page = operations_.imageWithBitmap(CGImage(std::move(*capture)));
    if (!page) return;
    if (const std::optional<CGImage> bitmap = operations_.getCGImageRef(*page))
        writePage(knockedOut(*bitmap), path);
    trimPage(path);
}

CGImage VanteraDesktopController::knockedOut(const CGImage& capture) {
    const std::optional<CIImage> transparent =
        operations_.CIImageMakeFirtsPixelColorTransparent(CIImage::imageWithCGImage(capture));
    if (!transparent) return capture;
    return operations_.CIImageGetCGImage(*transparent).value_or(capture);
}

void VanteraDesktopController::writePage(const CGImage& page, const std::string& path) {
    const std::unique_ptr<CGImageDestination> destination =
        toolkit_.imageFiles().imageDestinationCreateWithURL(path, kUTTypeTIFF);
    if (destination == nullptr) return;
    destination->addImage(
        page, {{std::string(kPropertyTiffCompression), PropertyValue(kTiffCompressionLzw)}});
    static_cast<void>(destination->finalize());  // nobody is told; the log has the cause
}

// Whatever fails in here is shown in the one way, typically the empty canvas of a blank page.
void VanteraDesktopController::trimPage(const std::string& path) {
    try {
        const std::optional<NSImage> page = operations_.initByReferencingFile(path);
        if (!page) return;
        const CGRect used = operations_.usedRect(*page, kTrimTolerance);
        const std::optional<NSImage> trimmed =
            operations_.scaleImageToSize(*page, used.size(), true, kTrimTolerance, false, false);
        if (!trimmed) return;
        const std::optional<TIFFData> data = operations_.TIFFRepresentation(*trimmed);
        if (const std::optional<Bytes> bytes = data ? data->bytes() : std::nullopt)
            toolkit_.textFiles().writeDataToFile(*bytes, path, Atomically::No);
    } catch (...) {
        doAlert("The image could not be trimmed.",
                "If you are imaging text, make sure its color is not the same as the background "
                "color of the image viewer.",
                resultWindow, NSAlertStyle::Informational);
    }
}

void VanteraDesktopController::initResourceCounters() {
    resourceCount = 0;
    resourceFailedCount = 0;
    resourceCompletedCount = 0;
}

void VanteraDesktopController::updateResourceStatus() {}

std::int32_t VanteraDesktopController::webViewIdentifierForInitialRequest(WebView&,
                                                                          const NSURLRequest&) {
    return resourceCount++;
}

NSURLRequest VanteraDesktopController::webViewResourceWillSendRequest(WebView&, std::int32_t,
                                                                      const NSURLRequest& request) {
    return request;
}

void VanteraDesktopController::webViewResourceDidFinishLoading(WebView&, std::int32_t) {
    ++resourceCompletedCount;
    updateResourceStatus();
}

void VanteraDesktopController::webViewResourceDidFailLoading(WebView&, std::int32_t, const Error&) {
    ++resourceFailedCount;
    updateResourceStatus();
}

void VanteraDesktopController::webViewDidStartProvisionalLoad(WebView&) {
    updateResourceStatus();
}

void VanteraDesktopController::webViewDidReceiveTitle(WebView&, const std::string&) {}

// The end of the load comes by the notification, not here.
void VanteraDesktopController::webViewDidFinishLoad(WebView&) {}

}  // namespace skarnel
