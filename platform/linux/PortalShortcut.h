#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace quilo {

// One entry of the GlobalShortcuts portal's shortcut lists, a(sa{sv}): the
// application's id for it and its options ("description", "preferred_trigger"
// going in, "trigger_description" coming back).
struct PortalShortcut {
    QString id;
    QVariantMap options;
};

using PortalShortcutList = QList<PortalShortcut>;

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut);

// Makes the portal's types known to Qt before any signal is connected: the
// shortcut list for marshalling, and object paths, because a slot's parameter
// types are looked up by name and an unknown one leaves its signal undelivered.
// Safe to call repeatedly.
void registerPortalTypes();

// The list held in a result map's value, or none when the value is missing or
// is not an a(sa{sv}), so a portal's odd answer cannot be misread.
std::optional<PortalShortcutList> portalShortcutsFromVariant(const QVariant& value);

} // namespace quilo

Q_DECLARE_METATYPE(quilo::PortalShortcut)
