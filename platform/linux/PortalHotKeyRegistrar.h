#pragma once

#include "HotKeysLib/HotKeyRegistrar.h"
#include "platform/linux/PortalRequests.h"
#include "platform/linux/PortalShortcut.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>

#include <chrono>
#include <map>

namespace quilo {

// Hot keys through the desktop portal's GlobalShortcuts, for Wayland sessions
// where no program may grab keys itself: one portal session, the registered
// combinations bound in it as shortcuts, and the session's Activated and
// Deactivated signals handed on as presses and releases.
class PortalHotKeyRegistrar : public QObject, public HotKeyRegistrar {
    Q_OBJECT

public:
    explicit PortalHotKeyRegistrar(const QDBusConnection& bus = QDBusConnection::sessionBus());
    ~PortalHotKeyRegistrar() override;

    // Whether the bus has a portal offering GlobalShortcuts: its "version"
    // property can be read within `timeout`.
    static bool isAvailable(const QDBusConnection& bus,
                            std::chrono::milliseconds timeout = std::chrono::milliseconds(5000));

    // How long a registration waits for each of the portal's answers. The
    // portal may show the user a dialog first, so not too short.
    void setResponseTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }

    EventHotKeyRef registerEventHotKey(std::int32_t keyCode, std::int32_t modifiers, EventHotKeyID id) override;
    void unregisterEventHotKey(EventHotKeyRef ref) override;
    void setEventHandler(EventHandler handler) override { handler_ = std::move(handler); }

private slots:
    void onActivated(const QDBusObjectPath& session, const QString& shortcutId, qulonglong timestamp,
                     const QVariantMap& options);
    void onDeactivated(const QDBusObjectPath& session, const QString& shortcutId, qulonglong timestamp,
                       const QVariantMap& options);
    void onSessionClosed(const QVariantMap& details, const QDBusMessage& message);

private:
    struct Registration {
        EventHotKeyID id;
        QString shortcutId;
        QString trigger;
    };

    bool openSession(const QString& trigger);
    void closeSession();
    bool bindWith(const Registration& added);
    PortalShortcutList shortcutsWith(const Registration& added) const;
    void deliver(const QDBusObjectPath& session, const QString& shortcutId, HotKeyTransition transition);

    QDBusConnection bus_;
    PortalRequests requests_;
    std::chrono::milliseconds timeout_{5000};
    QString session_; // the session's object path; empty while there is none
    std::map<EventHotKeyRef, Registration> registrations_;
    EventHotKeyRef nextRef_ = 1;
    EventHandler handler_;
};

} // namespace quilo
