#include "app/InstanceFrames.h"

#include <QIODevice>
#include <QtEndian>

#include <algorithm>

namespace quilo {
namespace {

constexpr qsizetype kHeaderBytes = 4;

} // namespace

QByteArray frame(QByteArrayView payload)
{
    QByteArray bytes(kHeaderBytes, Qt::Uninitialized);
    qToBigEndian(std::uint32_t(payload.size()), bytes.data());
    bytes.append(payload);
    return bytes;
}

std::optional<QByteArray> FrameReader::readFrame(QIODevice& device)
{
    if (failed_ || (declared_ < 0 && !readHeader(device)))
        return std::nullopt;
    // The payload grows with what arrives, never with what was declared.
    const qint64 wanted = std::min(declared_ - payload_.size(), device.bytesAvailable());
    if (wanted > 0)
        payload_.append(device.read(wanted));
    if (payload_.size() < declared_)
        return std::nullopt;
    QByteArray payload = std::move(payload_);
    payload_.clear();
    header_.clear();
    declared_ = -1;
    return payload;
}

// True once the header is whole and its length within the limit.
bool FrameReader::readHeader(QIODevice& device)
{
    header_.append(device.read(kHeaderBytes - header_.size()));
    if (header_.size() < kHeaderBytes)
        return false;
    declared_ = qint64(qFromBigEndian<std::uint32_t>(header_.constData()));
    if (declared_ > maxPayload_) {
        failed_ = true;
        return false;
    }
    return true;
}

} // namespace quilo
