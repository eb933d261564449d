// The hot-key tests that need an X server: Xvfb of their own, and one
// QGuiApplication on it, whose connection the registrar grabs keys through.
#include "tests/support/XvfbServer.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    quilo::test::XvfbServer server;
    server.becomeTheDisplay();
    QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
