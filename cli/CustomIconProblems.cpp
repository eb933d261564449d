#include "cli/CustomIconProblems.h"

#include "cli/Command.h"

#include "iconfamily/ForkStore.h"
#include "iconfamily/IconFamily.h"

#include <cstdio>
#include <cstring>

namespace quilo::cli {
namespace {

std::string megabytes(std::size_t bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f MB", double(bytes) / (1 << 20));
    return text;
}

} // namespace

std::string explainCustomIconFailure(const ForkFailure& failure, std::size_t iconSize)
{
    const std::string where = forkStore().whereKept(failure.item);
    const std::string cause = failure.systemError ? std::string(": ") + std::strerror(failure.systemError) : "";
    switch (failure.error) {
    case fnfErr:
        return "no such file or folder";
    case mapReadErr:
        return where + " is damaged or not one Quilo can read; it was left as it is";
    case fsDataTooBigErr:
        return "the icon" + (iconSize ? " (" + megabytes(iconSize) + ")" : std::string())
             + " is too large for a resource fork, which holds at most "
             + megabytes(kMaxResourceDataSize) + "; " + where + " was left as it is";
    case permErr:
    case ioErr:
        return "cannot read " + where + cause;
    case writErr:
        return "cannot write " + where + cause + "; the old one was left as it is";
    default:
        return "the custom icon could not be changed (error " + std::to_string(failure.error) + ")";
    }
}

int setCustomIcon(const char* command, const IconFamily& family, const std::filesystem::path& path,
                  bool withCompatibility)
{
    std::error_code ignored;
    ForkFailure failure;
    const bool set = std::filesystem::is_directory(path, ignored)
                       ? family.setAsCustomIconForDirectory(path, withCompatibility, &failure)
                       : family.setAsCustomIconForFile(path, withCompatibility, &failure);
    if (set)
        return kExitSuccess;
    const std::string reason = explainCustomIconFailure(failure, family.iconFamilyHandle().size());
    std::fprintf(stderr, "quilo %s: %s: %s\n", command, displayPath(path).c_str(), displayPath(reason).c_str());
    return kExitFailure;
}

} // namespace quilo::cli
