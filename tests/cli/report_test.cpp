#include "cli/report.h"

#include <gtest/gtest.h>

namespace skarnel::cli {
namespace {

TEST(Report, IsOneJsonObjectInAFixedOrder) {
    JobReport report;
    report.input = "a \"b\".jpg";
    report.output = "out.png";
    report.inputSize = PixelSize{3, 4};
    report.outputSize = PixelSize{5, 6};
    report.milliseconds = 1.5;
    EXPECT_EQ(jsonOfReport(report),
              R"({"input":"a \"b\".jpg","output":"out.png","inputSize":[3,4],"outputSize":[5,6],)"
              R"("milliseconds":1.5,"error":null})");
}

TEST(Report, WhatThereIsNotIsNull) {
    JobReport report;
    report.input = "a.jpg";
    report.error = "No such file or directory";
    EXPECT_EQ(jsonOfReport(report),
              R"({"input":"a.jpg","output":null,"inputSize":null,"outputSize":null,)"
              R"("milliseconds":0.0,"error":"No such file or directory"})");
}

TEST(Report, NamesThatAreNoUtf8AreReplacedNotThrown) {
    JobReport report;
    report.input = "caf\xe9.jpg";
    EXPECT_NE(jsonOfReport(report).find("caf\xEF\xBF\xBD.jpg"), std::string::npos);
}

TEST(Report, NamesThatAreNoUtf8AreThereInBase64Too) {
    JobReport report;
    report.input = "caf\xe9";      // 63 61 66 e9
    report.output = "\xff\xfe.p";  // ff fe 2e 70
    const std::string both = jsonOfReport(report);
    EXPECT_TRUE(
        both.ends_with(R"(,"error":null,"inputBase64":"Y2Fm6Q==","outputBase64":"//4ucA=="})"))
        << both;
    report.input = "caf\xc3\xa9";
    const std::string one = jsonOfReport(report);
    EXPECT_EQ(one.find("inputBase64"), std::string::npos);
    EXPECT_NE(one.find("outputBase64"), std::string::npos);
}

TEST(Report, TheVersionNamesWhatCanBeReadAndWritten) {
    const std::string json = jsonOfVersion();
    EXPECT_NE(json.find("\"version\":"), std::string::npos);
    EXPECT_NE(json.find("\"reads\":["), std::string::npos);
    EXPECT_NE(json.find("\"TIFF\""), std::string::npos);
    EXPECT_NE(json.find("\"seccomp\":"), std::string::npos);
}

TEST(Report, StylesFollowTheStreamsAndTheOptions) {
    Options options;
    options.pictures = {"-"};
    EXPECT_TRUE(Console::styleFor(options).pictureOnStandardOutput);
    options.output = "file.png";
    EXPECT_FALSE(Console::styleFor(options).pictureOnStandardOutput);
    options.output = "-";
    EXPECT_TRUE(Console::styleFor(options).pictureOnStandardOutput);
}

}  // namespace
}  // namespace skarnel::cli
