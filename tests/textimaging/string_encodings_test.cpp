// The encoding codes: what each can hold, and the exact bytes of a few characters.
#include "textimaging/string_encodings.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "util/limited_to.h"

namespace skarnel {
namespace {

TEST(EncodeString, WritesTheBytesOfEachKnownEncoding) {
    // U+00E9 by the code charts: E9 in Latin 1, Latin 2 and Windows 1252, 8E in Mac Roman.
    const struct {
        std::int32_t code;
        Bytes bytes;
    } rows[] = {
        {4, {'a', 0xC3, 0xA9}},
        {5, {'a', 0xE9}},
        {9, {'a', 0xE9}},
        {12, {'a', 0xE9}},
        {30, {'a', 0x8E}},
        {static_cast<std::int32_t>(0x90000100), {0, 'a', 0, 0xE9}},
        {static_cast<std::int32_t>(0x94000100), {'a', 0, 0xE9, 0}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(encodeString(u"a\u00E9", row.code), row.bytes) << row.code;
        EXPECT_EQ(decodeString(row.bytes, row.code), u"a\u00E9") << row.code;
    }
}

TEST(EncodeString, UnicodeBeginsWithAByteOrderMark) {
    const std::optional<Bytes> bytes = encodeString(u"A", 10);
    ASSERT_TRUE(bytes);
    EXPECT_TRUE(*bytes == (Bytes{0xFF, 0xFE, 'A', 0}) || *bytes == (Bytes{0xFE, 0xFF, 0, 'A'}));
    EXPECT_EQ(decodeString(*bytes, 10), u"A");
}

TEST(EncodeString, WhatAnEncodingCannotHoldGivesNone) {
    EXPECT_EQ(encodeString(u"a\u00E9", 1), std::nullopt);
    EXPECT_EQ(encodeString(u"\u4E2D", 5), std::nullopt);
    EXPECT_EQ(encodeString(u"\u4E2D", 30), std::nullopt);
    EXPECT_EQ(encodeString(u"\u0416", 12), std::nullopt);
    EXPECT_EQ(encodeString(u"\u0416", 11), (Bytes{0xC6}));
    EXPECT_EQ(encodeString(u"abc", 1), (Bytes{'a', 'b', 'c'}));
}

TEST(EncodeString, AnUnpairedSurrogateGivesNone) {
    EXPECT_EQ(encodeString(std::u16string(1, char16_t{0xD800}), 4), std::nullopt);
    EXPECT_EQ(encodeString(std::u16string(1, char16_t{0xDC00}), 10), std::nullopt);
}

TEST(EncodeString, AnUnknownCodeGivesNone) {
    for (const std::int32_t code : {0, 2, 6, 7, 99, -1}) {
        EXPECT_EQ(encodeString(u"a", code), std::nullopt) << code;
        EXPECT_EQ(decodeString(Bytes{'a'}, code), std::nullopt) << code;
        EXPECT_EQ(charsetOfEncoding(code), std::nullopt) << code;
    }
}

// In ISO-2022-JP an escape sequence changes the alphabet: as text it would not come back.
TEST(EncodeString, AnEscapeHasNoPlaceWhereEscapesChangeTheAlphabet) {
    constexpr std::int32_t kIso2022Jp = 21;
    for (const std::u16string_view text : {u"a\x1B$b", u"\x0E", u"\x0F"}) {
        EXPECT_EQ(encodeString(text, kIso2022Jp), std::nullopt);
        EXPECT_TRUE(encodeString(text, 4));
    }
    EXPECT_EQ(encodeString(u"a$b", kIso2022Jp), (Bytes{'a', '$', 'b'}));
}

/// In a process of its own, where the library has not opened its tables yet and then cannot.
[[noreturn]] void encodeWithoutTables() {
    constexpr auto kBig5 = static_cast<std::int32_t>(0x80000A03);
    bool gaveNothing = false;
    {
        const test::LimitedTo noFile(RLIMIT_NOFILE, 0);
        gaveNothing = !encodeString(u"a", kBig5) && !decodeString(Bytes{'a'}, kBig5);
    }
    std::exit(gaveNothing ? 0 : 1);
}

TEST(EncodeStringDeathTest, AnEncodingWhoseTablesAreNotThereGivesNone) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(encodeWithoutTables(), ::testing::ExitedWithCode(0), "");
}

TEST(EncodeString, LongTextsPassThroughWhole) {
    std::u16string text;
    for (int i = 0; i < 10000; ++i) text += static_cast<char16_t>(0x4E00 + i);
    const std::optional<Bytes> bytes = encodeString(text, 4);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->size(), 30000U);
    EXPECT_EQ(decodeString(*bytes, 4), text);
    EXPECT_EQ(encodeString(u"", 4), Bytes{});
    EXPECT_EQ(decodeString({}, 4), u"");
}

TEST(DecodeString, BytesThatBreakTheRulesGiveNone) {
    EXPECT_EQ(decodeString(Bytes{0xC3}, 4), std::nullopt);
    EXPECT_EQ(decodeString(Bytes{'a', 0xFF}, 4), std::nullopt);
    EXPECT_EQ(decodeString(Bytes{0x80}, 1), std::nullopt);
}

TEST(Utf8FromUtf16, CoversEveryLengthAndTheirBorders) {
    EXPECT_EQ(utf8FromUtf16(u"\u007F\u0080\u07FF\u0800\uFFFF"),
              "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
    EXPECT_EQ(utf8FromUtf16(u"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    EXPECT_EQ(utf8FromUtf16(std::u16string{0xD800, u'a', 0xDC00}),
              "\xEF\xBF\xBD"
              "a\xEF\xBF\xBD");
}

TEST(Utf16FromUtf8, IsTheOtherWayRound) {
    for (char32_t scalar = 1; scalar <= 0x10FFFF; scalar += 97) {
        if (scalar >= 0xD800 && scalar <= 0xDFFF) continue;
        std::u16string text;
        if (scalar < 0x10000) {
            text += static_cast<char16_t>(scalar);
        } else {
            text += static_cast<char16_t>(0xD800 + ((scalar - 0x10000) >> 10));
            text += static_cast<char16_t>(0xDC00 + ((scalar - 0x10000) & 0x3FF));
        }
        ASSERT_EQ(utf16FromUtf8(utf8FromUtf16(text)), text) << static_cast<std::uint32_t>(scalar);
    }
}

TEST(Utf16FromUtf8, EveryByteThatCannotBeUsedBecomesOneReplacement) {
    EXPECT_EQ(utf16FromUtf8("a\xFF\xC3"), u"a\uFFFD\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\xC0\x80"), u"\uFFFD\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\xE2\x82"), u"\uFFFD\uFFFD");
    // U+0000 in three and in four bytes.
    EXPECT_EQ(utf16FromUtf8("\xE0\x80\x80"), u"\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\xF0\x80\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
}

TEST(WithPairedSurrogates, ReplacesOnlyTheUnpaired) {
    const std::u16string pair = u"\U0001F600";
    EXPECT_EQ(withPairedSurrogates(pair), pair);
    EXPECT_EQ(withPairedSurrogates(std::u16string{0xD83D} + pair + char16_t{0xDE00}),
              u"\uFFFD" + pair + u"\uFFFD");
}

}  // namespace
}  // namespace skarnel
