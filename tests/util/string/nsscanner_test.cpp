#include "util/string/nsscanner.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

TEST(NSScanner, SkipsWhiteSpaceUnlessToldOtherwise) {
    NSScanner scanner(u" \t\n\rab"_ns);
    EXPECT_TRUE(scanner.scanString(u"a"));
    EXPECT_EQ(scanner.scanLocation(), 5U);
    NSScanner strict(u" ab"_ns);
    strict.setCharactersToBeSkipped(u"");
    EXPECT_FALSE(strict.scanString(u"a"));
    EXPECT_EQ(strict.scanLocation(), 0U);
}

TEST(NSScanner, IsAtEndWhenOnlySkippedCharactersAreLeft) {
    EXPECT_TRUE(NSScanner(u"  "_ns).isAtEnd());
    NSScanner strict(u"  "_ns);
    strict.setCharactersToBeSkipped(u"");
    EXPECT_FALSE(strict.isAtEnd());
    EXPECT_TRUE(NSScanner(NSString()).isAtEnd());
}

TEST(NSScanner, AFailedScanLeavesTheLocationBeforeTheSkippedCharacters) {
    NSScanner scanner(u"  x"_ns);
    EXPECT_FALSE(scanner.scanString(u"y"));
    EXPECT_EQ(scanner.scanInt(), std::nullopt);
    EXPECT_EQ(scanner.scanHexInt(), std::nullopt);
    EXPECT_EQ(scanner.scanUpToString(u"x"), std::nullopt);
    EXPECT_EQ(scanner.scanLocation(), 0U);
}

TEST(NSScanner, IgnoresCaseUnlessToldOtherwise) {
    NSScanner scanner(u"AbC"_ns);
    EXPECT_TRUE(scanner.scanString(u"aBc"));
    scanner.setScanLocation(0);
    scanner.setCaseSensitive(true);
    EXPECT_FALSE(scanner.scanString(u"aBc"));
    EXPECT_TRUE(scanner.scanString(u"Ab"));
    EXPECT_EQ(scanner.scanLocation(), 2U);
}

TEST(NSScanner, ScansUpToATextOrTheEnd) {
    NSScanner scanner(u"one&two"_ns);
    EXPECT_EQ(scanner.scanUpToString(u"&"), u"one"_ns);
    EXPECT_EQ(scanner.scanUpToString(u"&"), std::nullopt) << "nothing stands before it";
    EXPECT_TRUE(scanner.scanString(u"&"));
    EXPECT_EQ(scanner.scanUpToString(u"&"), u"two"_ns);
    EXPECT_TRUE(scanner.isAtEnd());
    EXPECT_EQ(scanner.scanUpToString(u"&"), std::nullopt);
}

TEST(NSScanner, ScansUpToACharacterOfASet) {
    NSScanner scanner(u"ab;c d"_ns);
    scanner.setCharactersToBeSkipped(u"");
    EXPECT_EQ(scanner.scanUpToCharactersFromSet(u" ;"), u"ab"_ns);
    EXPECT_EQ(scanner.scanUpToCharactersFromSet(u" ;"), std::nullopt);
    EXPECT_TRUE(scanner.scanString(u";"));
    EXPECT_EQ(scanner.scanUpToCharactersFromSet(u" ;"), u"c"_ns);
}

struct IntRow {
    const char16_t* text;
    std::optional<std::int32_t> value;
    std::uint64_t location;
};

class ScanInt : public ::testing::TestWithParam<IntRow> {};

TEST_P(ScanInt, ReadsSignAndDigitsAndClamps) {
    NSScanner scanner{NSString(std::u16string_view(GetParam().text))};
    EXPECT_EQ(scanner.scanInt(), GetParam().value);
    EXPECT_EQ(scanner.scanLocation(), GetParam().location);
}

INSTANTIATE_TEST_SUITE_P(
    Table, ScanInt,
    ::testing::Values(IntRow{u"12a", 12, 2}, IntRow{u"-12", -12, 3}, IntRow{u"+7;", 7, 2},
                      IntRow{u"007", 7, 3}, IntRow{u"", {}, 0}, IntRow{u"-", {}, 0},
                      IntRow{u"+-1", {}, 0}, IntRow{u"a1", {}, 0}, IntRow{u"- 1", {}, 0},
                      IntRow{u"2147483647", 2147483647, 10}, IntRow{u"2147483648", 2147483647, 10},
                      IntRow{u"-2147483648", INT32_MIN, 11}, IntRow{u"-2147483649", INT32_MIN, 11},
                      IntRow{u"99999999999999999999999999x", 2147483647, 26},
                      // Arabic-Indic digits are no digits here.
                      IntRow{u"\u0661", {}, 0}));

struct HexRow {
    const char16_t* text;
    std::optional<std::uint32_t> value;
    std::uint64_t location;
};

class ScanHexInt : public ::testing::TestWithParam<HexRow> {};

TEST_P(ScanHexInt, ReadsDigitsWithOrWithoutPrefixAndClamps) {
    NSScanner scanner{NSString(std::u16string_view(GetParam().text))};
    EXPECT_EQ(scanner.scanHexInt(), GetParam().value);
    EXPECT_EQ(scanner.scanLocation(), GetParam().location);
}

INSTANTIATE_TEST_SUITE_P(
    Table, ScanHexInt,
    ::testing::Values(HexRow{u"1F600;", 0x1F600, 5}, HexRow{u"aBcDeFg", 0xABCDEF, 6},
                      HexRow{u"0x41", 0x41, 4}, HexRow{u"0X41", 0x41, 4}, HexRow{u"0xg", 0, 1},
                      HexRow{u"0x", 0, 1}, HexRow{u"0123", 0x123, 4}, HexRow{u"0", 0, 1},
                      HexRow{u"x41", {}, 0}, HexRow{u"-41", {}, 0}, HexRow{u"", {}, 0},
                      HexRow{u"g", {}, 0}, HexRow{u"FFFFFFFF", 0xFFFFFFFF, 8},
                      HexRow{u"100000000", 0xFFFFFFFF, 9},
                      HexRow{u"123456789012345678901234", 0xFFFFFFFF, 24}));

}  // namespace
}  // namespace skarnel
