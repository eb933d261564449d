#pragma once

// A real X server of the test's own: Xvfb on the first free display, gone
// with the object.
#include "tests/support/ServerProcess.h"

#include <cstdlib>
#include <string>

namespace quilo::test {

class XvfbServer {
public:
    // -displayfd: Xvfb picks a free display and writes its number once ready.
    XvfbServer()
        : server_({"Xvfb", "-displayfd", "{fd}", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset"})
        , display_(":" + server_.line())
    {
    }

    const std::string& display() const { return display_; }

    // Makes this server the process's display, for the Qt application made next.
    void becomeTheDisplay() const
    {
        ::setenv("DISPLAY", display_.c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "xcb", 1);
        ::unsetenv("WAYLAND_DISPLAY");
    }

private:
    ServerProcess server_;
    std::string display_;
};

} // namespace quilo::test
