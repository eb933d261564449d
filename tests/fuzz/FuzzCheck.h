#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace quilo::fuzz {

// A check of a fuzz target: a broken promise aborts, so libFuzzer keeps the
// input that broke it (and the replay test fails on it).
inline void expect(bool holds, const std::string& codec, const std::string& promise, const std::string& detail = {})
{
    if (holds)
        return;
    const std::string line = codec + ": " + promise + (detail.empty() ? "" : " for " + detail) + "\n";
    std::fputs(line.c_str(), stderr);
    std::abort();
}

} // namespace quilo::fuzz
