// What the log writes where nobody takes its lines: one line for each, whatever stands in it.
#include "util/log/system_log.h"

#include <gtest/gtest.h>

#include <string>

namespace skarnel {
namespace {

std::string written(std::string_view line) {
    ::testing::internal::CaptureStderr();
    systemLog(line);
    return ::testing::internal::GetCapturedStderr();
}

TEST(SystemLog, ALineGoesToStandardErrorAsItIs) {
    EXPECT_EQ(written("Couldn't open Stra\xC3\x9F"
                      "e.png: \\ %s"),
              "skarnel: Couldn't open Stra\xC3\x9F"
              "e.png: \\ %s\n");
    EXPECT_EQ(written(""), "skarnel: \n");
    EXPECT_EQ(written(std::string(5000, 'x')), "skarnel: " + std::string(5000, 'x') + "\n");
}

TEST(SystemLog, ANameInALineNeitherCommandsATerminalNorBeginsALine) {
    EXPECT_EQ(written("a\x1b]0;b\x07\nskarnel: c\x7F"
                      "d\r\t"),
              "skarnel: a\\x1b]0;b\\x07\\x0askarnel: c\\x7fd\\x0d\\x09\n");
    // U+009B begins a command as well; the same byte is a part of other characters.
    EXPECT_EQ(written("\xC2\x9B\xC3\x9B"), "skarnel: \\xc2\\x9b\xC3\x9B\n");
    // What turns the direction of writing around, and what belongs to no character.
    EXPECT_EQ(written("\xE2\x80\xAEgnp.a"), "skarnel: \\xe2\\x80\\xaegnp.a\n");
    EXPECT_EQ(written("a\xFF\xC3"), "skarnel: a\\xff\\xc3\n");
    EXPECT_EQ(written({"\0", 1}), "skarnel: \\x00\n");
}

}  // namespace
}  // namespace skarnel
