#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QThread>
#include <QVariantMap>

#include <chrono>

namespace quilo {

// How one of the desktop portal's request-style calls ended.
struct PortalReply {
    enum class Outcome { Answered, CallFailed, TimedOut };

    Outcome outcome = Outcome::CallFailed;
    // The Response signal's code: 0 done, 1 cancelled by the user, 2 ended otherwise.
    unsigned response = 2;
    QVariantMap results;
    // The D-Bus error of a call that failed.
    QString error;

    bool succeeded() const { return outcome == Outcome::Answered && response == 0; }
    // What went wrong, to finish a log line ("was cancelled"); empty on success.
    QString failure(std::chrono::milliseconds timeout) const;
};

// Makes the portal's request-style calls synchronously. Such a call returns at
// once with the path of a Request object, and the outcome comes later as that
// object's Response signal. The signal is caught on a thread of this object's,
// so a caller on the main thread can block for it without spinning a nested
// event loop, in which other events would run in the middle of its work.
class PortalRequests {
public:
    explicit PortalRequests(const QDBusConnection& bus);
    ~PortalRequests();
    PortalRequests(const PortalRequests&) = delete;
    PortalRequests& operator=(const PortalRequests&) = delete;

    // Sends `method`, which carries every argument but the trailing options,
    // with `options` plus a fresh "handle_token", and waits for the Response.
    PortalReply call(QDBusMessage method, QVariantMap options, std::chrono::milliseconds timeout);

    // Where the portal puts a request or session object made with `token` for
    // the connection `uniqueName` (":1.42" gives "1_42").
    static QString objectPath(const QString& kind, const QString& uniqueName, const QString& token);
    // A token no other request of this process uses.
    static QString newToken();

private:
    class Catcher;

    QDBusConnection bus_;
    QThread thread_;
    Catcher* catcher_; // lives on thread_, which deletes it when it finishes
};

} // namespace quilo
