#pragma once

#include "foundation/Log.h"

#include <string>
#include <vector>

namespace quilo::test {

// Collects every log line while it lives, instead of printing it.
class LogCapture {
public:
    LogCapture()
        : previous_(setLogSink([this](std::string_view line) { lines_.emplace_back(line); }))
    {
    }
    ~LogCapture() { setLogSink(std::move(previous_)); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<std::string>& lines() const { return lines_; }

private:
    std::vector<std::string> lines_;
    LogSink previous_;
};

} // namespace quilo::test
