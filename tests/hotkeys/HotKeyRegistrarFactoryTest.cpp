// A session without global hot keys: the factory's registrar refuses them
// and says why, once.
#include "HotKeysLib/HotKeyRegistrar.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

#include <cstdlib>

namespace quilo {
namespace {

TEST(HotKeyRegistrarFactory, ASessionWithoutHotKeysRefusesThemAndSaysWhyOnce)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    int argc = 1;
    char name[] = "quilo_hotkeys_tests";
    char* argv[] = {name, nullptr};
    QGuiApplication application(argc, argv);
    test::LogCapture log;

    const std::unique_ptr<HotKeyRegistrar> first = makeSystemHotKeyRegistrar();
    const std::unique_ptr<HotKeyRegistrar> second = makeSystemHotKeyRegistrar();
    EXPECT_EQ(first->registerEventHotKey(17, 0x0300, {}), 0u);
    EXPECT_EQ(second->registerEventHotKey(1, 0x0100, {}), 0u);
    first->unregisterEventHotKey(0);
    first->unregisterEventHotKey(1);
    EXPECT_EQ(log.lines(), std::vector<std::string>{
                               "Global hot keys are not available: this session is neither X11 nor offers the desktop "
                               "portal's global shortcuts (platform \"offscreen\")."});
}

} // namespace
} // namespace quilo
