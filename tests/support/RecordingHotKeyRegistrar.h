#pragma once

#include "HotKeysLib/HotKeyRegistrar.h"

#include <set>
#include <tuple>
#include <vector>

namespace quilo::test {

// A hot-key service that records what it is asked and presses keys when told:
// the system's own service is tested on a real X server.
class RecordingHotKeyRegistrar final : public HotKeyRegistrar {
public:
    struct Registration {
        std::int32_t keyCode;
        std::int32_t modifiers;
        EventHotKeyID id;
        EventHotKeyRef ref;
    };

    EventHotKeyRef registerEventHotKey(std::int32_t keyCode, std::int32_t modifiers, EventHotKeyID id) override
    {
        const bool refused = refusedCombinations.count({keyCode, modifiers}) > 0;
        const EventHotKeyRef ref = refused ? 0 : nextRef++;
        registrations.push_back({keyCode, modifiers, id, ref});
        return ref;
    }
    void unregisterEventHotKey(EventHotKeyRef ref) override { unregistered.push_back(ref); }
    void setEventHandler(EventHandler handler) override { handler_ = std::move(handler); }

    // The system reports a press or release of the hot key with this reference.
    void deliver(EventHotKeyRef ref, HotKeyTransition transition, EventHotKeyID id = {})
    {
        if (handler_)
            handler_(HotKeyEvent{ref, id, transition});
    }

    std::set<std::tuple<std::int32_t, std::int32_t>> refusedCombinations;
    std::vector<Registration> registrations;
    std::vector<EventHotKeyRef> unregistered;
    EventHotKeyRef nextRef = 0x5000;

private:
    EventHandler handler_;
};

} // namespace quilo::test
