// Text as the picture of a run: styled, drawn by the page renderer, ready to be reflected.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "imaging/cgcontext.h"
#include "imaging/io/image_io.h"
#include "platform/styled_text.h"
#include "util/log/result.h"

namespace skarnel::cli {

/// What --text, --html and their companions ask for.
struct TextOptions {
    std::optional<std::string> text;  // UTF-8, with \n, \t and \\ for what a shell makes awkward
    std::optional<std::string> html;  // the path of an HTML file; "-" is standard input
    std::optional<std::string> font;
    std::optional<double> size;  // points; one is one pixel
    std::optional<DeviceColor> color;
    std::optional<StyledText> styled;  // with all its styles: a recipe's

    bool isAsked() const { return text || html || styled; }
};

/// The name that stands for the text in reports and proposed file names.
inline constexpr std::string_view kTextInput = "Text";

/// \n, \t and \\ become a line feed, a tab and a backslash; any other backslash stays.
std::u16string textWithEscapes(std::string_view text);

/// Family, size and colour of what the options leave open: white "Times" of 48 points.
TextStyle styleOfOptions(const TextOptions& options);

struct TextPicture {
    DecodedImage picture;
    StyledText text;  // what was drawn, with its styles
};

/// The picture that the application would install for this text on this ground: exported, drawn,
/// knocked out and trimmed by the same commands. Main thread only; loads the page renderer's module
/// and needs no display. A reason is given where the module is not installed, the HTML file cannot
/// be read, and for everything that the application would show or leave unsaid.
Result<TextPicture> pictureOfText(const TextOptions& options, const DeviceColor& ground);

}  // namespace skarnel::cli
