#include "app/float_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

namespace skarnel {
namespace {

TEST(FloatText, HasSixDecimals) {
    EXPECT_EQ(floatText(0), "0.000000");
    EXPECT_EQ(floatText(100), "100.000000");
    EXPECT_EQ(floatText(7), "7.000000");
    EXPECT_EQ(floatText(200), "200.000000");
    EXPECT_EQ(floatText(50), "50.000000");
    EXPECT_EQ(floatText(-0.5F), "-0.500000");
    // The float nearest to 0.1 is 0.100000001490...; six decimals hide it.
    EXPECT_EQ(floatText(0.1F), "0.100000");
}

TEST(FloatText, HoldsEveryFloat) {
    // 2^128 - 2^104, the largest float, written out.
    EXPECT_EQ(floatText(std::numeric_limits<float>::max()),
              "340282346638528859811704183484516925440.000000");
    EXPECT_EQ(floatText(std::numeric_limits<float>::lowest()),
              "-340282346638528859811704183484516925440.000000");
    EXPECT_EQ(floatText(std::numeric_limits<float>::infinity()), "inf");
}

TEST(FloatText, KeepsTheFullStopInALocaleThatHasAComma) {
    for (const char* locale : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
        if (std::setlocale(LC_NUMERIC, locale) != nullptr) break;
    }
    EXPECT_EQ(floatText(0.5F), "0.500000");
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace
}  // namespace skarnel
