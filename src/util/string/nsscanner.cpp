#include "util/string/nsscanner.h"

#include <algorithm>
#include <cassert>
#include <limits>

namespace skarnel {
namespace {

/// The digit's value, or 16 for what is no hexadecimal digit.
unsigned digitValue(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10U;
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10U;
    return 16;
}

struct Digits {
    std::uint64_t value;  // stops growing at the limit
    std::uint64_t end;    // behind the last digit
};

/// Reads digits of the base from `position` on; the value is clamped to `limit`.
Digits readDigits(std::u16string_view text, std::uint64_t position, unsigned base,
                  std::uint64_t limit) {
    Digits digits{0, position};
    while (digits.end < text.size() && digitValue(text[digits.end]) < base) {
        // At most 2^32 * 16 + 15: no overflow before the clamp.
        digits.value = std::min(digits.value * base + digitValue(text[digits.end]), limit);
        ++digits.end;
    }
    return digits;
}

}  // namespace

NSScanner::NSScanner(NSString text) : text_(std::move(text)), skip_(u" \t\n\r") {}

void NSScanner::setCharactersToBeSkipped(std::u16string_view characters) {
    skip_ = characters;
}

void NSScanner::setScanLocation(std::uint64_t location) {
    assert(location <= text_.length());
    location_ = location;
}

std::uint64_t NSScanner::skipped() const {
    const std::size_t next = text_.units().find_first_not_of(skip_, location_);
    return next == std::u16string_view::npos ? text_.length() : next;
}

bool NSScanner::isAtEnd() const {
    return skipped() == text_.length();
}

bool NSScanner::scanString(std::u16string_view text) {
    const std::uint64_t start = skipped();
    const std::uint64_t matched = matchLength(text_.units(), start, text, caseSensitive_);
    if (matched == 0) return false;
    location_ = start + matched;
    return true;
}

std::optional<NSString> NSScanner::takeUpTo(std::uint64_t start, std::uint64_t end) {
    if (end == start) return std::nullopt;
    location_ = end;
    return text_.substringWithRange({start, end - start});
}

std::optional<NSString> NSScanner::scanUpToString(std::u16string_view text) {
    const std::uint64_t start = skipped();
    std::uint64_t end = start;
    while (end < text_.length() && matchLength(text_.units(), end, text, caseSensitive_) == 0)
        ++end;
    return takeUpTo(start, end);
}

std::optional<NSString> NSScanner::scanUpToCharactersFromSet(std::u16string_view characters) {
    const std::uint64_t start = skipped();
    const std::size_t found = text_.units().find_first_of(characters, start);
    return takeUpTo(start, found == std::u16string_view::npos ? text_.length() : found);
}

std::optional<std::int32_t> NSScanner::scanInt() {
    constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
    const std::u16string_view text = text_.units();
    std::uint64_t start = skipped();
    const bool signedNumber = start < text.size() && (text[start] == u'-' || text[start] == u'+');
    const bool negative = signedNumber && text[start] == u'-';
    if (signedNumber) ++start;
    const Digits digits = readDigits(text, start, 10, static_cast<std::uint64_t>(kMax) + 1);
    if (digits.end == start) return std::nullopt;
    location_ = digits.end;
    const auto magnitude = static_cast<std::int64_t>(digits.value);
    return static_cast<std::int32_t>(negative ? -magnitude : std::min(magnitude, kMax));
}

std::optional<std::uint32_t> NSScanner::scanHexInt() {
    const std::u16string_view text = text_.units();
    std::uint64_t start = skipped();
    const std::u16string_view rest = text.substr(start);
    const bool prefixed = rest.size() > 2 && rest[0] == u'0' &&
                          (rest[1] == u'x' || rest[1] == u'X') && digitValue(rest[2]) < 16;
    if (prefixed) start += 2;
    const Digits digits = readDigits(text, start, 16, std::numeric_limits<std::uint32_t>::max());
    if (digits.end == start) return std::nullopt;
    location_ = digits.end;
    return static_cast<std::uint32_t>(digits.value);
}

}  // namespace skarnel
