// Styled text as a complete HTML document that a page renderer draws as the text view does.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "imaging/io/image_io.h"
#include "platform/styled_text.h"

namespace skarnel {

/// The document, declaring the given character set. Its body is opened by the literal tag "<body>",
/// which stands nowhere else in it, in any letter case.
///
/// - Every character of the text that means something to HTML is escaped, and so is every one of a
///   family's name that means something to CSS; no address and no script can come out of a text.
/// - One point is one CSS pixel. Every run has its family, size, weight, slant, underline, colour.
/// - Lines end only where the text ends them; spaces and tabs stay (a tab stop every 80 pixels, as
///   the text view has it). Each paragraph takes its direction from its first strong character and
///   is as wide as the widest one.
/// - Around the text lies a margin of half the largest size, at least 8 pixels, so that slanted and
///   accented letters that reach beyond their line do not touch the page's first pixel.
/// - A character that draws nothing (the control characters besides tab and line ends) is left out;
///   an unpaired surrogate becomes U+FFFD.
/// - With `paragraphHeights` (pixels, one for each paragraph; another number of them counts as
/// none)
///   every paragraph is exactly as high, so that many lines of a page stand where the text view has
///   them, whose metrics are rounded in another way.
std::u16string htmlDocument(const StyledText& text, std::string_view charset,
                            std::span<const double> paragraphHeights = {});

/// The document as bytes of an encoding; none when it cannot hold the text or is not known.
std::optional<Bytes> htmlData(const StyledText& text, std::int32_t encoding,
                              std::span<const double> paragraphHeights = {});

/// Replaces every "<body>", compared without regard to letter case, by `<body bgcolor="COLOR">`. A
/// tag with attributes is another tag and stays.
std::u16string withBodyBackground(std::u16string_view document, std::string_view colorText);

}  // namespace skarnel
