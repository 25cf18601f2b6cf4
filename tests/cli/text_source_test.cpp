// The values of the text options, and what stands in for the window.
#include "cli/text_source.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "cli/options.h"
#include "cli/text_toolkit.h"

namespace skarnel::cli {
namespace {

using ::testing::HasSubstr;

std::string complaint(const std::vector<std::string>& arguments) {
    const ParsedCommandLine result = parseCommandLine(arguments);
    const auto* end = std::get_if<EarlyEnd>(&result);
    return end == nullptr ? "(no complaint)" : end->text;
}

TEST(TextWithEscapes, NewLineTabAndBackslashAreEscapesAndNothingElse) {
    EXPECT_EQ(textWithEscapes("Summer\\nSale"), u"Summer\nSale");
    EXPECT_EQ(textWithEscapes("a\\tb\\\\nc"), u"a\tb\\nc");
    EXPECT_EQ(textWithEscapes("\\x\\"), u"\\x\\");
    EXPECT_EQ(textWithEscapes("real\nbreak"), u"real\nbreak");
    EXPECT_EQ(textWithEscapes(""), u"");
    EXPECT_EQ(textWithEscapes("\xE4\xB8\xAD\xFF"), u"\u4E2D\uFFFD");
}

TEST(StyleOfOptions, WhatIsLeftOpenIsWhiteTimesOf48Points) {
    TextStyle expected;
    expected.color = {255, 255, 255, 255};
    EXPECT_EQ(styleOfOptions({}), expected);
    expected.family = "Courier";
    expected.size = 12.5;
    expected.color = {255, 136, 0, 255};
    TextOptions options;
    options.font = "Courier";
    options.size = 12.5;
    options.color = DeviceColor{1, 136 / 255.0, 0, 1};
    EXPECT_EQ(styleOfOptions(options), expected);
}

TEST(OptionsOfText, AreReadIntoTheRequestAndStandForThePicture) {
    const ParsedCommandLine parsed = parseCommandLine(
        {"--text", "a", "--font", "Helvetica", "--size", "20.5", "--color", "#FF0000"});
    const auto* options = std::get_if<Options>(&parsed);
    ASSERT_NE(options, nullptr);
    EXPECT_THAT(options->pictures, ::testing::ElementsAre("Text"));
    EXPECT_EQ(options->text.text, "a");
    EXPECT_EQ(options->text.font, "Helvetica");
    EXPECT_EQ(options->text.size, 20.5);
    EXPECT_EQ(options->text.color, (DeviceColor{1, 0, 0, 1}));
    EXPECT_FALSE(options->text.html);
}

TEST(OptionsOfText, ComplainWhereTheyDoNotGoTogether) {
    EXPECT_THAT(complaint({"--text", "a", "b.jpg"}), HasSubstr("text and pictures do not go"));
    EXPECT_THAT(complaint({"--text", "a", "--html", "b"}), HasSubstr("--text and --html do not"));
    EXPECT_THAT(complaint({"--size", "5", "b.jpg"}), HasSubstr("need --text or --html"));
    EXPECT_THAT(complaint({"--font", "x", "b.jpg"}), HasSubstr("need --text or --html"));
    EXPECT_THAT(complaint({"--text", "a", "--watch", "."}), HasSubstr("--watch takes no text"));
    EXPECT_THAT(complaint({"--text", "a", "--size", "0"}), HasSubstr("a number from 1 to 10000"));
    EXPECT_THAT(complaint({"--text", "a", "--size", "nan"}), HasSubstr("a number from 1"));
    EXPECT_THAT(complaint({"--text", "a", "--color", "red"}), HasSubstr("#RRGGBB"));
    EXPECT_THAT(complaint({"--text", "a", "--font", ""}), HasSubstr("a typeface"));
    EXPECT_EQ(complaint({"--text", ""}), "(no complaint)");
}

TEST(PlainNotificationCenter, TellsWhoeverIsRegisteredForTheNameAndSender) {
    PlainNotificationCenter center;
    const NSObject observer;
    const NSObject sender;
    int any = 0;
    int own = 0;
    center.addObserver(
        observer, [&](const NSNotification&) { ++any; }, "name", nullptr);
    center.addObserver(
        observer, [&](const NSNotification&) { ++own; }, "name", &sender);
    center.postNotification({"name", nullptr});
    center.postNotification({"name", &sender});
    center.postNotification({"other", &sender});
    EXPECT_EQ(any, 2);
    EXPECT_EQ(own, 1);
    center.removeObserver(observer, "name", nullptr);
    center.postNotification({"name", &sender});
    EXPECT_EQ(any, 2);
    EXPECT_EQ(own, 1);
}

}  // namespace
}  // namespace skarnel::cli
