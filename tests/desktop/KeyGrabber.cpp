// Another program holding a global hot key: grabs T with Super and Shift on
// the root window (Xvfb's keyboard has Super on Mod4), says so, and reports
// every press it receives, until it is ended.
#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>

int main()
{
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection))
        return 1;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    constexpr xcb_keycode_t kT = 28;
    constexpr uint16_t kSuperShift = XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT;
    xcb_generic_error_t* error = xcb_request_check(
        connection,
        xcb_grab_key_checked(connection, 1, root, kSuperShift, kT, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    if (error) {
        std::printf("grab refused\n");
        std::free(error);
        return 2;
    }
    std::printf("grabbed\n");
    std::fflush(stdout);
    while (xcb_generic_event_t* event = xcb_wait_for_event(connection)) {
        if ((event->response_type & 0x7f) == XCB_KEY_PRESS) {
            std::printf("pressed\n");
            std::fflush(stdout);
        }
        std::free(event);
    }
    return 0;
}
