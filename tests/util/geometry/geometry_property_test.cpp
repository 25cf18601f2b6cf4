// Properties of the geometry that hold for any rectangle, on random ones whose seed is printed.
// Whole numbers are used where a property is exact, so that no rounding enters.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "util/geometry/geometry.h"
#include "util/seeded_test.h"

namespace skarnel {
namespace {

class GeometryProperties : public SeededTest {
  protected:
    static constexpr int kRounds = 20'000;

    CGRect rect() { return {number(-50, 50), number(-50, 50), number(1, 60), number(1, 60)}; }
    double number(int low, int high) { return whole(low, high); }
};

TEST_F(GeometryProperties, AligningTwiceIsAligningOnce) {
    for (int round = 0; round < kRounds; ++round) {
        const CGRect a = rect();
        const CGRect b = rect();
        const std::int32_t quadrant = whole(-2, 7);
        const CGRect once = alignRectInRect(a, b, quadrant);
        ASSERT_EQ(alignRectInRect(once, b, quadrant), once) << a << b << quadrant;
        ASSERT_EQ(rectOffset(once, b, quadrant), (CGPoint{0, 0}));
        ASSERT_EQ(once.size(), a.size());
    }
}

TEST_F(GeometryProperties, TheOffsetBackIsTheOffsetReversed) {
    for (int round = 0; round < kRounds; ++round) {
        const CGRect a = rect();
        const CGRect b = rect();
        for (std::int32_t quadrant = 0; quadrant <= 4; ++quadrant) {
            const CGPoint there = rectOffset(a, b, quadrant);
            const CGPoint back = rectOffset(b, a, quadrant);
            ASSERT_EQ(there, (CGPoint{-back.x + 0.0, -back.y + 0.0}));
        }
    }
}

TEST_F(GeometryProperties, OppositeCornersAreMutual) {
    for (std::int32_t quadrant = 1; quadrant <= 4; ++quadrant) {
        ASSERT_EQ(oppositeQuadrant(oppositeQuadrant(quadrant)), quadrant);
        ASSERT_EQ(std::abs(oppositeQuadrant(quadrant) - quadrant), 2);
    }
}

TEST_F(GeometryProperties, TheClosestCornerIsNoFartherThanAnyOther) {
    for (int round = 0; round < kRounds; ++round) {
        const CGRect a = rect();
        const CGRect b = rect();
        const std::int32_t best = closestCorner(a, b);
        for (std::int32_t quadrant = 0; quadrant <= 4; ++quadrant) {
            const float least = distanceFromOrigin(rectOffset(a, b, best));
            const float other = distanceFromOrigin(rectOffset(a, b, quadrant));
            ASSERT_TRUE(quadrant < best ? least < other : least <= other) << a << b;
        }
    }
}

TEST_F(GeometryProperties, IntersectionAndUnionHoldExactlyTheSharedAndTheCoveredCells) {
    for (int round = 0; round < 2'000; ++round) {
        const CGRect a = rect();
        const CGRect b = rect();
        const CGRect both = NSIntersectionRect(a, b);
        const CGRect all = NSUnionRect(a, b);
        const double x = whole(-60, 110) + 0.5;
        const double y = whole(-60, 110) + 0.5;
        const auto holds = [x, y](CGRect r) {
            return x > r.minX() && x < r.maxX() && y > r.minY() && y < r.maxY();
        };
        ASSERT_EQ(holds(both), holds(a) && holds(b)) << a << b << x << ' ' << y;
        ASSERT_TRUE(holds(all) || !(holds(a) || holds(b))) << a << b;
        // No smaller one would do: each side of the union is a side of one of the two.
        ASSERT_TRUE(all.minX() == a.minX() || all.minX() == b.minX());
        ASSERT_TRUE(all.maxX() == a.maxX() || all.maxX() == b.maxX());
        ASSERT_TRUE(all.minY() == a.minY() || all.minY() == b.minY());
        ASSERT_TRUE(all.maxY() == a.maxY() || all.maxY() == b.maxY());
    }
}

TEST_F(GeometryProperties, AFittedRectangleLiesInsideAndTouchesACoveringOneTheOtherWayRound) {
    for (int round = 0; round < kRounds; ++round) {
        const CGRect inner = rect();
        const CGRect outer = rect();
        const CGRect fit = sizeRectInRect(inner, outer, false);
        const CGRect cover = sizeRectInRect(inner, outer, true);
        ASSERT_TRUE(fit.width <= outer.width && fit.height <= outer.height) << inner << outer;
        ASSERT_TRUE(fit.width == outer.width || fit.height == outer.height) << inner << outer;
        ASSERT_TRUE(cover.width >= outer.width && cover.height >= outer.height) << inner << outer;
        ASSERT_TRUE(cover.width == outer.width || cover.height == outer.height) << inner << outer;
        // The aspect is a float: 2^-24 of relative error, a little more after the products.
        const double aspect = inner.width / inner.height;
        ASSERT_NEAR(fit.width / fit.height / aspect, 1, 1.2e-7) << inner << outer;
        ASSERT_NEAR(cover.width / cover.height / aspect, 1, 1.2e-7) << inner << outer;
    }
}

TEST_F(GeometryProperties, ConstrainingPutsWhatHasRoomInside) {
    for (int round = 0; round < kRounds; ++round) {
        const CGRect bounds = rect();
        CGRect a = rect();
        a.width = std::min(a.width, bounds.width);
        a.height = std::min(a.height, bounds.height);
        const CGRect inside = constrainRectToRect(a, bounds);
        ASSERT_TRUE(inside.minX() >= bounds.minX() && inside.maxX() <= bounds.maxX()) << a;
        ASSERT_TRUE(inside.minY() >= bounds.minY() && inside.maxY() <= bounds.maxY()) << a;
        ASSERT_EQ(constrainRectToRect(inside, bounds), inside);
    }
}

TEST_F(GeometryProperties, AnExpelledRectangleAbutsWithTheMarginAndMovesOnOneAxis) {
    for (int round = 0; round < kRounds; ++round) {
        const CGRect a = rect();
        const CGRect b = rect();
        const auto margin = static_cast<float>(whole(-5, 5));
        const CGRect out = expelRectFromRect(a, b, margin);
        const double overlap = static_cast<double>(margin);
        ASSERT_TRUE(out.x == a.x || out.y == a.y) << a << b;
        ASSERT_TRUE(out.maxX() - b.minX() == overlap || b.maxX() - out.minX() == overlap ||
                    out.maxY() - b.minY() == overlap || b.maxY() - out.minY() == overlap)
            << a << b << out;
        // It is one of the four moves over a named edge, and none of them starts from less.
        bool named = false;
        for (RectEdge edge = 0; edge < 4; ++edge)
            named = named || expelRectFromRectOnEdge(a, b, edge, margin) == out;
        ASSERT_TRUE(named) << a << b;
    }
}

TEST_F(GeometryProperties, ABlendLiesBetweenItsEndsAndIsWhole) {
    for (int round = 0; round < kRounds; ++round) {
        const CGRect a = rect();
        const CGRect b = rect();
        const float t = std::uniform_real_distribution<float>(0, 1)(random_);
        const CGRect blended = blendRects(a, b, t);
        ASSERT_EQ(blended.x, std::trunc(blended.x));
        ASSERT_TRUE(blended.x >= std::min(a.x, b.x) && blended.x <= std::max(a.x, b.x)) << a << b;
        ASSERT_TRUE(blended.height >= std::min(a.height, b.height) &&
                    blended.height <= std::max(a.height, b.height))
            << a << b << t;
    }
}

TEST_F(GeometryProperties, ARangesRemainderStaysWithinOneLengthOfItsLocation) {
    for (int round = 0; round < kRounds; ++round) {
        const auto value = static_cast<float>(whole(-5000, 5000));
        const auto location = static_cast<float>(whole(-50, 50));
        const auto length = static_cast<float>(whole(1, 500));
        const float wrapped = BTFloatRangeMod({value, location, length});
        ASSERT_LT(std::abs(wrapped - location), length);
        ASSERT_EQ(wrapped < location, value < location && wrapped != location);
        ASSERT_EQ(std::fmod(static_cast<double>(value - wrapped), static_cast<double>(length)), 0);
    }
}

}  // namespace
}  // namespace skarnel
