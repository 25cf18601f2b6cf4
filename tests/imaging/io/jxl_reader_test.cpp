// Layers of a JPEG XL picture: those that are opened, and files of a few bytes that are not.
#include <gtest/gtest.h>

#include "imaging/io/image_io.h"
#include "imaging/io/jxl_files.h"
#include "imaging/io/late_codec.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

class JpegXLLayers : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!imageTypeWithIdentifier(kUTTypeJPEGXL)->canRead || !io::loadJpegXL()) {
            GTEST_SKIP() << "no library for JPEG XL";
        }
    }
};

void expectTooLarge(const Bytes& file) {
    EXPECT_LT(file.size(), 10'000U);
    const auto decoded = decodeImage(file);
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error().code, ErrorCode::TooLarge) << decoded.error().message;
}

TEST_F(JpegXLLayers, OfHonestSizesAreOpened) {
    const Bytes files[] = {
        JxlBuilder(30, 20).layer({30, 20}).build(),
        JxlBuilder(1500, 1100).layer({1500, 1100}).build(),  // of four groups
        JxlBuilder(30, 20).layer({40, 50}).build(),
        JxlBuilder(30, 20).layer({30, 20}, 100).layer({10, 5}).build(),
        JxlBuilder(30, 20).layer({60, 70, true}).layer({30, 20}).build(),
    };
    for (const Bytes& file : files) {
        const auto decoded = decodeImage(file);
        ASSERT_TRUE(decoded) << &file - files << ": " << decoded.error().message;
        EXPECT_EQ(decoded->image.height(), decoded->image.width() == 30 ? 20 : 1100);
    }
}

TEST_F(JpegXLLayers, LargerThanThePictureAreRefused) {
    expectTooLarge(JxlBuilder(30, 20).layer({30000, 30000}).build());
    expectTooLarge(JxlBuilder(30, 20).layer({30, 20}).layer({5000, 3000}).build());
}

TEST_F(JpegXLLayers, OneAboveTheOtherAreRefused) {
    expectTooLarge(JxlBuilder(1000, 1000).layer({1000, 1000}, 100).build());
    // Each takes a quarter of the picture, however small it is.
    expectTooLarge(JxlBuilder(2000, 2000).layer({1, 1}, 100).build());
}

TEST_F(JpegXLLayers, AreBelievedWhenTheUserSaysSo) {
    const Bytes file = JxlBuilder(30, 20).layer({2100, 2100}).build();
    EXPECT_FALSE(decodeImage(file)) << "4.4 million pixels for 50 bytes";
    EXPECT_TRUE(decodeImage(file, {10'000'000, 10'000'000}));
}

TEST_F(JpegXLLayers, APictureOfFewBytesIsBelievedFourMillionPixels) {
    EXPECT_TRUE(decodeImage(JxlBuilder(2000, 1000).layer({2000, 1000}).build()));
    expectTooLarge(JxlBuilder(2100, 2000).layer({2100, 2000}).build());
}

}  // namespace
}  // namespace skarnel
