// The lossless form's header: 0x2F, then from the lowest bit on 14 bits of width - 1, 14 of height
// - 1, one that hints at alpha, 3 of the version.
#include <gtest/gtest.h>

#include "imaging/io/pictures.h"

namespace skarnel {
namespace {

using namespace skarnel::testing;

TEST(WebPReader, AlphaCountsAlsoWhereTheHeaderDoesNotHintAtIt) {
    const CGImage image = randomValidPicture(9, 7, 3);
    Bytes file = *encodeImage(image, kUTTypeWebP);
    // RIFF, size, WEBP, VP8L, size: the header begins at byte 20.
    constexpr std::size_t kHeader = 20;
    constexpr std::uint8_t kHint = 0x10;
    ASSERT_EQ(file[kHeader], 0x2F);
    ASSERT_EQ(file[kHeader + 4] & kHint, kHint);
    file[kHeader + 4] &= static_cast<std::uint8_t>(~kHint);
    const auto decoded = decodeImage(file);
    ASSERT_TRUE(decoded) << decoded.error().message;
    EXPECT_TRUE(samePixels(decoded->image, image));
    EXPECT_EQ(decoded->properties.at(std::string(kPropertyHasAlpha)),
              PropertyValue(std::int64_t{1}));
}

}  // namespace
}  // namespace skarnel
