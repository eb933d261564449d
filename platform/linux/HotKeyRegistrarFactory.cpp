#include "HotKeysLib/HotKeyRegistrar.h"
#include "platform/linux/RefusingHotKeyRegistrar.h"
#include "platform/linux/X11HotKeyRegistrar.h"

#include <QGuiApplication>

namespace quilo {

std::unique_ptr<HotKeyRegistrar> makeSystemHotKeyRegistrar()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == "xcb")
        return std::make_unique<X11HotKeyRegistrar>();
    return std::make_unique<RefusingHotKeyRegistrar>(platform.toStdString());
}

} // namespace quilo
