// How deep markup is nested, told before a parser is given it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace skarnel {

/// As deep as styled text is read from a document.
inline constexpr std::size_t kMaxStyledHtmlDepth = 5'000;

/// Which elements have no content and need no end.
enum class EmptyElements : std::uint8_t {
    OfTheStandard,
    OfTheToolkit,  // few of them, but each that says so by "/>"; a picture is dear
};

/// Whether the markup may cost a parser more than `maxDepth` elements within each other do: each
/// tag costs as many steps as elements are open. Or leaves formatting unclosed that would be opened
/// anew more than 5 million times, or has style sheets that are gone through as often as that.
///
/// An upper bound, so that no parser exceeds it: parsers disagree on what is a tag. Markup of at
/// most `maxDepth` tags passes, but for a thousand pictures that the toolkit would get, or what
/// might be some. In longer one an end tag counts only where it ends the element that was begun
/// last, and where all parsers agree on every tag before: on those of the form <name key="value"
/// key='value' key=value key>, of ASCII letters where nothing is quoted, outside of comments and
/// <!declarations>. From the first "<" on that is none of these, or which stands within a value or
/// comment in a script, style sheet or the like, no end tag counts.
bool isNestedTooDeeply(std::string_view html, std::size_t maxDepth,
                       EmptyElements empty = EmptyElements::OfTheStandard);

}  // namespace skarnel
