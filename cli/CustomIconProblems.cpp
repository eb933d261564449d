#include "cli/CustomIconProblems.h"

#include "cli/Command.h"

#include "iconfamily/ForkStore.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/ResourceFork.h"

#include <cstdio>
#include <unistd.h>

namespace quilo::cli {
namespace {

std::string damaged(const std::filesystem::path& item)
{
    return forkStore().whereKept(item) + " is damaged or not one Quilo can read; it was left as it is";
}

// The reason one item's fork or Finder info stands in the way, if any.
std::string problemWith(const std::filesystem::path& item)
{
    FinderInfo info;
    std::vector<std::uint8_t> fork;
    const OSErr infoError = forkStore().readFinderInfo(item, info);
    const OSErr forkError = infoError ? infoError : forkStore().readResourceFork(item, fork);
    if (infoError == mapReadErr || forkError == mapReadErr || (forkError == noErr && !parseResourceFork(fork)))
        return damaged(item);
    if (infoError == permErr || forkError == permErr)
        return "cannot read " + forkStore().whereKept(item);
    if (::access(item.parent_path().c_str(), W_OK | X_OK) != 0)
        return "cannot write in the folder " + item.parent_path().string();
    return {};
}

} // namespace

std::string explainCustomIconFailure(const std::filesystem::path& path)
{
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    if (error)
        return "no such file or folder";
    std::string problem = problemWith(target);
    if (problem.empty() && std::filesystem::is_directory(target, error))
        problem = problemWith(customIconFileOfFolder(target));
    return problem.empty() ? "the custom icon could not be changed" : problem;
}

int setCustomIcon(const char* command, const IconFamily& family, const std::filesystem::path& path,
                  bool withCompatibility)
{
    std::error_code ignored;
    const bool set = std::filesystem::is_directory(path, ignored)
                       ? family.setAsCustomIconForDirectory(path, withCompatibility)
                       : family.setAsCustomIconForFile(path, withCompatibility);
    if (set)
        return kExitSuccess;
    std::fprintf(stderr, "quilo %s: %s: %s\n", command, displayPath(path).c_str(),
                 displayPath(explainCustomIconFailure(path)).c_str());
    return kExitFailure;
}

} // namespace quilo::cli
