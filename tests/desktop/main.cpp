// The tests that need a real desktop: an X server of their own (Xvfb), an
// accessibility bus, and one QApplication on it for the whole run, as Quilo has.
#include "tests/support/AccessibilityBus.h"
#include "tests/support/XvfbServer.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    quilo::test::XvfbServer server;
    server.becomeTheDisplay();
    const quilo::test::AccessibilityBus accessibilityBus;
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
