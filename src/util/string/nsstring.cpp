#include "util/string/nsstring.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cassert>
#include <ostream>

namespace skarnel {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUnits(std::u16string& out, UChar32 codePoint) {
    if (codePoint > 0xFFFF) {
        out.push_back(static_cast<char16_t>(U16_LEAD(codePoint)));
        out.push_back(static_cast<char16_t>(U16_TRAIL(codePoint)));
    } else {
        out.push_back(static_cast<char16_t>(codePoint));
    }
}

void appendBytes(std::string& out, UChar32 codePoint) {
    char bytes[U8_MAX_LENGTH];
    int length = 0;
    U8_APPEND_UNSAFE(bytes, length, codePoint);
    out.append(bytes, static_cast<std::size_t>(length));
}

/// Decodes UTF-8; sets `clean` to false when something had to be replaced.
std::u16string fromUTF8(std::string_view bytes, bool& clean) {
    std::u16string units;
    units.reserve(bytes.size());
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto end = static_cast<std::int64_t>(bytes.size());
    for (std::int64_t position = 0; position < end;) {
        UChar32 codePoint = 0;
        U8_NEXT(data, position, end, codePoint);
        if (codePoint < 0) {
            clean = false;
            codePoint = static_cast<UChar32>(kReplacement);
        }
        appendUnits(units, codePoint);
    }
    return units;
}

/// The code point that starts at `position`, which is moved behind it; a lone surrogate is itself.
UChar32 nextCodePoint(std::u16string_view text, std::uint64_t& position) {
    UChar32 codePoint = 0;
    U16_NEXT(text.data(), position, text.size(), codePoint);
    return codePoint;
}

std::string toUTF8(std::u16string_view units, bool& clean) {
    std::string bytes;
    bytes.reserve(units.size());
    for (std::uint64_t position = 0; position < units.size();) {
        UChar32 codePoint = nextCodePoint(units, position);
        if (U_IS_SURROGATE(codePoint)) {
            clean = false;
            codePoint = static_cast<UChar32>(kReplacement);
        }
        appendBytes(bytes, codePoint);
    }
    return bytes;
}

}  // namespace

std::uint64_t matchLength(std::u16string_view text, std::uint64_t position,
                          std::u16string_view needle, bool caseSensitive) {
    if (caseSensitive) return text.substr(position).starts_with(needle) ? needle.size() : 0;
    std::uint64_t here = position;
    for (std::uint64_t there = 0; there < needle.size();) {
        if (here >= text.size()) return 0;
        const UChar32 found = nextCodePoint(text, here);
        const UChar32 wanted = nextCodePoint(needle, there);
        if (found != wanted &&
            u_foldCase(found, U_FOLD_CASE_DEFAULT) != u_foldCase(wanted, U_FOLD_CASE_DEFAULT))
            return 0;
    }
    return here - position;
}

NSString::NSString(std::u16string_view units)
    : units_(std::make_shared<const std::u16string>(units)) {}

std::optional<NSString> NSString::stringWithUTF8(std::string_view bytes) {
    bool clean = true;
    const std::u16string units = fromUTF8(bytes, clean);
    if (!clean) return std::nullopt;
    return NSString(units);
}

NSString NSString::stringWithUTF8Lossy(std::string_view bytes) {
    bool clean = true;
    return NSString(fromUTF8(bytes, clean));
}

std::optional<std::string> NSString::UTF8String() const {
    bool clean = true;
    std::string bytes = toUTF8(*units_, clean);
    if (!clean) return std::nullopt;
    return bytes;
}

std::string NSString::description() const {
    bool clean = true;
    return toUTF8(*units_, clean);
}

NSString NSString::substringWithRange(NSRange range) const {
    assert(range.location <= length() && range.length <= length() - range.location);
    return NSString(units().substr(range.location, range.length));
}

NSRange NSString::rangeOfString(const NSString& needle, NSStringCompareOptions options,
                                NSRange range) const {
    assert(range.location <= length() && range.length <= length() - range.location);
    const std::u16string_view text = units().substr(0, range.location + range.length);
    const bool caseSensitive = (options & kNSCaseInsensitiveSearch) == 0;
    const bool backwards = (options & kNSBackwardsSearch) != 0;
    for (std::uint64_t step = 0; step < range.length; ++step) {
        const std::uint64_t position =
            range.location + (backwards ? range.length - 1 - step : step);
        const std::uint64_t matched = matchLength(text, position, needle.units(), caseSensitive);
        if (matched > 0) return {position, matched};
    }
    return {kNSNotFound, 0};
}

NSString NSString::lastPathComponent() const {
    const std::u16string_view path = units();
    const std::size_t last = path.find_last_not_of(u'/');
    if (last == std::u16string_view::npos) return NSString(path.substr(0, path.empty() ? 0 : 1));
    const std::size_t before = path.find_last_of(u'/', last);
    const std::size_t first = before == std::u16string_view::npos ? 0 : before + 1;
    return NSString(path.substr(first, last + 1 - first));
}

std::ostream& operator<<(std::ostream& out, const NSString& text) {
    return out << '"' << text.description() << '"';
}

}  // namespace skarnel
