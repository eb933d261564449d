#pragma once
#include "HotKeysLib/HotKeyRegistrar.h"

#include <QString>

#include <cstdint>

namespace quilo {

// What the application object offers the hot-key settings: a hot key
// registered under the description its presses are announced with.
class HotKeyRegistration {
public:
    virtual ~HotKeyRegistration() = default;
    // The reference, or 0 when registering failed.
    virtual EventHotKeyRef registerHotKey(std::int16_t keyCode, std::int32_t modifier, const QString& description) = 0;
    // Any reference, 0 and one already dropped included.
    virtual void unregisterHotKey(EventHotKeyRef ref) = 0;
};

} // namespace quilo
