#include "platform/linux/SidecarForkStore.h"

#include "platform/linux/Sidecar.h"
#include "platform/linux/SidecarEdit.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace quilo {
namespace {

bool itemExists(const std::filesystem::path& item)
{
    struct stat status {};
    return ::stat(item.c_str(), &status) == 0;
}

OSErr loadExisting(const std::filesystem::path& item, std::optional<AppleDouble>& sidecar)
{
    const auto path = sidecarPath(item);
    if (path.empty() || !itemExists(item))
        return fnfErr;
    return sidecar::load(path, sidecar).error;
}

} // namespace

std::filesystem::path sidecarPath(const std::filesystem::path& item)
{
    const auto name = item.filename();
    if (name.empty() || name == "." || name == "..")
        return {};
    return item.parent_path() / ("._" + name.string());
}

std::unique_ptr<ForkEdit> SidecarForkStore::edit(const std::filesystem::path& item)
{
    return std::make_unique<SidecarEdit>(item, sidecarPath(item));
}

OSErr SidecarForkStore::readResourceFork(const std::filesystem::path& item, std::vector<std::uint8_t>& fork)
{
    std::optional<AppleDouble> sidecar;
    if (const OSErr error = loadExisting(item, sidecar))
        return error;
    const auto stored = sidecar ? sidecar->resourceFork() : std::nullopt;
    if (!stored || stored->empty())
        return resFNotFound;
    fork.assign(stored->begin(), stored->end());
    return noErr;
}

OSErr SidecarForkStore::readFinderInfo(const std::filesystem::path& item, FinderInfo& info)
{
    std::optional<AppleDouble> sidecar;
    if (const OSErr error = loadExisting(item, sidecar))
        return error;
    info = sidecar ? sidecar->finderInfo() : FinderInfo{};
    return noErr;
}

std::string SidecarForkStore::whereKept(const std::filesystem::path& item)
{
    return "the AppleDouble sidecar " + sidecarPath(item).string();
}

bool SidecarForkStore::holdsAnything(const std::filesystem::path& item)
{
    const auto path = sidecarPath(item);
    struct stat status {};
    return !path.empty() && ::lstat(path.c_str(), &status) == 0;
}

OSErr SidecarForkStore::removeItem(const std::filesystem::path& item)
{
    const auto path = sidecarPath(item);
    if (path.empty())
        return paramErr;
    const bool hadSidecar = holdsAnything(item);
    if (::unlink(item.c_str()) != 0 && !(errno == ENOENT && hadSidecar))
        return errno == ENOENT ? fnfErr : (errno == EACCES || errno == EPERM ? permErr : ioErr);
    return ::unlink(path.c_str()) == 0 || errno == ENOENT ? noErr : ioErr;
}

} // namespace quilo
