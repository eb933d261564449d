#pragma once

// A real X server of the test's own: Xvfb on the first free display, gone
// with the object.
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace quilo::test {

class XvfbServer {
public:
    XvfbServer()
    {
        int pipeEnds[2];
        if (::pipe(pipeEnds) != 0)
            throw std::runtime_error("pipe failed");
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(pipeEnds[0]);
            const std::string fd = std::to_string(pipeEnds[1]);
            // -displayfd: Xvfb picks a free display and writes its number once ready.
            ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1280x800x24", "-nolisten", "tcp",
                     "-noreset", nullptr);
            ::_exit(127);
        }
        ::close(pipeEnds[1]);
        std::string number;
        char c;
        while (::read(pipeEnds[0], &c, 1) == 1 && c != '\n')
            number += c;
        ::close(pipeEnds[0]);
        if (number.empty())
            throw std::runtime_error("Xvfb did not start (is the xvfb package installed?)");
        display_ = ":" + number;
    }
    ~XvfbServer()
    {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    const std::string& display() const { return display_; }

    // Makes this server the process's display, for the Qt application made next.
    void becomeTheDisplay() const
    {
        ::setenv("DISPLAY", display_.c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "xcb", 1);
        ::unsetenv("WAYLAND_DISPLAY");
    }

private:
    pid_t pid_ = -1;
    std::string display_;
};

} // namespace quilo::test
