#include "render/column_plans.h"

#include <gtest/gtest.h>

#include "imaging/kernels/exact_weight.h"
#include "imaging/row_source.h"
#include "imaging/test_images.h"
#include "render/reflection.h"

namespace skarnel {
namespace {

using test::noiseImage;

TEST(ColumnPlans, AColumnIsPlannedAsByItself) {
    const auto plans = ColumnPlans::take(700);
    for (const int span : {1, 699, 700, 701, 1398, 1500, 2099}) {
        const ColumnPlan* plan = plans->plan(span);
        ASSERT_NE(plan, nullptr);
        ASSERT_EQ(plan->packed.size(), static_cast<std::size_t>(span) + 1);
        const double scale = 699 / static_cast<double>(span);
        std::size_t inDoubles = 0;
        for (int x = 0; x <= span; ++x) {
            const double position = x * scale;
            const std::uint32_t packed = plan->packed[static_cast<std::size_t>(x)];
            const int from = static_cast<int>(packed & 0xFFFF);
            ASSERT_EQ(from, static_cast<int>(position)) << x << " of " << span;
            if (from == 699) continue;
            const kernels::ExactWeight exact = kernels::exactWeight(position);
            if (exact.needsDoubles) {
                ASSERT_LT(inDoubles, plan->inDoubles.size());
                ASSERT_EQ(plan->inDoubles[inDoubles], x);
                ASSERT_EQ(plan->fractions[inDoubles++], position - from);
            } else {
                ASSERT_EQ(packed >> 16, exact.weight) << x << " of " << span;
            }
        }
        EXPECT_EQ(inDoubles, plan->inDoubles.size());
    }
}

TEST(ColumnPlans, AreKeptForTheNextRenderOfTheSameWidth) {
    const ColumnPlan* first = nullptr;
    {
        const auto plans = ColumnPlans::take(333);
        first = plans->plan(400);
        EXPECT_EQ(plans->plan(400), first) << "planned once";
        EXPECT_EQ(plans->bytes(), 4 * 401U);
        const auto others = ColumnPlans::take(333);
        EXPECT_EQ(others->bytes(), 0U) << "the first ones are in use";
    }
    const auto again = ColumnPlans::take(333);
    EXPECT_EQ(again->bytes(), 4 * 401U);
    EXPECT_EQ(again->plan(400), first);
    EXPECT_EQ(ColumnPlans::take(334)->bytes(), 0U);
}

TEST(ColumnPlans, MayBeExpectedWhetherThereAreAnyOrNot) {
    const auto plans = ColumnPlans::take(17);
    plans->plan(1);
    plans->plan(40);
    for (const int span : {-2000000000, -1, 0, 1, 2, 40, 41, 2000000000}) plans->expect(span);
    EXPECT_EQ(plans->bytes(), 4 * (2 + 41U)) << "nothing is planned for that";
}

TEST(ColumnPlans, TakeNoMoreThanTheirLimit) {
    const auto plans = ColumnPlans::take(40000);
    int planned = 0;
    while (plans->plan(100000 + planned) != nullptr) ++planned;
    EXPECT_EQ(planned, static_cast<int>(ColumnPlans::kLimit / 400004)) << "of 100 001 columns each";
    EXPECT_LE(plans->bytes(), ColumnPlans::kLimit);
    EXPECT_NE(plans->plan(100000), nullptr);
    EXPECT_EQ(ColumnPlans::take(ColumnPlans::kMostPixels + 1), nullptr);
    EXPECT_EQ(ColumnPlans::take(0), nullptr);
}

// A drag to and fro: each preview finds plans of other settings, rows that are planned already and
// rows that are not.
TEST(ColumnPlans, APreviewWithKeptPlansHasTheBytesOfTheWholeRender) {
    const CGImage picture = noiseImage(1333, 9, 11);
    for (const float width : {100.0F, 37.5F, -40.0F, 99.0F, -3.0F, 0.0F, 100.0F}) {
        const RenderInputReaders readers([] { return 255.0F; },
                                         [] { return std::optional<DeviceColor>(); },
                                         [] { return 0.0F; });
        const auto render = [&](Drawing drawing) {
            return addReflectionToCGImage(picture, width, 100, 0, 0, 0, readers, drawing)->image;
        };
        const CGImage whole = render(Drawing::AtOnce);
        const CGImage preview = render(Drawing::WhenRead);
        std::vector<std::uint8_t> scratch(std::size_t{4} * static_cast<std::size_t>(whole.width()));
        for (int y = picture.height(); y < whole.height(); ++y) {
            const SourceRow row = preview.rowSource()->row(y, scratch.data());
            ASSERT_TRUE(row.isWhole);
            const std::uint8_t* start = row.bytes - std::ptrdiff_t{4} * row.first;
            ASSERT_TRUE(std::equal(start, start + scratch.size(), whole.pixels().row(y)))
                << "row " << y << " at a width of " << width;
        }
    }
}

}  // namespace
}  // namespace skarnel
