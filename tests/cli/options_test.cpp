#include "cli/options.h"

#include <gmock/gmock.h>

#include "imaging/io/image_io.h"

namespace skarnel::cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

Options parsed(const std::vector<std::string>& arguments) {
    const ParsedCommandLine result = parseCommandLine(arguments);
    if (const auto* end = std::get_if<EarlyEnd>(&result)) ADD_FAILURE() << end->text;
    const auto* options = std::get_if<Options>(&result);
    return options != nullptr ? *options : Options{};
}

/// The complaint about wrong usage, or what shows that there was none.
std::string complaint(const std::vector<std::string>& arguments) {
    const ParsedCommandLine result = parseCommandLine(arguments);
    const auto* end = std::get_if<EarlyEnd>(&result);
    if (end == nullptr) return "(no complaint)";
    EXPECT_EQ(end->exitCode, 2);
    return end->text;
}

TEST(Options, WithoutAnyHaveTheirDefaults) {
    const Options options = parsed({"a.jpg"});
    EXPECT_THAT(options.pictures, ElementsAre("a.jpg"));
    EXPECT_FALSE(options.output);
    EXPECT_FALSE(options.userSettings || options.force || options.json);
    EXPECT_FALSE(options.settings.applyBackgroundColor);
    for (const auto& number : options.settings.numbers) EXPECT_FALSE(number);
    EXPECT_EQ(options.limits.maxPixels, 500'000'000);
    EXPECT_EQ(options.verbosity, Verbosity::Normal);
    EXPECT_EQ(options.frameMilliseconds, std::nullopt);
}

TEST(Options, EachSettingHasItsOption) {
    const Options options =
        parsed({"a.jpg", "--perspective-width", "1", "--perspective-height", "2", "--offset", "-3",
                "--start", "4", "--gradient", "5", "--alpha", "6", "--image-perspective", "7.5"});
    const auto number = [&](std::string_view key) {
        return options.settings.numbers[indexOfSetting(key)];
    };
    EXPECT_EQ(number("perspectiveWidth"), 1.0F);
    EXPECT_EQ(number("perspectiveHeight"), 2.0F);
    EXPECT_EQ(number("offset"), -3.0F);
    EXPECT_EQ(number("start"), 4.0F);
    EXPECT_EQ(number("gradient"), 5.0F);
    EXPECT_EQ(number("alpha"), 6.0F);
    EXPECT_EQ(number("imagePerspective"), 7.5F);
}

TEST(Options, TakeValuesAfterAnEqualsSignAndPicturesInAnyPlace) {
    const Options options = parsed({"--offset=-20", "a.jpg", "--force", "b.jpg", "-o", "out/"});
    EXPECT_EQ(options.settings.numbers[indexOfSetting("offset")], -20.0F);
    EXPECT_THAT(options.pictures, ElementsAre("a.jpg", "b.jpg"));
    EXPECT_EQ(options.output, "out/");
    EXPECT_TRUE(options.force);
}

TEST(Options, AfterTwoDashesEverythingIsAPicture) {
    EXPECT_THAT(parsed({"--", "--force", "-x.png"}).pictures, ElementsAre("--force", "-x.png"));
}

TEST(Options, AValueThatIsNoNumberIsNamedWithItsOption) {
    EXPECT_THAT(complaint({"a.jpg", "--offset", "wide"}),
                HasSubstr("--offset: 'wide' is not a number"));
    EXPECT_THAT(complaint({"a.jpg", "--alpha", "nan"}), HasSubstr("'nan' is not a number"));
    EXPECT_THAT(complaint({"a.jpg", "--alpha", "1,5"}), HasSubstr("'1,5' is not a number"));
    EXPECT_THAT(complaint({"a.jpg", "--alpha", ""}), HasSubstr("'' is not a number"));
    EXPECT_THAT(complaint({"a.jpg", "--alpha"}), HasSubstr("--alpha"));
}

TEST(Options, TheBackgroundIsAColor) {
    const Options options =
        parsed({"a.jpg", "--apply-background-color", "--background-color", "#0000ff"});
    EXPECT_TRUE(options.settings.applyBackgroundColor);
    EXPECT_EQ(options.settings.backgroundColor, (DeviceColor{0, 0, 1, 1}));
    EXPECT_THAT(complaint({"a.jpg", "--background-color", "blue"}), HasSubstr("#RRGGBB"));
}

