// What decoding may cost, for pictures of known sizes.
#include "decoder/picture_limits.h"

#include <gtest/gtest.h>

#include <chrono>

namespace skarnel {
namespace {

constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20U;

TEST(PictureLimits, OfASmallPictureOfItemsAreSmallWhateverTheFileSays) {
    for (const std::uint64_t fileBytes : {std::uint64_t{1500}, kMegabyte, UINT64_MAX / 4096}) {
        const CellLimits limits = limitsForItems({}, HeadSize{80, 64}, fileBytes, 8);
        EXPECT_LT(limits.dataBytes, 150 * kMegabyte) << fileBytes;
        EXPECT_LE(limits.processorTime, std::chrono::seconds(4)) << fileBytes;
    }
    const CellLimits unknown = limitsForItems({}, std::nullopt, 1500, 8);
    EXPECT_LT(unknown.dataBytes, 150 * kMegabyte);
    EXPECT_EQ(unknown.processorTime, std::chrono::seconds(1));
}

TEST(PictureLimits, OfAPhotoAreSeveralTimesWhatItTakes) {
    // Ten bits, nothing packed: 30 MB were decoded with 133 MB in 1.5 seconds.
    const CellLimits limits = limitsForItems({}, HeadSize{2400, 1800}, 30'131'394, 2);
    EXPECT_GT(limits.dataBytes, 3 * 133 * kMegabyte);
    EXPECT_GT(limits.processorTime, std::chrono::seconds(30));
    EXPECT_EQ(limits.threads, CellLimits::Threads::Many);
}

TEST(PictureLimits, DoNotGrowWithPixelsThatAreRefused) {
    const HeadSize vast{60000, 60000};
    const DecodeLimits few{1'000'000, 1000};
    EXPECT_EQ(limitsForItems(few, vast, 1000, 1).dataBytes,
              limitsForItems(few, HeadSize{1000, 1000}, 1000, 1).dataBytes);
    // 2,000 pixels a byte, or as many as are taken on trust.
    const DecodeLimits some{100'000'000, 1'000'000};
    EXPECT_EQ(limitsForItems(some, vast, 1000, 1).dataBytes,
              limitsForItems(some, HeadSize{2000, 1000}, 1000, 1).dataBytes);
    EXPECT_EQ(limitsForItems(some, vast, 10, 1).dataBytes,
              limitsForItems(some, HeadSize{1000, 1000}, 10, 1).dataBytes);
}

TEST(PictureLimits, OfOtherFormatsAreTheMostThatAnyTakes) {
    const CellLimits limits = limitsForPictures({1'000'000});
    EXPECT_EQ(limits.memoryBytes, 1024 * kMegabyte + 24'000'000);
    EXPECT_EQ(limits.dataBytes, UINT64_MAX);
    EXPECT_EQ(limits.threads, CellLimits::Threads::One);
    EXPECT_EQ(limits.processorTime, std::chrono::seconds(120));
    // Nor may one of items take longer.
    EXPECT_EQ(limitsForItems({}, HeadSize{20000, 20000}, 400'000'000, 1).processorTime,
              std::chrono::seconds(120));
}

}  // namespace
}  // namespace skarnel
