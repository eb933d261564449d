#pragma once

#include "iconfamily/FinderInfo.h"
#include "iconfamily/IconServices.h"

#include <filesystem>

// File references (FSRef, FSSpec) from POSIX paths, and the Finder info
// behind them.
namespace quilo {

// An existing file or folder, named by its absolute path with every link
// followed: whatever is done through it happens to the link's target.
struct FSRef {
    std::filesystem::path path;
};

// An item by its folder and its name in that folder.
struct FSSpec {
    std::filesystem::path parent;
    std::filesystem::path name;

    std::filesystem::path path() const { return parent / name; }
};

// The reference of the file or folder at `path`. When nothing is there and
// creation is asked for, an empty file is made first. False when there is
// nothing to refer to.
bool getFSRef(const std::filesystem::path& path, FSRef& ref, bool createFileIfNecessary);
// The same as an FSSpec.
bool getFSSpec(const std::filesystem::path& path, FSSpec& fileSpec, bool createFileIfNecessary);

// FSGetCatalogInfo: the item's FSSpec and its folder's reference.
// fnfErr for an item with no folder (the root).
OSErr FSGetCatalogInfo(const FSRef& ref, FSSpec* fileSpec, FSRef* parentRef);
// FSGetCatalogInfo with kFSCatInfoFinderInfo. Changes go through a ForkEdit.
OSErr FSGetCatalogFinderInfo(const FSRef& ref, FinderInfo& info);

} // namespace quilo