TEST(Options, FormatsAreKnownByTheirExtensionsInAnyCase) {
    EXPECT_EQ(parsed({"a.jpg", "--format", "png"}).format.type, kUTTypePNG);
    EXPECT_EQ(parsed({"a.jpg", "--format", "TIFF"}).format.type, kUTTypeTIFF);
    EXPECT_EQ(parsed({"a.jpg", "--format", "tif"}).format.type, kUTTypeTIFF);
    EXPECT_EQ(parsed({"a.jpg", "--format", "jpeg"}).format.type, kUTTypeJPEG);
    EXPECT_THAT(complaint({"a.jpg", "--format", "docx"}), HasSubstr("png"));
    EXPECT_THAT(complaint({"a.jpg", "--format", "psd"}), HasSubstr("can be written"));
}

TEST(Options, QualityAndCompressionAreChecked) {
    EXPECT_EQ(parsed({"a.jpg", "--quality", "90"}).format.quality, 90);
    EXPECT_EQ(parsed({"a.jpg", "--compression", "LZW"}).format.tiffCompression, 5);
    EXPECT_EQ(parsed({"a.jpg", "--compression", "none"}).format.tiffCompression, 1);
    EXPECT_EQ(parsed({"a.jpg", "--compression", "deflate"}).format.tiffCompression, 8);
    EXPECT_EQ(parsed({"a.jpg", "--compression", "9"}).format.level, 9);
    EXPECT_THAT(complaint({"a.jpg", "--quality", "101"}), HasSubstr("0 to 100"));
    EXPECT_THAT(complaint({"a.jpg", "--compression", "zip"}), HasSubstr("lzw"));
    EXPECT_THAT(complaint({"a.jpg", "--compression", "13"}), HasSubstr("0 to 12"));
}

