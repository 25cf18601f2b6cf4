// The knock-out: alpha and nothing else, no tolerance, the corner's colour.
#include "textimaging/knock_out.h"

#include <gtest/gtest.h>

#include <vector>

#include "imaging/pixel_memory.h"
#include "render/reflection.h"
#include "util/limited_to.h"

namespace skarnel {
namespace {

CIImage imageOf(const std::vector<std::uint8_t>& bytes, int width) {
    const int height = static_cast<int>(bytes.size()) / (4 * width);
    return CIImage::imageWithCGImage(
        *CGImage::copyOf({bytes.data(), width, height, std::ptrdiff_t{4} * width, 4}));
}

std::vector<std::uint8_t> bytesOf(const CIImage& image) {
    const CGImage bitmap = *CIImageGetCGImage(image);
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::uint8_t* row = bitmap.pixels().row(y);
        bytes.insert(bytes.end(), row, row + std::ptrdiff_t{4} * bitmap.width());
    }
    return bytes;
}

TEST(CIImageMakeFirtsPixelColorTransparent, PixelsOfTheCornersColourKeepItAndLoseTheirAlpha) {
    const std::vector<std::uint8_t> before{
        9, 8, 7, 255, 9, 8, 7, 200, 9, 8, 6, 255,  // one step of blue
        9, 7, 7, 255, 8, 8, 7, 255, 9, 8, 7, 255,
    };
    const std::vector<std::uint8_t> after{
        9, 8, 7, 0, 9, 8, 7, 0, 9, 8, 6, 255, 9, 7, 7, 255, 8, 8, 7, 255, 9, 8, 7, 0,
    };
    const std::optional<CIImage> result = CIImageMakeFirtsPixelColorTransparent(imageOf(before, 3));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->extent(), (CGRect{0, 0, 3, 2}));
    EXPECT_EQ(bytesOf(*result), after);
}

TEST(CIImageMakeFirtsPixelColorTransparent, TheReferenceIsTheTopLeftPixelAndItsAlphaTakesNoPart) {
    const std::vector<std::uint8_t> before{1, 1, 1, 3, 2, 2, 2, 2, 1, 1, 1, 255, 2, 2, 2, 255};
    const std::optional<CIImage> result = CIImageMakeFirtsPixelColorTransparent(imageOf(before, 1));
    ASSERT_TRUE(result);
    EXPECT_EQ(bytesOf(*result),
              (std::vector<std::uint8_t>{1, 1, 1, 0, 2, 2, 2, 2, 1, 1, 1, 0, 2, 2, 2, 255}));
}

TEST(CIImageMakeFirtsPixelColorTransparent, AnImageOfOneColourBecomesWhollyTransparent) {
    const std::vector<std::uint8_t> before(std::size_t{4} * 100 * 3, 255);
    const std::vector<std::uint8_t> after =
        bytesOf(*CIImageMakeFirtsPixelColorTransparent(imageOf(before, 100)));
    for (std::size_t i = 0; i < after.size(); ++i) ASSERT_EQ(after[i], i % 4 == 3 ? 0 : 255) << i;
}

TEST(CIImageMakeFirtsPixelColorTransparent, TheInputIsNotChanged) {
    const CIImage image = imageOf({5, 5, 5, 255}, 1);
    ASSERT_TRUE(CIImageMakeFirtsPixelColorTransparent(image));
    EXPECT_EQ(bytesOf(image), (std::vector<std::uint8_t>{5, 5, 5, 255}));
}

TEST(CIImageMakeFirtsPixelColorTransparent, AnImageThatCannotBeRasterisedGivesNone) {
    std::optional<CIFilter> filter = CIFilter::filterWithName("CIAffineTransform");
    ASSERT_TRUE(filter);
    filter->setDefaults();
    filter->setValue(imageOf({5, 5, 5, 255}, 1), "inputImage");
    filter->setValue(AffineTransform::scale(0, 0), "inputTransform");
    const std::optional<CIImage> empty = filter->outputImage();
    ASSERT_TRUE(empty);
    EXPECT_FALSE(CIImageMakeFirtsPixelColorTransparent(*empty));
}

/// A bitmap that nobody has written to, so that its memory is only promised.
CIImage untouched(int width, int height) {
    return CIImage::imageWithCGImage(CGImage(*PixelBuffer::uninitialized(width, height)));
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

TEST(CIImageMakeFirtsPixelColorTransparent, ABitmapOfMoreThanTwoGigabytesGivesNone) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer keeps notes of 256 MB on such a bitmap";
    // 23,171 * 23,171 * 4 = 2,147,580,964 bytes, 97,317 more than 31 bits count.
    EXPECT_FALSE(CIImageMakeFirtsPixelColorTransparent(untouched(23'171, 23'171)));
}

TEST(CIImageMakeFirtsPixelColorTransparent, WithoutMemoryForTheResultThereIsNone) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer takes memory of its own, and ends without";
    const CIImage image = untouched(1000, 1000);  // 4 MB, which come straight from the system
    releaseIdlePixelMemory();
    bool gaveNothing = false;
    {
        const test::LimitedTo less(RLIMIT_AS, 1 << 20);  // the program itself takes more
        gaveNothing = !CIImageMakeFirtsPixelColorTransparent(image);
    }
    EXPECT_TRUE(gaveNothing);
    EXPECT_TRUE(CIImageMakeFirtsPixelColorTransparent(image));
}

}  // namespace
}  // namespace skarnel
