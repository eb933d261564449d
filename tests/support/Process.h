#pragma once

// Other programs as the tests run them: a command run to its end with its
// output collected, or a program left running in the background with its
// output in a log file, ended (with any children it forked) with the object.
#include "tests/support/Files.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace quilo::test {

struct Outcome {
    int status = -1;
    std::string output;     // what the command line sends to stdout
    long peakKilobytes = 0; // the largest resident size the process reached
};

// Runs a command line through the shell; add "2>&1" to collect stderr too.
inline Outcome shell(const std::string& commandLine)
{
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0)
        return {-1, "pipe failed", 0};
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(pipeEnds[1], STDOUT_FILENO);
        ::close(pipeEnds[0]);
        ::execl("/bin/sh", "sh", "-c", commandLine.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(pipeEnds[1]);
    Outcome outcome;
    std::array<char, 4096> buffer{};
    for (ssize_t got; (got = ::read(pipeEnds[0], buffer.data(), buffer.size())) > 0;)
        outcome.output.append(buffer.data(), std::size_t(got));
    ::close(pipeEnds[0]);
    int status = 0;
    struct rusage usage {};
    ::wait4(child, &status, 0, &usage);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    outcome.peakKilobytes = usage.ru_maxrss;
    return outcome;
}

// A word quoted for the shell, whatever it holds.
inline std::string sq(const std::string& word)
{
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Runs a program with these arguments, stdout and stderr collected together.
inline Outcome runProgram(const std::vector<std::string>& arguments)
{
    std::string command;
    for (const std::string& argument : arguments)
        command += " " + sq(argument);
    return shell(command + " 2>&1");
}

// What a command line prints on stdout.
inline std::string commandOutput(const std::string& commandLine) { return shell(commandLine).output; }

inline bool waitUntil(const std::function<bool()>& question, double seconds)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!question()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

// A program in the background, in a process group of its own, its stdout and
// stderr appended to `log`. `environment` sets variables (or, without a
// value, removes them) for it alone.
class ChildProgram {
public:
    using Environment = std::vector<std::pair<std::string, std::optional<std::string>>>;

    ChildProgram(const std::vector<std::string>& command, std::filesystem::path log, const Environment& environment = {})
        : log_(std::move(log))
    {
        std::vector<char*> argv;
        for (const std::string& argument : command)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        const std::string logPath = log_.string(); // no allocation after the fork
        started_ = std::chrono::steady_clock::now();
        pid_ = ::fork();
        if (pid_ == 0) {
            ::setpgid(0, 0);
            for (const auto& [name, value] : environment)
                value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
            const int output = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
            const int nothing = ::open("/dev/null", O_RDONLY);
            ::dup2(nothing, STDIN_FILENO);
            ::dup2(output, STDOUT_FILENO);
            ::dup2(output, STDERR_FILENO);
            ::execvp(argv[0], argv.data());
            ::_exit(127);
        }
        ::setpgid(pid_, pid_); // also here, so that the group exists before the destructor can run
    }
    ~ChildProgram()
    {
        if (pid_ <= 0 || exited_)
            return;
        ::kill(-pid_, SIGTERM);
        if (!waitForExit(5'000))
            ::kill(-pid_, SIGKILL);
        ::kill(-pid_, SIGKILL); // children that outlived their parent
        if (!exited_)
            ::waitpid(pid_, nullptr, 0);
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    std::string log() const { return std::filesystem::exists(log_) ? readFileText(log_) : std::string(); }
    bool waitForLog(const std::string& text, double seconds = 30) const
    {
        return waitUntil([&] { return log().find(text) != std::string::npos; }, seconds);
    }
    // The exit status, once it ends within the time; none if it was killed.
    std::optional<int> waitForExit(int milliseconds = 10'000)
    {
        waitUntil([this] { return running() == false; }, milliseconds / 1000.0);
        if (!exited_ || !WIFEXITED(status_))
            return std::nullopt;
        return WEXITSTATUS(status_);
    }
    bool running()
    {
        if (!exited_ && ::waitpid(pid_, &status_, WNOHANG) == pid_)
            exited_ = true;
        return !exited_;
    }
    pid_t pid() const { return pid_; }
    std::chrono::steady_clock::time_point started() const { return started_; }

private:
    std::filesystem::path log_;
    pid_t pid_ = -1;
    int status_ = 0;
    bool exited_ = false;
    std::chrono::steady_clock::time_point started_;
};

} // namespace quilo::test
