#include "platform/linux/X11HotKeyRegistrar.h"

#include "HotKeysLib/GlobalHotKeyRule.h"
#include "platform/linux/X11KeyGrabs.h"

namespace quilo {

X11HotKeyRegistrar::X11HotKeyRegistrar() : mGrabs(X11KeyGrabs::shared()) {}

X11HotKeyRegistrar::~X11HotKeyRegistrar()
{
    if (mGrabs)
        mGrabs->ungrabAll(*this);
}

EventHotKeyRef X11HotKeyRegistrar::registerEventHotKey(std::int32_t keyCode, std::int32_t modifiers, EventHotKeyID id)
{
    if (refusedAsPlainKey(keyCode, modifiers))
        return 0;
    return mGrabs ? mGrabs->grab(*this, keyCode, modifiers, id) : 0;
}

void X11HotKeyRegistrar::unregisterEventHotKey(EventHotKeyRef ref)
{
    if (mGrabs)
        mGrabs->ungrab(*this, ref);
}

void X11HotKeyRegistrar::setEventHandler(EventHandler handler)
{
    mHandler = std::move(handler);
}

// Called through a copy: the handler may replace itself or end this registrar.
void X11HotKeyRegistrar::deliver(const HotKeyEvent& event) const
{
    if (const EventHandler handler = mHandler)
        handler(event);
}

} // namespace quilo
