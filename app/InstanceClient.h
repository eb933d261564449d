#pragma once

#include "app/InstanceAddress.h"
#include "app/InstanceRequest.h"

#include <QString>

#include <chrono>
#include <optional>

namespace quilo {

// The other end: hands one request to the session's running instance and
// waits for its reply, blocking, so it needs no event loop.
class InstanceClient {
public:
    explicit InstanceClient(InstanceAddress address) : address_(std::move(address)) {}

    // The instance's reply. Nullopt at once when none listens, else when it
    // does not answer within the timeout.
    std::optional<MessageCode> send(const InstanceRequest& request, std::chrono::milliseconds timeout) const;

private:
    InstanceAddress address_;
};

// How long a running instance gets to answer.
constexpr std::chrono::milliseconds kAnswerTimeout{5000};
// How long a Quilo started for a request gets to begin listening.
constexpr std::chrono::milliseconds kStartTimeout{10000};

// For a second start of Quilo: whether the session's running instance took
// the request (Activate, so it can show that it runs).
bool handOverToRunningInstance(const InstanceRequest& request);

// Hands the request to the session's instance, starting `program` (with no
// arguments, detached, its output discarded) when none runs and handing it
// over as soon as that listens. Nullopt when there is no session folder, the
// program cannot be started, or no instance answers within the start
// timeout.
std::optional<MessageCode> handOverStartingInstance(const InstanceRequest& request, const QString& program);

} // namespace quilo
