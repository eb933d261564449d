#pragma once

#include "HotKeysLib/HotKeyRegistrar.h"

#include <string>

namespace quilo {

// The registrar of a session that offers no global hot keys: every
// registration is refused, and the first refusal of the process says why.
class RefusingHotKeyRegistrar final : public HotKeyRegistrar {
public:
    // `platformName` is Qt's name for the session, told in the log line.
    explicit RefusingHotKeyRegistrar(std::string platformName);

    EventHotKeyRef registerEventHotKey(std::int32_t keyCode, std::int32_t modifiers, EventHotKeyID id) override;
    void unregisterEventHotKey(EventHotKeyRef ref) override;
    void setEventHandler(EventHandler handler) override;

private:
    std::string mPlatformName;
};

} // namespace quilo
