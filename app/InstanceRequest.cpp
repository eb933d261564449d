#include "app/InstanceRequest.h"

#include "foundation/QuiloKeys.h"

#include <QStringDecoder>
#include <QtEndian>

namespace quilo {
namespace {

// A path's length, and the number of paths, take four bytes each.
constexpr qsizetype kLengthBytes = 4;

bool isJobKind(int kind) { return kind == kCreateThumbnails || kind == kSaveAsICNS || kind == kRestoreThumbnails; }

// Empty when the path may go into a request, else why not.
QString pathProblem(const QString& path)
{
    if (path.isEmpty())
        return QStringLiteral("an empty path");
    if (path.contains(QChar(0)))
        return QStringLiteral("a path with a NUL in it");
    if (!path.startsWith('/'))
        return QStringLiteral("a relative path");
    if (path.toUtf8().size() > kMaxPathBytes)
        return QStringLiteral("a path longer than %1 bytes").arg(kMaxPathBytes);
    return {};
}

// Says why in `error`, for whichever kind of nothing the caller returns.
std::nullopt_t refuse(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return std::nullopt;
}

// Reads from the front of the payload; every read is checked against what
// remains, so no declared length reaches past the end.
class Cursor {
public:
    explicit Cursor(QByteArrayView bytes) : bytes_(bytes) {}

    qsizetype remaining() const { return bytes_.size(); }
    std::optional<std::uint8_t> byte()
    {
        if (bytes_.isEmpty())
            return std::nullopt;
        const auto value = std::uint8_t(bytes_.front());
        bytes_ = bytes_.sliced(1);
        return value;
    }
    std::optional<std::uint32_t> length()
    {
        if (bytes_.size() < kLengthBytes)
            return std::nullopt;
        const auto value = qFromBigEndian<std::uint32_t>(bytes_.data());
        bytes_ = bytes_.sliced(kLengthBytes);
        return value;
    }
    std::optional<QByteArrayView> take(std::uint32_t count)
    {
        if (count > std::uint64_t(bytes_.size()))
            return std::nullopt;
        const QByteArrayView taken = bytes_.first(qsizetype(count));
        bytes_ = bytes_.sliced(qsizetype(count));
        return taken;
    }

private:
    QByteArrayView bytes_;
};

void appendLength(QByteArray& bytes, qsizetype length)
{
    char field[kLengthBytes];
    qToBigEndian(std::uint32_t(length), field);
    bytes.append(field, kLengthBytes);
}

// Strict UTF-8: a malformed sequence is refused rather than replaced.
std::optional<QString> fromUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

std::optional<QStringList> decodePaths(Cursor& cursor, QString* error)
{
    const auto count = cursor.length();
    if (!count)
        return refuse(error, "the number of paths is cut off");
    if (*count > std::uint32_t(kMaxRequestPaths))
        return refuse(error, QStringLiteral("%1 paths, more than %2").arg(*count).arg(kMaxRequestPaths));
    // Each path takes a length and a byte at least: a count the bytes cannot
    // hold is refused before anything is set aside for it.
    if (*count > std::uint64_t(cursor.remaining()) / (kLengthBytes + 1))
        return refuse(error, QStringLiteral("%1 paths declared in %2 bytes").arg(*count).arg(cursor.remaining()));
    QStringList paths;
    paths.reserve(qsizetype(*count));
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto length = cursor.length();
        if (!length)
            return refuse(error, QStringLiteral("path %1's length is cut off").arg(i + 1));
        if (*length > std::uint32_t(kMaxPathBytes))
            return refuse(error, QStringLiteral("path %1 is %2 bytes long").arg(i + 1).arg(*length));
        const auto bytes = cursor.take(*length);
        if (!bytes)
            return refuse(error, QStringLiteral("path %1 reaches past the end").arg(i + 1));
        const auto path = fromUtf8(*bytes);
        if (!path)
            return refuse(error, QStringLiteral("path %1 is not UTF-8").arg(i + 1));
        if (const QString problem = pathProblem(*path); !problem.isEmpty())
            return refuse(error, problem);
        paths << *path;
    }
    return paths;
}

} // namespace

std::optional<InstanceRequest> InstanceRequest::runJob(int kind, const QStringList& paths, QString* error)
{
    if (!isJobKind(kind))
        return refuse(error, QStringLiteral("no job of kind %1").arg(kind));
    if (paths.size() > kMaxRequestPaths)
        return refuse(error, QStringLiteral("%1 files, more than %2").arg(paths.size()).arg(kMaxRequestPaths));
    for (const QString& path : paths)
        if (const QString problem = pathProblem(path); !problem.isEmpty())
            return refuse(error, problem);
    InstanceRequest request(MessageCode::RunJob, kind, paths);
    if (request.encode().size() > kMaxMessageBytes)
        return refuse(error, QStringLiteral("the paths take more than %1 bytes").arg(kMaxMessageBytes));
    return request;
}

QByteArray InstanceRequest::encode() const
{
    QByteArray bytes(1, char(code_));
    if (code_ != MessageCode::RunJob)
        return bytes;
    bytes.append(char(kind_));
    appendLength(bytes, paths_.size());
    for (const QString& path : paths_) {
        const QByteArray utf8 = path.toUtf8();
        appendLength(bytes, utf8.size());
        bytes.append(utf8);
    }
    return bytes;
}

std::optional<InstanceRequest> InstanceRequest::decode(QByteArrayView payload, QString* error)
{
    if (payload.size() > kMaxMessageBytes)
        return refuse(error, QStringLiteral("a message of %1 bytes").arg(payload.size()));
    Cursor cursor(payload);
    const auto code = cursor.byte();
    if (!code)
        return refuse(error, "an empty message");
    std::optional<InstanceRequest> request;
    if (*code == std::uint8_t(MessageCode::Activate)) {
        request = activate();
    } else if (*code == std::uint8_t(MessageCode::RunJob)) {
        const auto kind = cursor.byte();
        if (!kind)
            return refuse(error, "the job kind is cut off");
        if (!isJobKind(*kind))
            return refuse(error, QStringLiteral("no job of kind %1").arg(*kind));
        auto paths = decodePaths(cursor, error);
        if (!paths)
            return std::nullopt;
        request = InstanceRequest(MessageCode::RunJob, *kind, std::move(*paths));
    } else {
        return refuse(error, QStringLiteral("unknown message code %1").arg(*code));
    }
    if (cursor.remaining() != 0)
        return refuse(error, QStringLiteral("%1 bytes after the request").arg(cursor.remaining()));
    return request;
}

QByteArray encodeReply(MessageCode reply) { return QByteArray(1, char(reply)); }

std::optional<MessageCode> decodeReply(QByteArrayView payload)
{
    if (payload.size() != 1)
        return std::nullopt;
    const auto code = MessageCode(std::uint8_t(payload.front()));
    if (code != MessageCode::Accepted && code != MessageCode::Refused && code != MessageCode::Busy)
        return std::nullopt;
    return code;
}

} // namespace quilo
