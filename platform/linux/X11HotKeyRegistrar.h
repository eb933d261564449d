#pragma once

#include "HotKeysLib/HotKeyRegistrar.h"

#include <memory>

namespace quilo {

class X11KeyGrabs;

// Hot keys as key grabs on the X root window, over Qt's own connection to
// the X server. Registrars share one table of grabs, so a combination is
// refused when any of them holds it. Needs a QGuiApplication on "xcb".
class X11HotKeyRegistrar final : public HotKeyRegistrar {
public:
    X11HotKeyRegistrar();
    // Gives back the grabs this registrar holds.
    ~X11HotKeyRegistrar() override;
    X11HotKeyRegistrar(const X11HotKeyRegistrar&) = delete;
    X11HotKeyRegistrar& operator=(const X11HotKeyRegistrar&) = delete;

    EventHotKeyRef registerEventHotKey(std::int32_t keyCode, std::int32_t modifiers, EventHotKeyID id) override;
    void unregisterEventHotKey(EventHotKeyRef ref) override;
    void setEventHandler(EventHandler handler) override;

    // The grab table's way in: a press or release of one of this
    // registrar's keys. Auto-repeat is already filtered out.
    void deliver(const HotKeyEvent& event) const;

private:
    std::shared_ptr<X11KeyGrabs> mGrabs;
    EventHandler mHandler;
};

} // namespace quilo
