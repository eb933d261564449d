// The tests that need a real desktop: an X server of their own (Xvfb), and
// one QApplication on it for the whole run, as Quilo has.
#include "tests/support/XvfbServer.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    quilo::test::XvfbServer server;
    server.becomeTheDisplay();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
