#include "imaging/nscolor.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

TEST(NSColor, BlackIsAWhiteOfZeroUntilItIsConverted) {
    const NSColor black = NSColor::blackColor();
    EXPECT_EQ(black.colorSpaceName(), NSDeviceWhiteColorSpace);
    const auto rgb = black.colorUsingColorSpaceName(NSDeviceRGBColorSpace);
    ASSERT_TRUE(rgb);
    EXPECT_EQ(*rgb, NSColor::colorWithDeviceRed(0, 0, 0, 1));
}

TEST(NSColor, WhiteGivesThreeEqualComponents) {
    const auto rgb =
        NSColor::colorWithDeviceWhite(0.25, 0.5).colorUsingColorSpaceName(NSDeviceRGBColorSpace);
    EXPECT_EQ(rgb->redComponent(), 0.25);
    EXPECT_EQ(rgb->greenComponent(), 0.25);
    EXPECT_EQ(rgb->blueComponent(), 0.25);
    EXPECT_EQ(rgb->alphaComponent(), 0.5);
}

TEST(NSColor, InksTakeAwayAndStopAtBlack) {
    const DeviceColor color = NSColor::colorWithDeviceCyan(0.5, 0, 0.875, 0.25, 1).deviceColor();
    EXPECT_EQ(color, (DeviceColor{0.25, 0.75, 0, 1}));
}

TEST(NSColor, AnUnknownSpaceHasNoConversion) {
    EXPECT_FALSE(NSColor::whiteColor().colorUsingColorSpaceName("NSNamedColorSpace"));
}

}  // namespace
}  // namespace skarnel
