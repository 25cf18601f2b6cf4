#include "imaging/cgimage.h"

#include <gtest/gtest.h>

#include <limits>

#include "imaging/pixel_memory.h"
#include "test_images.h"

namespace skarnel {
namespace {

TEST(PixelBuffer, IsTransparentPackedAndAligned) {
    auto buffer = PixelBuffer::zeroed(5, 3);
    ASSERT_TRUE(buffer);
    EXPECT_EQ(buffer->view().strideBytes, 20);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer->view().bytes) % 64, 0U);
    EXPECT_TRUE(
        test::samePixels(CGImage(*std::move(buffer)), test::solidImage(5, 3, {0, 0, 0, 0})));
}

TEST(PixelBuffer, SizesThatCannotBeGiveNone) {
    constexpr int kMost = std::numeric_limits<int>::max();
    EXPECT_FALSE(PixelBuffer::zeroed(0, 1));
    EXPECT_FALSE(PixelBuffer::zeroed(1, 0));
    EXPECT_FALSE(PixelBuffer::zeroed(-1, 1));
    EXPECT_FALSE(PixelBuffer::zeroed(kMost, 1));
    EXPECT_FALSE(PixelBuffer::uninitialized(kMost / 4, kMost));  // 2^60 bytes: no such memory
}

TEST(PixelBuffer, AReusedBlockIsTransparentAgain) {
    for (int round = 0; round < 3; ++round) {
        auto buffer = PixelBuffer::zeroed(700, 600);
        for (int i = 0; i < 4 * 700; ++i) ASSERT_EQ(buffer->view().row(599)[i], 0);
        std::memset(buffer->view().bytes, 0xEE, std::size_t{4} * 700 * 600);
    }
}

TEST(PixelMemory, IdleBlocksStayWithinTheirLimit) {
    setIdlePixelMemoryLimit(std::size_t{4} << 20);
    for (int i = 0; i < 4; ++i) PixelBuffer::uninitialized(1000, 600 + i);
    EXPECT_LE(idlePixelMemory(), std::size_t{4} << 20);
    PixelBuffer::uninitialized(4000, 4000);
    EXPECT_LE(idlePixelMemory(), std::size_t{4} << 20);
    releaseIdlePixelMemory();
    EXPECT_EQ(idlePixelMemory(), 0U);
    setIdlePixelMemoryLimit(std::size_t{64} << 20);
}

TEST(PixelMemory, AReservedBlockIsNeitherTakenFromTheIdleOnesNorKept) {
    releaseIdlePixelMemory();
    constexpr std::size_t kBytes = std::size_t{8} << 20;
    allocatePixelMemory(kBytes, PixelContents::Undefined).reset();
    const std::size_t idle = idlePixelMemory();
    const auto reserved = allocatePixelMemory(kBytes, PixelContents::Reserved);
    ASSERT_TRUE(reserved);
    EXPECT_EQ(idlePixelMemory(), idle);
    reserved.get()[kBytes - 1] = 1;
    allocatePixelMemory(kBytes, PixelContents::Reserved).reset();
    EXPECT_EQ(idlePixelMemory(), idle);
    releaseIdlePixelMemory();
}

TEST(CGImage, CopiesShareTheirPixels) {
    const CGImage image = test::noiseImage(3, 3, 1);
    const CGImage& same = image;
    EXPECT_TRUE(image.isSame(CGImage(same)));
    EXPECT_FALSE(image.isSame(test::noiseImage(3, 3, 1)));
}

TEST(CGImage, ARowMustFitItsStride) {
    const std::shared_ptr<std::uint8_t> bytes(new std::uint8_t[64](),
                                              std::default_delete<std::uint8_t[]>());
    EXPECT_TRUE(CGImage::share(bytes, 4, 4, 16));
    EXPECT_FALSE(CGImage::share(bytes, 4, 4, 15));
    EXPECT_TRUE(CGImage::share(bytes, 5, 4, 15, 3));
    EXPECT_FALSE(CGImage::share(bytes, 4, 4, 16, 2));
    EXPECT_FALSE(CGImage::share(nullptr, 4, 4, 16));
    EXPECT_FALSE(CGImage::share(bytes, 0, 4, 16));
}

TEST(CGImage, ThreeSamplesBecomeOpaquePixels) {
    const std::uint8_t rgb[] = {1, 2, 3, 4, 5, 6};
    const auto image = CGImage::copyOf({rgb, 2, 1, 6, 3});
    ASSERT_TRUE(image);
    EXPECT_EQ(image->bitsPerPixel(), 24);
    EXPECT_EQ(image->alphaInfo(), CGImageAlphaInfo::None);
    EXPECT_TRUE(
        test::samePixels(*image->withAlpha(), test::imageOf(2, 1, {1, 2, 3, 255, 4, 5, 6, 255})));
}

}  // namespace
}  // namespace skarnel
