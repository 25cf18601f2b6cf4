// Runs the tests inside an application object of the window toolkit.
#include <gtest/gtest.h>

#include <QApplication>

#include "qt/test_environment.h"

int main(int argc, char** argv) {
    skarnel::setTestEnvironment();
    ::testing::InitGoogleTest(&argc, argv);
    // The list is asked for at build time, where there may be no platform to start on.
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
