#include "render/placement.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

TEST(PicturePlacement, FollowsTheCanvasAndTheTurn) {
    // Of a picture of 300 x 200; 25 turns furthest: the sine is -1, so the sides move in by a fifth
    // of the canvas' width, and the box grows by a fifth of its height above and below.
    const struct {
        const char* name;
        float perspectiveW, perspectiveH, offset, turn;
        CGSize result;
        CGRect picture;
    } cases[] = {
        {"plain", 0, 100, 0, 50, {300, 400}, {0, 0, 300, 200}},
        {"neutral at the end", 0, 100, 0, 0, {300, 400}, {0, 0, 300, 200}},
        {"low", 0, 50, 0, 50, {300, 300}, {0, 0, 300, 200}},
        {"with a gap", 0, 50, 20, 50, {300, 320}, {0, 0, 300, 200}},
        {"widened by 60 on each side", 20, 100, 0, 50, {420, 400}, {60, 0, 300, 200}},
        {"between two rows", 0, 50, 0.5F, 50, {300, 300}, {0, -0.5, 300, 200}},
        {"turned", 0, 100, 0, 25, {180, 560}, {-60, 80, 300, 200}},
        {"turned and widened", 20, 100, 0, 25, {252, 560}, {60 - 84, 80, 300, 200}},
    };
    for (const auto& each : cases) {
        const auto place = picturePlacement(300, 200, each.perspectiveW, each.perspectiveH,
                                            each.offset, each.turn);
        ASSERT_TRUE(place) << each.name;
        EXPECT_EQ(place->result, each.result) << each.name;
        EXPECT_NEAR(place->picture.x, each.picture.x, 1e-4) << each.name;
        EXPECT_NEAR(place->picture.y, each.picture.y, 1e-4) << each.name;
        EXPECT_EQ(place->picture.size(), each.picture.size()) << each.name;
    }
}

TEST(PicturePlacement, ThereIsNoneWithoutAResult) {
    EXPECT_FALSE(picturePlacement(300, 200, 0, 0, 0, 50)) << "no reflection";
    EXPECT_FALSE(picturePlacement(300, 200, 0, 100, -300, 50)) << "a canvas without a row";
    EXPECT_FALSE(picturePlacement(300, 200, -50, 100, 0, 50)) << "a reflection without a column";
}

TEST(DrawnPixels, AreTheLargerOnesOfCanvasAndReflection) {
    const struct {
        const char* name;
        float perspectiveW, perspectiveH, offset;
        std::int64_t pixels;
    } cases[] = {
        {"plain", 0, 100, 0, 300 * 400},
        {"widened, with a gap", 20, 50, 20, 420 * 320},
        {"a canvas that shows the reflection's end alone", 0, 100, -150, 300 * 200},
        {"a gap without end", 0, 100, 1e6F, 300 * std::int64_t{200 + 200 * 10001}},
        {"no reflection", 0, 0, 0, 0},
        {"no row", 0, 100, -300, 0},
    };
    for (const auto& each : cases)
        EXPECT_EQ(drawnPixels(300, 200, each.perspectiveW, each.perspectiveH, each.offset),
                  each.pixels)
            << each.name;
}

}  // namespace
}  // namespace skarnel
