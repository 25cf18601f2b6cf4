// Expected numbers were worked out by hand, or (those with many digits) with a script that rounds
// each intermediate to the stated width; none was read off the code under test.
#include "util/geometry/geometry.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>

#include "util/log/system_log.h"

namespace skarnel {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr std::int32_t kIntMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kIntMin = std::numeric_limits<std::int32_t>::min();

TEST(FloatRange, IsMadeOfItsThreeFloats) {
    const BTFloatRange range = BTMakeFloatRange(1.5F, -2.0F, 8.0F);
    EXPECT_EQ(range.value, 1.5F);
    EXPECT_EQ(range.location, -2.0F);
    EXPECT_EQ(range.length, 8.0F);
    static_assert(sizeof(BTFloatRange) == 12);
}

TEST(FloatRange, LiesInMemoryAsValueLocationLength) {
    const BTFloatRange range = BTMakeFloatRange(1, 2, 3);
    float fields[3];
    std::memcpy(fields, &range, sizeof fields);
    EXPECT_EQ(fields[0], 1.0F);
    EXPECT_EQ(fields[1], 2.0F);
    EXPECT_EQ(fields[2], 3.0F);
}

TEST(FloatRange, UnitIsTheShareOfTheLength) {
    EXPECT_EQ(BTFloatRangeUnit({5, 0, 10}), 0.5F);
    EXPECT_EQ(BTFloatRangeUnit({-5, 0, 10}), -0.5F);
}

TEST(FloatRange, UnitIsComputedInSinglePrecision) {
    // 0.7f - 0.2f and the quotient by 0.3f, each rounded to a float: 1.6666666269...
    EXPECT_EQ(BTFloatRangeUnit({0.7F, 0.2F, 0.3F}), static_cast<float>(1.6666666269302368));
    // 16777216 + 1 is no float: the difference loses the odd unit before the division.
    EXPECT_EQ(BTFloatRangeUnit({16777216.0F, -1.0F, 1.0F}), 16777216.0F);
}

TEST(FloatRange, UnitOfNoLengthIsInfiniteOrNotANumber) {
    EXPECT_EQ(BTFloatRangeUnit({5, 0, 0}), std::numeric_limits<float>::infinity());
    EXPECT_EQ(BTFloatRangeUnit({-5, 0, 0}), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(BTFloatRangeUnit({0, 0, 0})));
}

TEST(FloatRange, ModWrapsAValueAboveTheRange) {
    EXPECT_EQ(BTFloatRangeMod({23, 0, 10}), 3.0F);
    EXPECT_EQ(BTFloatRangeMod({25, 4, 10}), 5.0F);
    EXPECT_EQ(BTFloatRangeMod({14, 4, 10}), 4.0F);
}

TEST(FloatRange, ModLeavesAValueBelowTheLocationBelowIt) {
    EXPECT_EQ(BTFloatRangeMod({-1, 0, 10}), -1.0F);
    EXPECT_EQ(BTFloatRangeMod({-23, 0, 10}), -3.0F);
    EXPECT_EQ(BTFloatRangeMod({1, 4, 10}), 1.0F);
}

TEST(FloatRange, ModTakesTheDifferenceInSinglePrecisionAndTheRemainderInDouble) {
    EXPECT_EQ(BTFloatRangeMod({0.3F, 0.1F, 0.07F}), static_cast<float>(0.1600000262260437));
    EXPECT_EQ(BTFloatRangeMod({0.7F, 0.2F, 0.3F}), static_cast<float>(0.3999999761581421));
    // 16777216 - (-1) rounds to 16777216, so nothing remains of a length of 2.
    EXPECT_EQ(BTFloatRangeMod({16777216.0F, -1.0F, 2.0F}), -1.0F);
}

TEST(FloatRange, ModOfNoLengthIsNotANumberAndOfAnInfiniteOneTheValue) {
    EXPECT_TRUE(std::isnan(BTFloatRangeMod({5, 0, 0})));
    EXPECT_EQ(BTFloatRangeMod({5, 2, std::numeric_limits<float>::infinity()}), 5.0F);
}

TEST(Points, OffsetLeadsFromTheFirstToTheSecond) {
    EXPECT_EQ(offsetPoint({1, 2}, {10, 7}), (CGPoint{9, 5}));
    EXPECT_EQ(offsetPoint({10, 7}, {1, 2}), (CGPoint{-9, -5}));
}

TEST(Points, DistanceIsTheHypotenuseNarrowedToAFloat) {
    EXPECT_EQ(distanceFromOrigin({3, -4}), 5.0F);
    EXPECT_EQ(distanceFromOrigin({1, 1}), static_cast<float>(1.4142135381698608));
    // The squares pass the range of a float and of a double; the hypotenuse does not.
    EXPECT_EQ(distanceFromOrigin({3e30, 4e30}), 5e30F);
    EXPECT_EQ(distanceFromOrigin({kInf, kNan}), std::numeric_limits<float>::infinity());
    EXPECT_EQ(distanceFromOrigin({1e300, 0}), std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(distanceFromOrigin({kNan, 1})));
}

TEST(Quadrants, OppositesAreTakenByTheTruncatingRemainder) {
    struct Row {
        std::int32_t quadrant;
        std::int32_t opposite;
    };
    for (const Row row : {Row{1, 3}, Row{3, 1}, Row{2, 4}, Row{4, 2}, Row{0, 2}, Row{5, 3},
                          Row{6, 4}, Row{-1, 1}, Row{-2, 4}, Row{-3, -1}, Row{-4, -2}, Row{-5, -3},
                          // 2147483649 = 4 * 536870912 + 1; -2147483646 = -4 * 536870911 - 2.
                          Row{kIntMax, 1}, Row{kIntMin, -2}}) {
        EXPECT_EQ(oppositeQuadrant(row.quadrant), row.opposite) << "of " << row.quadrant;
    }
}

TEST(Rects, FromASizeLieAtTheOrigin) {
    EXPECT_EQ(rectFromSize({3, 4.5}), (CGRect{0, 0, 3, 4.5}));
    EXPECT_EQ(rectFromSize({-3, kInf}), (CGRect{0, 0, -3, kInf}));
}

TEST(Rects, EdgesAndMiddlesFollowFromOriginAndExtent) {
    const CGRect rect{1, 2, 10, -4};
    EXPECT_EQ(rect.minX(), 1);
    EXPECT_EQ(rect.maxX(), 11);
    EXPECT_EQ(rect.minY(), 2);
    EXPECT_EQ(rect.maxY(), -2);
    EXPECT_EQ(rect.midX(), 6);
    EXPECT_EQ(rect.midY(), 0);
}

TEST(Rects, ZoomIsAnchoredAtTheLowerLeftWhateverTheQuadrant) {
    for (std::int32_t quadrant : {-7, -1, 0, 1, 2, 3, 4, 5, kIntMax, kIntMin})
        EXPECT_EQ(rectZoom({10, 10, 4, 2}, 2.5F, quadrant), (CGRect{10, 10, 10, 5})) << quadrant;
}

TEST(Rects, ZoomWidensItsFloatFactor) {
    // 1.1f is 1.10000002384185791015625.
    EXPECT_EQ(rectZoom({0, 0, 10, 0}, 1.1F, 0).width, 11.000000238418579);
    EXPECT_EQ(rectZoom({1, 1, 3, 3}, -1.0F, 0), (CGRect{1, 1, -3, -3}));
}

TEST(Rects, AreLoggedInOneLine) {
    ScopedLogCapture log;
    logRect({1, 2.5, 3, -4});
    EXPECT_EQ(log.text(), "(1.000000,2.500000) (3.000000x-4.000000)\n");
}

TEST(Rects, PrintSoThatAFailedTestExplainsItself) {
    std::ostringstream out;
    out << CGRect{1, 2, 0.5, -4} << CGPoint{3, 4} << CGSize{5, 6};
    EXPECT_EQ(out.str(), "{(1, 2) 0.5x-4}(3, 4)5x6");
}

constexpr CGRect kA{1, 2, 4, 6};       // max (5, 8), mid (3, 5)
constexpr CGRect kB{10, 20, 100, 40};  // max (110, 60), mid (60, 40)

TEST(RectOffset, BringsEachReferencePointOntoTheOther) {
    EXPECT_EQ(rectOffset(kA, kB, 0), (CGPoint{57, 35}));
    EXPECT_EQ(rectOffset(kA, kB, 1), (CGPoint{9, 18}));
    EXPECT_EQ(rectOffset(kA, kB, 2), (CGPoint{105, 18}));
    EXPECT_EQ(rectOffset(kA, kB, 3), (CGPoint{105, 52}));
    EXPECT_EQ(rectOffset(kA, kB, 4), (CGPoint{9, 52}));
}

TEST(RectOffset, TakesUnknownCodesForTheLowerLeftCorner) {
    for (std::int32_t quadrant : {-1, -4, 5, 6, 7, kIntMax, kIntMin})
        EXPECT_EQ(rectOffset(kA, kB, quadrant), (CGPoint{9, 18})) << quadrant;
}

TEST(RectOffset, FormsTheMiddleAsOriginPlusHalfTheExtent) {
    // (max + min) / 2 would overflow to infinity here.
    EXPECT_EQ(rectOffset({0, 0, 0, 0}, {1.2e308, 0, 0.5e308, 0}, 0).x, 1.2e308 + 0.25e308);
}

TEST(AlignRect, KeepsTheSizeAndRoundsNothing) {
    EXPECT_EQ(alignRectInRect(kA, kB, 0), (CGRect{58, 37, 4, 6}));
    EXPECT_EQ(alignRectInRect(kA, kB, 1), (CGRect{10, 20, 4, 6}));
    EXPECT_EQ(alignRectInRect(kA, kB, 2), (CGRect{106, 20, 4, 6}));
    EXPECT_EQ(alignRectInRect(kA, kB, 3), (CGRect{106, 54, 4, 6}));
    EXPECT_EQ(alignRectInRect(kA, kB, 4), (CGRect{10, 54, 4, 6}));
    EXPECT_EQ(alignRectInRect(kA, kB, -2), (CGRect{10, 20, 4, 6}));
    EXPECT_EQ(alignRectInRect({0, 0, 1, 1}, {0, 0, 2, 4}, 0), (CGRect{0.5, 1.5, 1, 1}));
}

TEST(CenterRect, ShiftsByTheDistanceOfTheMiddles) {
    EXPECT_EQ(centerRectInRect(kA, kB), (CGRect{58, 37, 4, 6}));
    EXPECT_EQ(centerRectInRect({0, 0, 3, 3}, {0, 0, 2, 2}), (CGRect{-0.5, -0.5, 3, 3}));
}

TEST(ClosestCorner, OfEqualRectanglesIsTheCentre) {
    EXPECT_EQ(closestCorner(kA, kA), 0);
}

TEST(ClosestCorner, IsTheReferencePointThatHasToMoveLeast) {
    const CGRect big{0, 0, 100, 100};
    EXPECT_EQ(closestCorner({2, 3, 10, 10}, big), 1);
    EXPECT_EQ(closestCorner({88, 3, 10, 10}, big), 2);
    EXPECT_EQ(closestCorner({88, 87, 10, 10}, big), 3);
    EXPECT_EQ(closestCorner({2, 87, 10, 10}, big), 4);
    EXPECT_EQ(closestCorner({44, 46, 10, 10}, big), 0);
}

TEST(ClosestCorner, KeepsTheLowerCodeOfEquallyNearOnes) {
    // Same sizes: all five shifts are (3, 4).
    EXPECT_EQ(closestCorner({0, 0, 5, 5}, {3, 4, 5, 5}), 0);
    // A point at the middle of the lower edge of 2 x 2: 0, 1 and 2 are all at distance 1.
    EXPECT_EQ(closestCorner({1, 0, 0, 0}, {0, 0, 2, 2}), 0);
    // A point below that middle: 1 and 2 are nearer than the centre and equally far.
    EXPECT_EQ(closestCorner({1, -5, 0, 0}, {0, 0, 2, 2}), 1);
    // A point above: 3 and 4 are equally far.
    EXPECT_EQ(closestCorner({1, 9, 0, 0}, {0, 0, 2, 2}), 3);
    // Left of the middle of the left edge: 1 and 4 are equally far, 1 comes first.
    EXPECT_EQ(closestCorner({-5, 1, 0, 0}, {0, 0, 2, 2}), 1);
}

TEST(ClosestCorner, ComparesFloatsSoThatATinyDifferenceIsATie) {
    // The corner 2 is nearer than corner 1 by 1e-9, which a float of about 100 does not hold.
    EXPECT_EQ(closestCorner({1 + 1e-9, -100, 0, 0}, {0, 0, 2, 2}), 1);
    EXPECT_EQ(closestCorner({1 + 1e-2, -100, 0, 0}, {0, 0, 2, 2}), 2);
}

TEST(ClosestCorner, IsTheCentreWhereNothingIsSmaller) {
    EXPECT_EQ(closestCorner({kNan, 0, 1, 1}, {0, 0, 2, 2}), 0);
    EXPECT_EQ(closestCorner({kInf, 0, 1, 1}, {0, 0, 2, 2}), 0);
    // Only the centre is not a number here; no distance is smaller than it either.
    EXPECT_EQ(closestCorner({0, 0, kNan, 1}, {0, 0, 2, 2}), 0);
}

TEST(TouchingEdge, IsTestedInTheOrderMaxXMinXMaxYMinY) {
    const CGRect b{0, 0, 10, 10};
    EXPECT_EQ(touchingEdgeForRectInRect(b, b), 2U);
    EXPECT_EQ(touchingEdgeForRectInRect({-1, -1, 5, 50}, b), 0U);  // min-X, both Y sides too
    EXPECT_EQ(touchingEdgeForRectInRect({1, -1, 5, 50}, b), 3U);   // both Y sides
    EXPECT_EQ(touchingEdgeForRectInRect({1, -1, 5, 5}, b), 1U);
    EXPECT_EQ(touchingEdgeForRectInRect({1, 1, 5, 5}, b), kNoEdge);
}

TEST(TouchingEdge, ReachingASideCounts) {
    const CGRect b{0, 0, 10, 10};
    EXPECT_EQ(touchingEdgeForRectInRect({5, 4, 5, 2}, b), 2U);
    EXPECT_EQ(touchingEdgeForRectInRect({0, 4, 5, 2}, b), 0U);
    EXPECT_EQ(touchingEdgeForRectInRect({4, 8, 2, 2}, b), 3U);
    EXPECT_EQ(touchingEdgeForRectInRect({4, 0, 2, 2}, b), 1U);
}

TEST(TouchingEdge, NoEdgeHasAllBitsSet) {
    EXPECT_EQ(static_cast<std::int64_t>(kNoEdge), -1);
    EXPECT_EQ(touchingEdgeForRectInRect({kNan, kNan, 1, 1}, {0, 0, 10, 10}), kNoEdge);
}

TEST(BlendRects, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(blendRects({0, 0, 0, 0}, {1, 1, 1, 1}, 0.5F), (CGRect{1, 1, 1, 1}));
    EXPECT_EQ(blendRects({0, 0, 0, 0}, {-1, -1, -1, -1}, 0.5F), (CGRect{-1, -1, -1, -1}));
    EXPECT_EQ(blendRects({0, 0, 0, 0}, {3, 5, 7, 9}, 0.5F), (CGRect{2, 3, 4, 5}));
}

TEST(BlendRects, GivesEachEndRounded) {
    const CGRect a{0.4, 0.5, 10.6, -2.5};
    const CGRect b{100.4, 100.5, -0.6, 7};
    EXPECT_EQ(blendRects(a, b, 0), (CGRect{0, 1, 11, -3}));
    EXPECT_EQ(blendRects(a, b, 1), (CGRect{100, 101, -1, 7}));
}

TEST(BlendRects, ExtrapolatesOutsideZeroToOne) {
    EXPECT_EQ(blendRects({0, 10, 20, 30}, {10, 20, 30, 40}, 2), (CGRect{20, 30, 40, 50}));
    EXPECT_EQ(blendRects({0, 10, 20, 30}, {10, 20, 30, 40}, -1), (CGRect{-10, 0, 10, 20}));
}

TEST(BlendRects, FormsTheComplementAsAFloat) {
    // 1 - 0.1f as a float is 0.89999997615814209, 0.1f is 0.10000000149011612; their sum is below
    // one, so a half stays below a half: 1e8 * 0.99999997764825821 = 99999997.76...
    EXPECT_EQ(blendRects({1e8, 0, 0, 0}, {1e8, 0, 0, 0}, 0.1F).x, 99999998);
}

TEST(BlendRects, NotANumberStaysInItsField) {
    const CGRect blended = blendRects({kNan, 0, 0, 0}, {1, 1, 1, 1}, 0.5F);
    EXPECT_TRUE(std::isnan(blended.x));
    EXPECT_EQ(blended.y, 1);
    // Infinity times the weight 0 is not a number, as IEEE arithmetic has it.
    EXPECT_TRUE(std::isnan(blendRects({0, 0, 0, 0}, {kInf, 0, 0, 0}, 0).x));
}

constexpr CGRect kMover{3, 4, 10, 20};   // max (13, 24)
constexpr CGRect kFixed{5, 6, 100, 50};  // max (105, 56)

TEST(ExpelOnEdge, LeavesTheMarginAsOverlapOnEachSide) {
    EXPECT_EQ(expelRectFromRectOnEdge(kMover, kFixed, 0, 2), (CGRect{-3, 4, 10, 20}));
    EXPECT_EQ(expelRectFromRectOnEdge(kMover, kFixed, 1, 2), (CGRect{3, -12, 10, 20}));
    EXPECT_EQ(expelRectFromRectOnEdge(kMover, kFixed, 2, 2), (CGRect{103, 4, 10, 20}));
    EXPECT_EQ(expelRectFromRectOnEdge(kMover, kFixed, 3, 2), (CGRect{3, 54, 10, 20}));
}

TEST(ExpelOnEdge, ANegativeMarginLeavesAGap) {
    EXPECT_EQ(expelRectFromRectOnEdge(kMover, kFixed, 0, -2).maxX(), 3);
    EXPECT_EQ(expelRectFromRectOnEdge(kMover, kFixed, 2, -2).minX(), 107);
}

TEST(ExpelOnEdge, MovesAlsoWhatDoesNotOverlap) {
    EXPECT_EQ(expelRectFromRectOnEdge({500, 500, 1, 1}, kFixed, 2, 0).minX(), kFixed.maxX());
    EXPECT_EQ(expelRectFromRectOnEdge({500, 500, 1, 1}, kFixed, 2, 0), (CGRect{105, 500, 1, 1}));
}

TEST(ExpelOnEdge, AnyOtherCodeMovesNothing) {
    for (RectEdge edge : {RectEdge{4}, RectEdge{5}, RectEdge{1} << 32, kNoEdge})
        EXPECT_EQ(expelRectFromRectOnEdge(kMover, kFixed, edge, 2), kMover) << edge;
}

TEST(ExpelOnEdge, WidensItsFloatMargin) {
    // 0.1f is 0.100000001490116...
    EXPECT_EQ(expelRectFromRectOnEdge({0, 0, 1, 1}, {0, 0, 0, 0}, 2, 0.1F).x, -0.10000000149011612);
}

TEST(Expel, TakesTheShortestPush) {
    // Pushes 5, 105, 100, 10.
    EXPECT_EQ(expelRectFromRect({0, 0, 10, 10}, {5, 0, 100, 100}, 0), (CGRect{-5, 0, 10, 10}));
    // Mirrored: to max-X, to max-Y, to min-Y.
    EXPECT_EQ(expelRectFromRect({95, 50, 10, 10}, {0, 0, 100, 100}, 0), (CGRect{100, 50, 10, 10}));
    EXPECT_EQ(expelRectFromRect({50, 97, 10, 10}, {0, 0, 100, 100}, 0), (CGRect{50, 100, 10, 10}));
    EXPECT_EQ(expelRectFromRect({50, -7, 10, 10}, {0, 0, 100, 100}, 0), (CGRect{50, -10, 10, 10}));
}

TEST(Expel, ResolvesEqualPushesInTheOrderMinXMaxXMaxYMinY) {
    // A square in the middle of a square: all four pushes are 6.
    EXPECT_EQ(expelRectFromRect({4, 4, 2, 2}, {0, 0, 10, 10}, 0), (CGRect{-2, 4, 2, 2}));
    // Farther from min-X: to max-X 5, to max-Y 5, to min-Y 7.
    EXPECT_EQ(expelRectFromRect({5, 5, 2, 2}, {0, 0, 10, 10}, 0), (CGRect{10, 5, 2, 2}));
    // A wide b: max-Y and min-Y both 6.
    EXPECT_EQ(expelRectFromRect({40, 4, 2, 2}, {0, 0, 100, 10}, 0), (CGRect{40, 10, 2, 2}));
}

TEST(Expel, LeavesTheMarginAsOverlap) {
    EXPECT_EQ(expelRectFromRect({0, 0, 10, 10}, {5, 0, 100, 100}, 2), (CGRect{-3, 0, 10, 10}));
    EXPECT_EQ(expelRectFromRect({95, 50, 10, 10}, {0, 0, 100, 100}, 2).x, 98);
    EXPECT_EQ(expelRectFromRect({50, 97, 10, 10}, {0, 0, 100, 100}, 2).y, 98);
    EXPECT_EQ(expelRectFromRect({50, -7, 10, 10}, {0, 0, 100, 100}, 2).y, -8);
    EXPECT_EQ(expelRectFromRect({0, 0, 10, 10}, {5, 0, 100, 100}, -2), (CGRect{-7, 0, 10, 10}));
}

TEST(Expel, PullsBackWhatLiesOutsideUntilItAbuts) {
    EXPECT_EQ(expelRectFromRect({-50, 3, 10, 10}, {0, 0, 100, 100}, 0), (CGRect{-10, 3, 10, 10}));
    EXPECT_EQ(expelRectFromRect({3, 500, 10, 10}, {0, 0, 100, 100}, 0), (CGRect{3, 100, 10, 10}));
}

TEST(Expel, NarrowsThePushesAndSubtractsTheMarginInSinglePrecision) {
    // The push 16777217 is no float and becomes 16777216; less 1 that is 16777215.
    EXPECT_EQ(expelRectFromRect({0, 0, 16777217, 1e9}, {0, 0, 1e9, 1e9}, 1).x, -16777215);
    // A push of 0.1f less 0.3f is -0.20000001788139343 as a float.
    EXPECT_EQ(expelRectFromRect({0, 0, 0.1, 50}, {0, 0, 100, 100}, 0.3F).x, 0.20000001788139343);
}

TEST(Expel, PushesThatBecomeEqualAsFloatsResolveToTheFirst) {
    // To min-X 16777217, to max-X 16777216: as floats both are 16777216, and min-X comes first.
    const CGRect a{0, 0, 16777217, 1};
    const CGRect b{0, -1e9, 16777216, 2e9};
    EXPECT_EQ(expelRectFromRect(a, b, 0).x, -16777216);
}

TEST(Expel, ARectangleThatIsNotANumberMovesNothing) {
    const CGRect plain{0, 0, 100, 100};
    const auto bits = [](CGRect rect) {
        std::array<std::uint64_t, 4> all;
        std::memcpy(all.data(), &rect, sizeof rect);
        return all;
    };
    // Each field alone makes some of the pushes NaN, whichever of the four they are.
    for (double CGRect::*field : {&CGRect::x, &CGRect::y, &CGRect::width, &CGRect::height}) {
        CGRect broken{10, 20, 30, 40};
        broken.*field = kNan;
        EXPECT_EQ(bits(expelRectFromRect(broken, plain, 1)), bits(broken)) << broken;
        EXPECT_EQ(expelRectFromRect(plain, broken, 1), plain) << broken;
    }
}

TEST(Expel, AnInfinitePushIsNeverTheShortest) {
    EXPECT_EQ(expelRectFromRect({0, 0, 10, 10}, {5, 0, kInf, 100}, 0), (CGRect{-5, 0, 10, 10}));
}

TEST(Constrain, MovesOnlyWhatSticksOut) {
    const CGRect bounds{10, 20, 100, 50};
    EXPECT_EQ(constrainRectToRect({30, 30, 5, 5}, bounds), (CGRect{30, 30, 5, 5}));
    EXPECT_EQ(constrainRectToRect({0, 0, 5, 5}, bounds), (CGRect{10, 20, 5, 5}));
    EXPECT_EQ(constrainRectToRect({200, 200, 5, 5}, bounds), (CGRect{105, 65, 5, 5}));
    EXPECT_EQ(constrainRectToRect({10, 20, 100, 50}, bounds), bounds);
}

TEST(Constrain, AddsBothCorrectionsOfALargerRectangle) {
    EXPECT_EQ(constrainRectToRect({0, 0, 100, 10}, {10, 0, 40, 100}), (CGRect{-40, 0, 100, 10}));
    EXPECT_EQ(constrainRectToRect({0, 0, 10, 100}, {0, 10, 100, 40}), (CGRect{0, -40, 10, 100}));
}

TEST(Constrain, MovesNothingOnAnAxisThatIsNotANumber) {
    const CGRect moved = constrainRectToRect({kNan, 0, 5, 5}, {10, 20, 100, 50});
    EXPECT_TRUE(std::isnan(moved.x));
    EXPECT_EQ(moved.y, 20);
}

TEST(Proportion, FitsInsideOrCovers) {
    EXPECT_EQ(rectWithProportion({7, 8, 100, 100}, 2, false), (CGRect{0, 0, 100, 50}));
    EXPECT_EQ(rectWithProportion({7, 8, 100, 100}, 2, true), (CGRect{0, 0, 200, 100}));
    EXPECT_EQ(rectWithProportion({7, 8, 100, 100}, 0.5F, false), (CGRect{0, 0, 50, 100}));
    EXPECT_EQ(rectWithProportion({7, 8, 100, 100}, 0.5F, true), (CGRect{0, 0, 100, 200}));
}

TEST(Proportion, NegativeProportionsMeetNowhere) {
    // One candidate has a negative height, the other a negative width.
    EXPECT_EQ(rectWithProportion({0, 0, 100, 100}, -2, false), (CGRect{}));
    EXPECT_EQ(rectWithProportion({0, 0, 100, 100}, -2, true), (CGRect{}));
}

TEST(SizeRect, RoundsTheAspectToAFloat) {
    EXPECT_EQ(sizeRectInRect({0, 0, 1920, 1080}, {0, 0, 100, 100}, false),
              (CGRect{0, 0, 100, 56.24999958090484}));
    EXPECT_EQ(sizeRectInRect({0, 0, 1, 3}, {0, 0, 100, 100}, false),
              (CGRect{0, 0, 33.33333432674408, 100}));
    EXPECT_EQ(sizeRectInRect({0, 0, 1920, 1080}, {0, 0, 100, 100}, true),
              (CGRect{0, 0, 177.77777910232544, 100}));
    EXPECT_EQ(sizeRectInRect({0, 0, 1, 3}, {0, 0, 100, 100}, true),
              (CGRect{0, 0, 100, 299.99999105930357}));
}

TEST(SizeRect, IgnoresBothOrigins) {
    EXPECT_EQ(sizeRectInRect({50, 60, 200, 100}, {-7, 8, 100, 100}, false),
              (CGRect{0, 0, 100, 50}));
}

TEST(SizeRect, AnInnerWithoutOneExtentGivesNothingOrTheOtherCandidate) {
    const CGRect outer{0, 0, 100, 80};
    EXPECT_EQ(sizeRectInRect({0, 0, 0, 5}, outer, false), (CGRect{}));
    EXPECT_EQ(sizeRectInRect({0, 0, 5, 0}, outer, false), (CGRect{}));
    EXPECT_EQ(sizeRectInRect({0, 0, 0, 5}, outer, true), (CGRect{0, 0, 100, kInf}));
    EXPECT_EQ(sizeRectInRect({0, 0, 5, 0}, outer, true), (CGRect{0, 0, kInf, 80}));
}

TEST(FitRect, CentresTheSizedRectangle) {
    EXPECT_EQ(fitRectInRect({0, 0, 1920, 1080}, {10, 20, 100, 100}, false),
              (CGRect{10, 41.87500020954758, 100, 56.24999958090484}));
    EXPECT_EQ(fitRectInRect({5, 5, 200, 100}, {10, 20, 100, 100}, true),
              (CGRect{-40, 20, 200, 100}));
}

TEST(OffsetRect, MovesTheOriginOnly) {
    EXPECT_EQ(NSOffsetRect({1, 2, 3, 4}, -10, 0.5), (CGRect{-9, 2.5, 3, 4}));
}

TEST(UnionRect, EnclosesBoth) {
    EXPECT_EQ(NSUnionRect({0, 0, 2, 2}, {5, -3, 1, 1}), (CGRect{0, -3, 6, 5}));
    EXPECT_EQ(NSUnionRect({0, 0, 10, 10}, {2, 2, 3, 3}), (CGRect{0, 0, 10, 10}));
}

TEST(UnionRect, IgnoresOneWithoutAPositiveExtent) {
    const CGRect whole{1, 2, 3, 4};
    for (const CGRect empty : {CGRect{50, 50, 0, 4}, CGRect{50, 50, 4, 0}, CGRect{50, 50, -4, 4},
                               CGRect{50, 50, 4, -4}, CGRect{50, 50, -4, -4}}) {
        EXPECT_EQ(NSUnionRect(whole, empty), whole);
        EXPECT_EQ(NSUnionRect(empty, whole), whole);
        EXPECT_EQ(NSUnionRect(empty, empty), (CGRect{}));
    }
}

TEST(IntersectionRect, IsTheOverlap) {
    EXPECT_EQ(NSIntersectionRect({0, 0, 10, 10}, {5, -3, 20, 9}), (CGRect{5, 0, 5, 6}));
    EXPECT_EQ(NSIntersectionRect({2, 3, 1, 1}, {0, 0, 10, 10}), (CGRect{2, 3, 1, 1}));
}

TEST(IntersectionRect, IsZeroWhereTheyTouchOrDoNotMeet) {
    const CGRect a{0, 0, 10, 10};
    for (const CGRect b :
         {CGRect{10, 0, 5, 5}, CGRect{-5, 0, 5, 5}, CGRect{0, 10, 5, 5}, CGRect{0, -5, 5, 5},
          CGRect{50, 50, 5, 5}, CGRect{0, 0, 0, 10}, CGRect{0, 0, 10, 0}}) {
        EXPECT_EQ(NSIntersectionRect(a, b), (CGRect{})) << b;
        EXPECT_EQ(NSIntersectionRect(b, a), (CGRect{})) << b;
    }
}

}  // namespace
}  // namespace skarnel
