// Last components and joining.
#include "textimaging/path_text.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

TEST(LastPathComponent, TrailingSeparatorsDoNotCount) {
    EXPECT_EQ(lastPathComponent("/tmp/fileAbC"), "fileAbC");
    EXPECT_EQ(lastPathComponent("/tmp/x//"), "x");
    EXPECT_EQ(lastPathComponent("name"), "name");
    EXPECT_EQ(lastPathComponent("//"), "/");
    EXPECT_EQ(lastPathComponent(""), "");
}

TEST(ByAppendingPathComponent, ExactlyOneSeparatorStandsBetween) {
    EXPECT_EQ(byAppendingPathComponent("/tmp", "x"), "/tmp/x");
    EXPECT_EQ(byAppendingPathComponent("/tmp/", "x"), "/tmp/x");
    EXPECT_EQ(byAppendingPathComponent("/tmp//", "x"), "/tmp/x");
    EXPECT_EQ(byAppendingPathComponent("/", "x"), "/x");
    EXPECT_EQ(byAppendingPathComponent("", "x"), "x");
}

}  // namespace
}  // namespace skarnel
