// The preferences window's tests on a real X server under a window manager
// and a compositor: one QuiloApplication on it for the run, with the
// session's own hot-key service (key grabs on the X server), an accessibility
// bus a screen reader would read it through, and the user's settings in a
// folder of the run's own.
#include "hotkeys/QuiloApplication.h"
#include "tests/support/AccessibilityBus.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/XvfbServer.h"

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    quilo::test::XvfbServer server;
    server.becomeTheDisplay();
    const quilo::test::Desktop desktop(true);
    const quilo::test::AccessibilityBus accessibilityBus;
    quilo::test::TemporaryDirectory config;
    ::setenv("XDG_CONFIG_HOME", config.path().c_str(), 1);
    quilo::QuiloApplication application(argc, argv, [] { return std::unique_ptr<quilo::ApplicationDelegate>(); });
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
