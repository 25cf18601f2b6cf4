#include "render/canvas.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "imaging/test_images.h"

namespace skarnel {
namespace {

struct Shape {
    int width, height;
    float perspectiveW, perspectiveH, offset;
};

/// The rows of a canvas in their reading order.
std::vector<int> readingOrder(const Shape& shape, int blockRows) {
    const CGImage picture = test::noiseImage(shape.width, shape.height, 1);
    const auto size =
        ShapeSize::of(shape.width, shape.height, shape.perspectiveW, shape.perspectiveH);
    const auto layout = CanvasLayout::of(shape.width, shape.height, *size, shape.offset);
    const auto rows = CanvasRows::create(picture.pixels(), *layout, *size, shape.perspectiveH < 0,
                                         {0, 7, 200}, std::nullopt);
    std::vector<int> order;
    rows->inReadingOrder(blockRows, [&](int row) { order.push_back(row); });
    return order;
}

TEST(Canvas, TheReadingOrderHasEveryBlockOnce) {
    // Heights: 2 * 40; 40 + 24 * 1.5; 40 - 20 with the reflection above the canvas; upright.
    const struct {
        Shape shape;
        int height;
    } canvases[] = {{{9, 40, 0, 100, 0}, 80},
                    {{9, 40, 10, 60, 50}, 76},
                    {{9, 40, 0, 100, -150}, 20},
                    {{9, 40, 0, -50, 0}, 60}};
    for (const auto& canvas : canvases)
        for (const int blockRows : {1, 7, 16, 100}) {
            std::vector<int> order = readingOrder(canvas.shape, blockRows);
            std::sort(order.begin(), order.end());
            std::vector<int> expected;
            for (int row = 0; row < canvas.height; row += blockRows) expected.push_back(row);
            EXPECT_EQ(order, expected) << canvas.height << " rows by " << blockRows;
        }
}

// Row y of the picture is mirrored in row 79 - y, or stands again in row 40 + y when upright.
TEST(Canvas, PictureAndReflectionReadTheSameRowsTogether) {
    for (const float perspectiveH : {100.0F, -100.0F}) {
        const std::vector<int> order = readingOrder({9, 40, 0, perspectiveH, 0}, 1);
        const auto placeOf = [&](int row) {
            return static_cast<int>(std::find(order.begin(), order.end(), row) - order.begin());
        };
        for (int y = 0; y < 40; ++y) {
            const int reflected = perspectiveH > 0 ? 79 - y : 40 + y;
            EXPECT_LE(std::abs(placeOf(y) - placeOf(reflected)), 1) << "row " << y;
        }
    }
}

}  // namespace
}  // namespace skarnel
