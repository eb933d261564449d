#include "platform/linux/PortalRequests.h"

#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QMutex>
#include <QMutexLocker>
#include <QWaitCondition>

#include <atomic>
#include <map>
#include <optional>

namespace quilo {
namespace {

const QString kPortalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kRequestInterface = QStringLiteral("org.freedesktop.portal.Request");

PortalReply failedCall(const QString& error)
{
    return {PortalReply::Outcome::CallFailed, 2, {}, error};
}

std::optional<QString> requestHandleIn(const QDBusMessage& reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()
        || reply.arguments().first().metaType() != QMetaType::fromType<QDBusObjectPath>())
        return std::nullopt;
    return reply.arguments().first().value<QDBusObjectPath>().path();
}

} // namespace

// Keeps the Response of each request a caller waits for. Its slot runs on the
// requests' own thread; the caller's side runs on the caller's thread.
class PortalRequests::Catcher : public QObject {
    Q_OBJECT

public:
    explicit Catcher(const QDBusConnection& bus) : bus_(bus) {}

    void expect(const QString& path)
    {
        {
            QMutexLocker lock(&mutex_);
            answers_[path].reset();
        }
        bus_.connect(kPortalService, path, kRequestInterface, QStringLiteral("Response"), this,
                     SLOT(onResponse(uint, QVariantMap, QDBusMessage)));
    }

    void forget(const QString& path)
    {
        bus_.disconnect(kPortalService, path, kRequestInterface, QStringLiteral("Response"), this,
                        SLOT(onResponse(uint, QVariantMap, QDBusMessage)));
        QMutexLocker lock(&mutex_);
        answers_.erase(path);
    }

    std::optional<PortalReply> waitFor(const QString& path, QDeadlineTimer deadline)
    {
        QMutexLocker lock(&mutex_);
        while (!answers_[path]) {
            if (!answered_.wait(&mutex_, deadline))
                return answers_[path];
        }
        return answers_[path];
    }

public slots:
    void onResponse(uint response, const QVariantMap& results, const QDBusMessage& message)
    {
        QMutexLocker lock(&mutex_);
        const auto awaited = answers_.find(message.path());
        if (awaited == answers_.end() || awaited->second)
            return;
        awaited->second = PortalReply{PortalReply::Outcome::Answered, response, results, {}};
        answered_.wakeAll();
    }

private:
    QDBusConnection bus_;
    QMutex mutex_;
    QWaitCondition answered_;
    std::map<QString, std::optional<PortalReply>> answers_;
};

QString PortalReply::failure(std::chrono::milliseconds timeout) const
{
    switch (outcome) {
    case Outcome::CallFailed:
        return QStringLiteral("failed: %1").arg(error);
    case Outcome::TimedOut:
        return QStringLiteral("got no answer within %1 ms").arg(timeout.count());
    case Outcome::Answered:
        break;
    }
    if (response == 0)
        return {};
    if (response == 1)
        return QStringLiteral("was cancelled");
    return QStringLiteral("was refused (response %1)").arg(response);
}

PortalRequests::PortalRequests(const QDBusConnection& bus) : bus_(bus), catcher_(new Catcher(bus))
{
    catcher_->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, catcher_, &QObject::deleteLater);
    thread_.start();
}

PortalRequests::~PortalRequests()
{
    thread_.quit();
    thread_.wait();
}

PortalReply PortalRequests::call(QDBusMessage method, QVariantMap options, std::chrono::milliseconds timeout)
{
    if (!bus_.isConnected())
        return failedCall(QStringLiteral("no connection to the session bus"));
    const QDeadlineTimer deadline(timeout);
    const QString token = newToken();
    // Listening before the call: the Response may follow the reply at once.
    const QString expected = objectPath(QStringLiteral("request"), bus_.baseService(), token);
    catcher_->expect(expected);

    options.insert(QStringLiteral("handle_token"), token);
    method << options;
    const QDBusMessage reply = bus_.call(method, QDBus::Block, int(timeout.count()));
    const std::optional<QString> handle = requestHandleIn(reply);
    if (handle != expected)
        catcher_->forget(expected);
    if (!handle)
        return failedCall(reply.type() == QDBusMessage::ErrorMessage ? reply.errorName() + ": " + reply.errorMessage()
                                                                    : QStringLiteral("no request handle in the reply"));
    // Older portals name the Request object their own way.
    if (handle != expected)
        catcher_->expect(*handle);
    const std::optional<PortalReply> answer = catcher_->waitFor(*handle, deadline);
    catcher_->forget(*handle);
    return answer ? *answer : PortalReply{PortalReply::Outcome::TimedOut, 2, {}, {}};
}

QString PortalRequests::objectPath(const QString& kind, const QString& uniqueName, const QString& token)
{
    QString sender = uniqueName.startsWith(':') ? uniqueName.mid(1) : uniqueName;
    sender.replace('.', '_');
    return QStringLiteral("/org/freedesktop/portal/desktop/%1/%2/%3").arg(kind, sender, token);
}

QString PortalRequests::newToken()
{
    static std::atomic<unsigned> counter{0};
    return QStringLiteral("quilo%1").arg(++counter);
}

} // namespace quilo

#include "PortalRequests.moc"
