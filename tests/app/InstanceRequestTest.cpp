// Requests to the running instance: what they carry survives the trip, the
// bytes on the wire stay as they are, and untrusted bytes that are not one
// whole valid request are refused without reading or reserving past them.
#include "app/InstanceRequest.h"
#include "foundation/QuiloKeys.h"

#include <gtest/gtest.h>

#include <QtEndian>

namespace quilo {
namespace {

QByteArray be32(std::uint32_t value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

// A job request of the given kind byte with the given paths' bytes.
QByteArray jobPayload(std::uint8_t kind, const std::vector<QByteArray>& paths)
{
    QByteArray bytes;
    bytes.append(char(MessageCode::RunJob)).append(char(kind)).append(be32(std::uint32_t(paths.size())));
    for (const QByteArray& path : paths)
        bytes.append(be32(std::uint32_t(path.size()))).append(path);
    return bytes;
}

bool refused(const QByteArray& payload)
{
    QString error;
    const bool wasRefused = !InstanceRequest::decode(payload, &error);
    EXPECT_TRUE(!wasRefused || !error.isEmpty()) << "a refusal says why";
    return wasRefused;
}

TEST(InstanceRequest, EveryRequestComesBackAsItWasSent)
{
    const QString longest = "/" + QString(kMaxPathBytes - 1, 'x');
    const QStringList odd{"/My Pictures/it's \"x\".jpg", "/ünïcode/照片.png", "/a\nb/Icon\r", "/-x.jpg", longest};
    for (const InstanceRequest& request :
         {InstanceRequest::activate(), *InstanceRequest::runJob(kCreateThumbnails, {}),
          *InstanceRequest::runJob(kSaveAsICNS, odd), *InstanceRequest::runJob(kRestoreThumbnails, {"/a", "/b"})}) {
        const auto decoded = InstanceRequest::decode(request.encode());
        ASSERT_TRUE(decoded);
        EXPECT_EQ(*decoded, request);
    }
    const auto job = InstanceRequest::decode(InstanceRequest::runJob(kSaveAsICNS, odd)->encode());
    EXPECT_EQ(job->code(), MessageCode::RunJob);
    EXPECT_EQ(job->kind(), kSaveAsICNS);
    EXPECT_EQ(job->paths(), odd) << "in the file manager's order";
}

// A Quilo upgraded while an older one runs still talks to it.
TEST(InstanceRequest, TheWireFormatStaysPut)
{
    EXPECT_EQ(InstanceRequest::activate().encode(), QByteArray("\x01", 1));
    EXPECT_EQ(InstanceRequest::runJob(kRestoreThumbnails, {"/a", "/é"})->encode(),
              QByteArray("\x02\x03\0\0\0\x02\0\0\0\x02/a\0\0\0\x03/\xc3\xa9", 19));
    EXPECT_EQ(encodeReply(MessageCode::Accepted), QByteArray("\x80", 1));
    EXPECT_EQ(encodeReply(MessageCode::Refused), QByteArray("\x81", 1));
    EXPECT_EQ(encodeReply(MessageCode::Busy), QByteArray("\x82", 1));
}

TEST(InstanceRequest, OnlyValidJobsCanBeMade)
{
    for (const int kind : {0, 4, -1})
        EXPECT_FALSE(InstanceRequest::runJob(kind, {"/a.jpg"})) << kind;
    for (const QString& path : {QString(), QString("a.jpg"), QString("./a.jpg"), QString("/a") + QChar(0) + "b",
                                "/" + QString(kMaxPathBytes, 'x')}) {
        QString error;
        EXPECT_FALSE(InstanceRequest::runJob(kCreateThumbnails, {"/fine.jpg", path}, &error));
        EXPECT_FALSE(error.isEmpty());
    }
    EXPECT_FALSE(InstanceRequest::runJob(kCreateThumbnails, QStringList(kMaxRequestPaths + 1, "/a")));
    EXPECT_TRUE(InstanceRequest::runJob(kCreateThumbnails, QStringList(kMaxRequestPaths, "/a")));
}

TEST(InstanceRequest, CodesThatAreNoRequestAreRefused)
{
    EXPECT_TRUE(refused({}));
    for (const char code : {'\x00', '\x03', '\x80', '\x81', '\xff'})
        EXPECT_TRUE(refused(QByteArray(1, code))) << int(std::uint8_t(code));
    for (const std::uint8_t kind : {std::uint8_t(0), std::uint8_t(4), std::uint8_t(255)})
        EXPECT_TRUE(refused(jobPayload(kind, {"/a"}))) << int(kind);
}

TEST(InstanceRequest, LengthsThatReachPastTheEndAreRefused)
{
    const QByteArray valid = jobPayload(1, {"/a.jpg", "/b.jpg"});
    ASSERT_FALSE(refused(valid));
    for (qsizetype length = 0; length < valid.size(); ++length)
        EXPECT_TRUE(refused(valid.first(length))) << "cut after " << length << " bytes";

    const QByteArray header = QByteArray("\x02\x01", 2);
    EXPECT_TRUE(refused(header + be32(0xFFFFFFFF))) << "more paths than allowed";
    EXPECT_TRUE(refused(header + be32(1000) + be32(1) + "/")) << "more paths than the bytes can hold";
    EXPECT_TRUE(refused(header + be32(1) + be32(0x7FFFFFFF) + "/a")) << "a path longer than allowed";
    EXPECT_TRUE(refused(header + be32(1) + be32(10) + "/a")) << "a path past the end";
    EXPECT_TRUE(refused(QByteArray(kMaxMessageBytes + 1, '\x01'))) << "a message over the limit";
}

TEST(InstanceRequest, BadPathsAndLeftoverBytesAreRefused)
{
    for (const QByteArray& path : {QByteArray(), QByteArray("a.jpg"), QByteArray("/a\0b", 4), QByteArray("/\xff.jpg"),
                                   QByteArray("/\xc0\xaf"), QByteArray("/\xed\xa0\x80")})
        EXPECT_TRUE(refused(jobPayload(1, {"/fine.jpg", path}))) << path.toHex().constData();
    EXPECT_TRUE(refused(jobPayload(1, {"/a"}) + "x"));
    EXPECT_TRUE(refused(QByteArray("\x01\x00", 2)));
}

} // namespace
} // namespace quilo
