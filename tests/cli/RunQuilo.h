#pragma once

// Runs the quilo command as a user's script would: a real process through the
// shell, its output and exit status collected.
#include "tests/support/Process.h"

#include <filesystem>
#include <string>

namespace quilo::test {
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
