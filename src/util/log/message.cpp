#include "util/log/message.h"

namespace skarnel {

std::string filled(std::string_view phrase, std::initializer_list<std::string_view> places) {
    std::string text;
    for (std::size_t i = 0; i < phrase.size(); ++i) {
        const char digit = phrase[i] == '%' && i + 1 < phrase.size() ? phrase[i + 1] : '\0';
        const auto place = static_cast<std::size_t>(digit - '1');
        if (digit < '1' || digit > '9' || place >= places.size()) {
            text += phrase[i];
            continue;
        }
        text += places.begin()[place];
        ++i;
    }
    return text;
}

}  // namespace skarnel
