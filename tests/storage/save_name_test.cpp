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

TEST(SaveName, HoldsForEveryShapeOfPath) {
    struct Row {
        const char* name;
        const char* path;
        const char* expected;
    };
    const Row rows[] = {
        {"full stops in folder and name", "/a.b/c.d", "c Reflection"},
        {"full stop at the end", "/a/photo.", "photo Reflection"},
        {"two full stops at the end", "/a/photo..", "photo. Reflection"},
        {"nothing before the full stop", "/a/.png", " Reflection"},
        {"spaces and other scripts", "/a/Été à la mer.tif", "Été à la mer Reflection"},
        {"root", "/", " Reflection"},
        {"empty", "", " Reflection"},
    };
    for (const Row& row : rows) EXPECT_EQ(saveNameForPath(row.path), row.expected) << row.name;
}

}  // namespace
}  // namespace skarnel
