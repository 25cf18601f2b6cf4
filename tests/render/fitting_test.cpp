#include "render/fitting.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

// 0.2 in single precision, and what it makes of a size.
constexpr double kFifth = 0.20000000298023224;

TEST(GetDestinationRect, FitsAndCentresWithoutEnlarging) {
    struct Row {
        const char* name;
        CGRect src, dst, expected;
    };
    const Row rows[] = {
        {"equal sizes", {0, 0, 80, 60}, {0, 0, 80, 60}, {0, 0, 80, 60}},
        // 100 - 40 = 60 and 50 - 20 = 30, halved.
        {"a smaller picture keeps its size", {0, 0, 40, 20}, {0, 0, 100, 50}, {30, 15, 40, 20}},
        {"the width decides", {0, 0, 400, 100}, {0, 0, 100, 75}, {0, 25, 100, 25}},
        {"the height decides", {0, 0, 100, 400}, {0, 0, 75, 100}, {25, 0, 25, 100}},
        {"one side larger, the other smaller", {0, 0, 200, 10}, {0, 0, 100, 50}, {0, 22.5, 100, 5}},
        {"the origin of dst is kept", {9, 9, 40, 20}, {-7, 3, 100, 50}, {23, 18, 40, 20}},
        {"the origin of src does not matter",
         {-500, 1e6, 40, 20},
         {0, 0, 100, 50},
         {30, 15, 40, 20}},
        // fy = 600 / 3000 in single precision is a little more than a fifth, so that the extents
        // pass those of dst; the room is then negative and the offset 0.
        {"a fifth in single precision",
         {0, 0, 4000, 3000},
         {0, 0, 800, 600},
         {0, 0, 4000 * kFifth, 3000 * kFifth}},
        {"an empty viewer shrinks to nothing", {0, 0, 40, 20}, {0, 0, 0, 0}, {0, 0, 0, 0}},
        {"no size fits", {0, 0, 0, 0}, {0, 0, 100, 50}, {50, 25, 0, 0}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(GetDestinationRect(row.src, row.dst), row.expected) << row.name;
}

TEST(GetDestinationRect, HalvesTheRoomInSinglePrecision) {
    // The room of 200000001 - 0.5 narrows to 200000000 (floats are 16 apart there), half of which
    // is 100000000; in double precision it would be 100000000.25.
    const CGRect fitted = GetDestinationRect({0, 0, 0.5, 1}, {0, 0, 200000001, 1});
    EXPECT_EQ(fitted.x, 100000000.0);
    EXPECT_EQ(fitted.width, 0.5);
}

TEST(GetDestinationRect, ComparesTheFactorsInSinglePrecision) {
    // 1/3 and 1/3 + 1e-12 are one float; both give the same extents.
    const CGRect fitted = GetDestinationRect({0, 0, 3, 3}, {0, 0, 1.000000000003, 1});
    EXPECT_EQ(fitted.width, 3 * static_cast<double>(1.0F / 3.0F));
    EXPECT_EQ(fitted.height, fitted.width);
}

}  // namespace
}  // namespace skarnel
