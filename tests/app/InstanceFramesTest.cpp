// Frames as a stream delivers them: a byte at a time, and a declared length
// over the limit, which stops the reading.
#include "app/InstanceFrames.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QtEndian>

namespace quilo {
namespace {

// A stream whose bytes arrive as the test hands them over.
class ArrivingBytes {
public:
    ArrivingBytes() { device_.open(QIODevice::ReadOnly); }
    void arrive(QByteArrayView bytes) { device_.buffer().append(bytes); }
    QIODevice& device() { return device_; }
    qint64 waiting() const { return device_.bytesAvailable(); }

private:
    QBuffer device_;
};

TEST(InstanceFrames, AFrameIsItsBigEndianLengthThenItsBytes)
{
    EXPECT_EQ(frame("abc"), QByteArray("\0\0\0\x03" "abc", 7));
    EXPECT_EQ(frame(QByteArray(0x010203, 'x')).first(4), QByteArray("\0\x01\x02\x03", 4));
}

TEST(InstanceFrames, FramesSplitByteByByteComeOutWhole)
{
    const std::vector<QByteArray> sent{"first", "", QByteArray(300, 'z')};
    QByteArray stream;
    for (const QByteArray& payload : sent)
        stream += frame(payload);

    ArrivingBytes bytes;
    FrameReader reader;
    std::vector<QByteArray> received;
    for (const char byte : stream) {
        bytes.arrive(QByteArrayView(&byte, 1));
        if (auto payload = reader.readFrame(bytes.device()))
            received.push_back(*payload);
    }
    EXPECT_EQ(received, sent);
    EXPECT_FALSE(reader.failed());
}

TEST(InstanceFrames, ALengthOverTheLimitStopsTheReading)
{
    for (const std::uint32_t declared : {std::uint32_t(kMaxMessageBytes + 1), 0xFFFFFFFFu}) {
        ArrivingBytes bytes;
        QByteArray header(4, Qt::Uninitialized);
        qToBigEndian(declared, header.data());
        bytes.arrive(header + "and some bytes");
        FrameReader reader;
        EXPECT_FALSE(reader.readFrame(bytes.device()));
        EXPECT_TRUE(reader.failed());
        EXPECT_EQ(reader.declaredLength(), qint64(declared));
        EXPECT_EQ(bytes.waiting(), 14) << "nothing read past the header";
        EXPECT_FALSE(reader.readFrame(bytes.device()));
        EXPECT_EQ(bytes.waiting(), 14);
    }

    ArrivingBytes atTheLimit;
    atTheLimit.arrive(frame(QByteArray(8, 'x')));
    FrameReader small(8);
    EXPECT_EQ(small.readFrame(atTheLimit.device()), QByteArray(8, 'x'));
}

} // namespace
} // namespace quilo
