#pragma once

#include "HotKeysLib/HotKeyRegistrar.h"
#include "platform/linux/X11ModifierMasks.h"

#include <QAbstractNativeEventFilter>
#include <QTimer>

#include <xcb/xcb.h>

#include <memory>
#include <vector>

namespace quilo {

class X11HotKeyRegistrar;

// The process's key grabs on the X root window, shared by every X11
// registrar: X lets one client grab a combination twice, so only a table of
// the whole process can refuse the second. It sees the key events of the
// grabs through Qt's native event filter and hands each to the registrar
// that holds the grab.
class X11KeyGrabs final : public QAbstractNativeEventFilter, public std::enable_shared_from_this<X11KeyGrabs> {
public:
    // The table while any registrar holds it, else a new one; null when Qt
    // is not talking to an X server.
    static std::shared_ptr<X11KeyGrabs> shared();
    ~X11KeyGrabs() override;
    X11KeyGrabs(const X11KeyGrabs&) = delete;
    X11KeyGrabs& operator=(const X11KeyGrabs&) = delete;

    // 0 for a key code without a key here, modifiers the keyboard lacks, a
    // combination this process holds, or one another client has grabbed.
    EventHotKeyRef grab(X11HotKeyRegistrar& owner, std::int32_t macKeyCode, std::int32_t carbonModifiers,
                        EventHotKeyID id);
    // Only the owner's own references count; anything else does nothing.
    void ungrab(const X11HotKeyRegistrar& owner, EventHotKeyRef ref);
    void ungrabAll(const X11HotKeyRegistrar& owner);

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    struct Grab {
        EventHotKeyRef ref = 0;
        X11HotKeyRegistrar* owner = nullptr;
        EventHotKeyID id;
        std::int32_t carbonModifiers = 0;
        xcb_keycode_t keycode = 0;
        std::uint16_t mask = 0;
        // False after a modifier remapping the grab could not follow.
        bool grabbed = true;
        bool held = false;
        bool releasePending = false;
        xcb_timestamp_t releaseTime = 0;
    };

    X11KeyGrabs(xcb_connection_t* connection, xcb_window_t root);

    std::vector<std::uint16_t> lockVariants() const;
    bool grabVariants(xcb_keycode_t keycode, std::uint16_t mask);
    void ungrabVariants(xcb_keycode_t keycode, std::uint16_t mask);
    Grab* find(xcb_keycode_t keycode, std::uint16_t mask);

    bool keyPressed(const xcb_key_press_event_t& event);
    bool keyReleased(const xcb_key_release_event_t& event);
    void deliver(const Grab& grab, HotKeyTransition transition) const;
    void deliverPendingReleases();
    static bool isMappingChange(const xcb_generic_event_t& event);
    void followModifierMapping();

    xcb_connection_t* mConnection;
    xcb_window_t mRoot;
    X11ModifierMasks mMasks;
    std::vector<Grab> mGrabs;
    QTimer mReleaseTimer;
};

} // namespace quilo
