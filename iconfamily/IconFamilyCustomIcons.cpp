// Custom icons on files and folders. Each item's fork and Finder info are
// read once, changed in memory and written once: a failure at any step, or
// a kill, leaves the item as it was, and two writers of one item take turns.
#include "iconfamily/ChangeNotifier.h"
#include "iconfamily/FileReference.h"
#include "iconfamily/ForkStore.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"

#include <new>

namespace quilo {
namespace {

// The old resources a Finder before icon families reads.
constexpr OSType kCompatibilityTypes[] = {fourCharCode("icl8"), fourCharCode("ICN#"), fourCharCode("ics8"),
                                          fourCharCode("ics#")};

std::uint16_t withFlags(std::uint16_t flags, std::uint16_t set, std::uint16_t cleared)
{
    return std::uint16_t((flags | set) & ~cleared);
}

void changeFinderFlags(ForkEdit& edit, std::uint16_t set, std::uint16_t cleared)
{
    edit.finderInfo().setFinderFlags(withFlags(edit.finderInfo().finderFlags(), set, cleared));
}

bool failed(ForkFailure* failure, ForkFailure why)
{
    if (failure)
        *failure = std::move(why);
    return false;
}

bool failed(ForkFailure* failure, OSErr error, const std::filesystem::path& item)
{
    return failed(failure, ForkFailure{error, 0, item});
}

bool fileReferences(const std::filesystem::path& path, FSSpec& fileSpec, FSRef& parentRef)
{
    FSRef ref;
    return getFSRef(path, ref, false) && FSGetCatalogInfo(ref, &fileSpec, &parentRef) == noErr;
}

// FSpCreateResFile: an empty fork for an item that has none, with the type
// and creator where nothing was kept for the item yet. dupFNErr when the
// item has a fork already.
OSErr createResourceFork(ForkEdit& edit, OSType creator, OSType type)
{
    if (edit.resourceFork())
        return dupFNErr;
    if (edit.isNew()) {
        edit.finderInfo().setFileType(type);
        edit.finderInfo().setCreator(creator);
    }
    edit.resourceFork().emplace();
    return noErr;
}

// Writes the edit, and tells whoever watches the folder that it changed.
bool commitAndNotify(ForkEdit& edit, const std::filesystem::path& folder, ForkFailure* failure)
{
    if (ForkFailure why = edit.commit(); why.error)
        return failed(failure, std::move(why));
    if (const OSErr error = changeNotifier().directoryModified(folder))
        return failed(failure, error, folder);
    return true;
}

} // namespace

// Puts a copy of the family in place of any custom icon in the fork, and the
// compatibility resources if asked. A family no fork can hold is refused
// before it is copied.
OSErr IconFamily::writeCustomIconResources(ForkEdit& edit, bool withCompatibility) const
{
    std::optional<ResourceFork>& fork = edit.resourceFork();
    if (!fork)
        return resFNotFound;
    if (hIconFamily_.size() > kMaxResourceDataSize)
        return fsDataTooBigErr;
    IconFamilyHandle copy;
    try {
        copy = hIconFamily_; // the family's own block is never handed over
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
    fork->remove(kIconFamilyType, kCustomIconResource);
    if (!fork->add({kIconFamilyType, kCustomIconResource, "", 0, std::move(copy)}))
        return addResFailed;
    if (withCompatibility)
        for (OSType type : kCompatibilityTypes) {
            // An earlier family's resource would be shown in place of this one.
            fork->remove(type, kCustomIconResource);
            addResourceType(*fork, type, kCustomIconResource); // a missing element is no failure
        }
    return noErr;
}

bool IconFamily::setAsCustomIconForFile(const std::filesystem::path& path, bool withCompatibility,
                                        ForkFailure* failure) const
{
    FSSpec fileSpec;
    FSRef parentRef;
    if (!fileReferences(path, fileSpec, parentRef))
        return failed(failure, fnfErr, path);
    const auto edit = forkStore().edit(fileSpec.path());
    if (edit->readFailure().error)
        return failed(failure, edit->readFailure());
    // The fork takes the file's own type and creator; one that has a fork
    // already (dupFNErr) keeps it.
    const FinderInfo attributes = edit->finderInfo();
    createResourceFork(*edit, attributes.creator(), attributes.fileType());
    if (const OSErr error = writeCustomIconResources(*edit, withCompatibility))
        return failed(failure, error, fileSpec.path());
    changeFinderFlags(*edit, kHasCustomIcon, kHasBeenInited);
    return commitAndNotify(*edit, parentRef.path, failure);
}

bool IconFamily::setAsCustomIconForDirectory(const std::filesystem::path& path, bool withCompatibility,
                                             ForkFailure* failure) const
{
    std::error_code error;
    FSRef folderRef;
    if (!std::filesystem::is_directory(path, error) || !getFSRef(path, folderRef, false))
        return failed(failure, fnfErr, path);
    // Too large for a fork: refused before the old icon file goes.
    if (hIconFamily_.size() > kMaxResourceDataSize)
        return failed(failure, fsDataTooBigErr, customIconFileOfFolder(folderRef.path));
    // The folder's own edit comes first, so that two changes of one folder
    // take turns from the start; what it read is looked at only at the end.
    const auto folderEdit = forkStore().edit(folderRef.path);
    // An earlier icon file is replaced, never edited; a fork left behind by
    // an icon file deleted on its own counts as one.
    const auto iconPath = customIconFileOfFolder(folderRef.path);
    if (std::filesystem::exists(iconPath, error) || forkStore().holdsAnything(iconPath))
        if (const OSErr removed = forkStore().removeItem(iconPath))
            return failed(failure, removed, iconPath);
    FSSpec iconSpec;
    if (!getFSSpec(iconPath, iconSpec, true))
        return failed(failure, ForkFailure{writErr, errno, iconPath});
    {
        const auto iconEdit = forkStore().edit(iconSpec.path());
        if (iconEdit->readFailure().error)
            return failed(failure, iconEdit->readFailure());
        if (createResourceFork(*iconEdit, kUnknownFourCharCode, kUnknownFourCharCode) != noErr)
            return failed(failure, dupFNErr, iconPath);
        if (const OSErr written = writeCustomIconResources(*iconEdit, withCompatibility))
            return failed(failure, written, iconPath);
        changeFinderFlags(*iconEdit, kIsInvisible, kHasBeenInited);
        if (ForkFailure why = iconEdit->commit(); why.error)
            return failed(failure, std::move(why));
    }
    if (folderEdit->readFailure().error)
        return failed(failure, folderEdit->readFailure());
    changeFinderFlags(*folderEdit, kHasCustomIcon, kHasBeenInited);
    return commitAndNotify(*folderEdit, folderRef.path, failure);
}

bool IconFamily::removeCustomIconFromFile(const std::filesystem::path& path, ForkFailure* failure)
{
    FSSpec fileSpec;
    FSRef parentRef;
    if (!fileReferences(path, fileSpec, parentRef))
        return failed(failure, fnfErr, path);
    const auto edit = forkStore().edit(fileSpec.path());
    if (edit->readFailure().error)
        return failed(failure, edit->readFailure());
    if (!edit->resourceFork())
        return failed(failure, resFNotFound, fileSpec.path());
    edit->resourceFork()->remove(kIconFamilyType, kCustomIconResource);
    changeFinderFlags(*edit, 0, kHasCustomIcon | kHasBeenInited);
    return commitAndNotify(*edit, parentRef.path, failure);
}

std::unique_ptr<IconFamily> IconFamily::iconFamilyWithIconOfFile(const std::filesystem::path& path)
{
    FSRef ref;
    FinderInfo info;
    if (!getFSRef(path, ref, false) || FSGetCatalogFinderInfo(ref, info) != noErr
        || !(info.finderFlags() & kHasCustomIcon))
        return nullptr;
    std::error_code error;
    FSSpec forkOwner;
    const bool isFolder = std::filesystem::is_directory(ref.path, error);
    if (!getFSSpec(isFolder ? customIconFileOfFolder(ref.path) : ref.path, forkOwner, false))
        return nullptr;
    std::vector<std::uint8_t> forkBytes;
    if (forkStore().readResourceFork(forkOwner.path(), forkBytes) != noErr)
        return nullptr;
    const auto fork = parseResourceFork(forkBytes);
    const Resource* icon = fork ? fork->find(kIconFamilyType, kCustomIconResource) : nullptr;
    if (!icon || !parseIconFamily(icon->data))
        return nullptr;
    return iconFamilyWithIconFamilyHandle(IconFamilyHandle(icon->data));
}

} // namespace quilo
