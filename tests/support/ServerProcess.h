#pragma once

// A server program of the test's own that writes one line to a pipe once it
// is ready (where it listens); ended with the object, or with the test
// process should that crash.
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace quilo::test {

class ServerProcess {
public:
    // `command` is the program and its arguments; "{fd}" in an argument
    // stands for the descriptor the program is to write its line to.
    explicit ServerProcess(std::vector<std::string> command)
    {
        int pipeEnds[2];
        if (::pipe(pipeEnds) != 0)
            throw std::runtime_error("pipe failed");
        for (std::string& argument : command)
            if (const auto at = argument.find("{fd}"); at != std::string::npos)
                argument.replace(at, 4, std::to_string(pipeEnds[1]));
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(pipeEnds[0]);
            runQuietly(command);
        }
        ::close(pipeEnds[1]);
        char c;
        while (::read(pipeEnds[0], &c, 1) == 1 && c != '\n')
            line_ += c;
        ::close(pipeEnds[0]);
        if (line_.empty())
            throw std::runtime_error(command[0] + " did not start (is its package installed?)");
    }
    ~ServerProcess()
    {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    const std::string& line() const { return line_; }

private:
    // Servers run as root complain of limits they cannot raise; nobody reads it.
    [[noreturn]] static void runQuietly(const std::vector<std::string>& command)
    {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        const int devNull = ::open("/dev/null", O_WRONLY);
        ::dup2(devNull, STDOUT_FILENO);
        ::dup2(devNull, STDERR_FILENO);
        std::vector<char*> argv;
        for (const std::string& argument : command)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        ::execvp(argv[0], argv.data());
        ::_exit(127);
    }

    pid_t pid_ = -1;
    std::string line_;
};

} // namespace quilo::test
