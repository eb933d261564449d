#include "foundation/Log.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <syslog.h>
#include <vector>

namespace quilo {
namespace {

std::mutex sinkMutex;
LogSink currentSink;

void writeToSystem(std::string_view line)
{
    std::fprintf(stderr, "Quilo: %.*s\n", int(line.size()), line.data());
    writeToSystemLog(line);
}

} // namespace

void writeToSystemLog(std::string_view line)
{
    static std::once_flag opened;
    std::call_once(opened, [] { openlog("Quilo", LOG_PID, LOG_USER); });
    syslog(LOG_NOTICE, "%.*s", int(line.size()), line.data());
}

void logLine(std::string_view line)
{
    std::lock_guard lock(sinkMutex);
    if (currentSink)
        currentSink(line);
    else
        writeToSystem(line);
}

void logFormat(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list measure;
    va_copy(measure, args);
    const int length = std::vsnprintf(nullptr, 0, format, measure);
    va_end(measure);
    std::vector<char> text(std::size_t(length > 0 ? length : 0) + 1);
    std::vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    logLine(std::string_view(text.data(), text.size() - 1));
}

LogSink setLogSink(LogSink sink)
{
    std::lock_guard lock(sinkMutex);
    std::swap(currentSink, sink);
    return sink;
}

} // namespace quilo
