#include "iconfamily/FileReference.h"

#include "foundation/AtomicFile.h"
#include "iconfamily/ForkStore.h"

#include <system_error>

namespace quilo {

bool getFSRef(const std::filesystem::path& path, FSRef& ref, bool createFileIfNecessary)
{
    std::error_code error;
    if (path.empty())
        return false;
    if (!std::filesystem::exists(path, error)) {
        if (!createFileIfNecessary || !writeFileAtomically(path, {}))
            return false;
    }
    // Resolving the path is where links are followed, as turning a URL into
    // a file reference does.
    auto resolved = std::filesystem::canonical(path, error);
    if (error)
        return false;
    ref.path = std::move(resolved);
    return true;
}

bool getFSSpec(const std::filesystem::path& path, FSSpec& fileSpec, bool createFileIfNecessary)
{
    FSRef ref;
    return getFSRef(path, ref, createFileIfNecessary) && FSGetCatalogInfo(ref, &fileSpec, nullptr) == noErr;
}

OSErr FSGetCatalogInfo(const FSRef& ref, FSSpec* fileSpec, FSRef* parentRef)
{
    if (ref.path.empty() || !ref.path.has_relative_path())
        return fnfErr; // the root has no folder
    if (fileSpec)
        *fileSpec = {ref.path.parent_path(), ref.path.filename()};
    if (parentRef)
        parentRef->path = ref.path.parent_path();
    return noErr;
}

OSErr FSGetCatalogFinderInfo(const FSRef& ref, FinderInfo& info) { return forkStore().readFinderInfo(ref.path, info); }

} // namespace quilo
