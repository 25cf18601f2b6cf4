#include "cli/preview.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "cli/pictures.h"
#include "render/fitting.h"
#include "util/image/nsimage_extensions.h"

namespace skarnel::cli {
namespace {

PixelSize fitted(PixelSize picture, PixelSize box) {
    const auto result = shrinkToFit(test::gradientPicture(picture.width, picture.height), box);
    return result ? PixelSize{result->width(), result->height()} : PixelSize{};
}

TEST(Preview, ShrinksByOneFactorForBothSides) {
    EXPECT_EQ(fitted({400, 300}, {80, 60}), (PixelSize{80, 60}));
    EXPECT_EQ(fitted({400, 300}, {80, 30}), (PixelSize{40, 30}));
    EXPECT_EQ(fitted({300, 400}, {60, 1000}), (PixelSize{60, 80}));
}

TEST(Preview, NeverEnlarges) {
    const CGImage picture = test::gradientPicture(40, 30);
    const auto result = shrinkToFit(picture, {800, 600});
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->isSame(picture));
}

TEST(Preview, LeavesAtLeastOnePixel) {
    EXPECT_EQ(fitted({1000, 2}, {10, 10}), (PixelSize{10, 1}));
}

/// As the window makes its working copy.
std::optional<CGImage> asTheWindowDoes(const CGImage& picture, PixelSize box) {
    NSImage image = NSImage::initWithSize({double(picture.width()), double(picture.height())});
    image.addRepresentation(NSBitmapImageRep::initWithCGImage(picture));
    const CGRect source{0, 0, double(picture.width()), double(picture.height())};
    const CGRect fitted = GetDestinationRect(source, {0, 0, double(box.width), double(box.height)});
    const auto scaled = NSImageExtensions::imageByScalingProportionallyToSize(image, fitted.size());
    return scaled ? NSImageExtensions::getCGImageRef(*scaled) : std::nullopt;
}

TEST(Preview, HasTheBytesOfTheWindowsWorkingCopy) {
    for (const PixelSize size : {PixelSize{400, 300}, {301, 177}, {97, 1000}, {50, 50}}) {
        for (const PixelSize box : {PixelSize{80, 60}, {33, 47}, {100, 20}, {60, 60}}) {
            const CGImage picture = test::gradientPicture(size.width, size.height);
            const auto ours = shrinkToFit(picture, box);
            const auto theirs = asTheWindowDoes(picture, box);
            ASSERT_TRUE(ours && theirs);
            ASSERT_EQ(ours->width(), theirs->width());
            ASSERT_EQ(ours->height(), theirs->height());
            for (int y = 0; y < ours->height(); ++y) {
                const int bytes = 4 * ours->width();
                EXPECT_TRUE(std::equal(ours->pixels().row(y), ours->pixels().row(y) + bytes,
                                       theirs->pixels().row(y)))
                    << size.width << "x" << size.height << " in " << box.width << "x" << box.height
                    << ", row " << y;
            }
        }
    }
}

}  // namespace
}  // namespace skarnel::cli
