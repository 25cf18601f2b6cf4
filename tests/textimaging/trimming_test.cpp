// Trimming: the used rectangle in every number, and what becomes of it.
#include "textimaging/trimming.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "util/image/ns_exception.h"

namespace skarnel {
namespace {

using Color = std::array<std::uint8_t, 4>;
constexpr Color kGround{10, 20, 30, 255};

struct Canvas {
    Canvas(int w, int h, Color ground = kGround) : width(w), height(h) {
        for (int i = 0; i < w * h; ++i) bytes.insert(bytes.end(), ground.begin(), ground.end());
    }
    void set(int x, int y, Color color) {
        std::copy(color.begin(), color.end(), bytes.begin() + 4 * (std::ptrdiff_t{y} * width + x));
    }
    void fill(int x0, int y0, int x1, int y1, Color color) {  // inclusive, rows from the top
        for (int y = y0; y <= y1; ++y)
            for (int x = x0; x <= x1; ++x) set(x, y, color);
    }
    CGImage bitmap() const {
        return *CGImage::copyOf({bytes.data(), width, height, std::ptrdiff_t{4} * width, 4});
    }
    NSImage image() const {
        NSImage result = NSImage::initWithSize({double(width), double(height)});
        result.addRepresentation(NSBitmapImageRep::initWithCGImage(bitmap()));
        return result;
    }
    int width;
    int height;
    std::vector<std::uint8_t> bytes;
};

// The scan as it is defined, column by column, with the root of doubles.
CGRect definedUsedRect(const std::uint8_t* data, int w, int h, int s, std::int32_t tolerance) {
    int minX = w;
    int minY = h;
    int maxX = 0;
    int maxY = 0;
    const auto alpha = [&](std::size_t offset) { return s == 4 ? data[offset + 3] : 0; };
    for (int x = 0; x < w; ++x) {
        for (int y = 0; y < h; ++y) {
            const std::size_t offset = std::size_t(w) * y * s + std::size_t(s) * x;
            const double dg = data[1] - data[offset + 1];
            const double dr = data[0] - data[offset];
            const double db = data[2] - data[offset + 2];
            const double da = alpha(0) - alpha(offset);
            if (std::sqrt(dg * dg + dr * dr + db * db + da * da) > tolerance) {
                maxY = std::max(maxY, y);
                maxX = std::max(maxX, x);
                minX = std::min(minX, x);
                minY = std::min(minY, y);
            }
        }
    }
    return {double(minX), double(h - 1 - maxY), double(maxX - minX + 1), double(maxY - minY + 1)};
}

TEST(Trimming, ABlockInAnImageOfOneColourIsFoundFromTheBottom) {
    Canvas canvas(10, 10);
    canvas.fill(2, 3, 5, 4, {200, 0, 0, 255});
    EXPECT_EQ(Trimming::usedRect(canvas.image(), 10), (CGRect{2, 5, 4, 2}));
}

TEST(Trimming, TheToleranceItselfIsNotUsed) {
    Canvas canvas(5, 5);
    canvas.set(3, 1, {16, 28, 30, 255});  // (6, 8, 0, 0): distance 10
    EXPECT_EQ(Trimming::usedRect(canvas.image(), 10), (CGRect{5, 4, -4, -4}));
    canvas.set(3, 1, {16, 28, 31, 255});  // (6, 8, 1, 0): distance 10.05
    EXPECT_EQ(Trimming::usedRect(canvas.image(), 10), (CGRect{3, 3, 1, 1}));
}

TEST(Trimming, AlphaAloneCountsAsUsed) {
    Canvas canvas(4, 4, {0, 0, 0, 0});
    canvas.set(1, 2, {0, 0, 0, 255});
    EXPECT_EQ(Trimming::usedRect(canvas.image(), 10), (CGRect{1, 1, 1, 1}));
}

TEST(Trimming, TheReferenceIsTheTopLeftPixelAndNeverUsedItself) {
    Canvas canvas(3, 2, {90, 90, 90, 255});
    canvas.set(0, 0, kGround);
    EXPECT_EQ(Trimming::usedRect(canvas.image(), 10), (CGRect{0, 0, 3, 2}));
}

TEST(Trimming, AnImageOfOneColourHasARectangleWithoutPositiveSize) {
    EXPECT_EQ(Trimming::usedRect(Canvas(7, 4).image(), 10), (CGRect{7, 3, -6, -3}));
    EXPECT_EQ(Trimming::usedRect(Canvas(1, 9).image(), 10), (CGRect{1, 8, 0, -8}));
}

TEST(Trimming, AOnePixelImageGivesOneZeroZeroZero) {
    EXPECT_EQ(Trimming::usedRect(Canvas(1, 1).image(), 10), (CGRect{1, 0, 0, 0}));
    EXPECT_EQ(Trimming::usedRect(Canvas(1, 1).image(), 0), (CGRect{1, 0, 0, 0}));
}

TEST(Trimming, ANegativeToleranceFindsEveryPixelAndAHugeOneNone) {
    const Canvas canvas(3, 2);
    EXPECT_EQ(Trimming::usedRect(canvas.image(), -1), (CGRect{0, 0, 3, 2}));
    Canvas far(3, 2, {0, 0, 0, 0});
    far.set(1, 1, {255, 255, 255, 255});
    EXPECT_EQ(Trimming::usedRect(far.image(), 509), (CGRect{1, 0, 1, 1}));
    EXPECT_EQ(Trimming::usedRect(far.image(), 510), (CGRect{3, 1, -2, -1}));
    EXPECT_EQ(Trimming::usedRect(far.image(), 2147483647), (CGRect{3, 1, -2, -1}));
}

TEST(Trimming, UsedPixelsInEachCornerAndEdgeAreFound) {
    const struct {
        const char* name;
        int x, y;
        CGRect used;
    } rows[] = {
        {"top right", 8, 0, {8, 5, 1, 1}},    {"bottom left", 0, 5, {0, 0, 1, 1}},
        {"bottom right", 8, 5, {8, 0, 1, 1}}, {"top edge", 4, 0, {4, 5, 1, 1}},
        {"left edge", 0, 3, {0, 2, 1, 1}},
    };
    for (const auto& row : rows) {
        Canvas canvas(9, 6);
        canvas.set(row.x, row.y, {255, 255, 255, 255});
        EXPECT_EQ(Trimming::usedRect(canvas.image(), 10), row.used) << row.name;
    }
}

TEST(Trimming, ThreeSamplesHaveNoAlpha) {
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(std::size_t{3} * 6 * 4, 50);
    (*bytes)[3 * (2 * 6 + 4) + 1] = 61;  // green of column 4, row 2
    const std::shared_ptr<const std::uint8_t> shared(bytes, bytes->data());
    const NSBitmapImageRep bitmap(*CGImage::share(shared, 6, 4, 18, 3));
    EXPECT_EQ(Trimming::usedRect(bitmap, 10), (CGRect{4, 1, 1, 1}));
    EXPECT_EQ(Trimming::usedRect(bitmap, 11), (CGRect{6, 3, -5, -3}));
}

TEST(Trimming, PaddedRowsAreReadAskew) {
    // Two rows of three pixels in rows of four; the second begins with the first one's padding.
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(std::size_t{4} * 4 * 2, 0);
    (*bytes)[4 * 3 + 0] = 255;  // the padding of row 0 = pixel 0 of row 1 without padding
    const std::shared_ptr<const std::uint8_t> shared(bytes, bytes->data());
    const NSBitmapImageRep bitmap(*CGImage::share(shared, 3, 2, 16, 4));
    EXPECT_EQ(Trimming::usedRect(bitmap, 10), (CGRect{0, 0, 1, 1}));
}

TEST(Trimming, EqualsTheDefinitionOnRandomImages) {
    std::mt19937 random(77);
    for (int round = 0; round < 300; ++round) {
        const int width = 1 + static_cast<int>(random() % 40);
        const int height = 1 + static_cast<int>(random() % 40);
        const int samples = random() % 3 == 0 ? 3 : 4;
        auto bytes =
            std::make_shared<std::vector<std::uint8_t>>(std::size_t(samples) * width * height, 128);
        for (unsigned changes = random() % 12; changes > 0; --changes)
            (*bytes)[random() % bytes->size()] = static_cast<std::uint8_t>(random());
        const std::shared_ptr<const std::uint8_t> shared(bytes, bytes->data());
        const NSBitmapImageRep bitmap(
            *CGImage::share(shared, width, height, std::size_t(samples) * width, samples));
        const auto tolerance = static_cast<std::int32_t>(random() % 140) - 2;
        ASSERT_EQ(Trimming::usedRect(bitmap, tolerance),
                  definedUsedRect(bytes->data(), width, height, samples, tolerance))
            << width << "x" << height << "x" << samples << " round " << round;
    }
}

TEST(Trimming, AnImageWithoutABitmapRaises) {
    EXPECT_THROW(Trimming::usedRect(NSImage::initWithSize({10, 10}), 10), NSException);
    EXPECT_THROW(
        Trimming::scaleImageToSize(NSImage::initWithSize({10, 10}), {5, 5}, true, 10, false, false),
        NSException);
}

TEST(ScaleImageToSize, AnEqualTargetCutsTheUsedRectangleOut) {
    Canvas canvas(10, 10, {0, 0, 0, 0});
    canvas.fill(2, 3, 5, 4, {200, 100, 50, 255});
    canvas.set(4, 3, {1, 2, 3, 255});
    for (const bool expand : {false, true}) {
        const std::optional<NSImage> cut =
            Trimming::scaleImageToSize(canvas.image(), {4, 2}, true, 10, expand, false);
        ASSERT_TRUE(cut);
        EXPECT_EQ(cut->size(), (CGSize{4, 2}));
        const CGImage bitmap = *cut->bitmap();
        ASSERT_EQ(bitmap.width(), 4);
        ASSERT_EQ(bitmap.height(), 2);
        for (int y = 0; y < 2; ++y)
            EXPECT_EQ(std::memcmp(bitmap.pixels().row(y),
                                  canvas.bytes.data() + 4 * (std::size_t(3 + y) * 10 + 2), 16),
                      0);
    }
}

TEST(ScaleImageToSize, ScalingUpFitsOrCovers) {
    Canvas canvas(300, 200);
    canvas.fill(50, 50, 249, 149, {255, 255, 255, 255});  // 200 x 100
    const auto sizeOf = [&](bool expand) {
        return Trimming::scaleImageToSize(canvas.image(), {100, 100}, true, 10, expand, true)
            ->size();
    };
    EXPECT_EQ(sizeOf(false), (CGSize{100, 50}));
    EXPECT_EQ(sizeOf(true), (CGSize{200, 100}));
}

TEST(ScaleImageToSize, WithoutScalingUpOnlyALargerRectangleIsScaled) {
    Canvas canvas(100, 100);
    canvas.fill(10, 10, 49, 29, {255, 255, 255, 255});  // 40 x 20
    const auto sizeOf = [&](CGSize size, bool scaleUp) {
        return Trimming::scaleImageToSize(canvas.image(), size, true, 10, false, scaleUp)->size();
    };
    EXPECT_EQ(sizeOf({400, 400}, false), (CGSize{40, 20}));
    EXPECT_EQ(sizeOf({400, 400}, true), (CGSize{400, 200}));
    EXPECT_EQ(sizeOf({40, 20}, false), (CGSize{40, 20}));
    EXPECT_EQ(sizeOf({20, 20}, false), (CGSize{20, 10}));  // wider
    EXPECT_EQ(sizeOf({80, 10}, false), (CGSize{20, 10}));  // higher
}

TEST(ScaleImageToSize, WithoutTrimmingTheWholeImageIsTaken) {
    const Canvas canvas(8, 6);
    const std::optional<NSImage> whole =
        Trimming::scaleImageToSize(canvas.image(), {8, 6}, false, 10, false, false);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->size(), (CGSize{8, 6}));
    EXPECT_EQ(
        std::memcmp(whole->bitmap()->pixels().bytes, canvas.bytes.data(), canvas.bytes.size()), 0);
}

TEST(ScaleImageToSize, AnImageOfOneColourRaisesInsteadOfGivingAnEmptyImage) {
    for (const auto& [width, height] : {std::pair{10, 10}, {1, 1}, {1, 5}}) {
        const NSImage image = Canvas(width, height).image();
        const CGSize size = Trimming::usedRect(image, 10).size();
        EXPECT_THROW(Trimming::scaleImageToSize(image, size, true, 10, false, false), NSException);
    }
}

}  // namespace
}  // namespace skarnel
