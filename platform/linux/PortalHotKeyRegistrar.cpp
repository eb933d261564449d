#include "platform/linux/PortalHotKeyRegistrar.h"

#include "HotKeysLib/GlobalHotKeyRule.h"
#include "foundation/Log.h"
#include "platform/linux/PortalTriggers.h"

#include <QDBusVariant>
#include <QRegularExpression>

#include <algorithm>
#include <optional>

namespace quilo {
namespace {

const QString kPortalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPortalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kShortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString kSessionInterface = QStringLiteral("org.freedesktop.portal.Session");

QDBusMessage portalMethod(const QString& name)
{
    return QDBusMessage::createMethodCall(kPortalService, kPortalPath, kShortcutsInterface, name);
}

// The portal has given the handle both as a string and as an object path; it
// must be a well-formed path either way, or nothing could be sent to it.
QString sessionPathFrom(const QVariant& handle)
{
    const QString path = handle.metaType() == QMetaType::fromType<QDBusObjectPath>()
        ? handle.value<QDBusObjectPath>().path()
        : handle.toString();
    static const QRegularExpression objectPath(QStringLiteral("^(/[A-Za-z0-9_]+)+$"));
    return objectPath.match(path).hasMatch() ? path : QString();
}

} // namespace

PortalHotKeyRegistrar::PortalHotKeyRegistrar(const QDBusConnection& bus) : bus_(bus), requests_(bus)
{
    registerPortalTypes();
    bus_.connect(kPortalService, kPortalPath, kShortcutsInterface, QStringLiteral("Activated"), this,
                 SLOT(onActivated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    bus_.connect(kPortalService, kPortalPath, kShortcutsInterface, QStringLiteral("Deactivated"), this,
                 SLOT(onDeactivated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
}

PortalHotKeyRegistrar::~PortalHotKeyRegistrar()
{
    closeSession();
}

bool PortalHotKeyRegistrar::isAvailable(const QDBusConnection& bus, std::chrono::milliseconds timeout)
{
    if (!bus.isConnected())
        return false;
    QDBusMessage get = QDBusMessage::createMethodCall(kPortalService, kPortalPath,
                                                      QStringLiteral("org.freedesktop.DBus.Properties"),
                                                      QStringLiteral("Get"));
    get << kShortcutsInterface << QStringLiteral("version");
    const QDBusMessage reply = bus.call(get, QDBus::Block, int(timeout.count()));
    return reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()
        && reply.arguments().first().value<QDBusVariant>().variant().toUInt() > 0;
}

EventHotKeyRef PortalHotKeyRegistrar::registerEventHotKey(std::int32_t keyCode, std::int32_t modifiers,
                                                          EventHotKeyID id)
{
    if (refusedAsPlainKey(keyCode, modifiers))
        return 0;
    const std::optional<QString> trigger = portalTriggerForCombination(keyCode, modifiers);
    if (!trigger) {
        logFormat("Hot key refused: key code %d with modifiers 0x%X is no combination the desktop portal can name",
                  keyCode, unsigned(modifiers));
        return 0;
    }
    const bool taken = std::any_of(registrations_.begin(), registrations_.end(),
                                   [&](const auto& entry) { return entry.second.trigger == *trigger; });
    if (taken) {
        logFormat("Hot key %s refused: it is registered already", qUtf8Printable(*trigger));
        return 0;
    }
    // The id follows the combination, so the portal can recognise it in a later
    // session and keep what the user chose for it.
    const Registration added{id, QStringLiteral("hotkey-") + *trigger, *trigger};
    if (session_.isEmpty() && !openSession(*trigger))
        return 0;
    if (!bindWith(added))
        return 0;
    if (nextRef_ == 0)
        ++nextRef_;
    const EventHotKeyRef ref = nextRef_++;
    registrations_.emplace(ref, added);
    return ref;
}

// Unregistering leaves the portal's binding as it is and only stops handing on
// its activations: binding again may put the portal's dialog before the user
// for a change they did not ask for, and a later registration binds only the
// hot keys still registered. Once none is left the session is closed, which
// gives every combination back to the desktop.
void PortalHotKeyRegistrar::unregisterEventHotKey(EventHotKeyRef ref)
{
    if (registrations_.erase(ref) != 0 && registrations_.empty())
        closeSession();
}

bool PortalHotKeyRegistrar::openSession(const QString& trigger)
{
    const PortalReply reply = requests_.call(portalMethod(QStringLiteral("CreateSession")),
                                             {{QStringLiteral("session_handle_token"), PortalRequests::newToken()}},
                                             timeout_);
    const QString session = reply.succeeded() ? sessionPathFrom(reply.results.value("session_handle")) : QString();
    if (session.isEmpty()) {
        const QString why = reply.succeeded() ? QStringLiteral("gave no session handle") : reply.failure(timeout_);
        logFormat("Hot key %s refused: opening a global-shortcuts session with the desktop portal %s",
                  qUtf8Printable(trigger), qUtf8Printable(why));
        return false;
    }
    session_ = session;
    bus_.connect(kPortalService, session_, kSessionInterface, QStringLiteral("Closed"), this,
                 SLOT(onSessionClosed(QVariantMap, QDBusMessage)));
    return true;
}

void PortalHotKeyRegistrar::closeSession()
{
    if (session_.isEmpty())
        return;
    bus_.disconnect(kPortalService, session_, kSessionInterface, QStringLiteral("Closed"), this,
                    SLOT(onSessionClosed(QVariantMap, QDBusMessage)));
    bus_.send(QDBusMessage::createMethodCall(kPortalService, session_, kSessionInterface, QStringLiteral("Close")));
    session_.clear();
}

bool PortalHotKeyRegistrar::bindWith(const Registration& added)
{
    QDBusMessage method = portalMethod(QStringLiteral("BindShortcuts"));
    method << QVariant::fromValue(QDBusObjectPath(session_)) << QVariant::fromValue(shortcutsWith(added))
           << QString(); // no parent window: the hot keys belong to no window of ours
    const PortalReply reply = requests_.call(method, {}, timeout_);
    if (!reply.succeeded()) {
        logFormat("Hot key %s refused: binding it with the desktop portal %s", qUtf8Printable(added.trigger),
                  qUtf8Printable(reply.failure(timeout_)));
        return false;
    }
    const std::optional<PortalShortcutList> bound = portalShortcutsFromVariant(reply.results.value("shortcuts"));
    const bool assigned = bound && std::any_of(bound->begin(), bound->end(), [&](const PortalShortcut& shortcut) {
        return shortcut.id == added.shortcutId
            && !shortcut.options.value(QStringLiteral("trigger_description")).toString().isEmpty();
    });
    if (!assigned) {
        logFormat("Hot key %s refused: the desktop portal gave it no trigger", qUtf8Printable(added.trigger));
        return false;
    }
    return true;
}

// The portal is told the whole set each time, so a portal that takes a binding
// as the session's complete list keeps the hot keys registered before.
PortalShortcutList PortalHotKeyRegistrar::shortcutsWith(const Registration& added) const
{
    auto shortcut = [](const Registration& registration) {
        return PortalShortcut{registration.shortcutId,
                              {{QStringLiteral("description"), QStringLiteral("Quilo hot key ") + registration.trigger},
                               {QStringLiteral("preferred_trigger"), registration.trigger}}};
    };
    PortalShortcutList shortcuts;
    for (const auto& entry : registrations_)
        shortcuts.append(shortcut(entry.second));
    shortcuts.append(shortcut(added));
    return shortcuts;
}

void PortalHotKeyRegistrar::onActivated(const QDBusObjectPath& session, const QString& shortcutId, qulonglong,
                                        const QVariantMap&)
{
    deliver(session, shortcutId, HotKeyTransition::Pressed);
}

void PortalHotKeyRegistrar::onDeactivated(const QDBusObjectPath& session, const QString& shortcutId, qulonglong,
                                          const QVariantMap&)
{
    deliver(session, shortcutId, HotKeyTransition::Released);
}

void PortalHotKeyRegistrar::onSessionClosed(const QVariantMap&, const QDBusMessage& message)
{
    if (session_.isEmpty() || message.path() != session_)
        return;
    logFormat("Hot keys stopped: the desktop portal closed their session");
    bus_.disconnect(kPortalService, session_, kSessionInterface, QStringLiteral("Closed"), this,
                    SLOT(onSessionClosed(QVariantMap, QDBusMessage)));
    session_.clear();
}

// Activations of a session not ours (an earlier one of this process, say) and
// of shortcuts no longer registered are not ours to report.
void PortalHotKeyRegistrar::deliver(const QDBusObjectPath& session, const QString& shortcutId,
                                    HotKeyTransition transition)
{
    if (session_.isEmpty() || session.path() != session_ || !handler_)
        return;
    const auto match = std::find_if(registrations_.begin(), registrations_.end(),
                                    [&](const auto& entry) { return entry.second.shortcutId == shortcutId; });
    if (match == registrations_.end())
        return;
    const HotKeyEvent event{match->first, match->second.id, transition};
    handler_(event);
}

} // namespace quilo
