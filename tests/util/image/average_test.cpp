// Expected components by hand: sum of bytes / n / 256.
#include "util/image/average.h"

#include <cmath>
#include <cstring>

#include "util/image/pictures.h"

namespace skarnel {
namespace {

using namespace pictures;
using Average::averageColor;

/// A 3-byte bitmap whose memory ends with its last byte, so that a sanitizer sees any read beyond.
NSImage packedImage(int width, int height, const std::vector<std::uint8_t>& bytes) {
    const std::shared_ptr<std::uint8_t[]> memory(new std::uint8_t[bytes.size()]);
    std::memcpy(memory.get(), bytes.data(), bytes.size());
    const std::shared_ptr<const std::uint8_t> shared(memory, memory.get());
    return imageOf(
        CGImage::share(shared, width, height, static_cast<std::size_t>(3 * width), 3).value());
}

TEST(AverageColor, DividesBy256) {
    const NSImage image = packedImage(2, 1, {255, 0, 0, 0, 0, 255});
    EXPECT_EQ(averageColor(image), NSColor::colorWithDeviceRed(0.498046875, 0, 0.498046875, 1));
}

TEST(AverageColor, OfWhiteIsJustBelowOne) {
    const NSImage image = packedImage(2, 2, std::vector<std::uint8_t>(12, 255));
    EXPECT_EQ(averageColor(image),
              NSColor::colorWithDeviceRed(0.99609375, 0.99609375, 0.99609375, 1));
}

TEST(AverageColor, TakesAnyBitmapForPackedThreeByteGroups) {
    // Two RGBA pixels hold 8 bytes: the groups are (10 20 30) (40 50 60), whatever they mean.
    const NSImage image = imageOf(2, {{10, 20, 30, 40}, {50, 60, 70, 80}});
    EXPECT_EQ(averageColor(image),
              NSColor::colorWithDeviceRed(25 / 256.0, 35 / 256.0, 45 / 256.0, 1));
}

TEST(AverageColor, CountsPointsNotPixels) {
    // 1 x 1 points of a 2 x 1 bitmap: the first group alone.
    const NSImage image = packedImage(2, 1, {100, 0, 0, 0, 0, 255});
    image.representations()[0]->setSize({1, 1});
    EXPECT_EQ(averageColor(image), NSColor::colorWithDeviceRed(0.390625, 0, 0, 1));
    // 1.5 points are cut to 1.
    image.representations()[0]->setSize({1.5, 1});
    EXPECT_EQ(averageColor(image), NSColor::colorWithDeviceRed(0.390625, 0, 0, 1));
}

TEST(AverageColor, NeverReadsBeyondTheBitmap) {
    // 8 points of a bitmap of 2 groups: 200 / 8 / 256 of red.
    const NSImage image = packedImage(2, 1, {100, 0, 0, 100, 0, 0});
    image.representations()[0]->setSize({4, 2});
    EXPECT_EQ(averageColor(image), NSColor::colorWithDeviceRed(25 / 256.0, 0, 0, 1));
    image.representations()[0]->setSize({1e5, 2e4});
    EXPECT_EQ(averageColor(image)->blueComponent(), 0);
}

TEST(AverageColor, DividesFloats) {
    // 1/3 as a float is 11184811 / 2^25; a 256th of it is exact.
    const NSImage image = packedImage(3, 1, {1, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(averageColor(image)->redComponent(), 11184811.0 / 33554432.0 / 256.0);
}

TEST(AverageColor, SumsIn32BitsWhichWrap) {
    // 17,039,360 white pixels: 4,345,036,800 - 2^32 = 50,069,504, an exact float; so is
    // 50,069,504 / 17,039,360 as the quotient of two floats, rounded once.
    const NSImage image = packedImage(4160, 4096, std::vector<std::uint8_t>(3 * 4160 * 4096, 255));
    const double expected = double{static_cast<float>(50069504.0 / 17039360.0)} / 256.0;
    EXPECT_EQ(averageColor(image), NSColor::colorWithDeviceRed(expected, expected, expected, 1));
}

TEST(AverageColor, OfNoPointsIsNoNumber) {
    const NSImage image = packedImage(1, 1, {1, 2, 3});
    image.representations()[0]->setSize({0, 0});
    EXPECT_TRUE(std::isnan(averageColor(image)->redComponent()));
    EXPECT_EQ(averageColor(image)->alphaComponent(), 1);
    // Beyond 32 bits the count is 0 as well.
    image.representations()[0]->setSize({1e6, 1e6});
    EXPECT_TRUE(std::isnan(averageColor(image)->redComponent()));
    // A negative count has nothing to sum: 0 / -2.
    image.representations()[0]->setSize({-2, 1});
    EXPECT_EQ(averageColor(image)->redComponent(), 0);
}

TEST(AverageColor, ExistsOnlyWhereTheBestRepresentationIsABitmap) {
    NSImage image = NSImage::initWithSize({4, 4});
    EXPECT_EQ(averageColor(image), std::nullopt);
    image.addRepresentation(filterRepresentation(4, 4, kRed));
    EXPECT_EQ(averageColor(image), std::nullopt);
    image.addRepresentation(plainRepresentation(1, 1, kRed));
    EXPECT_EQ(averageColor(image), std::nullopt) << "the larger one is the best";
}

}  // namespace
}  // namespace skarnel
