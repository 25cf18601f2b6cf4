// What decoding may cost, for pictures of known sizes.
#include "decoder/picture_limits.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

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
    EXPECT_EQ(unknown.processorTime, std::chrono::milliseconds(904));
}

TEST(PictureLimits, OfAPhotoAreSeveralTimesWhatItTakes) {
    // Ten bits, nothing packed: 30 MB were decoded with 133 MB in 1.5 seconds.
    const CellLimits limits = limitsForItems({}, HeadSize{2400, 1800}, 30'131'394, 2);
    EXPECT_GT(limits.dataBytes, 5 * 133 * kMegabyte / 2);
    EXPECT_GT(limits.processorTime, std::chrono::seconds(30));
    EXPECT_EQ(limits.threads, CellLimits::Threads::Many);
}

TEST(PictureLimits, OfAPictureTakenOnTrustKeepToTwoSecondsAndThreeHundredMegabytes) {
    // 900 + 4,194,304 * 0.0002 + 20,000 * 0.009 = 1918.9 milliseconds.
    const CellLimits limits = limitsForItems({}, HeadSize{2048, 2048}, 20'000, 2);
    EXPECT_EQ(limits.processorTime, std::chrono::milliseconds(1919));
    // 72 + 2 * 3 + 36 * 4 = 222. The programs and libraries, which nobody can write to, are 20
    // more.
    EXPECT_EQ(limits.dataBytes, 222 * kMegabyte + 80'000);
    // One that states more must have the bytes.
    EXPECT_EQ(limitsForItems({}, HeadSize{3000, 3000}, 2'000, 2).dataBytes,
              222 * kMegabyte + 8'000);
}

TEST(PictureLimits, GrowWithWhatIsStatedAndCoded) {
    // The first 4,194,304 pixels take 0.2 microseconds and the others 0.5; 750,000 bytes 9, the
    // others 2.5.
    const CellLimits limits = limitsForItems({}, HeadSize{4000, 3000}, 1'000'000, 4);
    EXPECT_EQ(limits.processorTime, std::chrono::milliseconds(900 + 839 + 3903 + 6750 + 625));
    EXPECT_EQ(limits.dataBytes,
              (72 + 12 + 36 * 4) * kMegabyte + (12'000'000 - 4'194'304) * 48 + 4'000'000);
}

TEST(PictureLimits, GrowWithWhatIsTakenOnTrustWhenAskedTo) {
    const DecodeLimits asked{500'000'000, 100'000'000};
    EXPECT_EQ(limitsForItems(asked, HeadSize{8000, 8000}, 500, 2).dataBytes,
              222 * kMegabyte + std::uint64_t{64'000'000 - 4'194'304} * 48 + 2'000);
}

struct Honest {
    const char* what;
    HeadSize size;
    std::uint64_t fileBytes;
    int milliseconds;  // of processor time that were measured
    int megabytes;     // below which it was not decoded
};

TEST(PictureLimits, OfHonestPicturesHoldOnAMachineFourTimesSlower) {
    constexpr HeadSize kSquare{2048, 2048};
    for (const Honest& file : {
             Honest{"HEIF, one colour", kSquare, 1'398, 83, 38},
             Honest{"AVIF, one colour", kSquare, 385, 80, 50},
             Honest{"AVIF, one colour, 12 bits, alpha", kSquare, 1'598, 223, 116},
             Honest{"the same, turned", kSquare, 1'609, 394, 119},
             Honest{"HEIF, photo", kSquare, 132'177, 146, 38},
             Honest{"HEIF, turned photo, 10 bits, alpha, low quality", kSquare, 173'908, 592, 69},
             Honest{"HEIF, photo, 10 bits, alpha, medium quality", kSquare, 1'779'501, 1194, 74},
             Honest{"HEIF, noise, 10 bits, alpha, low quality", kSquare, 272'498, 531, 74},
             Honest{"HEIF, noise, 10 bits, alpha, high quality", kSquare, 8'830'526, 1633, 88},
             Honest{"AVIF, photo, 12 bits, alpha, low quality", kSquare, 49'745, 402, 119},
             Honest{"AVIF, noise, 12 bits, alpha, nothing lost", kSquare, 39'882'933, 2035, 147},
             Honest{"AVIF, noise, small", {1000, 1000}, 9'509'391, 483, 51},
             Honest{"HEIF, photo, 12 megapixels", {4096, 3072}, 1'557'548, 464, 104},
             Honest{"HEIF, a phone's grid", {4032, 3024}, 38'634'749, 1623, 140},
         }) {
        const CellLimits limits = limitsForItems({}, file.size, file.fileBytes, 2);
        EXPECT_GT(limits.processorTime, 4 * std::chrono::milliseconds(file.milliseconds))
            << file.what;
        EXPECT_GT(limits.dataBytes, static_cast<std::uint64_t>(file.megabytes) * kMegabyte * 3 / 2)
            << file.what;
    }
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

TEST(PictureLimits, OfOtherFormatsAreBelowTheGoalsForASmallPictureInFewBytes) {
    // 1,700 + 40,000 * 0.0002 + 100,000 * 0.002 milliseconds.
    const CellLimits limits = limitsForPictures({}, HeadSize{200, 200}, 100'000);
    EXPECT_EQ(limits.processorTime, std::chrono::milliseconds(1700 + 8 + 200));
    EXPECT_EQ(limits.dataBytes, 270 * kMegabyte + 40'000 * 48 + 400'000);
    EXPECT_EQ(limits.threads, CellLimits::Threads::One);
    EXPECT_EQ(limitsForPictures({1'000'000}, HeadSize{200, 200}, 1).memoryBytes,
              1024 * kMegabyte + 24'000'000);
}

TEST(PictureLimits, OfOtherFormatsGrowWithWhatIsStatedAsFarAsItIsBelieved) {
    const auto ofPixels = [](std::uint64_t pixels, std::uint64_t fileBytes) {
        return 270 * kMegabyte + pixels * 48 + fileBytes * 4;
    };
    EXPECT_EQ(limitsForPictures({}, HeadSize{8000, 8000}, 500).dataBytes,
              ofPixels(64'000'000, 500));
    EXPECT_EQ(limitsForPictures({}, HeadSize{20000, 20000}, 500).dataBytes,
              ofPixels(64'000'000, 500));
    EXPECT_EQ(limitsForPictures({}, HeadSize{10000, 8000}, 40'000).dataBytes,
              ofPixels(80'000'000, 40'000))
        << "2,000 pixels a byte";
    EXPECT_EQ(limitsForPictures({90'000'000, 70'000'000}, HeadSize{20000, 20000}, 500).dataBytes,
              ofPixels(70'000'000, 500))
        << "asked for";
    // The file may be longer than its picture: 80 bytes a pixel, and a megabyte.
    EXPECT_EQ(limitsForPictures({}, HeadSize{1000, 1000}, 400'000'000).dataBytes,
              ofPixels(1'000'000, 80'000'000 + kMegabyte));
}

TEST(PictureLimits, OfAnUnusualHeadGoByTheFilesLength) {
    const auto timeOf = [](std::optional<HeadSize> stated, std::uint64_t fileBytes) {
        return limitsForPictures({}, stated, fileBytes).processorTime;
    };
    EXPECT_EQ(timeOf(std::nullopt, 10'000), timeOf(HeadSize{400, 400}, 10'000));
    EXPECT_EQ(timeOf(std::nullopt, UINT64_MAX), std::chrono::seconds(120));
    EXPECT_EQ(limitsForPictures({1'000'000}, std::nullopt, UINT64_MAX).dataBytes,
              270 * kMegabyte + 48'000'000 + (80'000'000 + kMegabyte) * 4);
}

// Measured with the processor of the other rows; nothing that is opened comes near.
TEST(PictureLimits, OfOtherFormatsAreSeveralTimesWhatHonestPicturesTake) {
    struct Row {
        const char* what;
        HeadSize size;
        std::uint64_t fileBytes;
        int milliseconds;
        std::uint64_t megabytes;
    };
    constexpr HeadSize kMany{7900, 7900};
    for (const Row& row : {
             Row{"PNG, 8 bits", {8000, 6250}, 68'290'284, 1364, 68},
             Row{"PNG, one colour, 16 bits with alpha", kMany, 506'612, 1412, 12},
             Row{"the same, interlaced", kMany, 521'316, 2177, 243},
             Row{"PNG of one pixel a row", {1, 60'000'000}, 233'390, 2674, 13},
             Row{"PNG of three", {3, 20'000'000}, 1'212'917, 1365, 11},
             Row{"JPEG of one colour, progressive", kMany, 366'982, 347, 182},
             Row{"JPEG of inks with a profile", {2000, 1500}, 5'822'644, 303, 12},
             Row{"TIFF of inks with a profile", {2000, 1500}, 10'510'498, 291, 29},
             Row{"TIFF of floats", {2000, 1500}, 18'826'710, 158, 36},
             Row{"WebP, nothing lost", {2000, 1500}, 7'333'094, 69, 34},
             Row{"Photoshop", {2000, 1500}, 17'242'784, 56, 23},
         }) {
        const CellLimits limits = limitsForPictures({}, row.size, row.fileBytes);
        EXPECT_GT(limits.processorTime, std::chrono::milliseconds(5 * row.milliseconds))
            << row.what;
        EXPECT_GT(limits.dataBytes, row.megabytes * kMegabyte * 3 / 2) << row.what;
    }
}

TEST(PictureLimits, NoneMayTakeLongerThanTwoMinutes) {
    const HeadSize vast{20000, 20000};
    for (const CellLimits& limits :
         {limitsForItems({}, vast, 400'000'000, 1), limitsForPictures({}, vast, 400'000'000)}) {
        EXPECT_EQ(limits.processorTime, std::chrono::seconds(120));
    }
}

// Their files may hide anything, of which the goals are 2 seconds and 300 MB.
TEST(PictureLimits, ByTheStatedSizeAreBelowTheGoalsWhereFewBytesSpeakForIt) {
    const HeadSize trusted{2048, 2048};
    for (const auto stated : {std::optional(trusted), std::optional<HeadSize>()}) {
        const CellLimits limits = limitsByStatedSize({}, stated, 20'000);
        EXPECT_EQ(limits.dataBytes, (64 + 4 * 56) * kMegabyte + 20'000 * 64);
        // 0.26 microseconds a pixel, nine a byte.
        EXPECT_EQ(limits.processorTime, std::chrono::milliseconds(700 + 1091 + 180));
        EXPECT_EQ(limits.threads, CellLimits::Threads::One);
    }
    // Small ones may have layers: as much time and memory as can be had below the goals.
    const CellLimits tiny = limitsByStatedSize({}, HeadSize{30, 20}, 1'000);
    EXPECT_EQ(tiny.dataBytes, 256 * kMegabyte + 1'000 * 64);
    EXPECT_EQ(tiny.processorTime, std::chrono::milliseconds(1750));
    // What is not believed does not count: 1,000 bytes speak for two million pixels.
    EXPECT_EQ(limitsByStatedSize({}, HeadSize{30000, 30000}, 1000).processorTime,
              limitsByStatedSize({}, trusted, 1000).processorTime);
}

TEST(PictureLimits, OfAnHonestJpegXLAreSeveralTimesWhatItTakes) {
    struct Row {
        HeadSize size;
        std::uint64_t fileBytes;
        int milliseconds;
        std::uint64_t megabytes;
    };
    // A smooth picture, with and without loss; noise; sixteen bits; ten layers of noise.
    for (const Row& row :
         {Row{{4000, 3000}, 27'278, 1500, 236}, Row{{6000, 4000}, 34'583, 2700, 376},
          Row{{4000, 3000}, 83'903, 370, 149}, Row{{4000, 3000}, 22'310'882, 2100, 187},
          Row{{4000, 3000}, 64'685'710, 3500, 301}, Row{{2000, 1500}, 10'316'395, 2400, 281}}) {
        const CellLimits limits = limitsByStatedSize({}, row.size, row.fileBytes);
        EXPECT_GT(limits.processorTime, std::chrono::milliseconds(6 * row.milliseconds))
            << row.fileBytes;
        EXPECT_GT(limits.dataBytes, 2 * row.megabytes * kMegabyte) << row.fileBytes;
    }
    // Nor may one take longer than any other picture.
    EXPECT_EQ(limitsByStatedSize({}, HeadSize{10000, 10000}, 400'000'000).processorTime,
              std::chrono::seconds(120));
    // Who names a number of pixels believes in it; so many of one colour in 202 bytes of JPEG 2000
    // took 3.7 s and 973 MB.
    const CellLimits asked =
        limitsByStatedSize({64'000'001, 64'000'001}, HeadSize{7900, 7900}, 202);
    EXPECT_GT(asked.dataBytes, 2 * 973 * kMegabyte);
    EXPECT_GT(asked.processorTime, std::chrono::seconds(8 * 4));
    EXPECT_EQ(asked.processorTime,
              limitsByStatedSize({64'000'001, 64'000'001}, HeadSize{30, 20}, 202).processorTime)
        << "its layers may be as large";
}

}  // namespace
}  // namespace skarnel
