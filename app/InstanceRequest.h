#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace quilo {

// What passes between a Quilo process and the instance running in the
// user's session: requests one way, a reply the other. The numbers are what
// travels, so they never change.
enum class MessageCode : std::uint8_t {
    Activate = 1, // a second plain start: the running instance shows itself
    RunJob = 2,   // a job on the files a file manager's entry handed over
    Accepted = 0x80,
    Refused = 0x81,
    Busy = 0x82, // a valid job, turned down while another one runs
};

// What an instance reads from a peer at most: one message, the files in a
// request, the bytes of one path (the system's own limit, terminator aside).
constexpr qsizetype kMaxMessageBytes = 4 * 1024 * 1024;
constexpr qsizetype kMaxRequestPaths = 100'000;
constexpr qsizetype kMaxPathBytes = 4095;

// A request to the running instance. It is checked whole where it is made
// and again where it is read, so an instance only ever sees a valid one: a
// job kind of 1, 2 or 3, and absolute paths without NULs, in the file
// manager's order. A job without paths takes the copied files.
class InstanceRequest {
public:
    static InstanceRequest activate() { return InstanceRequest(MessageCode::Activate, 0, {}); }
    // Nullopt, with the reason in `error`, for a kind that is no job or a
    // path that is empty, relative, holds a NUL or is too long.
    static std::optional<InstanceRequest> runJob(int kind, const QStringList& paths, QString* error = nullptr);

    MessageCode code() const { return code_; }
    int kind() const { return kind_; } // 0 for Activate
    const QStringList& paths() const { return paths_; }

    // The code, then for a job its kind (one byte), the number of paths and
    // each path's UTF-8 length (32-bit big-endian) before its bytes.
    QByteArray encode() const;
    // Nullopt, with the reason in `error`, for anything but one whole valid
    // request: a reply or unknown code, a length past the end, a bad kind or
    // path, bytes left over.
    static std::optional<InstanceRequest> decode(QByteArrayView payload, QString* error = nullptr);

    bool operator==(const InstanceRequest& other) const = default;

private:
    InstanceRequest(MessageCode code, int kind, QStringList paths)
        : code_(code)
        , kind_(kind)
        , paths_(std::move(paths))
    {
    }

    MessageCode code_;
    int kind_;
    QStringList paths_;
};

// A reply is its code alone.
QByteArray encodeReply(MessageCode reply);
// Nullopt for anything but Accepted, Refused or Busy.
std::optional<MessageCode> decodeReply(QByteArrayView payload);

} // namespace quilo
