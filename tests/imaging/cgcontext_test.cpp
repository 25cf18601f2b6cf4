#include "imaging/cgcontext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "test_images.h"

namespace skarnel {
namespace {

using test::imageOf;
using test::noiseImage;
using test::pixelAt;
using test::samePixels;
using test::solidImage;

using Pixel = std::vector<int>;
const Pixel kClear{0, 0, 0, 0};

CGImage result(const std::unique_ptr<CGContext>& context) {
    return *context->createImage();
}

TEST(CGContext, FillsAreSourceOver) {
    const auto context = CGContext::create(2, 2);
    context->setFillColor({1, 0, 0, 1});
    context->fillRect({0, 0, 2, 2});
    context->setFillColor({0, 0, 1, 0.5});
    context->fillRect({0, 0, 1, 1});  // the lower left pixel
    EXPECT_EQ(pixelAt(result(context), 0, 0), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(pixelAt(result(context), 0, 1), (Pixel{127, 0, 128, 255}));
}

TEST(CGContext, ColoursAreClampedAndNoNumberIsZero) {
    const auto context = CGContext::create(1, 1);
    context->setFillColor({2, -1, std::nan(""), 7});
    context->fillRect({0, 0, 1, 1});
    EXPECT_EQ(pixelAt(result(context), 0, 0), (Pixel{255, 0, 0, 255}));
}

TEST(CGContext, AFractionalFillCoversByArea) {
    const auto context = CGContext::create(3, 1);
    context->setFillColor({1, 1, 1, 1});
    context->fillRect({0.5, 0, 1.75, 1});
    EXPECT_EQ(pixelAt(result(context), 0, 0)[3], 128);
    EXPECT_EQ(pixelAt(result(context), 1, 0)[3], 255);
    EXPECT_EQ(pixelAt(result(context), 2, 0)[3], 64);
}

TEST(CGContext, WithoutAntialiasingCentresDecide) {
    const auto context = CGContext::create(3, 1);
    context->setShouldAntialias(false);
    context->fillRect({0.5, 0, 1.75, 1});
    EXPECT_EQ(pixelAt(result(context), 0, 0)[3], 255);
    EXPECT_EQ(pixelAt(result(context), 1, 0)[3], 255);
    EXPECT_EQ(pixelAt(result(context), 2, 0)[3], 0);
}

TEST(CGContext, ClipsIntersectAndTheSavedStateComesBack) {
    const auto context = CGContext::create(4, 1);
    context->setFillColor({1, 0, 0, 1});
    context->saveState();
    context->setFillColor({0, 1, 0, 1});
    context->clipToRect({0, 0, 3, 1});
    context->clipToRect({1, 0, 3, 1});
    context->fillRect({0, 0, 4, 1});
    context->restoreState();
    context->restoreState();  // nothing saved: nothing happens
    context->fillRect({3, 0, 1, 1});
    EXPECT_TRUE(
        samePixels(result(context),
                   imageOf(4, 1, {0, 0, 0, 0, 0, 255, 0, 255, 0, 255, 0, 255, 255, 0, 0, 255})));
}

TEST(CGContext, CopyReplacesAndDestinationInFades) {
    const auto context = CGContext::create(2, 1);
    context->setFillColor({1, 1, 1, 1});
    context->fillRect({0, 0, 2, 1});
    context->setCompositeOperation(CompositeOperation::Copy);
    context->setFillColor({1, 0, 0, 0.2});
    context->fillRect({0, 0, 1, 1});
    context->setCompositeOperation(CompositeOperation::DestinationIn);
    context->setFillColor({0, 0, 0, 0.5});
    context->fillRect({1, 0, 1, 1});
    EXPECT_EQ(pixelAt(result(context), 0, 0), (Pixel{51, 0, 0, 51}));
    EXPECT_EQ(pixelAt(result(context), 1, 0), (Pixel{128, 128, 128, 128}));
}

TEST(CGContext, ClearMakesTransparentWhateverTheOperation) {
    const auto context = CGContext::create(2, 1);
    context->fillRect({0, 0, 2, 1});
    context->setCompositeOperation(CompositeOperation::DestinationIn);
    context->clearRect({0, 0, 1, 1});
    EXPECT_EQ(pixelAt(result(context), 0, 0), kClear);
    EXPECT_EQ(pixelAt(result(context), 1, 0)[3], 255);
}

TEST(CGContext, AStrokeIsCentredOnTheEdge) {
    const auto context = CGContext::create(6, 6);
    context->setStrokeColor({0, 0, 0, 1});
    context->strokeRect({1, 1, 4, 4}, 2);
    EXPECT_EQ(pixelAt(result(context), 0, 0)[3], 255);
    EXPECT_EQ(pixelAt(result(context), 1, 1)[3], 255);
    EXPECT_EQ(pixelAt(result(context), 2, 2)[3], 0);
    EXPECT_EQ(pixelAt(result(context), 3, 5)[3], 255);
}

TEST(CGContext, AStrokeOfOneCoversHalfOfBothSides) {
    const auto context = CGContext::create(6, 6);
    context->strokeRect({1, 1, 4, 4});
    EXPECT_EQ(pixelAt(result(context), 0, 3)[3], 128);
    EXPECT_EQ(pixelAt(result(context), 1, 3)[3], 128);
    EXPECT_EQ(pixelAt(result(context), 2, 3)[3], 0);
    EXPECT_EQ(pixelAt(result(context), 0, 0)[3], 64);
    EXPECT_EQ(pixelAt(result(context), 1, 1)[3], 191);  // three quarters
}

TEST(CGContext, AnImageAtWholePixelsIsCopiedByteForByte) {
    const CGImage image = noiseImage(9, 7, 3);
    const auto context = CGContext::create(12, 12);
    context->drawImage(image, {2, 3, 9, 7});
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x)
            ASSERT_EQ(pixelAt(result(context), 2 + x, 2 + y), pixelAt(image, x, y));
    EXPECT_EQ(pixelAt(result(context), 1, 5), kClear);
}

TEST(CGContext, WhatLiesOutsideIsClipped) {
    const CGImage image = noiseImage(5, 5, 3);
    const auto context = CGContext::create(3, 3);
    context->drawImage(image, {-1, -1, 5, 5});
    EXPECT_EQ(pixelAt(result(context), 0, 0), pixelAt(image, 1, 1));
    EXPECT_EQ(pixelAt(result(context), 2, 2), pixelAt(image, 3, 3));
    context->drawImage(image, {1e9, 0, 5, 5});
    context->drawImage(image, {std::nan(""), 0, 5, 5});
}

TEST(CGContext, ShrinkingAveragesTheArea) {
    // Black and white columns: a third of the width gives their mean, not a pattern.
    std::vector<std::uint8_t> bytes;
    for (int x = 0; x < 300; ++x) {
        const auto level = static_cast<std::uint8_t>(x % 3 == 0 ? 255 : 0);
        bytes.insert(bytes.end(), {level, level, level, 255});
    }
    const auto context = CGContext::create(100, 1);
    context->drawImage(imageOf(300, 1, bytes), {0, 0, 100, 1});
    for (int x = 0; x < 100; ++x) EXPECT_EQ(pixelAt(result(context), x, 0)[0], 85);
}

TEST(CGContext, ShrinkingByAFractionWeighsTheShares) {
    // 3 pixels onto 2: the first is pixel 0 and half of pixel 1, (90 + 30 / 2) / 1.5 = 70.
    const CGImage image = imageOf(3, 1, {90, 0, 0, 255, 30, 0, 0, 255, 240, 0, 0, 255});
    const auto context = CGContext::create(2, 1);
    context->drawImage(image, {0, 0, 2, 1});
    EXPECT_EQ(pixelAt(result(context), 0, 0)[0], 70);
    EXPECT_EQ(pixelAt(result(context), 1, 0)[0], 170);
}

TEST(CGContext, EnlargingIsLinearBetweenPixelCentresAndConstantBeyond) {
    const CGImage image = imageOf(2, 1, {0, 0, 0, 255, 200, 0, 0, 255});
    const auto context = CGContext::create(4, 1);
    context->drawImage(image, {0, 0, 4, 1});
    EXPECT_EQ(pixelAt(result(context), 0, 0)[0], 0);
    EXPECT_EQ(pixelAt(result(context), 1, 0)[0], 50);
    EXPECT_EQ(pixelAt(result(context), 2, 0)[0], 150);
    EXPECT_EQ(pixelAt(result(context), 3, 0)[0], 200);
}

TEST(CGContext, NoInterpolationTakesTheNearest) {
    const CGImage image = imageOf(2, 1, {0, 0, 0, 255, 200, 0, 0, 255});
    const auto context = CGContext::create(4, 1);
    context->setInterpolationQuality(InterpolationQuality::None);
    context->drawImage(image, {0, 0, 4, 1});
    EXPECT_EQ(pixelAt(result(context), 1, 0)[0], 0);
    EXPECT_EQ(pixelAt(result(context), 2, 0)[0], 200);
}

TEST(CGContext, ResamplingKeepsAConstantAndColourBelowAlpha) {
    for (const auto& [width, height] : {std::pair{7, 5}, {40, 33}, {1, 1}, {13, 90}}) {
        const auto context = CGContext::create(width, height);
        context->drawImage(solidImage(13, 17, {100, 30, 7, 128}),
                           {0, 0, 1.0 * width, 1.0 * height});
        EXPECT_TRUE(samePixels(result(context), solidImage(width, height, {100, 30, 7, 128})));
    }
}

TEST(CGContext, ASourceRectangleIsCutOutAndNothingBleedsIn) {
    const CGImage image = noiseImage(8, 8, 9);
    const auto context = CGContext::create(3, 2);
    context->drawImage(image, {2, 1, 3, 2}, {0, 0, 3, 2}, CompositeOperation::Copy, 1);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(pixelAt(result(context), x, y), pixelAt(image, 2 + x, 5 + y));
}

TEST(CGContext, AFractionFadesWhatIsDrawn) {
    const auto context = CGContext::create(1, 1);
    context->drawImage(solidImage(1, 1, {200, 0, 0, 200}), {0, 0, 1, 1}, {0, 0, 1, 1},
                       CompositeOperation::SourceOver, 0.5);
    EXPECT_EQ(pixelAt(result(context), 0, 0), (Pixel{100, 0, 0, 100}));
}

TEST(CGContext, AFractionalPlaceSharesOutItsEdges) {
    const auto context = CGContext::create(1, 3);
    context->drawImage(solidImage(1, 2, {255, 255, 255, 255}), {0, 0.25, 1, 2});
    EXPECT_EQ(pixelAt(result(context), 0, 0)[3], 64);
    EXPECT_EQ(pixelAt(result(context), 0, 1)[3], 255);
    EXPECT_EQ(pixelAt(result(context), 0, 2)[3], 191);
}

TEST(CGContext, ItsPixelsAreHandedOverWithoutACopy) {
    auto context = CGContext::create(2, 2);
    const std::uint8_t* bytes = context->pixels().bytes;
    EXPECT_EQ(std::move(*context).takeImage().pixels().bytes, bytes);
}

TEST(CGContext, SizesBelowOneGiveNone) {
    EXPECT_FALSE(CGContext::create(0, 5));
    EXPECT_FALSE(CGContext::create(5, -5));
    EXPECT_FALSE(CGContext::create(std::numeric_limits<int>::max(), 1));
}

}  // namespace
}  // namespace skarnel
