#include "app/InstanceServer.h"

#include "app/InstanceFrames.h"
#include "app/InstanceRequest.h"
#include "foundation/Log.h"

#include <QFile>
#include <QLocalSocket>
#include <QTimer>

#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace quilo {
namespace {

// A peer gets this long to send its request; one that stalls is dropped.
constexpr int kPeerTimeoutMs = 5000;
// Qt buffers no more of a peer's bytes than this ahead of the reader.
constexpr qint64 kSocketBufferBytes = 64 * 1024;

// The folder already keeps other users out; this holds even where it cannot.
bool peerIsThisUser(const QLocalSocket& socket)
{
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (::getsockopt(int(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0)
        return false;
    return credentials.uid == ::getuid();
}

} // namespace

InstanceServer::InstanceServer(InstanceAddress address, QObject* parent)
    : QObject(parent)
    , address_(std::move(address))
    , lock_(address_.lockPath())
{
    // A running instance holds the lock for days: only a holder that is gone
    // makes it stale, never its age.
    lock_.setStaleLockTime(0);
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &InstanceServer::acceptConnections);
}

InstanceServer::~InstanceServer() { server_.close(); }

bool InstanceServer::listen()
{
    if (server_.isListening())
        return true;
    if (!lock_.tryLock(0)) {
        if (lock_.error() != QLockFile::LockFailedError)
            logFormat("Cannot take Quilo's lock %s", QFile::encodeName(address_.lockPath()).constData());
        return false;
    }
    QLocalServer::removeServer(address_.socketPath());
    if (!server_.listen(address_.socketPath())) {
        logFormat("Cannot listen at %s: %s", QFile::encodeName(address_.socketPath()).constData(),
                  server_.errorString().toLocal8Bit().constData());
        lock_.unlock();
        return false;
    }
    return true;
}

void InstanceServer::acceptConnections()
{
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        if (!peerIsThisUser(*socket)) {
            logLine("Refused a connection from another user");
            socket->abort();
            socket->deleteLater();
            continue;
        }
        serve(socket);
    }
}

void InstanceServer::serve(QLocalSocket* socket)
{
    socket->setReadBufferSize(kSocketBufferBytes);
    QTimer::singleShot(kPeerTimeoutMs, socket, [socket] {
        socket->abort();
        socket->deleteLater();
    });
    auto reader = std::make_shared<FrameReader>();
    auto readRequest = [this, socket, reader] {
        const auto payload = reader->readFrame(*socket);
        if (reader->failed()) {
            logFormat("Refused a request of %lld bytes", static_cast<long long>(reader->declaredLength()));
            answer(socket, encodeReply(MessageCode::Refused));
        } else if (payload) {
            QString error;
            const auto request = InstanceRequest::decode(*payload, &error);
            if (!request)
                logFormat("Refused a request: %s", error.toUtf8().constData());
            const MessageCode reply = replyTo(request ? &*request : nullptr);
            answer(socket, encodeReply(reply));
            if (reply == MessageCode::Accepted)
                announce(*request);
        }
    };
    connect(socket, &QLocalSocket::readyRead, this, readRequest);
    readRequest(); // bytes that came with the connection
}

MessageCode InstanceServer::replyTo(const InstanceRequest* request) const
{
    if (!request)
        return MessageCode::Refused;
    // Turned down here rather than dropped later, so the peer can say why.
    if (request->code() == MessageCode::RunJob && isBusy_ && isBusy_()) {
        logLine("A job is running; the file manager's request is refused.");
        return MessageCode::Busy;
    }
    return MessageCode::Accepted;
}

// One request a connection: the reply is the last thing said on it.
void InstanceServer::answer(QLocalSocket* socket, const QByteArray& payload)
{
    disconnect(socket, &QLocalSocket::readyRead, this, nullptr);
    socket->write(frame(payload));
    socket->disconnectFromServer(); // once the reply is written
}

void InstanceServer::announce(const InstanceRequest& request)
{
    if (request.code() == MessageCode::RunJob)
        emit runJobRequested(request.kind(), request.paths());
    else
        emit activateRequested();
}

} // namespace quilo