TEST(Options, SizesAreChecked) {
    EXPECT_EQ(parsed({"a.jpg", "--preview", "800x600"}).preview, (PixelSize{800, 600}));
    EXPECT_THAT(complaint({"a.jpg", "--preview", "0x600"}), HasSubstr("--preview"));
    EXPECT_EQ(parsed({"a.jpg", "--max-pixels", "2M"}).limits.maxPixels, 2'000'000);
    EXPECT_EQ(parsed({"a.jpg", "--max-pixels", "2G"}).limits.maxUnprovenPixels, 2'000'000'000)
        << "who names a number believes in it";
    EXPECT_THAT(complaint({"a.jpg", "--max-pixels", "0"}), HasSubstr("--max-pixels"));
    EXPECT_EQ(parsed({"a.jpg", "--memory", "2G"}).memoryBytes, 2'000'000'000U);
    EXPECT_EQ(parsed({"a.jpg"}).memoryBytes, std::nullopt);
    EXPECT_THAT(complaint({"a.jpg", "--memory", "-1"}), HasSubstr("--memory"));
    EXPECT_EQ(parsed({"a.jpg", "-j", "3"}).jobs, 3);
    EXPECT_THAT(complaint({"a.jpg", "-j", "0"}), HasSubstr("from 1"));
}

TEST(Options, ASweepNamesASettingItsEndsAndItsFrames) {
    const Options options = parsed({"a.jpg", "--sweep", "image-perspective=0:-100.5:60"});
    EXPECT_EQ(options.sweep, (Sweep{indexOfSetting("imagePerspective"), 0, -100.5F, 60}));
    for (const char* wrong :
         {"image-perspective", "image-perspective=0", "image-perspective=0:1", "colour=0:1:5",
          "image-perspective=0:1:1", "image-perspective=a:1:5", "image-perspective=0:nan:5",
          "image-perspective=0:1:5:7", "image-perspective=0:1:99999", "=0:1:5", "0:1:5"}) {
        EXPECT_THAT(complaint({"a.jpg", "--sweep", wrong}), HasSubstr("SETTING=FROM:TO:COUNT"))
            << wrong;
    }
}

TEST(Options, AnEmptyOutputIsNoOutput) {
    EXPECT_THAT(complaint({"a.jpg", "-o", ""}), HasSubstr("'' is not a file or a folder"));
    EXPECT_THAT(complaint({"a.jpg", "--output="}), HasSubstr("--output"));
}

TEST(Options, WhatDoesNotGoTogetherIsSaid) {
    EXPECT_THAT(complaint({}), HasSubstr("no picture was given"));
    EXPECT_THAT(complaint({"-", "-"}), HasSubstr("only once"));
    EXPECT_THAT(complaint({"a", "b", "-o", "-"}), HasSubstr("only one picture"));
    EXPECT_THAT(complaint({"a", "--animate", "x.png"}), HasSubstr("needs --sweep"));
    EXPECT_THAT(complaint({"a", "--watch", "f"}), HasSubstr("takes no pictures"));
    EXPECT_THAT(complaint({"--watch", "f", "-o", "-"}), HasSubstr("standard output"));
    EXPECT_THAT(complaint({"--watch", "f", "--sweep", "alpha=0:1:2"}), HasSubstr("together"));
    EXPECT_THAT(complaint({"a", "b", "--sweep", "alpha=0:1:2"}), HasSubstr("only one picture"));
    EXPECT_THAT(complaint({"a", "-o", "-", "--sweep", "alpha=0:1:2"}), HasSubstr("standard"));
    EXPECT_THAT(
        complaint({"a", "--animate", "h.webp", "--format", "png", "--sweep", "alpha=0:1:2"}),
        HasSubstr("--animate h.webp and --format contradict each other"));
    for (const char* file : {"h.PNG", "h", "a.webp/h"}) {
        EXPECT_EQ(
            parsed({"a", "--animate", file, "--format", "png", "--sweep", "alpha=0:1:2"}).animate,
            file);
    }
    EXPECT_THAT(complaint({"a", "--frame-time", "9"}), HasSubstr("--frame-time needs --animate"));
    EXPECT_THAT(complaint({"a", "--animate", "-", "--sweep", "alpha=0:1:2"}),
                HasSubstr("cannot write to standard output"));
    EXPECT_THAT(complaint({"a", "-o", "b", "--animate", "c.png", "--sweep", "alpha=0:1:2"}),
                HasSubstr("together"));
}

TEST(Options, AnUnknownOptionIsNamed) {
    EXPECT_THAT(complaint({"a.jpg", "--brightness", "3"}), HasSubstr("--brightness"));
    EXPECT_THAT(complaint({"a.jpg", "-z"}), HasSubstr("-z"));
}

TEST(Options, HelpNamesEveryOptionAndEndsWell) {
    const ParsedCommandLine result = parseCommandLine({"--help"});
    const auto& end = std::get<EarlyEnd>(result);
    EXPECT_EQ(end.exitCode, 0);
    for (const char* option : {"--perspective-width",
                               "--perspective-height",
                               "--offset",
                               "--start",
                               "--gradient",
                               "--alpha",
                               "--image-perspective",
                               "--apply-background-color",
                               "--background-color",
                               "--format",
                               "--quality",
                               "--compression",
                               "--preview",
                               "--user-settings",
                               "--max-pixels",
                               "--force",
                               "--quiet",
                               "--verbose",
                               "--json",
                               "--help",
                               "--version",
                               "--watch",
                               "--sweep",
                               "--animate",
                               "--jobs",
                               "--output"}) {
        EXPECT_THAT(end.text, HasSubstr(option));
    }
}

TEST(Options, VersionNeedsNoPicture) {
    EXPECT_FALSE(std::get<VersionRequest>(parseCommandLine({"--version"})).json);
    EXPECT_TRUE(std::get<VersionRequest>(parseCommandLine({"--version", "--json"})).json);
}

TEST(Options, QuietWinsOverVerbose) {
    EXPECT_EQ(parsed({"a", "-v"}).verbosity, Verbosity::Verbose);
    EXPECT_EQ(parsed({"a", "-q"}).verbosity, Verbosity::Quiet);
    EXPECT_EQ(parsed({"a", "-q", "-v"}).verbosity, Verbosity::Quiet);
}

}  // namespace
}  // namespace skarnel::cli
