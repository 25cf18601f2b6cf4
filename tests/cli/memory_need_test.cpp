#include "cli/memory_need.h"

#include <gtest/gtest.h>

#include <fstream>

#include "cli/pictures.h"
#include "storage/temporary_folder.h"

namespace skarnel::cli {
namespace {

using test::TemporaryFolder;

constexpr std::uint64_t kSmallest = std::uint64_t{32} << 20;

JobSettings defaults() {
    JobSettings settings;
    settings.render = defaultSettings();
    return settings;
}

TEST(MemoryNeed, IsThePictureAndTwiceTheResultAndMore) {
    // At the defaults a result has twice the picture's pixels: 4 + 2 * 4 * 2.2 bytes for each.
    EXPECT_EQ(memoryOfRender({1000, 500}, defaults(), kUTTypePNG), kSmallest + 500'000 * 216 / 10);
    EXPECT_EQ(memoryOfFrame({1000, 500}, defaults().render, {kUTTypePNG}),
              kSmallest + 500'000 * 176 / 10);
}

TEST(MemoryNeed, OfFormatsWhoseLibraryHoldsThePictureIsMore) {
    EXPECT_EQ(memoryOfRender({1000, 500}, defaults(), kUTTypeWebP), kSmallest + 500'000 * 76);
    JobSettings lossy = defaults();
    lossy.format.quality = 80;
    EXPECT_EQ(memoryOfRender({1000, 500}, lossy, kUTTypeWebP), kSmallest + 500'000 * 52);
    EXPECT_EQ(memoryOfRender({4000, 3000}, lossy, kUTTypeWebP), kSmallest + 12'000'000 * 52);
    EXPECT_EQ(memoryOfRender({1000, 500}, lossy, kUTTypeJPEG), kSmallest + 500'000 * 216 / 10);
}

// From results of four megapixels on, lossless WebP is written row by row.
TEST(MemoryNeed, OfLargeLosslessWebPIsThatOfOtherFormats) {
    EXPECT_EQ(memoryOfRender({2000, 1000}, defaults(), kUTTypeWebP),
              kSmallest + 2'000'000 * 216 / 10);
    EXPECT_EQ(memoryOfRender({1999, 1000}, defaults(), kUTTypeWebP), kSmallest + 1'999'000 * 76);
    JobSettings whole = defaults();
    whole.format.quality = 100;  // loses nothing
    EXPECT_EQ(memoryOfRender({2000, 1000}, whole, kUTTypeWebP),
              memoryOfRender({2000, 1000}, defaults(), kUTTypeWebP));
}

TEST(MemoryNeed, OfAPreviewIsThatOfDecoding) {
    JobSettings settings = defaults();
    settings.preview = PixelSize{100, 100};
    EXPECT_EQ(memoryOfRender({10'000, 5000}, settings, kUTTypePNG), kSmallest + 50'000'000 * 12);
}

TEST(MemoryNeed, OfFormatsWhoseDecoderHoldsThePictureIsMore) {
    JobSettings settings = defaults();
    settings.preview = PixelSize{100, 100};
    const auto bytesAPixel = [&](std::string_view source) {
        return (memoryOfRender({10'000, 5000}, settings, kUTTypePNG, source) - kSmallest) /
               50'000'000;
    };
    EXPECT_EQ(bytesAPixel(kUTTypeJPEG), 12U);
    EXPECT_EQ(bytesAPixel(kUTTypeJPEGXL), 48U);
    EXPECT_EQ(bytesAPixel(kUTTypeJPEG2000), 96U);
    EXPECT_EQ(bytesAPixel(kUTTypeHEIF), 36U);
    EXPECT_EQ(bytesAPixel(kUTTypeAVIF), 36U);
}

TEST(MemoryNeed, OfAFileGoesByItsFormat) {
    const TemporaryFolder folder;
    JobSettings settings = defaults();
    settings.preview = PixelSize{10, 10};
    Job job;
    job.type = kUTTypePNG;
    job.input = folder / "picture";
    const Bytes file = *encodeImage(CGImage(*PixelBuffer::zeroed(700, 300)), kUTTypeJPEG2000);
    std::ofstream(job.input, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()),
               static_cast<std::streamsize>(file.size()));
    EXPECT_EQ(memoryOfJob(job, settings), kSmallest + 210'000 * 96);
}

TEST(MemoryNeed, OfSizesBeyondAllMeasureStaysANumber) {
    JobSettings settings = defaults();
    settings.render.numbers[indexOfSetting("perspectiveWidth")] = 1e9F;
    const std::uint64_t need = memoryOfRender({500'000'000, 1}, settings, kUTTypeWebP);
    EXPECT_GE(need, kSmallest);
    EXPECT_LT(need, std::uint64_t{1} << 60);
}

TEST(MemoryNeed, OfAFileIsToldByItsHead) {
    const TemporaryFolder folder;
    test::putPicture(folder / "a.png", 70, 30);
    Job job{folder / "a.png", folder / "b.png", std::string(kUTTypePNG), {}};
    EXPECT_EQ(memoryOfJob(job, defaults()), memoryOfRender({70, 30}, defaults(), kUTTypePNG));
    JobSettings small = defaults();
    small.limits.maxPixels = 2000;  // below the picture's 2100
    EXPECT_EQ(memoryOfJob(job, small), kSmallest);
    job.refusal = "no";
    EXPECT_EQ(memoryOfJob(job, defaults()), kSmallest);
}

TEST(MemoryNeed, OfWhatTellsNoSizeIsAGigabyte) {
    const TemporaryFolder folder;
    test::putFile(folder / "a.png", "text");
    for (const std::string& input : {folder / "a.png", folder / "missing", std::string("-")}) {
        const Job job{input, "out.png", std::string(kUTTypePNG), {}};
        EXPECT_EQ(memoryOfJob(job, defaults()), std::uint64_t{1} << 30) << input;
    }
}

TEST(MemoryNeed, OfAPictureThatIsThereNeedsNoFile) {
    Job job{"Text", "out.png", std::string(kUTTypePNG), {}};
    job.picture = DecodedImage{test::gradientPicture(8, 4), {}, std::string(kUTTypePNG)};
    EXPECT_EQ(memoryOfJob(job, defaults()), memoryOfRender({8, 4}, defaults(), kUTTypePNG));
}

}  // namespace
}  // namespace skarnel::cli
