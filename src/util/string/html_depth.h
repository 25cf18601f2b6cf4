// How deep markup is nested, told before a parser is given it.
#pragma once

#include <cstddef>
#include <string_view>

namespace skarnel {

/// As deep as styled text is read from a document.
inline constexpr std::size_t kMaxStyledHtmlDepth = 1'000;

/// Whether the markup nests deeper than `maxDepth` elements, or leaves formatting unclosed that
/// would be opened anew more than 5 million times: parsers take quadratic time and memory for them.
/// Both are estimated by the tags that no end tag of their name answers, those in comments and
/// self-closed ones of drawings among them.
bool isNestedTooDeeply(std::string_view html, std::size_t maxDepth);

}  // namespace skarnel
