#pragma once
#include "foundation/FourCharCode.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace quilo {

// Names a hot key to whoever registered it: a signature of the owner's and a
// number of its choosing, handed back with every press and release.
struct EventHotKeyID {
    OSType signature = 0;
    std::uint32_t id = 0;
};

// A registered hot key as the registrar names it. 0 is never one: it is the
// answer of a refused registration.
using EventHotKeyRef = std::uint32_t;

enum class HotKeyTransition { Pressed, Released };

struct HotKeyEvent {
    EventHotKeyRef ref = 0;
    EventHotKeyID id;
    HotKeyTransition transition = HotKeyTransition::Pressed;
};

// System-wide hot keys, the service both the application object and the
// hot-key centre stand on. Combinations are given as Quilo stores them: a Mac
// virtual key code and Carbon modifier bits. Main thread only.
class HotKeyRegistrar {
public:
    using EventHandler = std::function<void(const HotKeyEvent&)>;

    virtual ~HotKeyRegistrar() = default;

    // A non-zero reference, or 0 when the system refuses: another program
    // holds the combination, the key code names no key, the session offers
    // no hot keys, or this process has the combination registered already.
    virtual EventHotKeyRef registerEventHotKey(std::int32_t keyCode, std::int32_t modifiers, EventHotKeyID id) = 0;
    // Accepts any value: 0 and references already dropped do nothing.
    virtual void unregisterEventHotKey(EventHotKeyRef ref) = 0;
    // Presses and releases of this registrar's hot keys, on the main thread.
    virtual void setEventHandler(EventHandler handler) = 0;
};

// The session's own registrar: X11 grabs, the desktop portal's global
// shortcuts on Wayland, or one that refuses every registration and logs once
// why. Needs a running QGuiApplication.
std::unique_ptr<HotKeyRegistrar> makeSystemHotKeyRegistrar();

} // namespace quilo
