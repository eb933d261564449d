#pragma once

// Runs the quilo command as a user's script would: a real process through the
// shell, its output and exit status collected.
#include <array>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quilo::test {

struct Outcome {
    int status;
    std::string output; // stdout and stderr together
    long peakKilobytes;  // the largest resident size the process reached
};

// Runs a command line through the shell, its stdout collected.
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
    Outcome outcome{-1, {}, 0};
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

// Runs quilo through the shell, as a user's script would; `shellSetup` runs
// in that shell first (limits, traps).
inline Outcome quilo(const std::string& arguments, const std::string& shellSetup = "")
{
    return shell(shellSetup + " exec " + std::string(QUILO_BINARY) + " " + arguments + " 2>&1");
}

inline const std::filesystem::path kSamples = std::filesystem::path(QUILO_SOURCE_DIR) / "samples";

inline bool contains(const Outcome& outcome, const std::string& text)
{
    return outcome.output.find(text) != std::string::npos;
}

inline std::string quoted(const std::filesystem::path& path)
{
    return "'" + path.string() + "'";
}

} // namespace quilo::test
