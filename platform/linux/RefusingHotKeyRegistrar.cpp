#include "platform/linux/RefusingHotKeyRegistrar.h"

#include "foundation/Log.h"

namespace quilo {

RefusingHotKeyRegistrar::RefusingHotKeyRegistrar(std::string platformName) : mPlatformName(std::move(platformName)) {}

// Once per process, not per registrar: each of the three action keys and
// every re-registration would otherwise repeat the same line.
EventHotKeyRef RefusingHotKeyRegistrar::registerEventHotKey(std::int32_t, std::int32_t, EventHotKeyID)
{
    static bool told = false;
    if (!told) {
        told = true;
        logFormat("Global hot keys are not available: this session is neither X11 nor offers the desktop portal's "
                  "global shortcuts (platform \"%s\").",
                  mPlatformName.c_str());
    }
    return 0;
}

void RefusingHotKeyRegistrar::unregisterEventHotKey(EventHotKeyRef) {}

// Nothing is ever registered, so there is nothing to deliver.
void RefusingHotKeyRegistrar::setEventHandler(EventHandler) {}

} // namespace quilo
