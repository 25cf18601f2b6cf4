#include "cli/job.h"

#include <gmock/gmock.h>

#include "cli/pictures.h"
#include "storage/temporary_folder.h"

namespace skarnel::cli {
namespace {

using test::TemporaryFolder;
using testing::HasSubstr;

class JobTest : public testing::Test {
  protected:
    JobTest() {
        settings_.render = defaultSettings();
        test::putPicture(folder_ / "in.png", 30, 20);
    }
    Job job(const std::string& output, std::string_view type = kUTTypeTIFF) const {
        return {folder_ / "in.png", folder_ / output, std::string(type), {}};
    }
    void set(std::string_view key, float value) {
        settings_.render.numbers[indexOfSetting(key)] = value;
    }

    const TemporaryFolder folder_;
    JobSettings settings_;
};

TEST_F(JobTest, WritesTheReflectionAndReportsItsSizes) {
    const JobReport report = runJob(job("out.tiff"), settings_);
    EXPECT_FALSE(report.error) << *report.error;
    EXPECT_EQ(report.output, folder_ / "out.tiff");
    EXPECT_EQ(report.inputSize, (PixelSize{30, 20}));
    EXPECT_EQ(report.outputSize, (PixelSize{30, 40}));
    EXPECT_GE(report.milliseconds, 0);
    const auto written = decodeImageFile(folder_ / "out.tiff");
    ASSERT_TRUE(written);
    // The upper half is the picture itself, and the row below the seam its last one at 200/255.
    const PixelView result = written->image.pixels();
    const CGImage picture = test::gradientPicture(30, 20);
    for (int x = 0; x < 30; ++x) {
        EXPECT_EQ(result.row(0)[4 * x], picture.pixels().row(0)[4 * x]);
        EXPECT_EQ(result.row(20)[4 * x + 3], 200);
    }
}

TEST_F(JobTest, RefusesAnExistingOutputBeforeItReads) {
    test::putFile(folder_ / "out.tiff", "mine");
    Job missing = job("out.tiff");
    missing.input = folder_ / "missing.png";
    const JobReport report = runJob(missing, settings_);
    ASSERT_TRUE(report.error);
    EXPECT_THAT(*report.error, HasSubstr("already exists"));
    EXPECT_EQ(test::fileText(folder_ / "out.tiff"), "mine");
    settings_.overwrite = Overwrite::Allow;
    EXPECT_FALSE(runJob(job("out.tiff"), settings_).error);
}

TEST_F(JobTest, AReflectionWithoutHeightIsAFailureWithItsReason) {
    set("perspectiveHeight", 0);
    const JobReport report = runJob(job("out.tiff"), settings_);
    ASSERT_TRUE(report.error);
    EXPECT_THAT(*report.error, HasSubstr("without height"));
    EXPECT_FALSE(report.output);
}

TEST_F(JobTest, SettingsThatLeaveNoPictureAreAFailureWithTheirReason) {
    set("perspectiveWidth", -50);
    EXPECT_THAT(runJob(job("out.tiff"), settings_).error.value_or(""),
                HasSubstr("no picture of a possible size"));
}

TEST_F(JobTest, APictureOverTheLimitIsRefused) {
    settings_.limits.maxPixels = 599;  // 30 x 20 = 600
    EXPECT_TRUE(runJob(job("out.tiff"), settings_).error);
    settings_.limits.maxPixels = 600;
    EXPECT_FALSE(runJob(job("out.tiff"), settings_).error);
}

TEST_F(JobTest, AResultOverFourTimesTheLimitIsRefusedBeforeItIsMade) {
    settings_.limits.maxPixels = 600;
    set("perspectiveHeight", 300);  // a canvas of 30 x 80 = 2400 pixels
    EXPECT_FALSE(runJob(job("fits.tiff"), settings_).error);
    set("perspectiveHeight", 305);  // one row more
    EXPECT_THAT(runJob(job("over.tiff"), settings_).error.value_or(""),
                HasSubstr("--max-pixels allows"));
    set("perspectiveHeight", 100);
    set("perspectiveWidth", 1e6F);
    EXPECT_THAT(runJob(job("wide.tiff"), settings_).error.value_or(""),
                HasSubstr("--max-pixels allows"));
}

TEST_F(JobTest, ATurnThatCannotBeMadeIsWrittenUnturnedAndCountsAsAFailure) {
    // A phase that is no number has no corners.
    set("imagePerspective", std::numeric_limits<float>::quiet_NaN());
    const JobReport report = runJob(job("out.tiff"), settings_);
    ASSERT_TRUE(report.error);
    EXPECT_THAT(*report.error, HasSubstr("turn could not be made"));
    EXPECT_EQ(report.output, folder_ / "out.tiff");
    EXPECT_EQ(report.outputSize, (PixelSize{30, 40}));
    EXPECT_TRUE(decodeImageFile(folder_ / "out.tiff"));
}

TEST_F(JobTest, APreviewShrinksThePictureAndThenTheResult) {
    test::putPicture(folder_ / "in.png", 400, 300);
    settings_.preview = PixelSize{80, 60};
    const JobReport report = runJob(job("out.png", kUTTypePNG), settings_);
    EXPECT_FALSE(report.error);
    // A working copy of 80 x 60 gives 80 x 120, which is shown as 40 x 60.
    EXPECT_EQ(report.outputSize, (PixelSize{40, 60}));
}

TEST_F(JobTest, EveryFormatThatCanBeWrittenIsWritten) {
    for (const ImageType& type : imageTypes()) {
        if (!type.canWrite) continue;
        SCOPED_TRACE(type.name);
        const std::string name = "out." + std::string(type.preferredExtension);
        const JobReport report = runJob(job(name, type.identifier), settings_);
        EXPECT_FALSE(report.error) << *report.error;
        const auto written = decodeImageFile(folder_ / name);
        ASSERT_TRUE(written);
        EXPECT_EQ(written->type, type.identifier);
        EXPECT_EQ(written->image.height(), 40);
    }
}

TEST_F(JobTest, AJpegHasTheBackgroundUnderItsTransparentParts) {
    settings_.render.backgroundColor = {1, 0, 0, 1};
    settings_.format.quality = 100;
    ASSERT_FALSE(runJob(job("out.jpg", kUTTypeJPEG), settings_).error);
    const auto written = decodeImageFile(folder_ / "out.jpg");
    ASSERT_TRUE(written);
    const std::uint8_t* lastRow = written->image.pixels().row(39);  // wholly faded
    EXPECT_GT(lastRow[0], 240);
    EXPECT_LT(lastRow[1], 16);
}

TEST_F(JobTest, KeepsTheResolutionAndStandsUpright) {
    ImageProperties source;
    source.emplace(kPropertyDpiWidth, 300.0);
    source.emplace(kPropertyDpiHeight, 300.0);
    source.emplace(kPropertyOrientation, std::int64_t{6});
    source.emplace(kPropertyPixelWidth, std::int64_t{30});
    settings_.format.tiffCompression = 8;
    const ImageProperties properties = outputProperties(source, settings_);
    EXPECT_EQ(std::get<double>(properties.at(std::string(kPropertyDpiWidth))), 300.0);
    EXPECT_EQ(std::get<std::int64_t>(properties.at(std::string(kPropertyOrientation))), 1);
    EXPECT_EQ(std::get<std::int64_t>(properties.at(std::string(kPropertyTiffCompression))), 8);
    EXPECT_EQ(std::get<std::string>(properties.at(std::string(kPropertyMatteColor))), "#000000");
    EXPECT_EQ(properties.count(kPropertyPixelWidth), 0U);
    EXPECT_EQ(properties.count(kPropertyLossyQuality), 0U);
}

TEST_F(JobTest, TheSameInputGivesTheSameBytes) {
    set("imagePerspective", 30);
    ASSERT_FALSE(runJob(job("a.tiff"), settings_).error);
    ASSERT_FALSE(runJob(job("b.tiff"), settings_).error);
    EXPECT_EQ(test::fileText(folder_ / "a.tiff"), test::fileText(folder_ / "b.tiff"));
}

TEST_F(JobTest, ARefusedJobTouchesNothing) {
    Job refused = job("out.tiff");
    refused.refusal = "not this one";
    EXPECT_EQ(runJob(refused, settings_).error, "not this one");
    EXPECT_EQ(folder_.names().size(), 1U);
}

}  // namespace
}  // namespace skarnel::cli
