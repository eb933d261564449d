#include "cli/CustomIconReport.h"

#include "cli/Command.h"
#include "iconfamily/ForkStore.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/ResourceFork.h"

#include <cstdio>
#include <string>

namespace quilo::cli {
namespace {

std::string flagNames(std::uint16_t flags)
{
    std::string names;
    for (const auto& [flag, name] : {std::pair{kHasCustomIcon, "has custom icon"}, std::pair{kIsInvisible, "invisible"},
                                     std::pair{kHasBeenInited, "inited"}})
        if (flags & flag)
            names += (names.empty() ? " (" : ", ") + std::string(name);
    return names.empty() ? names : names + ")";
}

bool printFinderInfo(const std::filesystem::path& item, const char* indent)
{
    FinderInfo info;
    if (forkStore().readFinderInfo(item, info) != noErr) {
        std::printf("%sFinder info: unreadable (%s)\n", indent, forkStore().whereKept(item).c_str());
        return false;
    }
    std::printf("%sFinder info: type %s, creator %s, flags 0x%04X%s\n", indent,
                fourCharCodeString(info.fileType()).c_str(), fourCharCodeString(info.creator()).c_str(),
                info.finderFlags(), flagNames(info.finderFlags()).c_str());
    return true;
}

bool printResourceFork(const std::filesystem::path& item, const char* indent)
{
    std::vector<std::uint8_t> bytes;
    const OSErr error = forkStore().readResourceFork(item, bytes);
    if (error == resFNotFound || error == fnfErr) {
        std::printf("%sresource fork: none\n", indent);
        return true;
    }
    const auto fork = error ? std::nullopt : parseResourceFork(bytes);
    if (!fork) {
        std::printf("%sresource fork: unreadable (%s)\n", indent, forkStore().whereKept(item).c_str());
        return false;
    }
    std::printf("%sresource fork: %zu resource%s\n", indent, fork->resources.size(),
                fork->resources.size() == 1 ? "" : "s");
    for (const Resource& resource : fork->resources)
        std::printf("%s  %-10s %6d  %zu bytes\n", indent, fourCharCodeString(resource.type).c_str(), resource.id,
                    resource.data.size());
    return true;
}

} // namespace

bool printCustomIconState(const std::filesystem::path& path)
{
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    if (error) {
        std::fprintf(stderr, "quilo info: %s: no such file or folder\n", displayPath(path).c_str());
        return false;
    }
    const bool isFolder = std::filesystem::is_directory(target, error);
    const bool hasIcon = IconFamily::iconFamilyWithIconOfFile(target) != nullptr;
    std::printf("%s: %s, custom icon: %s\n", displayPath(path).c_str(), isFolder ? "folder" : "file",
                hasIcon ? "yes" : "no");
    bool readable = printFinderInfo(target, "  ");
    if (!isFolder)
        return printResourceFork(target, "  ") && readable;
    const auto iconFile = customIconFileOfFolder(target);
    if (!std::filesystem::exists(iconFile, error)) {
        std::printf("  icon file \"Icon\\r\": none\n");
        return readable;
    }
    std::printf("  icon file \"Icon\\r\":\n");
    readable = printFinderInfo(iconFile, "    ") && readable;
    return printResourceFork(iconFile, "    ") && readable;
}

} // namespace quilo::cli
