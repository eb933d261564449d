#include "platform/linux/SidecarForkStore.h"

#include "iconfamily/ResourceFork.h"
#include "platform/linux/Sidecar.h"

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
    return sidecar::load(path, sidecar);
}

// Loads the item's sidecar (a new one when it has none), lets `change` edit
// it, and stores it unless `change` reports an error. A sidecar left holding
// nothing goes, so taking an icon off leaves no trace; one the change left as
// it was is not written again (each write is a sync to disk).
template <typename Change>
OSErr updateSidecar(const std::filesystem::path& item, Change&& change,
                    sidecar::WhenEmpty whenEmpty = sidecar::WhenEmpty::Delete)
{
    std::optional<AppleDouble> sidecar;
    if (const OSErr error = loadExisting(item, sidecar))
        return error;
    const std::optional<AppleDouble> before = sidecar;
    if (!sidecar)
        sidecar.emplace();
    if (const OSErr error = change(*sidecar, !before))
        return error;
    if (before == sidecar)
        return noErr;
    return sidecar::store(sidecarPath(item), *sidecar, whenEmpty);
}

std::vector<std::uint8_t> emptyResourceFork()
{
    return serialiseResourceFork(ResourceFork{}).value();
}

} // namespace

std::filesystem::path sidecarPath(const std::filesystem::path& item)
{
    const auto name = item.filename();
    if (name.empty() || name == "." || name == "..")
        return {};
    return item.parent_path() / ("._" + name.string());
}

OSErr SidecarForkStore::createResourceFork(const std::filesystem::path& item, OSType creator, OSType type)
{
    return updateSidecar(item, [&](AppleDouble& sidecar, bool isNew) {
        const auto fork = sidecar.resourceFork();
        if (fork && !fork->empty())
            return dupFNErr;
        if (isNew) {
            FinderInfo info;
            info.setFileType(type);
            info.setCreator(creator);
            sidecar.setFinderInfo(info);
        }
        sidecar.setResourceFork(emptyResourceFork());
        return noErr;
    }, sidecar::WhenEmpty::Keep); // the empty fork is what was asked for
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

OSErr SidecarForkStore::writeResourceFork(const std::filesystem::path& item, std::span<const std::uint8_t> fork)
{
    return updateSidecar(item, [&](AppleDouble& sidecar, bool) {
        sidecar.setResourceFork({fork.begin(), fork.end()});
        return noErr;
    });
}

OSErr SidecarForkStore::readFinderInfo(const std::filesystem::path& item, FinderInfo& info)
{
    std::optional<AppleDouble> sidecar;
    if (const OSErr error = loadExisting(item, sidecar))
        return error;
    info = sidecar ? sidecar->finderInfo() : FinderInfo{};
    return noErr;
}

OSErr SidecarForkStore::writeFinderInfo(const std::filesystem::path& item, const FinderInfo& info)
{
    return updateSidecar(item, [&](AppleDouble& sidecar, bool) {
        sidecar.setFinderInfo(info);
        return noErr;
    });
}

std::optional<HfsCodes> SidecarForkStore::hfsCodes(const std::filesystem::path& item)
{
    struct stat status {};
    if (::lstat(item.c_str(), &status) != 0)
        return std::nullopt;
    // A link's attributes are its own: a link has no sidecar of its own as a
    // rule, so its codes are zeros.
    std::optional<AppleDouble> sidecar;
    const auto path = sidecarPath(item);
    if (path.empty() || sidecar::load(path, sidecar) != noErr || !sidecar)
        return HfsCodes{};
    const FinderInfo info = sidecar->finderInfo();
    return HfsCodes{info.fileType(), info.creator()};
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
