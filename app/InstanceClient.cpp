#include "app/InstanceClient.h"

#include "app/InstanceFrames.h"
#include "foundation/Log.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QProcess>

#include <algorithm>
#include <thread>

namespace quilo {
namespace {

// How often a request looks again for an instance that is starting.
constexpr std::chrono::milliseconds kRetryInterval{100};

int remainingMs(const QDeadlineTimer& deadline) { return int(deadline.remainingTime()); }

bool writeAll(QLocalSocket& socket, const QByteArray& bytes, const QDeadlineTimer& deadline)
{
    if (socket.write(bytes) != bytes.size())
        return false;
    while (socket.bytesToWrite() > 0)
        if (!socket.waitForBytesWritten(remainingMs(deadline)))
            return false;
    return true;
}

std::optional<MessageCode> readReply(QLocalSocket& socket, const QDeadlineTimer& deadline)
{
    FrameReader reader(1);
    for (;;) {
        if (const auto payload = reader.readFrame(socket))
            return decodeReply(*payload);
        if (reader.failed() || !socket.waitForReadyRead(remainingMs(deadline)))
            return std::nullopt;
    }
}

// Started in its own session with nothing of ours: a file manager's pipes
// would otherwise stay open, and break under it once the manager closes them.
bool startDetached(const QString& program)
{
    QProcess process;
    process.setProgram(program);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.setWorkingDirectory(QDir::homePath()); // not the folder of the pictures, which may be unmounted
    if (process.startDetached())
        return true;
    logFormat("Cannot start %s: %s", QFile::encodeName(program).constData(),
              process.errorString().toLocal8Bit().constData());
    return false;
}

} // namespace

std::optional<MessageCode> InstanceClient::send(const InstanceRequest& request, std::chrono::milliseconds timeout) const
{
    const QDeadlineTimer deadline(timeout);
    QLocalSocket socket;
    socket.connectToServer(address_.socketPath());
    // No socket, or one nobody listens on, fails here at once.
    if (!socket.waitForConnected(remainingMs(deadline)))
        return std::nullopt;
    if (!writeAll(socket, frame(request.encode()), deadline))
        return std::nullopt;
    return readReply(socket, deadline);
}

bool handOverToRunningInstance(const InstanceRequest& request)
{
    const auto address = InstanceAddress::forThisSession();
    return address && InstanceClient(*address).send(request, kAnswerTimeout) == MessageCode::Accepted;
}

std::optional<MessageCode> handOverStartingInstance(const InstanceRequest& request, const QString& program)
{
    const auto address = InstanceAddress::forThisSession();
    if (!address)
        return std::nullopt;
    const InstanceClient client(*address);
    if (const auto reply = client.send(request, kAnswerTimeout))
        return reply;
    if (!startDetached(program))
        return std::nullopt;
    const QDeadlineTimer deadline(kStartTimeout);
    while (!deadline.hasExpired()) {
        std::this_thread::sleep_for(kRetryInterval);
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline.remainingTimeAsDuration());
        if (const auto reply = client.send(request, std::min(kAnswerTimeout, left)))
            return reply;
    }
    return std::nullopt;
}

} // namespace quilo
