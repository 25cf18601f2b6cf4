// Reads a text from left to right: given texts, stretches up to something, whole numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "util/string/nsstring.h"

namespace skarnel {

/// Scans a string as the platform's scanner does. Every scan first passes over the characters to
/// be skipped; one that fails leaves the location where it was before that. Comparison ignores case
/// (simple folding) unless set otherwise; sets of characters are compared exactly.
class NSScanner {
  public:
    explicit NSScanner(NSString text);

    /// Space, tab, line feed and carriage return at first; an empty set skips nothing.
    void setCharactersToBeSkipped(std::u16string_view characters);
    void setCaseSensitive(bool caseSensitive) { caseSensitive_ = caseSensitive; }

    std::uint64_t scanLocation() const { return location_; }
    /// Within 0..length (asserted).
    void setScanLocation(std::uint64_t location);
    /// Whether nothing but characters to be skipped is left.
    bool isAtEnd() const;

    /// Whether the text stands at the location; passes over it.
    bool scanString(std::u16string_view text);

    /// What stands before the next occurrence of the text, or before the end where there is none;
    /// none when that is empty.
    std::optional<NSString> scanUpToString(std::u16string_view text);

    /// What stands before the next character of the set, or before the end; none when empty.
    std::optional<NSString> scanUpToCharactersFromSet(std::u16string_view characters);

    /// An optional sign and ASCII digits. A number beyond 32 bits becomes the nearest end of the
    /// range, and all its digits are passed over. None without a digit, a sign before it or not.
    std::optional<std::int32_t> scanInt();

    /// ASCII hexadecimal digits of either case, without a sign. "0x" or "0X" before a digit is
    /// passed over; before anything else its "0" is the number and the "x" stays. A number beyond
    /// 32 bits becomes 0xFFFFFFFF. None without a digit.
    std::optional<std::uint32_t> scanHexInt();

  private:
    std::uint64_t skipped() const;
    std::optional<NSString> takeUpTo(std::uint64_t start, std::uint64_t end);

    NSString text_;
    std::u16string skip_;
    std::uint64_t location_ = 0;
    bool caseSensitive_ = false;
};

}  // namespace skarnel
