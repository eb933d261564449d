#pragma once

// The accessibility bus a screen reader listens on, over a session bus of the
// test's own; Qt's widgets join it once the application is made. Gone with
// the object.
#include "tests/support/DBusDaemon.h"

#include <cstdlib>

namespace quilo::test {

class AccessibilityBus {
public:
    AccessibilityBus()
    {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", sessionBus_.address().c_str(), 1);
        launcher_ = std::make_unique<ServerProcess>(std::vector<std::string>{
            "sh", "-c",
            "(until dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress "
            ">/dev/null 2>&1; do sleep 0.05; done; echo up >&{fd}) & exec /usr/libexec/at-spi-bus-launcher"});
        ::setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
    }

private:
    DBusDaemon sessionBus_;
    std::unique_ptr<ServerProcess> launcher_;
};

} // namespace quilo::test
