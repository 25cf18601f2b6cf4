#include "util/geometry/integers.h"

#include <gtest/gtest.h>

#include <limits>

namespace skarnel {
namespace {

TEST(Integers, TruncateTowardZero) {
    EXPECT_EQ(toInt32(2.9), 2);
    EXPECT_EQ(toInt32(-2.9), -2);
    EXPECT_EQ(toInt64(-7.999), -7);
}

TEST(Integers, TheRangesEndsAreHeldAndBeyondThemIsZero) {
    EXPECT_EQ(toInt32(2147483647.9), 2147483647);
    EXPECT_EQ(toInt32(2147483648.0), 0);
    EXPECT_EQ(toInt32(-2147483648.9), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(toInt32(-2147483649.0), 0);
    EXPECT_EQ(toInt64(9223372036854775808.0), 0);
    EXPECT_EQ(toInt64(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
}

TEST(Integers, NotANumberAndInfinityAreZero) {
    EXPECT_EQ(toInt32(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(toInt32(std::numeric_limits<double>::infinity()), 0);
    EXPECT_EQ(toInt64(-std::numeric_limits<double>::infinity()), 0);
    EXPECT_EQ(toLowByte(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(Integers, TheLowByteWraps) {
    EXPECT_EQ(toLowByte(256.0), 0);
    EXPECT_EQ(toLowByte(300.7), 44);
    EXPECT_EQ(toLowByte(-1.5), 255);
}

}  // namespace
}  // namespace skarnel
