#include "util/log/shown_text.h"

#include <cstdint>

namespace skarnel {
namespace {

struct Character {
    std::uint32_t code = 0;
    std::size_t bytes = 0;  // 0 where no character begins
};

/// The character that begins the text, as RFC 3629 allows it: in its shortest form, no surrogate.
Character characterOf(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text.front());
    if (first < 0x80) return {first, 1};
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC0 || first > 0xF7 || size > text.size()) return {};
    std::uint32_t code = first & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        const auto byte = static_cast<std::uint8_t>(text[i]);
        if ((byte & 0xC0U) != 0x80) return {};
        code = code << 6U | (byte & 0x3FU);
    }
    constexpr std::uint32_t kLeastOfSize[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kLeastOfSize[size] || code > 0x10FFFF || isSurrogate) return {};
    return {code, size};
}

/// Control characters, the breaks of lines and paragraphs, and the marks, embeddings, overrides and
/// isolates of bidirectional text.
bool isInvisibleOrder(std::uint32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x61C ||
           (code >= 0x200E && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

}  // namespace

ShownCharacter firstCharacter(std::string_view text) {
    const Character character = characterOf(text);
    return {character.bytes, character.bytes > 0 && !isInvisibleOrder(character.code)};
}

}  // namespace skarnel
