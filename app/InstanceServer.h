#pragma once

#include "app/InstanceAddress.h"
#include "app/InstanceRequest.h"

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QStringList>

#include <functional>

class QLocalSocket;

namespace quilo {

// The running instance's end of the channel. It holds the session's lock
// while it lives, so a second Quilo finds it taken, and takes one request
// per connection: a valid one is announced by a signal and answered
// Accepted, anything else answered Refused and logged. Lives on a thread
// with an event loop (the GUI thread).
class InstanceServer : public QObject {
    Q_OBJECT

public:
    explicit InstanceServer(InstanceAddress address, QObject* parent = nullptr);
    ~InstanceServer() override;

    // Takes the lock and listens. False, with a log line, when another
    // instance holds the lock or the socket cannot be made. A lock left by a
    // process that is gone is taken over, and a socket file left behind is
    // replaced: holding the lock means nobody else serves there.
    bool listen();
    bool isListening() const { return server_.isListening(); }
    // Asked before a job is taken: while it says true, jobs are answered Busy
    // and not announced.
    void setBusyCheck(std::function<bool()> isBusy) { isBusy_ = std::move(isBusy); }
    const InstanceAddress& address() const { return address_; }

signals:
    void runJobRequested(int kind, const QStringList& paths);
    void activateRequested();

private:
    void acceptConnections();
    void serve(QLocalSocket* socket);
    MessageCode replyTo(const InstanceRequest* request) const;
    void answer(QLocalSocket* socket, const QByteArray& payload);
    void announce(const InstanceRequest& request);

    InstanceAddress address_;
    std::function<bool()> isBusy_;
    QLockFile lock_; // released after the socket is gone, members going in reverse order
    QLocalServer server_;
};

} // namespace quilo
