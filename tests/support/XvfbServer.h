#pragma once

// A real X server of the test's own: Xvfb on the first free display, gone
// with the object.
#include "tests/support/ServerProcess.h"

#include <cstdlib>
#include <optional>
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

namespace quilo::test {

// A window manager (jwm) on the display, and optionally a compositor
// (xcompmgr), as a person's desktop has; up once the constructor returns.
class Desktop {
public:
    explicit Desktop(bool composited)
        : windowManager_(once("xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q window", "jwm"))
    {
        if (composited) // it announces itself by no property: it is given a moment
            compositor_.emplace(once("true", "xcompmgr"));
    }

private:
    // Runs the program, and writes the line once `probe` succeeds.
    static std::vector<std::string> once(const std::string& probe, const std::string& program)
    {
        return {"sh", "-c", "(until " + probe + "; do sleep 0.05; done; sleep 0.3; echo up >&{fd}) & exec " + program};
    }

    ServerProcess windowManager_;
    std::optional<ServerProcess> compositor_;
};

} // namespace quilo::test
