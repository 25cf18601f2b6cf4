// The horizontal half of a reduction, as a whole: real plans of every pair of small widths, their
// edges included, on every target that runs here.
#include "imaging/column_combiner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "imaging/kernels/targets.h"

namespace skarnel {
namespace {

using kernels::ScopedTarget;
using kernels::Target;

std::vector<std::uint8_t> noise(int pixels, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(4 * static_cast<std::size_t>(pixels));
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

/// Sample x is the weighted sum over its taps, rounded to the nearest.
std::vector<std::uint8_t> sumsOf(const AxisPlan& plan, const std::vector<std::uint8_t>& row) {
    std::vector<std::uint8_t> sums;
    for (int x = 0; x < plan.size(); ++x) {
        const kernels::Taps& taps = plan.taps(x);
        for (int k = 0; k < 4; ++k) {
            int sum = kernels::kTapUnit / 2;
            for (int j = 0; j < taps.count; ++j)
                sum += row[static_cast<std::size_t>(4 * (taps.first + j) + k)] * taps.weights[j];
            sums.push_back(static_cast<std::uint8_t>(sum / kernels::kTapUnit));
        }
    }
    return sums;
}

std::vector<std::uint8_t> combined(const AxisPlan& plan, const std::vector<std::uint8_t>& row) {
    const ColumnCombiner combiner(plan, static_cast<int>(row.size() / 4));
    std::vector<std::uint8_t> target(4 * static_cast<std::size_t>(plan.size()), 0xA5);
    combiner.combine(target.data(), row.data());
    return target;
}

AxisPlan planOf(int from, double to) {
    return planAxis({0, 1.0 * from}, from, {0, to}, {0, to}, InterpolationQuality::High);
}

TEST(ColumnCombiner, EveryWidthToEveryOtherIsTheSumOfItsTaps) {
    std::vector<Target> targets = kernels::supportedTargets();
    targets.push_back(kernels::kScalarTarget);
    for (int from = 1; from <= 130; ++from) {
        const auto row = noise(from, static_cast<std::uint32_t>(from));
        // Whole widths, and edges that are partly covered.
        for (double to = 1; to <= 130; to += from % 7 == 0 ? 0.7 : 1) {
            const AxisPlan plan = planOf(from, to);
            const auto expected = sumsOf(plan, row);
            for (const Target target : targets) {
                const ScopedTarget only(target);
                ASSERT_EQ(combined(plan, row), expected)
                    << from << " to " << to << ", " << kernels::targetName(target);
            }
        }
    }
}

/// Of a row that is transparent beside some columns.
TEST(ColumnCombiner, OfContentAloneIsTheSumOfItsTaps) {
    std::vector<Target> targets = kernels::supportedTargets();
    targets.push_back(kernels::kScalarTarget);
    for (const auto& [from, to] : {std::pair{64, 32}, {130, 48}, {96, 31}, {50, 64}, {33, 32}}) {
        const AxisPlan plan = planOf(from, to);
        for (int first = 0; first <= from; first += 3) {
            for (int end = first; end <= from; end += end > from - 4 ? 1 : 5) {
                auto row = noise(from, static_cast<std::uint32_t>(from + end));
                std::fill(row.begin(), row.begin() + 4 * first, std::uint8_t{0});
                std::fill(row.begin() + 4 * end, row.end(), std::uint8_t{0});
                const auto expected = sumsOf(plan, row);
                for (const Target target : targets) {
                    const ScopedTarget only(target);
                    const ColumnCombiner combiner(plan, from);
                    std::vector<std::uint8_t> made(expected.size(), 0xA5);
                    combiner.combineContent(made.data(), row.data(), first, end);
                    ASSERT_EQ(made, expected) << from << " to " << to << ", " << first << " to "
                                              << end << ", " << kernels::targetName(target);
                }
            }
        }
    }
}

/// A group of four neighbours cannot begin with the row's last two pixels: it is moved back, and
/// they are its third and fourth.
TEST(ColumnCombiner, TheLastColumnOfAHalvedRowIsTheMeanOfTheLastTwo) {
    for (const Target target : kernels::supportedTargets()) {
        const ScopedTarget only(target);
        for (const int width : {16, 32, 160, 400}) {
            std::vector<std::uint8_t> row(8 * static_cast<std::size_t>(width), 10);
            std::fill(row.end() - 8, row.end() - 4, std::uint8_t{100});
            std::fill(row.end() - 4, row.end(), std::uint8_t{200});
            const auto halved = combined(planOf(2 * width, width), row);
            EXPECT_EQ(std::vector<std::uint8_t>(halved.end() - 8, halved.end()),
                      (std::vector<std::uint8_t>{10, 10, 10, 10, 150, 150, 150, 150}))
                << width << ", " << kernels::targetName(target);
        }
    }
}

}  // namespace
}  // namespace skarnel
