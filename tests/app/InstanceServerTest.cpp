// The real server and client over a real local socket in a session of the
// test's own: requests announced and accepted, anything else refused and the
// connection closed, and what a killed instance left behind taken over.
#include "app/InstanceClient.h"
#include "app/InstanceFrames.h"
#include "foundation/QuiloKeys.h"
#include "tests/support/InstanceServing.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QLocalSocket>
#include <QtEndian>

#include <chrono>
#include <csignal>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

namespace quilo {
namespace {

using namespace std::chrono_literals;
using namespace test;

struct RawOutcome {
    std::optional<MessageCode> reply;
    bool closed = false; // by the server, after its reply
};

class InstanceServerTest : public ::testing::Test {
protected:
    RecordingInstance& listening()
    {
        instance_.emplace(address_);
        EXPECT_TRUE(instance_->server().listen());
        return *instance_;
    }

    std::optional<MessageCode> send(const InstanceRequest& request)
    {
        return whileServing([&] { return client_.send(request, 5s); });
    }

    // Bytes written as a peer would, one piece at a time, then the reply.
    RawOutcome sendRaw(const std::vector<QByteArray>& pieces)
    {
        return whileServing([&] {
            RawOutcome outcome;
            QLocalSocket socket;
            socket.connectToServer(address_.socketPath());
            if (!socket.waitForConnected(5000))
                return outcome;
            for (const QByteArray& piece : pieces) {
                socket.write(piece);
                socket.waitForBytesWritten(5000);
                std::this_thread::sleep_for(1ms);
            }
            FrameReader reader;
            std::optional<QByteArray> payload;
            while (!(payload = reader.readFrame(socket)) && socket.waitForReadyRead(5000)) {
            }
            if (payload)
                outcome.reply = decodeReply(*payload);
            outcome.closed = socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected(5000);
            return outcome;
        });
    }

    TestSession session_;
    InstanceAddress address_ = session_.address();
    InstanceClient client_{address_};
    std::optional<RecordingInstance> instance_;
};

TEST_F(InstanceServerTest, RequestsAreAnnouncedAndAccepted)
{
    RecordingInstance& instance = listening();
    const QStringList paths{"/Pictures/b b.jpg", "/Pictures/a.png", "/ünïcode/c.gif"};
    EXPECT_EQ(send(*InstanceRequest::runJob(kSaveAsICNS, paths)), MessageCode::Accepted);
    EXPECT_EQ(send(*InstanceRequest::runJob(kCreateThumbnails, {})), MessageCode::Accepted);
    EXPECT_EQ(send(InstanceRequest::activate()), MessageCode::Accepted);
    EXPECT_EQ(instance.jobs, (std::vector<ReceivedJob>{{kSaveAsICNS, paths}, {kCreateThumbnails, {}}}));
    EXPECT_EQ(instance.activations, 1);

    struct stat socket {};
    ASSERT_EQ(::stat(address_.socketPath().toLocal8Bit().constData(), &socket), 0);
    EXPECT_TRUE(S_ISSOCK(socket.st_mode));
    EXPECT_EQ(socket.st_mode & 077, 0u) << "the socket is the user's alone";
}

TEST_F(InstanceServerTest, GarbageIsRefusedAndTheConnectionClosed)
{
    RecordingInstance& instance = listening();
    LogCapture log;
    QByteArray relative = InstanceRequest::runJob(kCreateThumbnails, {"/a.jpg"})->encode();
    relative[10] = 'x'; // "/a.jpg" becomes "xa.jpg"
    QByteArray overLimit = frame("");
    qToBigEndian(std::uint32_t(kMaxMessageBytes + 1), overLimit.data());

    for (const QByteArray& bytes : {frame("\x07junk"), frame(relative), frame(""), overLimit}) {
        const RawOutcome outcome = sendRaw({bytes});
        EXPECT_EQ(outcome.reply, MessageCode::Refused) << bytes.toHex().constData();
        EXPECT_TRUE(outcome.closed);
    }
    EXPECT_TRUE(instance.jobs.empty());
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Refused a request: unknown message code 7",
                                                     "Refused a request: a relative path",
                                                     "Refused a request: an empty message",
                                                     "Refused a request of 4194305 bytes"}));
    EXPECT_EQ(send(InstanceRequest::activate()), MessageCode::Accepted) << "and it serves on";
}

// A Quilo killed while it listened leaves its lock and its socket behind.
TEST_F(InstanceServerTest, WhatAKilledInstanceLeftIsTakenOver)
{
    const auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(send(InstanceRequest::activate()), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - started, 1s) << "no waiting when nothing listens";

    const pid_t child = ::fork();
    if (child == 0) {
        InstanceServer server(address_);
        if (server.listen())
            ::kill(::getpid(), SIGKILL);
        ::_exit(1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the child listened before it was killed";
    ASSERT_TRUE(QFile::exists(address_.lockPath()) && QFile::exists(address_.socketPath()));

    const auto refusedAt = std::chrono::steady_clock::now();
    EXPECT_EQ(send(InstanceRequest::activate()), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - refusedAt, 1s) << "a socket nobody listens on fails at once";

    RecordingInstance& instance = listening();
    EXPECT_EQ(send(InstanceRequest::activate()), MessageCode::Accepted);
    EXPECT_EQ(instance.activations, 1);
}

} // namespace
} // namespace quilo
