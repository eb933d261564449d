#include "platform/linux/DisplayServer.h"

#include <cstdlib>
#include <cstring>

#include <xcb/xcb.h>

namespace quilo {

bool displayServerAnswers()
{
    const char* platform = std::getenv("QT_QPA_PLATFORM");
    if (platform && std::strncmp(platform, "xcb", 3) != 0)
        return true;
    if (!platform && std::getenv("WAYLAND_DISPLAY"))
        return true;
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

} // namespace quilo
