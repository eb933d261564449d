#pragma once

// A message bus of the test's own: dbus-daemon listening in a temporary
// folder, with a configuration that starts no services, so nothing of the
// machine's answers on it. Gone with the object.
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quilo::test {

class DBusDaemon {
public:
    DBusDaemon()
    {
        const std::string config = (folder_ / "bus.conf").string();
        writeFileText(config, "<busconfig>\n"
                              "  <type>session</type>\n"
                              "  <listen>unix:path=" + (folder_ / "bus").string() + "</listen>\n"
                              "  <policy context=\"default\">\n"
                              "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
                              "    <allow eavesdrop=\"true\"/>\n"
                              "    <allow own=\"*\"/>\n"
                              "  </policy>\n"
                              "</busconfig>\n");
        int pipeEnds[2];
        if (::pipe(pipeEnds) != 0)
            throw std::runtime_error("pipe failed");
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(pipeEnds[0]);
            // Gone with the test even when the test crashes, and quiet: run as
            // root it complains that it cannot raise its file limit.
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);
            const int devNull = ::open("/dev/null", O_WRONLY);
            ::dup2(devNull, STDOUT_FILENO);
            ::dup2(devNull, STDERR_FILENO);
            const std::string configOption = "--config-file=" + config;
            const std::string addressOption = "--print-address=" + std::to_string(pipeEnds[1]);
            ::execlp("dbus-daemon", "dbus-daemon", configOption.c_str(), "--nofork", addressOption.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(pipeEnds[1]);
        // The address is printed once the bus accepts connections.
        char c;
        while (::read(pipeEnds[0], &c, 1) == 1 && c != '\n')
            address_ += c;
        ::close(pipeEnds[0]);
        if (address_.empty())
            throw std::runtime_error("dbus-daemon did not start (is the dbus-daemon package installed?)");
    }
    ~DBusDaemon()
    {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    DBusDaemon(const DBusDaemon&) = delete;
    DBusDaemon& operator=(const DBusDaemon&) = delete;

    const std::string& address() const { return address_; }

private:
    TemporaryDirectory folder_;
    pid_t pid_ = -1;
    std::string address_;
};

} // namespace quilo::test
