// Each request for memory of a render in turn is refused: no result, the right one, or the canvas
// without its turn.
#include <gtest/gtest.h>

#include <algorithm>

#include "imaging/pixel_memory.h"
#include "imaging/test_images.h"
#include "memory/refuse_each.h"
#include "render/reflection.h"

namespace skarnel {
namespace {

using skarnel::testing::canRefuseMemory;
using skarnel::testing::MemoryPause;
using skarnel::testing::nameOf;
using skarnel::testing::Refusal;
using skarnel::testing::refuseEach;

struct Look {
    const char* name;
    int width;
    int height;
    float perspectiveW;
    float perspectiveH;
    float offset;
    RenderInputs inputs;
    Drawing drawing = Drawing::AtOnce;
};

std::optional<ReflectionResult> rendered(const CGImage& picture, const Look& look) {
    const RenderInputReaders readers([&] { return look.inputs.peakOpacity; },
                                     [&] { return look.inputs.background; },
                                     [&] { return look.inputs.imagePerspective; });
    return addReflectionToCGImage(picture, look.perspectiveW, look.perspectiveH, look.offset, 5, 7,
                                  readers, look.drawing);
}

/// Compares without asking for memory.
bool haveSamePixels(const CGImage& actual, const CGImage& expected) {
    const PixelView a = actual.pixels();
    const PixelView b = expected.pixels();
    if (a.width != b.width || a.height != b.height) return false;
    for (int y = 0; y < a.height; ++y)
        if (!std::equal(a.row(y), a.row(y) + std::ptrdiff_t{4} * a.width, b.row(y))) return false;
    return true;
}

std::vector<Look> looks() {
    const RenderInputs plain{200, std::nullopt, 50};
    const RenderInputs full{180, DeviceColor{0.1, 0.2, 0.3, 1}, 20};
    return {{"plain", 20, 15, 0, 100, 0, plain},
            {"turned over a ground", 20, 15, 30, 61, 12.5F, full},
            {"upright and narrowed", 20, 15, -20, -80, 3, full},
            {"drawn when read", 20, 15, 30, 61, 12.5F, full, Drawing::WhenRead},
            {"strips when read", 620, 30, 10, 100, 0, full, Drawing::WhenRead},
            // More than a megabyte: blocks that come straight from the system.
            {"large", 620, 300, 10, 100, 0, full}};
}

class NoMemory : public ::testing::TestWithParam<Refusal> {
  protected:
    void SetUp() override {
        if (!canRefuseMemory()) GTEST_SKIP() << "a sanitizer has a malloc of its own";
        setIdlePixelMemoryLimit(0);  // what was given back earlier would do without a request
    }
};

TEST_P(NoMemory, ARenderGivesNothingOrTheRightPicture) {
    for (const Look& look : looks()) {
        const CGImage picture = test::validNoise(look.width, look.height, 1);
        Look unturnedLook = look;
        unturnedLook.inputs.imagePerspective = 50;
        const auto expected = rendered(picture, look);
        const auto unturned = rendered(picture, unturnedLook);
        ASSERT_TRUE(expected && unturned) << look.name;
        refuseEach(look.name, GetParam(), [&] {
            const auto result = rendered(picture, look);
            if (!result) return true;
            const MemoryPause pause;  // a picture drawn when read is drawn here
            const auto& right = result->turn == expected->turn ? expected : unturned;
            return haveSamePixels(result->image, right->image);
        });
    }
}

TEST_P(NoMemory, AFilterImageGivesNothingOrTheRightPicture) {
    const CIImage picture = CIImage::imageWithCGImage(test::validNoise(20, 15, 2));
    const auto shaped = [&]() -> std::optional<CGImage> {
        const auto mirrored = ReflectCIImage(picture);
        const auto shape = mirrored ? PerspectiveCIImage(*mirrored, 25, 70, 0, 7, 200) : mirrored;
        return shape ? CIImageGetCGImage(*shape) : std::nullopt;
    };
    const auto expected = shaped();
    ASSERT_TRUE(expected);
    refuseEach("filters", GetParam(), [&] {
        const auto result = shaped();
        return !result || haveSamePixels(*result, *expected);
    });
}

INSTANTIATE_TEST_SUITE_P(Once_AndFromThenOn, NoMemory,
                         ::testing::Values(Refusal::Once, Refusal::FromThenOn),
                         [](const auto& row) { return nameOf(row.param); });

}  // namespace
}  // namespace skarnel
