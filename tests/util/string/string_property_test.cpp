// Properties of strings and scanners on random texts whose seed is printed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "util/log/system_log.h"
#include "util/seeded_test.h"
#include "util/string/nsscanner.h"
#include "util/string/nsstring_extensions.h"
#include "util/string/string_encoding.h"

namespace skarnel {
namespace {

class StringProperties : public SeededTest {
  protected:
    std::u16string textOf(std::u16string_view alphabet, int longest) {
        std::u16string text(static_cast<std::size_t>(whole(0, longest)), u' ');
        for (char16_t& unit : text)
            unit =
                alphabet[static_cast<std::size_t>(whole(0, static_cast<int>(alphabet.size()) - 1))];
        return text;
    }
};

TEST_F(StringProperties, SearchesFindWhatASlowOneFinds) {
    for (int round = 0; round < 20'000; ++round) {
        const NSString text(textOf(u"abA", 12));
        const NSString needle(textOf(u"ab", 3));
        const auto from = static_cast<std::size_t>(whole(0, static_cast<int>(text.length())));
        const auto forward = text.units().find(needle.units(), from);
        const NSRange range = text.rangeOfString(needle, 2, {from, text.length() - from});
        if (needle.length() == 0 || forward == std::u16string_view::npos) {
            ASSERT_EQ(range, (NSRange{kNSNotFound, 0})) << text << needle;
            continue;
        }
        ASSERT_EQ(range, (NSRange{forward, needle.length()})) << text << needle;
        ASSERT_EQ(text.rangeOfString(needle, 6).location, text.units().rfind(needle.units()));
    }
}

TEST_F(StringProperties, ExtractedTextStandsBetweenItsMarkers) {
    for (int round = 0; round < 20'000; ++round) {
        const std::u16string text = textOf(u"[]x", 10);
        const auto start = text.find(u'[');
        const auto end = start == text.npos ? text.npos : text.find(u']', start + 1);
        const auto found =
            NSStringExtensions::extractBetweenPattern(NSString(text), u"["_ns, u"]"_ns);
        ASSERT_EQ(found.has_value(), end != text.npos) << NSString(text);
        ASSERT_TRUE(!found || found->units() == text.substr(start + 1, end - start - 1));
        const auto last = text.find(u']');
        const auto nearest =
            last == text.npos || last == 0 ? text.npos : text.rfind(u'[', last - 1);
        const auto reverse =
            NSStringExtensions::reverseExtractBetweenPattern(NSString(text), u"["_ns, u"]"_ns);
        ASSERT_EQ(reverse.has_value(), nearest != text.npos) << NSString(text);
        ASSERT_TRUE(!reverse || reverse->units() == text.substr(nearest + 1, last - nearest - 1));
    }
}

TEST_F(StringProperties, EncodedEntitiesDecodeToTheText) {
    for (int round = 0; round < 5'000; ++round) {
        const std::u16string text = textOf(u"a<>&'\"; #x1\u00E9\uFFFF", 12);
        std::string encoded;
        for (const char16_t unit : text) {
            char part[16];
            std::snprintf(part, sizeof part, whole(0, 1) == 0 ? "&#%u;" : "&#x%X;",
                          static_cast<unsigned>(unit));
            encoded += part;
        }
        ASSERT_EQ(NSStringExtensions::stringByDecodingHTMLEntities(
                      NSString::stringWithUTF8(encoded).value()),
                  NSString(text))
            << encoded;
    }
}

TEST_F(StringProperties, DecodingNeverHangsAndNeverLosesPlainText) {
    ScopedLogCapture log;
    for (int round = 0; round < 20'000; ++round) {
        const NSString text(textOf(u"&#xXa1; ltmp\t", 16));
        const NSString decoded = NSStringExtensions::stringByDecodingHTMLEntities(text);
        ASSERT_LE(decoded.length(), text.length()) << text;
        const auto count = [](const NSString& all) {
            return std::count(all.units().begin(), all.units().end(), u'\t');
        };
        ASSERT_EQ(count(decoded), count(text)) << text;
    }
}

TEST_F(StringProperties, ScannedNumbersAreThoseOfTheStandardLibrary) {
    for (int round = 0; round < 20'000; ++round) {
        const std::u16string digits = textOf(u"0123456789", 14);
        const std::string sign = whole(0, 2) == 0 ? "-" : "";
        const std::string text = sign + NSString(digits).description();
        NSScanner scanner(NSString::stringWithUTF8(text + "z").value());
        const auto number = scanner.scanInt();
        ASSERT_EQ(number.has_value(), !digits.empty()) << text;
        if (!number) continue;
        const long long exact = std::strtoll(text.c_str(), nullptr, 10);
        ASSERT_EQ(*number, std::clamp(exact, -2147483648LL, 2147483647LL)) << text;
        ASSERT_EQ(scanner.scanLocation(), text.size());
    }
}

TEST_F(StringProperties, UnicodeBytesGiveBackAnyUnits) {
    for (int round = 0; round < 5'000; ++round) {
        std::u16string text(static_cast<std::size_t>(whole(0, 20)), u' ');
        for (char16_t& unit : text) unit = static_cast<char16_t>(whole(0, 0xFFFF));
        const auto bytes = dataUsingEncoding(NSString(text), NSStringEncoding::Unicode);
        ASSERT_TRUE(bytes);
        ASSERT_EQ(stringWithDetectedEncoding(*bytes).units(), text);
    }
}

}  // namespace
}  // namespace skarnel
