#include "qt/test_environment.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLocale>
#include <QStyle>

#include "util/resources/resource_path.h"

namespace skarnel {
namespace {

TEST(TestEnvironment, HoldsHoweverATestIsStarted) {
    EXPECT_EQ(QApplication::style()->name(), QStringLiteral("fusion"));
    EXPECT_EQ(QLocale::system().language(), QLocale::C);
    EXPECT_EQ(QGuiApplication::platformName(), QStringLiteral("offscreen"));
    EXPECT_EQ(resourceFolders().front(), SKARNEL_TEST_RESOURCES);
}

}  // namespace
}  // namespace skarnel
