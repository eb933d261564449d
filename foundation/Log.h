#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quilo {

// Diagnostics: one formatted line per call, never localised. By default a line
// goes to stderr and to syslog; a sink installed by a test sees the exact text.
void logLine(std::string_view line);

// printf-style formatting, then logLine. Formats are ours, never user input.
[[gnu::format(printf, 1, 2)]] void logFormat(const char* format, ...);

// The system log alone, for a caller that shows its lines another way.
void writeToSystemLog(std::string_view line);

using LogSink = std::function<void(std::string_view line)>;

// Replaces where lines go; an empty sink restores stderr + syslog. Returns the
// previous sink so callers can nest.
LogSink setLogSink(LogSink sink);

} // namespace quilo
