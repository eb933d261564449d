// Custom icons on files and folders. Every step that can fail ends the
// operation with false and nothing rolled back; the fork is closed before
// the Finder flags change, so a failure after the close leaves the new
// resource in place with the old flags.
#include "iconfamily/ChangeNotifier.h"
#include "iconfamily/FileReference.h"
#include "iconfamily/ForkStore.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/ResourceManager.h"

#include <new>

namespace quilo {
namespace {

constexpr std::int8_t fsRdPerm = 1;

// The old resources a Finder before icon families reads.
constexpr OSType kCompatibilityTypes[] = {fourCharCode("icl8"), fourCharCode("ICN#"), fourCharCode("ics8"),
                                          fourCharCode("ics#")};

std::uint16_t withFlags(std::uint16_t flags, std::uint16_t set, std::uint16_t cleared)
{
    return std::uint16_t((flags | set) & ~cleared);
}

bool fileReferences(const std::filesystem::path& path, FSSpec& fileSpec, FSRef& parentRef)
{
    FSRef ref;
    return getFSRef(path, ref, false) && FSGetCatalogInfo(ref, &fileSpec, &parentRef) == noErr;
}

bool changeFinderFlags(const FSSpec& fileSpec, std::uint16_t set, std::uint16_t cleared)
{
    FinderInfo info;
    if (ResError() != noErr || FSpGetFInfo(fileSpec, info) != noErr)
        return false;
    info.setFinderFlags(withFlags(info.finderFlags(), set, cleared));
    return FSpSetFInfo(fileSpec, info) == noErr;
}

} // namespace

// Opens the fork, puts a copy of the family in place of any custom icon,
// adds the compatibility resources if asked, and closes the fork.
bool IconFamily::writeCustomIconResources(const FSSpec& fileSpec, bool withCompatibility) const
{
    const ResFileRefNum file = FSpOpenResFile(fileSpec, fsRdWrPerm);
    if (file == kResFileNotOpened)
        return false;
    IconFamilyHandle copy;
    try {
        copy = hIconFamily_; // the family's own block is never handed over
    } catch (const std::bad_alloc&) {
        CloseResFile(file);
        return false;
    }
    if (const Resource* existing = GetResource(kIconFamilyType, kCustomIconResource))
        RemoveResource(existing);
    AddResource(std::move(copy), kIconFamilyType, kCustomIconResource, "");
    if (ResError() != noErr) {
        CloseResFile(file);
        return false;
    }
    if (withCompatibility)
        for (OSType type : kCompatibilityTypes)
            addResourceType(type, kCustomIconResource);
    CloseResFile(file);
    return true;
}

bool IconFamily::setAsCustomIconForFile(const std::filesystem::path& path, bool withCompatibility) const
{
    FSSpec fileSpec;
    FSRef parentRef;
    if (!fileReferences(path, fileSpec, parentRef))
        return false;
    const HfsCodes codes = forkStore().hfsCodes(path).value_or(HfsCodes{kUnknownFourCharCode, kUnknownFourCharCode});
    FSpCreateResFile(fileSpec, codes.creator, codes.type, smSystemScript);
    if (ResError() != noErr && ResError() != dupFNErr)
        return false;
    if (!writeCustomIconResources(fileSpec, withCompatibility))
        return false;
    if (!changeFinderFlags(fileSpec, kHasCustomIcon, kHasBeenInited))
        return false;
    return changeNotifier().directoryModified(parentRef.path) == noErr;
}

bool IconFamily::setAsCustomIconForDirectory(const std::filesystem::path& path, bool withCompatibility) const
{
    std::error_code error;
    if (!std::filesystem::is_directory(path, error))
        return false;
    // An earlier icon file is replaced, never edited; a fork left behind by
    // an icon file deleted on its own counts as one.
    const auto iconPath = customIconFileOfFolder(path);
    if (std::filesystem::exists(iconPath, error) || forkStore().holdsAnything(iconPath))
        if (forkStore().removeItem(iconPath) != noErr)
            return false;
    FSSpec iconSpec, folderSpec;
    FSRef folderRef;
    if (!getFSSpec(iconPath, iconSpec, true) || !getFSSpec(path, folderSpec, true) || !getFSRef(path, folderRef, false))
        return false;
    FSpCreateResFile(iconSpec, kUnknownFourCharCode, kUnknownFourCharCode, smSystemScript);
    if (ResError() != noErr)
        return false;
    if (!writeCustomIconResources(iconSpec, withCompatibility))
        return false;
    if (!changeFinderFlags(iconSpec, kIsInvisible, kHasBeenInited))
        return false;
    FinderInfo folderInfo;
    if (FSGetCatalogFinderInfo(folderRef, folderInfo) != noErr)
        return false;
    folderInfo.setFinderFlags(withFlags(folderInfo.finderFlags(), kHasCustomIcon, kHasBeenInited));
    FSSetCatalogFinderInfo(folderRef, folderInfo); // unchecked: the icon is in place either way
    return changeNotifier().directoryModified(folderRef.path) == noErr;
}

bool IconFamily::removeCustomIconFromFile(const std::filesystem::path& path)
{
    FSSpec fileSpec;
    FSRef parentRef;
    if (!fileReferences(path, fileSpec, parentRef))
        return false;
    const ResFileRefNum file = FSpOpenResFile(fileSpec, fsRdWrPerm);
    if (file == kResFileNotOpened)
        return false;
    if (const Resource* icon = GetResource(kIconFamilyType, kCustomIconResource))
        RemoveResource(icon);
    CloseResFile(file);
    if (!changeFinderFlags(fileSpec, 0, kHasCustomIcon | kHasBeenInited))
        return false;
    return changeNotifier().directoryModified(parentRef.path) == noErr;
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
    const ResFileRefNum file = FSpOpenResFile(forkOwner, fsRdPerm);
    if (file == kResFileNotOpened)
        return nullptr;
    std::unique_ptr<IconFamily> family;
    const Resource* icon = GetResource(kIconFamilyType, kCustomIconResource);
    if (icon && parseIconFamily(icon->data))
        family = iconFamilyWithIconFamilyHandle(IconFamilyHandle(icon->data));
    CloseResFile(file);
    return family;
}

} // namespace quilo
