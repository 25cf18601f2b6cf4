// Reads HTML as plain text: tags removed, entities decoded, blocks and line breaks as line ends.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "util/string/nsstring.h"
#include "util/string/string_encoding.h"

namespace skarnel {

struct HTMLDocument {
    NSString text;
    NSStringEncoding encoding;  // as detected, whatever the caller believed
};

/// Parses any bytes as an HTML document, as forgivingly as browsers do, and gives its text.
///
/// Encoding: by the byte-order mark, otherwise Mac OS Roman.
/// Text: runs of white space become one space, and none at the ends of a line, except inside `pre`.
/// `br` ends the line. A block element starts on a line of its own and ends its last one, also at
/// the end of the document; empty lines come from `br` only. Cells of a table row are separated by
/// tabs. The head, scripts, style sheets and templates have no text.
///
/// None for markup that is nested too deeply, with at most 10,000 elements.
std::optional<HTMLDocument> importHTML(std::span<const std::uint8_t> bytes);

}  // namespace skarnel
