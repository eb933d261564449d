#include "cli/Command.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace quilo::cli {

bool makeOutputDirectory(const char* command, const std::string& directory)
{
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error)
        std::fprintf(stderr, "quilo %s: cannot make %s: %s\n", command, directory.c_str(), error.message().c_str());
    return !error;
}

} // namespace quilo::cli
