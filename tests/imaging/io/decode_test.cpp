// What all readers ask before they take memory, and what they tell of a picture.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "imaging/io/decoder_wall.h"
#include "imaging/io/image_io.h"
#include "imaging/io/pictures.h"
#include "imaging/io/readers.h"

namespace skarnel {
namespace {

constexpr std::int64_t kAnyFormat = std::numeric_limits<std::int64_t>::max();

TEST(CheckPictureSize, ManyPixelsNeedAFileThatCanHoldThem) {
    DecodeLimits limits;
    limits.maxPixels = 1'000'000;
    limits.maxUnprovenPixels = 100'000;
    // 400,000 pixels ask for 200 bytes and one more, 2,000 of them each.
    limits.fileBytes = 200;
    const auto refused = io::checkPictureSize(1000, 400, limits, kAnyFormat);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->code, ErrorCode::TooLarge);
    EXPECT_NE(refused->message.find("1000 x 400"), std::string::npos);
    limits.fileBytes = 201;
    EXPECT_FALSE(io::checkPictureSize(1000, 400, limits, kAnyFormat));
    limits.fileBytes = 0;
    EXPECT_FALSE(io::checkPictureSize(1000, 100, limits, kAnyFormat)) << "so many are believed";
    EXPECT_TRUE(io::checkPictureSize(1000, 100, limits, 99'999)) << "the format has fewer";
}

TEST(DecodeForeignImage, GivesThePictureWithAHelperOrWithoutOne) {
    const CGImage image = testing::randomValidPicture(9, 7, 3);
    const auto decoded = decodeForeignImage(*encodeImage(image, kUTTypePNG));
    ASSERT_TRUE(decoded) << decoded.error().message;
    EXPECT_TRUE(testing::samePixels(decoded->image, image));
}

TEST(SetResolution, OnlyTwoNumbersThatCanBeOneAreKept) {
    ImageProperties properties;
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double bad : {infinite, std::nan(""), 0.0, -72.0}) {
        io::setResolution(properties, bad, 72);
        io::setResolution(properties, 72, bad);
        EXPECT_TRUE(properties.empty()) << bad;
    }
    io::setResolution(properties, 300, 72);
    EXPECT_EQ(properties, (ImageProperties{{std::string(kPropertyDpiWidth), 300.0},
                                           {std::string(kPropertyDpiHeight), 72.0}}));
}

}  // namespace
}  // namespace skarnel
