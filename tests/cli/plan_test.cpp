#include "cli/plan.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "imaging/io/image_io.h"
#include "storage/temporary_folder.h"

namespace skarnel::cli {
namespace {

using testing::HasSubstr;

std::vector<Job> planned(const Options& options) {
    const auto plan = planJobs(options);
    if (const auto* problem = std::get_if<UsageProblem>(&plan)) {
        ADD_FAILURE() << problem->message;
        return std::vector<Job>(options.pictures.size());
    }
    return std::get<std::vector<Job>>(plan);
}

std::string problemOf(const Options& options) {
    const auto plan = planJobs(options);
    const auto* problem = std::get_if<UsageProblem>(&plan);
    return problem != nullptr ? problem->message : "(none)";
}

Options pictures(const std::vector<std::string>& names) {
    Options options;
    options.pictures = names;
    return options;
}

TEST(Plan, WithoutAnOutputTheResultLiesBesideThePictureUnderItsSaveName) {
    const std::vector<Job> jobs = planned(pictures({"/photos/Beach.2010.jpg", "scan", "./a.png"}));
    EXPECT_EQ(jobs[0].output, "/photos/Beach.2010 Reflection.tiff");
    EXPECT_EQ(jobs[1].output, "scan Reflection.tiff");
    EXPECT_EQ(jobs[2].output, "./a Reflection.tiff");
    EXPECT_EQ(jobs[0].type, kUTTypeTIFF);
}

TEST(Plan, TheFormatGivesTheExtension) {
    Options options = pictures({"a.jpg"});
    options.format.type = std::string(kUTTypePNG);
    EXPECT_EQ(planned(options)[0].output, "a Reflection.png");
}

TEST(Plan, TheOutputsExtensionGivesTheFormatUnlessOneIsNamed) {
    Options options = pictures({"a.jpg"});
    options.output = "out.PNG";
    EXPECT_EQ(planned(options)[0].type, kUTTypePNG);
    options.output = "out";
    EXPECT_EQ(planned(options)[0].type, kUTTypeTIFF);
    options.output = ".hidden";
    EXPECT_EQ(planned(options)[0].type, kUTTypeTIFF);
    options.output = "out.xyz";
    EXPECT_THAT(problemOf(options), HasSubstr("'xyz'"));
    options.format.type = std::string(kUTTypeBMP);
    EXPECT_EQ(planned(options)[0].type, kUTTypeBMP);
    EXPECT_EQ(planned(options)[0].output, "out.xyz");
}

TEST(Plan, AFolderTakesResultsUnderTheirSaveNames) {
    const test::TemporaryFolder folder;
    Options options = pictures({"x/a.jpg", "y/b.png"});
    options.output = folder.path();
    EXPECT_EQ(planned(options)[0].output, folder / "a Reflection.tiff");
    EXPECT_EQ(planned(options)[1].output, folder / "b Reflection.tiff");
    options.output = "missing/";
    EXPECT_EQ(planned(options)[0].output, "missing/a Reflection.tiff");
}

TEST(Plan, SeveralPicturesNeedAFolder) {
    Options options = pictures({"a.jpg", "b.jpg"});
    options.output = "out.png";
    EXPECT_THAT(problemOf(options), HasSubstr("need a folder"));
}

TEST(Plan, StandardInputGoesToStandardOutputUnlessAnOutputIsNamed) {
    EXPECT_EQ(planned(pictures({"-"}))[0].output, "-");
    Options options = pictures({"-"});
    options.output = "out.png";
    EXPECT_EQ(planned(options)[0].output, "out.png");
    const test::TemporaryFolder folder;
    options.output = folder.path();
    EXPECT_EQ(planned(options)[0].output, folder / "Reflection.tiff");
}

TEST(Plan, TwoPicturesThatProposeOneNameDoNotReplaceEachOther) {
    const std::vector<Job> jobs = planned(pictures({"a.jpg", "b.jpg", "a.png"}));
    EXPECT_TRUE(jobs[0].refusal.empty());
    EXPECT_TRUE(jobs[1].refusal.empty());
    EXPECT_THAT(jobs[2].refusal, HasSubstr("result of a.jpg has the same name"));
}

TEST(Plan, OneNameIsTheSameInEverySpelling) {
    const std::vector<Job> jobs = planned(pictures({"f/a.jpg", "f//./a.jpg", "./f/../f/a.jpg"}));
    EXPECT_TRUE(jobs[0].refusal.empty());
    EXPECT_THAT(jobs[1].refusal, HasSubstr("result of f/a.jpg has the same name"));
    EXPECT_THAT(jobs[2].refusal, HasSubstr("result of f/a.jpg has the same name"));
}

TEST(Plan, FramesAreNumberedFromTheirName) {
    EXPECT_EQ(frameName("out.png", 7, 60), "out-0007.png");
    EXPECT_EQ(frameName("dir.d/out", 60, 60), "dir.d/out-0060");
    EXPECT_EQ(frameName("out.png", 7, 10'000), "out-00007.png");
}

TEST(Plan, WhatAFormatHasNoUseForIsRefused) {
    const auto problem = [](const std::vector<std::string>& arguments, std::string_view type) {
        const ParsedCommandLine parsed = parseCommandLine(arguments);
        const auto found = problemOfType(std::get<Options>(parsed), type);
        return found ? found->message : std::string("(none)");
    };
    for (const std::string_view type : {kUTTypeJPEG, kUTTypeJPEG2000, kUTTypeWebP})
        EXPECT_EQ(problem({"a.jpg", "--quality", "80"}, type), "(none)");
    EXPECT_EQ(problem({"a.jpg", "--quality", "80"}, kUTTypePNG),
              "--quality is for JPEG, JPEG 2000 and WebP, not for PNG");
    EXPECT_EQ(problem({"a.jpg", "--compression", "lzw"}, kUTTypeTIFF), "(none)");
    EXPECT_EQ(problem({"a.jpg", "--compression", "none"}, kUTTypeBMP),
              "--compression none, lzw and deflate are for TIFF, not for BMP");
    EXPECT_EQ(problem({"a.jpg", "--compression", "9"}, kUTTypePNG), "(none)");
    EXPECT_EQ(problem({"a.jpg", "--compression", "9"}, kUTTypeTIFF),
              "--compression by a number is for PNG, not for TIFF");
    EXPECT_EQ(problem({"a.jpg", "--embed-recipe"}, kUTTypePNG), "(none)");
    EXPECT_THAT(problem({"a.jpg", "--embed-recipe"}, kUTTypeWebP), HasSubstr("recipe"));
}

}  // namespace
}  // namespace skarnel::cli
