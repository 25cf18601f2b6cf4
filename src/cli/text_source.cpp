#include "cli/text_source.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "app/vantera_desktop_controller.h"
#include "cli/text_toolkit.h"
#include "storage/whole_file.h"
#include "textimaging/page_module_loader.h"
#include "textimaging/string_encodings.h"
#include "textimaging/url_text.h"
#include "util/log/message.h"
#include "util/log/system_log.h"
#include "util/string/html_depth.h"

namespace skarnel::cli {
namespace {

constexpr std::uint64_t kLargestHtml = std::uint64_t{16} << 20;  // bytes
constexpr std::uint64_t kLargestPage = std::uint64_t{2} << 30;   // bytes; more than can be captured
constexpr CGSize kSizeWithoutEstimate{400, 50};                  // as the window has it

/// Holds the text for the controller, which only reads it.
class TextHolder final : public NSTextView {
  public:
    explicit TextHolder(StyledText text) : text_(std::move(text)) {}
    void setPostsBoundsChangedNotifications(bool) override {}
    void setFont(const NSFont&) override {}
    void insertText(std::u16string_view) override {}
    void setTextColor(const NSColor&, NSRange) override {}
    void setString(std::u16string_view) override {}
    const NSAttributedString& textStorage() const override { return text_; }

  private:
    StyledText text_;
};

std::uint8_t colorByte(double component) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(component, 0.0, 1.0) * 255));
}

Result<StyledText> styledText(const TextOptions& options, PageModule& module) {
    const TextStyle style = styleOfOptions(options);
    if (options.styled) return *options.styled;
    if (options.text) return StyledText(textWithEscapes(*options.text), style);
    const Result<std::vector<std::uint8_t>> bytes =
        *options.html == "-" ? readDescriptor(STDIN_FILENO, kLargestHtml)
                             : readWholeFile(*options.html, kLargestHtml);
    if (!bytes) return Error{bytes.error().code, *options.html + ": " + bytes.error().message};
    const std::string_view html(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    if (isNestedTooDeeply(html, kMaxStyledHtmlDepth))
        return Error{ErrorCode::CannotRead,
                     *options.html + ": " + marked("The elements are nested too deeply")};
    return module.styledTextOfHtml(utf16FromUtf8(html), style);
}

// The steps of the window's command up to the file of the page, by the same methods.
Result<std::string> pageOfText(VanteraDesktopController& controller, TextToolkit& toolkit) {
    const auto shown = [&](const char* otherwise) {
        return Error{ErrorCode::Failed,
                     toolkit.alerts().empty() ? otherwise : toolkit.alerts().front()};
    };
    CGSize size = kSizeWithoutEstimate;
    const std::optional<std::u16string> html = controller.getHTMLMessage(kEncodingUTF8, size);
    if (!html) return shown("There is no text to image.");
    const std::optional<std::string> folder = toolkit.temporaryDirectory();
    if (!folder) return shown(marked("There is no folder for temporary files"));
    const std::string path = toolkit.temporaryName() + ".html";
    const TextWriteOutcome outcome =
        toolkit.textFiles().writeStringToFile(*html, path, Atomically::No, kEncodingUTF8);
    if (!outcome.written)
        return shown("There was an error saving the text as HTML. The text can not be imaged.");
    const std::optional<std::string> url = EncodeStringTrimmingWhitespace(path);
    if (!url) return shown(marked("The folder for temporary files has an impossible name"));
    const std::optional<std::string> page = controller.imageURL("file://" + *url, size);
    if (!page || !toolkit.alerts().empty()) return shown(marked("The text could not be drawn"));
    return *page;
}

}  // namespace

std::u16string textWithEscapes(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        const bool isEscape = text[i] == '\\' && (next == 'n' || next == 't' || next == '\\');
        if (!isEscape) {
            plain += text[i];
            continue;
        }
        plain += next == 'n' ? '\n' : next == 't' ? '\t' : '\\';
        ++i;
    }
    return utf16FromUtf8(plain);
}

TextStyle styleOfOptions(const TextOptions& options) {
    TextStyle style;
    style.family = options.font.value_or(style.family);
    style.size = options.size.value_or(style.size);
    const DeviceColor color = options.color.value_or(DeviceColor{1, 1, 1, 1});
    style.color = {colorByte(color.red), colorByte(color.green), colorByte(color.blue), 255};
    return style;
}

Result<TextPicture> pictureOfText(const TextOptions& options, const DeviceColor& ground) {
    PlainNotificationCenter center;
    std::string lastLine;
    const auto log = [&](std::string_view line) { lastLine = line; };
    Result<std::unique_ptr<PageModule>> module = loadPageModule({&center, log});
    if (!module)
        return Error{module.error().code,
                     filled("Drawing text needs the page renderer: %1", {module.error().message})};
    Result<StyledText> text = styledText(options, **module);
    if (!text) return text.error();
    TextToolkit toolkit(**module, center);
    ImageOperations operations;
    VanteraDesktopController controller(toolkit, operations, "");
    TextHolder holder(*text);
    controller.textView = &holder;
    controller.resultViewBackgroundColor =
        NSColor::colorWithDeviceRed(ground.red, ground.green, ground.blue, 1);
    const Result<std::string> page = pageOfText(controller, toolkit);
    if (!page) return page.error();
    // Our own file, and no stranger's: it is decoded here. A page that was not captured has left
    // none, and the module has said why.
    const Result<std::vector<std::uint8_t>> file = readWholeFile(*page, kLargestPage);
    if (!file) return Error{ErrorCode::Failed, lastLine.empty() ? file.error().message : lastLine};
    Result<DecodedImage> picture = decodeImage(*file);
    if (!picture) return picture.error();
    return TextPicture{*std::move(picture), *std::move(text)};
}

}  // namespace skarnel::cli
