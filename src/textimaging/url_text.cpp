#include "textimaging/url_text.h"

#include <algorithm>

#include "textimaging/string_encodings.h"

namespace skarnel {
namespace {

constexpr std::string_view kAllowedMarks = ";/?:@&=+$,-_.!~*'()";

bool isAllowed(unsigned char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') ||
           kAllowedMarks.find(static_cast<char>(byte)) != std::string_view::npos;
}

int hexValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

// The byte that an escape at a place stands for, or -1.
int escapedByte(std::string_view text, std::size_t at) {
    if (at + 2 >= text.size()) return -1;
    const int high = hexValue(text[at + 1]);
    const int low = hexValue(text[at + 2]);
    return high < 0 || low < 0 ? -1 : 16 * high + low;
}

bool isWhiteSpace(char16_t unit) {
    return (unit >= 0x09 && unit <= 0x0D) || unit == 0x20 || unit == 0x85 || unit == 0xA0 ||
           unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200B) || unit == 0x2028 ||
           unit == 0x2029 || unit == 0x202F || unit == 0x205F || unit == 0x3000;
}

std::string trimmed(std::string_view text) {
    const std::u16string wide = utf16FromUtf8(text);
    const auto first = std::find_if_not(wide.begin(), wide.end(), isWhiteSpace);
    const auto last =
        std::find_if_not(wide.rbegin(), std::make_reverse_iterator(first), isWhiteSpace).base();
    return utf8FromUtf16(std::u16string_view(first, last));
}

std::optional<std::string> unescaped(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            result += text[at];
            continue;
        }
        const int byte = escapedByte(text, at);
        if (byte < 0) return std::nullopt;
        result += static_cast<char>(byte);
        at += 2;
    }
    // What decodes and encodes to other bytes was no UTF-8.
    if (utf8FromUtf16(utf16FromUtf8(result)) != result) return std::nullopt;
    return result;
}

}  // namespace

std::optional<std::string> EncodeStringTrimmingWhitespace(std::string_view text) {
    const std::optional<std::string> plain = unescaped(trimmed(text));
    if (!plain) return std::nullopt;
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string result;
    for (const char byte : *plain) {
        const auto value = static_cast<unsigned char>(byte);
        if (isAllowed(value))
            result += byte;
        else
            result += {'%', kDigits[value >> 4], kDigits[value & 15]};
    }
    return result;
}

bool isValidURLText(std::string_view text) {
    if (text.empty()) return false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        if (byte == '%' ? escapedByte(text, at) < 0
                        : byte != '#' && !isAllowed(static_cast<unsigned char>(byte)))
            return false;
    }
    return true;
}

std::optional<std::string> pathOfFileURL(std::string_view url) {
    static constexpr std::string_view kScheme = "file://";
    if (!url.starts_with(kScheme)) return std::nullopt;
    const std::string_view path = url.substr(kScheme.size());
    if (!path.starts_with('/')) return std::nullopt;
    return unescaped(path.substr(0, path.find_first_of("?#")));
}

}  // namespace skarnel
