// Runs the tests inside an application object of the window toolkit.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
