#include "storage/save_name.h"

#include <gtest/gtest.h>

namespace skarnel {
namespace {

TEST(SaveName, IsThePicturesNameWithoutItsLastExtensionAndReflection) {
    EXPECT_EQ(saveNameForPath("/pictures/Beach.jpg"), "Beach Reflection");
    EXPECT_EQ(saveNameForPath("Beach.jpg"), "Beach Reflection");
    EXPECT_EQ(saveNameForPath("/pictures/Beach.2010.jpg"), "Beach.2010 Reflection");
    EXPECT_EQ(saveNameForPath("archive.tar.png"), "archive.tar Reflection");
}

TEST(SaveName, WithoutAFullStopTheNameStaysWhole) {
    EXPECT_EQ(saveNameForPath("/tmp/scan"), "scan Reflection");
    EXPECT_EQ(saveNameForPath("/folder.d/scan"), "scan Reflection");
}

TEST(SaveName, SeparatorsAtTheEndDoNotCount) {
    EXPECT_EQ(saveNameForPath("/tmp/scan.png//"), "scan Reflection");
}

}  // namespace
}  // namespace skarnel
