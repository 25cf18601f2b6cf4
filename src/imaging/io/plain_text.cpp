#include "imaging/io/plain_text.h"

#include <algorithm>

namespace skarnel::io {
namespace {

struct Character {
    std::uint32_t code = 0;
    std::size_t bytes = 0;  // 0 where no character begins
};

/// The character that begins the text, as RFC 3629 allows it: in its shortest form, no surrogate.
Character firstCharacter(ByteView text) {
    const std::uint8_t first = text.front();
    if (first < 0x80) return {first, 1};
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC0 || first > 0xF7 || size > text.size()) return {};
    std::uint32_t code = first & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if ((text[i] & 0xC0U) != 0x80) return {};
        code = code << 6U | (text[i] & 0x3FU);
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

std::string plainText(ByteView text, std::size_t maxBytes) {
    std::string plain;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const bool isShown = character.bytes > 0 && !isInvisibleOrder(character.code);
        const std::size_t taken = std::max<std::size_t>(character.bytes, 1);
        const std::size_t added = isShown ? taken : 1;
        if (plain.size() + added > maxBytes) break;
        if (isShown) {
            plain.append(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(taken));
        } else {
            plain += '?';
        }
        text = text.subspan(taken);
    }
    return plain;
}

bool isPlainName(std::string_view name) {
    constexpr std::size_t kMaxNameBytes = 128;
    return !name.empty() && name.size() <= kMaxNameBytes &&
           std::all_of(name.begin(), name.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

}  // namespace skarnel::io
