#include "util/image/dragging.h"

#include "util/image/pictures.h"

namespace skarnel {
namespace {

using namespace pictures;
using Dragging::imageWithAlphaComponent;

TEST(FadedImage, HalvesEveryAlphaAndTheColourWithIt) {
    const NSImage image = imageOf(2, {kWhite, {100, 50, 0, 200}, kClear, {0, 0, 0, 2}});
    const CGImage faded = imageWithAlphaComponent(image, 0.5F)->bitmap().value();
    // 127.5, 100 and 1, each within the rounding of one half to 128 / 255.
    EXPECT_NEAR(pixelAt(faded, 0, 0).a, 127.5, 0.5);
    EXPECT_EQ(pixelAt(faded, 0, 0).r, pixelAt(faded, 0, 0).a);
    EXPECT_NEAR(pixelAt(faded, 1, 0).a, 100, 0.5);
    EXPECT_NEAR(pixelAt(faded, 1, 0).r, 50, 0.5);
    EXPECT_NEAR(pixelAt(faded, 1, 0).g, 25, 0.5);
    EXPECT_EQ(pixelAt(faded, 0, 1), kClear);
    EXPECT_EQ(pixelAt(faded, 1, 1).a, 1);
}

TEST(FadedImage, TheArgumentMakesNoDifference) {
    const NSImage image = imageOf(2, {kWhite, {100, 50, 0, 200}});
    const auto expected = pixelsOf(imageWithAlphaComponent(image, 0.5F).value());
    for (const float alpha : {1.0F, 0.0F, 0.25F, -3.0F})
        EXPECT_EQ(pixelsOf(imageWithAlphaComponent(image, alpha).value()), expected) << alpha;
}

TEST(FadedImage, IsANewImageThatIsNeverCached) {
    const NSImage image = plainImage(3, 2, kWhite);
    const NSImage faded = imageWithAlphaComponent(image, 1).value();
    EXPECT_FALSE(faded.isSame(image));
    EXPECT_EQ(faded.cacheMode(), 3);
    EXPECT_EQ(faded.size(), (CGSize{3, 2}));
    EXPECT_EQ(image.cacheMode(), 0);
    EXPECT_EQ(pixelAt(image, 0, 0), kWhite) << "the image itself is not faded";
}

TEST(FadedImage, OfNothingIsNone) {
    EXPECT_FALSE(imageWithAlphaComponent(NSImage::initWithSize({2, 2}), 1));
}

}  // namespace
}  // namespace skarnel
