#include "tests/hotkeys/FakeGlobalShortcutsPortal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMutexLocker>

#include <atomic>
#include <stdexcept>

Q_DECLARE_METATYPE(quilo::test::FakeGlobalShortcutsPortal::Shortcut)

namespace quilo::test {

using Shortcut = FakeGlobalShortcutsPortal::Shortcut;

QDBusArgument& operator<<(QDBusArgument& argument, const Shortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.options;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Shortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.options;
    argument.endStructure();
    return argument;
}

namespace {

const QString kPortalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPortalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kShortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString kSessionInterface = QStringLiteral("org.freedesktop.portal.Session");

// Where the portal puts the object a caller asked for with the token in
// `option`: .../request/1_42/TOKEN for ":1.42".
QString objectPathFor(const QString& kind, const QDBusMessage& message, const QVariantMap& options,
                      const QString& option)
{
    const QString sender = message.service().mid(1).replace('.', '_');
    return kPortalPath + '/' + kind + '/' + sender + '/' + options.value(option).toString();
}

} // namespace

class FakeGlobalShortcutsPortal::Service : public QDBusVirtualObject {
public:
    explicit Service(FakeGlobalShortcutsPortal& portal) : portal_(portal) {}

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        const QString method = message.interface() + '.' + message.member();
        if (method == "org.freedesktop.DBus.Properties.Get")
            getProperty(message, connection);
        else if (method == kShortcutsInterface + ".CreateSession")
            createSession(message, connection);
        else if (method == kShortcutsInterface + ".BindShortcuts")
            bindShortcuts(message, connection);
        else if (method == kSessionInterface + ".Close")
            closeSession(message, connection);
        else
            connection.send(message.createErrorReply(QDBusError::UnknownMethod, method));
        return true;
    }

private:
    static void getProperty(const QDBusMessage& message, const QDBusConnection& connection)
    {
        if (message.arguments().value(0) == kShortcutsInterface && message.arguments().value(1) == "version")
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(1u))));
        else
            connection.send(message.createErrorReply(QDBusError::InvalidArgs, "no such property"));
    }

    void createSession(const QDBusMessage& message, const QDBusConnection& connection)
    {
        if (message.signature() != "a{sv}") {
            connection.send(message.createErrorReply(QDBusError::InvalidArgs, message.signature()));
            return;
        }
        const auto options = qdbus_cast<QVariantMap>(message.arguments().at(0));
        const QString request = objectPathFor("request", message, options, "handle_token");
        const QString session = objectPathFor("session", message, options, "session_handle_token");
        {
            QMutexLocker lock(&portal_.mutex_);
            portal_.record_.sessionRequests.push_back(options);
            portal_.record_.openedSessions.append(session);
            portal_.client_ = message.service();
        }
        connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        respond(connection, message.service(), request, Answer::Grant, {{"session_handle", session}});
    }

    void bindShortcuts(const QDBusMessage& message, const QDBusConnection& connection)
    {
        if (message.signature() != "oa(sa{sv})sa{sv}") {
            connection.send(message.createErrorReply(QDBusError::InvalidArgs, message.signature()));
            return;
        }
        const QString session = message.arguments().at(0).value<QDBusObjectPath>().path();
        QList<Shortcut> shortcuts;
        message.arguments().at(1).value<QDBusArgument>() >> shortcuts;
        const auto options = qdbus_cast<QVariantMap>(message.arguments().at(3));
        const QString request = objectPathFor("request", message, options, "handle_token");

        QMutexLocker lock(&portal_.mutex_);
        if (!portal_.record_.openedSessions.contains(session) || portal_.endedSessions_.contains(session)) {
            connection.send(message.createErrorReply(QDBusError::AccessDenied, "Invalid session"));
            return;
        }
        portal_.record_.bindings.push_back({session, shortcuts});
        QList<Shortcut> bound;
        for (const Shortcut& shortcut : shortcuts) {
            QVariantMap given{{"description", shortcut.options.value("description")}};
            const QString trigger = shortcut.options.value("preferred_trigger").toString();
            if (!portal_.heldTriggers_.contains(trigger))
                given.insert("trigger_description", trigger);
            bound.append({shortcut.id, given});
        }
        const Answer answer = portal_.bindAnswer_;
        lock.unlock();
        connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        respond(connection, message.service(), request, answer, {{"shortcuts", QVariant::fromValue(bound)}});
    }

    void closeSession(const QDBusMessage& message, const QDBusConnection& connection)
    {
        {
            QMutexLocker lock(&portal_.mutex_);
            portal_.record_.closedSessions.append(message.path());
            portal_.endedSessions_.insert(message.path());
        }
        connection.send(message.createReply());
    }

    static void respond(const QDBusConnection& connection, const QString& client, const QString& request,
                        Answer answer, const QVariantMap& results)
    {
        if (answer == Answer::Silence)
            return;
        const unsigned code = answer == Answer::Grant ? 0 : answer == Answer::Cancel ? 1 : 2;
        QDBusMessage response =
            QDBusMessage::createTargetedSignal(client, request, "org.freedesktop.portal.Request", "Response");
        response << code << (answer == Answer::Grant ? results : QVariantMap());
        connection.send(response);
    }

    FakeGlobalShortcutsPortal& portal_;
};

