#pragma once

// Other programs on the test's X server: a connection of its own that
// grabs keys on the root window and watches for them, and a window that
// has the keyboard focus.
#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>

namespace quilo::test {

class OtherXClient {
public:
    OtherXClient() : connection_(xcb_connect(nullptr, nullptr))
    {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    ~OtherXClient() { xcb_disconnect(connection_); }
    OtherXClient(const OtherXClient&) = delete;
    OtherXClient& operator=(const OtherXClient&) = delete;

    xcb_connection_t* connection() const { return connection_; }

    // True when the server let this client have the grab.
    bool grabKey(xcb_keycode_t keycode, std::uint16_t modifiers)
    {
        xcb_generic_error_t* error = xcb_request_check(
            connection_, xcb_grab_key_checked(connection_, 0, root_, modifiers, keycode, XCB_GRAB_MODE_ASYNC,
                                              XCB_GRAB_MODE_ASYNC));
        std::free(error);
        return error == nullptr;
    }

    void ungrabKey(xcb_keycode_t keycode, std::uint16_t modifiers)
    {
        xcb_ungrab_key(connection_, keycode, root_, modifiers);
        xcb_flush(connection_);
    }

    // Waits up to `seconds` for a press of that key to reach this client.
    bool receivesPress(xcb_keycode_t keycode, double seconds = 5)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        while (std::chrono::steady_clock::now() < deadline) {
            while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) {
                const bool press = (event->response_type & 0x7f) == XCB_KEY_PRESS
                    && reinterpret_cast<xcb_key_press_event_t*>(event)->detail == keycode;
                std::free(event);
                if (press)
                    return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
};

// xev, another program, with its window focused: a grab must win over it.
class FocusedWindow {
public:
    explicit FocusedWindow(const std::string& log)
        : log_(log)
        , xev_({"xev", "-name", "quilo-focus", "-event", "keyboard"}, log)
    {
        const char* focus = "xdotool search --sync --name '^quilo-focus$' windowfocus --sync";
        EXPECT_EQ(std::system(focus), 0) << focus;
    }
    ~FocusedWindow() { std::remove(log_.c_str()); }

    // xev prints an event as a paragraph: its name, then its fields.
    bool sawKeyPress(int keycode) const
    {
        std::ifstream file(log_);
        std::string line;
        bool inPress = false;
        while (std::getline(file, line)) {
            if (line.empty())
                inPress = false;
            else if (line.starts_with("KeyPress event"))
                inPress = true;
            else if (inPress && line.find("keycode " + std::to_string(keycode) + " ") != std::string::npos)
                return true;
        }
        return false;
    }

private:
    std::string log_;
    ChildProgram xev_;
};

} // namespace quilo::test
