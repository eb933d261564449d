#include "cli/Command.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace quilo::cli {

std::string displayPath(const std::string& path)
{
    std::string shown;
    for (const char c : path) {
        if (c == '\r')
            shown += "\\r";
        else if (c == '\n')
            shown += "\\n";
        else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(c));
            shown += escape;
        } else
            shown += c;
    }
    return shown;
}

bool makeOutputDirectory(const char* command, const std::string& directory)
{
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error)
        std::fprintf(stderr, "quilo %s: cannot make %s: %s\n", command, directory.c_str(), error.message().c_str());
    return !error;
}

} // namespace quilo::cli
