#include "HotKeysLib/HotKeyRegistrar.h"
#include "platform/linux/PortalHotKeyRegistrar.h"
#include "platform/linux/RefusingHotKeyRegistrar.h"
#include "platform/linux/X11HotKeyRegistrar.h"

#include <QDBusConnection>
#include <QGuiApplication>

namespace quilo {

std::unique_ptr<HotKeyRegistrar> makeSystemHotKeyRegistrar()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == "xcb")
        return std::make_unique<X11HotKeyRegistrar>();
    if (platform == "wayland" && PortalHotKeyRegistrar::isAvailable(QDBusConnection::sessionBus()))
        return std::make_unique<PortalHotKeyRegistrar>();
    return std::make_unique<RefusingHotKeyRegistrar>(platform.toStdString());
}

} // namespace quilo
