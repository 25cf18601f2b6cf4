#include "cli/numbers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

namespace skarnel::cli {
namespace {

TEST(Numbers, AreDecimalAndFinite) {
    EXPECT_EQ(parseNumber("7"), 7.0F);
    EXPECT_EQ(parseNumber("-20"), -20.0F);
    EXPECT_EQ(parseNumber("+7.5"), 7.5F);
    EXPECT_EQ(parseNumber("1e2"), 100.0F);
    EXPECT_EQ(parseNumber(".5"), 0.5F);
    EXPECT_EQ(parseNumber("0.1"), 0.1F);
    EXPECT_EQ(parseNumber("3.4028235e38"), std::numeric_limits<float>::max());
}

TEST(Numbers, AnythingElseIsRefused) {
    for (const char* text :
         {"",    " ",    "x",        "1x",   "1 ",  " 1",  "1,5", "0x10", "nan", "NaN",
          "inf", "-inf", "infinity", "1e39", "--1", "+-1", "-+1", "1e",   "e1",  "+"}) {
        EXPECT_FALSE(parseNumber(text)) << text;
    }
}

TEST(Numbers, DoNotDependOnTheLocale) {
    const char* before = std::setlocale(LC_ALL, nullptr);
    const std::string kept = before;
    // Where it is not installed the test still holds.
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    EXPECT_EQ(parseNumber("1.5"), 1.5F);
    EXPECT_FALSE(parseNumber("1,5"));
    std::setlocale(LC_ALL, kept.c_str());
}

TEST(Counts, AreWholeAndWithinTheirLimit) {
    EXPECT_EQ(parseCount("0", 10), 0);
    EXPECT_EQ(parseCount("10", 10), 10);
    for (const char* text : {"11", "-1", "1.0", "", "a", "99999999999999999999"}) {
        EXPECT_FALSE(parseCount(text, 10)) << text;
    }
}

TEST(PixelCounts, TakeUnits) {
    EXPECT_EQ(parseLargeCount("1"), 1);
    EXPECT_EQ(parseLargeCount("3k"), 3000);
    EXPECT_EQ(parseLargeCount("3K"), 3000);
    EXPECT_EQ(parseLargeCount("4m"), 4'000'000);
    EXPECT_EQ(parseLargeCount("2G"), 2'000'000'000);
    EXPECT_EQ(parseLargeCount("500M"), 500'000'000);
    EXPECT_EQ(parseLargeCount("2g"), 2'000'000'000);
    for (const char* text : {"0", "", "M", "1.5M", "-3", "1T", "9223372036854775807G"}) {
        EXPECT_FALSE(parseLargeCount(text)) << text;
    }
}

TEST(PixelSizes, AreTwoPositiveNumbers) {
    EXPECT_EQ(parsePixelSize("800x600"), (PixelSize{800, 600}));
    EXPECT_EQ(parsePixelSize("1x1000000"), (PixelSize{1, 1'000'000}));
    for (const char* text : {"800", "800x", "x600", "0x600", "800x0", "800X600", "-1x5", "8x6x4",
                             "1000001x1", "1.5x2", "ax5", "5xa", "5x-1"}) {
        EXPECT_FALSE(parsePixelSize(text)) << text;
    }
}

TEST(Colors, AreSixHexadecimalDigits) {
    EXPECT_EQ(parseColor("#000000"), (DeviceColor{0, 0, 0, 1}));
    EXPECT_EQ(parseColor("#FF0080"), (DeviceColor{1, 0, 128 / 255.0, 1}));
    EXPECT_EQ(parseColor("#ff0080"), parseColor("#FF0080"));
    for (const char* text : {"", "#", "FF0080", "FF00800", "#FF008", "#FF00800", "#GG0080",
                             "#-F0080", "#+F0080", "# F0080", "red"}) {
        EXPECT_FALSE(parseColor(text)) << text;
    }
}

}  // namespace
}  // namespace skarnel::cli
