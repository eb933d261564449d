#pragma once

// A session of the test's own with a real instance in it: its folder in
// XDG_RUNTIME_DIR (for this process and the processes it starts), a server
// that keeps what it receives, and blocking work (a client, a quilo process)
// run beside the event loop that serves it.
#include "app/InstanceServer.h"
#include "tests/support/TemporaryDirectory.h"

#include <QCoreApplication>

#include <cstdlib>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quilo::test {

// Sets an environment variable (or unsets it: nullopt) for the object's life.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::optional<std::string>& value) : name_(name)
    {
        if (const char* old = std::getenv(name))
            old_ = old;
        if (value)
            ::setenv(name, value->c_str(), 1);
        else
            ::unsetenv(name);
    }
    ~ScopedEnvironment()
    {
        if (old_)
            ::setenv(name_, old_->c_str(), 1);
        else
            ::unsetenv(name_);
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    const char* name_;
    std::optional<std::string> old_;
};

// A session of its own: a fresh runtime folder and session name.
struct TestSession {
    TemporaryDirectory runtime;
    ScopedEnvironment runtimeVariable{"XDG_RUNTIME_DIR", runtime.path().string()};
    ScopedEnvironment sessionVariable{"XDG_SESSION_ID", "test"};

    InstanceAddress address() const { return *InstanceAddress::forThisSession(); }
};

// The event loop's application, for a test program that has none.
class CoreApplication {
public:
    CoreApplication()
    {
        if (!QCoreApplication::instance())
            application_ = std::make_unique<QCoreApplication>(argc_, argv_);
    }

private:
    int argc_ = 1;
    char name_[16] = "quilo-test";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QCoreApplication> application_;
};

struct ReceivedJob {
    int kind;
    QStringList paths;
    bool operator==(const ReceivedJob&) const = default;
};

// The session's instance, keeping each request it announces.
class RecordingInstance {
public:
    explicit RecordingInstance(const InstanceAddress& address) : server_(address)
    {
        QObject::connect(&server_, &InstanceServer::runJobRequested, [this](int kind, const QStringList& paths) {
            jobs.push_back({kind, paths});
        });
        QObject::connect(&server_, &InstanceServer::activateRequested, [this] { ++activations; });
        server_.setBusyCheck([this] { return busy; });
    }

    InstanceServer& server() { return server_; }

    std::vector<ReceivedJob> jobs;
    int activations = 0;
    bool busy = false; // with a job of its own, so it refuses another

private:
    InstanceServer server_;
};

// Runs blocking work on a thread of its own while this thread's event loop
// serves, and returns what the work returned.
template <typename Work>
auto whileServing(Work work)
{
    auto result = std::async(std::launch::async, std::move(work));
    while (result.wait_for(std::chrono::milliseconds(2)) != std::future_status::ready)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
    QCoreApplication::processEvents(); // what the work's last words set off
    return result.get();
}

} // namespace quilo::test
