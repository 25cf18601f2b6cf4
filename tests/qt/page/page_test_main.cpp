// One application object for all tests of the page renderer, on the platform without a display.
#include <gtest/gtest.h>

#include <QApplication>
#include <cstdlib>

#include "page_fixture.h"

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const int result = RUN_ALL_TESTS();
    // As in a program, the module goes before the application object.
    skarnel::test_page::Module::shared().page.reset();
    return result;
}
