// Fakes of the text services, the text files and the web view, for the commands of text imaging.
#pragma once

#include <algorithm>
#include <functional>

#include "app/standard_text_files.h"
#include "call_log.h"
#include "platform/toolkit.h"
#include "textimaging/text_system.h"

namespace skarnel::testing_app {

inline std::string shown(const CGRect& rect) {
    return shown(rect.x) + "," + shown(rect.y) + " " + shown(rect.size());
}

/// The real forms, with a natural size that the test chooses.
class RecordingTextServices final : public AttributedTextServices {
  public:
    ~RecordingTextServices() override;
    explicit RecordingTextServices(CallLog& log) : log_(log) {}

    std::optional<Bytes> dataFromRange(const StyledText& text, TextRange range,
                                       const DocumentAttributes& attributes) override {
        const bool isHtml =
            attributes.NSDocumentTypeDocumentAttribute == DocumentType::NSHTMLTextDocumentType;
        const std::string call = std::string("text.dataFromRange ") + (isHtml ? "HTML" : "RTFD");
        log_.add(call, std::to_string(range.location) + "+" + std::to_string(range.length) +
                           " encoding " +
                           std::to_string(attributes.NSCharacterEncodingDocumentAttribute));
        if (log_.fails(call)) return std::nullopt;
        if (isHtml && document) return Bytes(document->begin(), document->end());
        return real_.dataFromRange(text, range, attributes);
    }
    Result<StyledText> initWithData(ByteView data) override {
        log_.add("text.initWithData");
        if (log_.fails("text.initWithData")) return {ErrorCode::Damaged, "planned"};
        Result<StyledText> text = real_.initWithData(data);
        if (readBack) return *readBack;
        return text;
    }
    CGSize size(const StyledText& text) override {
        log_.add("text.size", shown(text.characters()));
        return naturalSize;
    }
    std::optional<std::u16string> stringWithData(ByteView data, std::int32_t encoding) override {
        log_.add("text.stringWithData", "encoding " + std::to_string(encoding));
        if (log_.fails("text.stringWithData")) return std::nullopt;
        return real_.stringWithData(data, encoding);
    }

    CGSize naturalSize{150, 30};
    std::optional<std::string> document;  // in place of the HTML writer's
    std::optional<StyledText> readBack;   // in place of what was serialised

  private:
    CallLog& log_;
    TextSystem real_{{[this](const StyledText&) { return naturalSize; }, {}}};
};

class RecordingTextFiles final : public TextFiles {
  public:
    ~RecordingTextFiles() override;
    explicit RecordingTextFiles(CallLog& log) : log_(log) {}

    TextWriteOutcome writeStringToFile(std::u16string_view text, std::string_view path,
                                       Atomically atomically, std::int32_t encoding) override {
        log_.add("files.writeStringToFile", std::string(path) + " " + said(atomically) +
                                                " encoding " + std::to_string(encoding));
        written = text;
        if (log_.fails("files.writeStringToFile")) return {false, error};
        return real_.writeStringToFile(text, path, atomically, encoding);
    }
    bool writeDataToFile(ByteView data, std::string_view path, Atomically atomically) override {
        log_.add("files.writeDataToFile", std::string(path) + " " + said(atomically));
        return !log_.fails("files.writeDataToFile") &&
               real_.writeDataToFile(data, path, atomically);
    }

    std::u16string written;
    std::optional<Error> error;  // of a planned failure

  private:
    static std::string said(Atomically atomically) {
        return atomically == Atomically::Yes ? "atomically" : "not atomically";
    }
    CallLog& log_;
    StandardTextFiles real_;
};

/// A page of one colour with a block of another on it.
struct FakePage {
    CGRect documentFrame{0, 0, 412.7, 95.2};
    std::array<std::uint8_t, 4> ground{0, 0, 0, 255};
    std::array<std::uint8_t, 4> ink{255, 255, 255, 255};
    CGRect block{30, 20, 40, 10};  // rows counted from the top
};

class RecordingWebView final : public WebView, private WebFrame {
  public:
    ~RecordingWebView() override;
    RecordingWebView(CallLog& log, const CGRect& frame, FakePage page)
        : log_(log), page_(page), frame_(frame) {
        log_.add("webView", shown(frame));
        log_.name(*this, "webView");
    }
    void setFrameLoadDelegate(WebFrameLoadDelegate* delegate) override {
        log_.add("webView.setFrameLoadDelegate", delegate == nullptr ? "none" : "controller");
        frameLoadDelegate = delegate;
    }
    void setUIDelegate(WebUIDelegate* delegate) override {
        log_.add("webView.setUIDelegate", delegate == nullptr ? "none" : "controller");
    }
    void setResourceLoadDelegate(WebResourceLoadDelegate* delegate) override {
        log_.add("webView.setResourceLoadDelegate", delegate == nullptr ? "none" : "controller");
        resourceLoadDelegate = delegate;
    }
    WebFrame& mainFrame() override { return *this; }
    void setFrame(const CGRect& frame) override {
        log_.add("webView.setFrame", shown(frame));
        frame_ = frame;
    }
    CGRect visibleRect() override {
        log_.add("webView.visibleRect");
        return {0, 0, frame_.width, frame_.height};
    }
    std::optional<PixelBuffer> bitmapImageRepForCachingDisplayInRect(const CGRect& rect) override {
        log_.add("webView.bitmapImageRepForCachingDisplayInRect", shown(rect));
        if (log_.fails("webView.bitmapImageRepForCachingDisplayInRect")) return std::nullopt;
        return PixelBuffer::zeroed(static_cast<int>(rect.width), static_cast<int>(rect.height));
    }
    PaintOutcome cacheDisplayInRect(const CGRect& rect, PixelBuffer& bitmap) override {
        log_.add("webView.cacheDisplayInRect", shown(rect));
        if (log_.fails("webView.cacheDisplayInRect")) return PaintOutcome::NotPainted;
        const MutablePixelView view = bitmap.view();
        for (int y = 0; y < view.height; ++y)
            for (int x = 0; x < view.width; ++x) {
                const bool inBlock = x >= page_.block.minX() && x < page_.block.maxX() &&
                                     y >= page_.block.minY() && y < page_.block.maxY();
                std::ranges::copy(inBlock ? page_.ink : page_.ground,
                                  view.row(y) + std::ptrdiff_t{4} * x);
            }
        return PaintOutcome::Painted;
    }

    WebFrameLoadDelegate* frameLoadDelegate = nullptr;
    WebResourceLoadDelegate* resourceLoadDelegate = nullptr;
    std::string loadedUrl;

  private:
    void loadRequest(const NSURLRequest& request) override {
        log_.add("frame.loadRequest", request.url);
        loadedUrl = request.url;
    }
    CGRect frameViewDocumentViewFrame() override {
        log_.add("frame.documentViewFrame");
        return page_.documentFrame;
    }
    CallLog& log_;
    FakePage page_;
    CGRect frame_;
};

}  // namespace skarnel::testing_app
