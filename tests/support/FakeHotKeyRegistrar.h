#pragma once

#include "HotKeysLib/HotKeyRegistrar.h"

#include <algorithm>
#include <vector>

namespace quilo::test {

// A registrar with the test's hand on it, for the logic above the system's
// registrars (which are tested on a real X server): it keeps what was
// registered, refuses when told to, and presses and releases keys.
class FakeHotKeyRegistrar final : public HotKeyRegistrar {
public:
    struct Registration {
        EventHotKeyRef ref;
        std::int32_t keyCode;
        std::int32_t modifiers;
        EventHotKeyID id;
    };

    std::vector<Registration> registered; // live ones, in order
    std::vector<EventHotKeyRef> unregistered;
    bool refuses = false;

    EventHotKeyRef registerEventHotKey(std::int32_t keyCode, std::int32_t modifiers, EventHotKeyID id) override
    {
        if (refuses)
            return 0;
        registered.push_back({++lastRef_, keyCode, modifiers, id});
        return lastRef_;
    }

    void unregisterEventHotKey(EventHotKeyRef ref) override
    {
        unregistered.push_back(ref);
        std::erase_if(registered, [ref](const Registration& r) { return r.ref == ref; });
    }

    void setEventHandler(EventHandler handler) override { handler_ = std::move(handler); }

    // A press, or a release, of a live registration: nothing for others.
    void press(EventHotKeyRef ref, HotKeyTransition transition = HotKeyTransition::Pressed)
    {
        const auto live = std::find_if(registered.begin(), registered.end(),
                                       [ref](const Registration& r) { return r.ref == ref; });
        if (live != registered.end() && handler_)
            handler_({ref, live->id, transition});
    }

private:
    EventHandler handler_;
    EventHotKeyRef lastRef_ = 0;
};

} // namespace quilo::test