FakeGlobalShortcutsPortal::FakeGlobalShortcutsPortal(const QString& busAddress)
    : connection_([&] {
          static std::atomic<int> instances{0};
          return QDBusConnection::connectToBus(busAddress, QStringLiteral("fake-portal-%1").arg(++instances));
      }()),
      service_(new Service(*this))
{
    qDBusRegisterMetaType<Shortcut>();
    qDBusRegisterMetaType<QList<Shortcut>>();
    // Registered first: the connection gives the object a child, which must
    // be made on the object's thread and then moves with it.
    if (!connection_.registerVirtualObject(kPortalPath, service_, QDBusConnection::SubPath))
        throw std::runtime_error("the fake portal could not register its object");
    service_->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, service_, &QObject::deleteLater);
    thread_.start();
    if (!connection_.registerService(kPortalService))
        throw std::runtime_error("the fake portal could not take its name on the bus");
}

FakeGlobalShortcutsPortal::~FakeGlobalShortcutsPortal()
{
    connection_.unregisterObject(kPortalPath, QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(connection_.name());
    thread_.quit();
    thread_.wait();
}

void FakeGlobalShortcutsPortal::setBindAnswer(Answer answer)
{
    QMutexLocker lock(&mutex_);
    bindAnswer_ = answer;
}

void FakeGlobalShortcutsPortal::holdTrigger(const QString& trigger)
{
    QMutexLocker lock(&mutex_);
    heldTriggers_.insert(trigger);
}

FakeGlobalShortcutsPortal::Record FakeGlobalShortcutsPortal::record() const
{
    QMutexLocker lock(&mutex_);
    return record_;
}

void FakeGlobalShortcutsPortal::activate(const QString& session, const QString& shortcutId)
{
    sendToClient(kPortalPath, kShortcutsInterface, "Activated",
                 {QVariant::fromValue(QDBusObjectPath(session)), shortcutId, qulonglong(1000), QVariantMap()});
}

void FakeGlobalShortcutsPortal::deactivate(const QString& session, const QString& shortcutId)
{
    sendToClient(kPortalPath, kShortcutsInterface, "Deactivated",
                 {QVariant::fromValue(QDBusObjectPath(session)), shortcutId, qulonglong(1100), QVariantMap()});
}

void FakeGlobalShortcutsPortal::closeFromPortalSide(const QString& session)
{
    {
        QMutexLocker lock(&mutex_);
        endedSessions_.insert(session);
    }
    sendToClient(session, kSessionInterface, "Closed", {QVariantMap()});
}

void FakeGlobalShortcutsPortal::sendToClient(const QString& path, const QString& interface, const QString& name,
                                             const QVariantList& args)
{
    QString client;
    {
        QMutexLocker lock(&mutex_);
        client = client_;
    }
    QDBusMessage signal = QDBusMessage::createTargetedSignal(client, path, interface, name);
    signal.setArguments(args);
    connection_.send(signal);
}

} // namespace quilo::test
