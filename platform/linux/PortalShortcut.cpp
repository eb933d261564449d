#include "platform/linux/PortalShortcut.h"

#include <QDBusMetaType>
#include <QDBusObjectPath>

namespace quilo {

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.options;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.options;
    argument.endStructure();
    return argument;
}

void registerPortalTypes()
{
    static const bool registered = [] {
        qDBusRegisterMetaType<PortalShortcut>();
        qDBusRegisterMetaType<PortalShortcutList>();
        qRegisterMetaType<QDBusObjectPath>();
        return true;
    }();
    (void)registered;
}

std::optional<PortalShortcutList> portalShortcutsFromVariant(const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(sa{sv})"))
        return std::nullopt;
    PortalShortcutList shortcuts;
    argument >> shortcuts;
    return shortcuts;
}

} // namespace quilo
