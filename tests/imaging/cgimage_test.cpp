#include "imaging/cgimage.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <vector>

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

/// Pages of the block that the system has given memory for, by its own account.
std::size_t residentPages(const std::uint8_t* bytes, std::size_t size) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> states((size + page - 1) / page);
    if (mincore(const_cast<std::uint8_t*>(bytes), size, states.data()) != 0) return 0;
    return static_cast<std::size_t>(
        std::count_if(states.begin(), states.end(), [](unsigned char s) { return (s & 1) != 0; }));
}

TEST(PixelMemory, PreparedBlocksNeedNoFreshMemory) {
    releaseIdlePixelMemory();
    constexpr std::size_t kBytes = std::size_t{5} << 20;
    int steps = 1;
    while (!preparePixelMemory(kBytes, 2)) ASSERT_LT(++steps, 100);
    if (idlePixelMemory() == 0) GTEST_SKIP() << "this build keeps no blocks";
    EXPECT_EQ(idlePixelMemory(), std::size_t{12} << 20);  // in pages of 2 MB
    // Each block is mapped in one step and touched in three.
    EXPECT_EQ(steps, 2 * (1 + 3) + 1);
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const auto first = allocatePixelMemory(kBytes, PixelContents::Undefined);
    const auto smaller = allocatePixelMemory(kBytes / 3, PixelContents::Undefined);
    EXPECT_EQ(idlePixelMemory(), 0U) << "both came from the prepared ones";
    EXPECT_EQ(residentPages(first.get(), kBytes), kBytes / page);
    EXPECT_EQ(residentPages(smaller.get(), kBytes), kBytes / page);
}

TEST(PixelMemory, IsPreparedUpToTheLimitOnly) {
    releaseIdlePixelMemory();
    setIdlePixelMemoryLimit(std::size_t{4} << 20);
    for (int i = 0; i < 3; ++i) preparePixelMemory(std::size_t{2} << 20, 3);
    int steps = 0;
    while (!preparePixelMemory(std::size_t{2} << 20, 3)) ASSERT_LT(++steps, 100);
    EXPECT_LE(idlePixelMemory(), std::size_t{4} << 20);
    EXPECT_TRUE(preparePixelMemory(std::size_t{8} << 20, 1)) << "more than may be kept";
    EXPECT_TRUE(preparePixelMemory(100, 1)) << "one for the heap";
    releaseIdlePixelMemory();
    setIdlePixelMemoryLimit(std::size_t{64} << 20);
}

TEST(PixelMemory, LargeBlocksGiveWayToSmallerOnesAndNeverTheOtherWayRound) {
    releaseIdlePixelMemory();
    constexpr std::size_t kMegabyte = std::size_t{1} << 20;
    allocatePixelMemory(48 * kMegabyte, PixelContents::Undefined).reset();
    if (idlePixelMemory() == 0) GTEST_SKIP() << "this build keeps no blocks";
    int steps = 0;
    while (!preparePixelMemory(8 * kMegabyte, 3)) ASSERT_LT(++steps, 100);
    // 48 and 24 are more than the limit of 64.
    EXPECT_EQ(idlePixelMemory(), 24 * kMegabyte);
    allocatePixelMemory(48 * kMegabyte, PixelContents::Undefined).reset();
    EXPECT_EQ(idlePixelMemory(), 24 * kMegabyte);
    allocatePixelMemory(40 * kMegabyte, PixelContents::Undefined).reset();
    EXPECT_EQ(idlePixelMemory(), 64 * kMegabyte) << "there is room for both";
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
