#include "imaging/io/plain_text.h"

#include <algorithm>
#include <string_view>

#include "util/log/shown_text.h"

namespace skarnel::io {

std::string plainText(ByteView bytes, std::size_t maxBytes) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::string plain;
    while (!text.empty()) {
        const ShownCharacter character = firstCharacter(text);
        const std::size_t taken = std::max<std::size_t>(character.bytes, 1);
        const std::size_t added = character.isShown ? taken : 1;
        if (plain.size() + added > maxBytes) break;
        if (character.isShown) {
            plain.append(text.substr(0, taken));
        } else {
            plain += '?';
        }
        text.remove_prefix(taken);
    }
    return plain;
}

bool isPlainName(std::string_view name) {
    constexpr std::size_t kMaxNameBytes = 128;
    return !name.empty() && name.size() <= kMaxNameBytes &&
           std::all_of(name.begin(), name.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

}  // namespace skarnel::io
