// Expected numbers by hand: r = g / 2^31 rounded to a float, v = r * n rounded to a float and cut.
#include "util/misc/rand.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace skarnel {
namespace {

constexpr int kMax = 2147483647;
constexpr int kHalf = 1 << 30;

TEST(Rand, ScalesTheGeneratorsShare) {
    EXPECT_EQ(randFromGenerator(0, 100), 0);
    EXPECT_EQ(randFromGenerator(kHalf, 100), 50);
    EXPECT_EQ(randFromGenerator(kHalf - 1, 100), 50) << "0.4999999995 is 0.5 as a float";
    EXPECT_EQ(randFromGenerator(kHalf - 64, 100), 49) << "0.49999997 is a float below 0.5";
    EXPECT_EQ(randFromGenerator(3 * (1 << 29), 10), 7);
}

TEST(Rand, OfZeroIsZero) {
    for (int generated : {0, 1, kHalf, kMax}) EXPECT_EQ(randFromGenerator(generated, 0), 0);
}

TEST(Rand, TheLargestValuesRoundUpToOne) {
    EXPECT_EQ(randFromGenerator(kMax, 1), 1);
    EXPECT_EQ(randFromGenerator(kMax, -10), -10);
    // Floats just below 1 are 2^-24 apart: 64 units of the generator from 1 is the tie, which goes
    // to the even neighbour, 1; 65 units round down to 1 - 2^-24.
    EXPECT_EQ(randFromGenerator(kMax - 63, 1), 1);
    EXPECT_EQ(randFromGenerator(kMax - 64, 1), 0);
}

TEST(Rand, OfANegativeNumberIsCutTowardZero) {
    EXPECT_EQ(randFromGenerator(1, -10), 0);
    EXPECT_EQ(randFromGenerator(kHalf, -10), -5);
    EXPECT_EQ(randFromGenerator(kHalf + kHalf / 2 + kHalf / 4, -10), -8);  // -8.75
}

TEST(Rand, WrapsAt16Bits) {
    EXPECT_EQ(randFromGenerator(kHalf, 65535), 32767);   // 32767.5
    EXPECT_EQ(randFromGenerator(kHalf, 65536), -32768);  // 32768
    EXPECT_EQ(randFromGenerator(kMax, 40000), -25536);   // 40000 - 65536
    EXPECT_EQ(randFromGenerator(kHalf, 131072), 0);      // 65536
}

TEST(Rand, OfTheLargestNumberIsDefined) {
    // 2^31 does not fit 32 bits; below it the low 16 bits count: 2^30 has none.
    EXPECT_EQ(randFromGenerator(kMax, kMax), 0);
    EXPECT_EQ(randFromGenerator(kHalf, kMax), 0);
    EXPECT_EQ(randFromGenerator(kMax, -kMax - 1), 0);
}

TEST(Rand, TakesOneValueOfTheStandardGeneratorAndDoesNotSeedIt) {
    std::srand(12345);
    int generated[50];
    for (int& value : generated) value = std::rand();
    std::srand(12345);
    for (int value : generated) {
        const double share = value / 2147483648.0;
        // Away from the borders of whole numbers the float steps do not change the result.
        const double exact = share * 1000;
        if (exact - static_cast<int>(exact) < 0.01 || exact - static_cast<int>(exact) > 0.99) {
            (void)Rand(1000);
            continue;
        }
        EXPECT_EQ(Rand(1000), static_cast<int>(exact));
    }
}

}  // namespace
}  // namespace skarnel
