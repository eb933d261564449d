#pragma once

#include "app/InstanceRequest.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

class QIODevice;

namespace quilo {

// A message on the wire: its length as 32-bit big-endian, then its bytes.
QByteArray frame(QByteArrayView payload);

// Takes frames off a stream as their bytes arrive: a frame split over many
// reads, or several frames in one, come out whole and one at a time. It
// never reads past the frame in hand, so what follows stays in the device
// for the next call, and it holds no more than one frame's bytes.
class FrameReader {
public:
    explicit FrameReader(qsizetype maxPayload = kMaxMessageBytes) : maxPayload_(maxPayload) {}

    // Reads what the device holds towards the next frame; its payload once
    // whole, else nullopt (more to come, or failed()).
    std::optional<QByteArray> readFrame(QIODevice& device);
    // The peer declared a frame over the limit; nothing more is read, and
    // the connection is best dropped.
    bool failed() const { return failed_; }
    // The length the failed frame declared.
    qint64 declaredLength() const { return declared_; }

private:
    bool readHeader(QIODevice& device);

    qsizetype maxPayload_;
    QByteArray header_;
    QByteArray payload_;
    qint64 declared_ = -1; // until the header is whole
    bool failed_ = false;
};

} // namespace quilo
