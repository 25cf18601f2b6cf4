// What of a text may go to a terminal or a label as it is. Asks for no memory.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace skarnel {

struct ShownCharacter {
    std::size_t bytes = 0;  // 0 where no character of UTF-8 begins
    /// None of the control characters, of the breaks of lines and paragraphs, and of the marks,
    /// embeddings, overrides and isolates of bidirectional text.
    bool isShown = false;
};

/// The character that begins the text, which is not empty.
ShownCharacter firstCharacter(std::string_view text);

enum class LineEnds { Kept, Escaped };

/// Calls `add` with one piece of text after the other: what is shown as it is, and of all else each
/// byte as "\x1b", as a shell reads it in $'...'. So no name within commands a terminal, begins a
/// line or turns the direction of writing around.
template <typename Add>
void forEachShown(std::string_view text, LineEnds lineEnds, Add add) {
    while (!text.empty()) {
        const ShownCharacter character = firstCharacter(text);
        const bool isKept = lineEnds == LineEnds::Kept && text.front() == '\n';
        if (character.isShown || isKept) {
            add(text.substr(0, character.bytes));
            text.remove_prefix(character.bytes);
            continue;
        }
        char escape[5];
        std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(text.front()));
        add(std::string_view(escape, sizeof escape - 1));
        text.remove_prefix(1);
    }
}

}  // namespace skarnel
