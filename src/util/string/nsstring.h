// Text as UTF-16 code units: an immutable shared handle whose identity can be compared, ranges and
// searches.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace skarnel {

/// Code units [location, location + length).
struct NSRange {
    std::uint64_t location = 0;
    std::uint64_t length = 0;
    friend bool operator==(const NSRange&, const NSRange&) = default;
};

/// The location of a search that found nothing: the largest signed word.
inline constexpr std::uint64_t kNSNotFound = std::numeric_limits<std::int64_t>::max();

/// Search options, to be added up; the numbers are the platform's.
using NSStringCompareOptions = unsigned;
inline constexpr NSStringCompareOptions kNSCaseInsensitiveSearch = 1;
inline constexpr NSStringCompareOptions kNSLiteralSearch = 2;
inline constexpr NSStringCompareOptions kNSBackwardsSearch = 4;

/// Immutable UTF-16 text. Copies of a handle are the same object (`isSame`); every operation that
/// makes text makes a new object. Lone surrogates are kept as they are.
class NSString {
  public:
    NSString() : NSString(std::u16string_view()) {}
    explicit NSString(std::u16string_view units);

    /// None when the bytes are not UTF-8.
    static std::optional<NSString> stringWithUTF8(std::string_view bytes);
    /// Bytes that are not UTF-8 become U+FFFD, one a maximal wrong sequence.
    static NSString stringWithUTF8Lossy(std::string_view bytes);

    /// None when a lone surrogate has no UTF-8 form.
    std::optional<std::string> UTF8String() const;
    /// As UTF-8, a lone surrogate as U+FFFD: for logs and people.
    std::string description() const;

    std::uint64_t length() const { return units_->size(); }
    std::u16string_view units() const { return *units_; }
    char16_t characterAtIndex(std::uint64_t index) const { return (*units_)[index]; }

    bool isSame(const NSString& other) const { return units_ == other.units_; }
    /// Unit for unit.
    friend bool operator==(const NSString& a, const NSString& b) { return a.units() == b.units(); }

    /// The range must lie within the string (asserted).
    NSString substringWithRange(NSRange range) const;

    /// The first occurrence, or with backwards the last one, that lies wholly in the range, which
    /// must lie within the string (asserted). {kNSNotFound, 0} when there is none, and for an empty
    /// needle. Case-insensitive compares by simple Unicode case folding, code point by code point,
    /// without regard to language; otherwise units are compared exactly, with or without literal.
    NSRange rangeOfString(const NSString& needle, NSStringCompareOptions options,
                          NSRange range) const;
    NSRange rangeOfString(const NSString& needle, NSStringCompareOptions options = 0) const {
        return rangeOfString(needle, options, {0, length()});
    }

    /// The last component of a path as the platform takes it: separators at the end do not count;
    /// "/" for a path of separators only.
    NSString lastPathComponent() const;

  private:
    std::shared_ptr<const std::u16string> units_;
};

/// For literals: `u"text"_ns`.
inline NSString operator""_ns(const char16_t* units, std::size_t length) {
    return NSString(std::u16string_view(units, length));
}

/// Prints the text as UTF-8 between double quotes.
std::ostream& operator<<(std::ostream& out, const NSString& text);

/// The number of units from `position` on that match the whole needle, 0 when it does not match or
/// is empty. Shared by searches and scanners.
std::uint64_t matchLength(std::u16string_view text, std::uint64_t position,
                          std::u16string_view needle, bool caseSensitive);

}  // namespace skarnel
