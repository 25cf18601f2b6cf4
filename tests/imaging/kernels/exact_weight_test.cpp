#include "imaging/kernels/exact_weight.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "imaging/kernels/targets.h"

namespace skarnel::kernels {
namespace {

/// floor(d * weight / 65536) against the double arithmetic, for every pair of bytes that differ
/// by d. From 128 on products and sums of the doubles are exact.
void expectExact(double position) {
    const ExactWeight exact = exactWeight(position);
    if (exact.needsDoubles) return;
    const double fraction = position - std::floor(position);
    for (int d = -255; d <= 255; ++d) {
        const int least = d < 0 ? -d : 0;
        const int most = d < 0 ? 255 : 255 - d;
        const int shift = (d * exact.weight) >> 16;
        for (const int first : {least, (least + most) / 2, most}) {
            const auto value = static_cast<int>(first + d * fraction);
            ASSERT_EQ(first + shift, value) << "position " << position << " d " << d;
        }
    }
}

struct Plan {
    std::vector<std::int32_t> from, inDoubles;
    std::vector<std::uint32_t> weight;
    bool operator==(const Plan&) const = default;
};

/// The columns before the `end`-th of a row whose columns inset .. outWidth - inset show `pixels`
/// pixels, from the `begin`-th of these on.
Plan planned(int pixels, int inset, int outWidth, int begin, int end) {
    const double span = outWidth - 2 * inset;
    const auto count = static_cast<std::size_t>(end - begin);
    Plan plan;
    plan.from.resize(count);
    plan.weight.resize(count);
    plan.inDoubles.resize(count);
    plan.inDoubles.resize(planShapeColumns({1.0 * inset, (pixels - 1) / span, pixels - 1},
                                           inset + begin, count, plan.from.data(),
                                           plan.weight.data(), plan.inDoubles.data()));
    return plan;
}

void expectPlannedAlike(int pixels, int inset, int outWidth, int begin, int end) {
    Plan expected;
    {
        const ScopedTarget scalarOnly(kScalarTarget);
        expected = planned(pixels, inset, outWidth, begin, end);
    }
    for (const Target target : supportedTargets()) {
        const ScopedTarget only(target);
        ASSERT_EQ(planned(pixels, inset, outWidth, begin, end), expected)
            << targetName(target) << ": " << pixels << " pixels over " << outWidth - 2 * inset
            << ", columns " << begin << " to " << end;
    }
}

/// All columns of the row.
void expectPlannedAlike(int pixels, int inset, int outWidth) {
    expectPlannedAlike(pixels, inset, outWidth, 0, outWidth - 2 * inset + 1);
}

TEST(ExactWeight, DoesWhatTheFractionDoesOnEverySideOfEveryBoundary) {
    for (int q = 1; q <= 255; ++q)
        for (int p = 0; p < q; p += 1 + q / 40)
            for (const double whole : {0.0, 100.0, 127.0, 128.0, 200.0, 256.0, 3000.0, 65536.0}) {
                const double at = whole + static_cast<double>(p) / q;
                for (const double position :
                     {at, std::nextafter(at, 1e9), std::nextafter(at, -1.0), at + 1e-7, at - 1e-7})
                    if (position >= 0) expectExact(position);
            }
}

TEST(ExactWeight, DoesWhatTheFractionDoesAtRandom) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> positions(0, 5000);
    for (int i = 0; i < 20000; ++i) expectExact(positions(random));
}

TEST(ExactWeight, OnlySmallPositionsAsDoublesForHelp) {
    const double third = 1.0 / 3;
    EXPECT_TRUE(exactWeight(third).needsDoubles);
    EXPECT_TRUE(exactWeight(0.5 + 0x1p-50).needsDoubles);
    EXPECT_FALSE(exactWeight(0.5).needsDoubles);
    EXPECT_FALSE(exactWeight(0.0).needsDoubles);
    EXPECT_FALSE(exactWeight(0.3337).needsDoubles);
    EXPECT_FALSE(exactWeight(128 + third).needsDoubles);
}

TEST(ExactWeight, AWholePositionHasNoWeight) {
    EXPECT_EQ(exactWeight(0.0).weight, 0);
    EXPECT_EQ(exactWeight(17.0).weight, 0);
    EXPECT_EQ(exactWeight(300.5).weight, 32768);
}

// A fraction just above a half: for d = -1 the exact product lies below -1/2, and nothing changes;
// for d = -2 it lies below -1, so the floor is -2, which the weight of a half would miss.
TEST(ExactWeight, AFractionJustAboveABoundaryLeavesTheBoundary) {
    EXPECT_EQ(exactWeight(std::nextafter(300.5, 301.0)).weight, 32769);
}

// Every span in turn, so that positions come upon boundaries of every denominator.
TEST(ExactWeight, RowsArePlannedAlikeForEverySpan) {
    for (int inset = 0; inset < 350; ++inset) expectPlannedAlike(1000, inset, 1700);
    for (int pixels = 1; pixels < 400; ++pixels) expectPlannedAlike(pixels, 3, 400);
}

// Whole rows are planned from both ends at once: with and without the last column, where the halves
// meet at every place in a vector, and where the farther half only just needs no doubles; pieces
// are planned from their beginning.
TEST(ExactWeight, RowsArePlannedAlikeFromBothEnds) {
    for (int span = 620; span < 700; ++span) {
        expectPlannedAlike(500, 0, span, 0, span);
        expectPlannedAlike(500, 0, span, 0, span + 1);
        expectPlannedAlike(500, 0, span, 0, span - 1);
        expectPlannedAlike(500, 0, span, 16, span);
    }
    for (int pixels = 256; pixels < 400; ++pixels) expectPlannedAlike(pixels, 5, 511);
    for (const int span : {3999, 4000, 4200, 4480, 4590, 4800})
        expectPlannedAlike(4000, 3, span + 6);
    expectPlannedAlike(32768, 0, 65536);
}

// Where all columns lie on boundaries, at whole and half positions, and at the widths where whole
// numbers end.
TEST(ExactWeight, RowsArePlannedAlikeAtTheirLimits) {
    for (const int span : {500, 999, 1998, 3996, 255 * 8, 256 * 8})
        expectPlannedAlike(1000, 7, span + 14);
    for (const int pixels : {32767, 32768, 32769, 65537}) {
        expectPlannedAlike(pixels, 0, pixels);
        expectPlannedAlike(pixels, 0, 40000);
        expectPlannedAlike(pixels, 5, 120);
    }
    expectPlannedAlike(2000, 0, 140000);  // more columns than are added up
}

}  // namespace
}  // namespace skarnel::kernels
