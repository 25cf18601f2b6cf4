// The HTML writer: no text and no family's name can add a tag to the document.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "textimaging/html_writer.h"
#include "textimaging/serialized_text.h"
#include "textimaging/string_encodings.h"

namespace {

std::size_t count(std::u16string_view text, std::u16string_view part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::u16string_view::npos;
         at = text.find(part, at + 1))
        ++found;
    return found;
}

/// A serialised text, or any bytes as characters whose first ones are also the family's name.
skarnel::StyledText textOf(const std::uint8_t* bytes, std::size_t size) {
    if (auto text = skarnel::deserializeText({bytes, size})) return *std::move(text);
    std::u16string characters(size / 2, u'\0');
    if (!characters.empty()) std::memcpy(characters.data(), bytes, 2 * characters.size());
    skarnel::TextStyle style;
    style.family.assign(bytes, bytes + (size < 40 ? size : 40));
    return skarnel::StyledText(characters, style);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const skarnel::StyledText text = textOf(bytes, size);
    const std::u16string html = skarnel::htmlDocument(text, "utf-8");
    const std::size_t paragraphs = text.isEmpty() ? 0 : text.paragraphs().size();
    const bool isWhole = count(html, u"<body>") == 1 && count(html, u"</style>") == 1 &&
                         count(html, u"<p ") == paragraphs &&
                         count(html, u"<") == 11 + 2 * paragraphs + count(html, u"<br>") +
                                                  2 * count(html, u"<span ");
    if (!isWhole || !skarnel::htmlData(text, 4)) std::abort();
    return 0;
}
