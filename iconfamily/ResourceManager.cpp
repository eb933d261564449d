#include "iconfamily/ResourceManager.h"

#include "iconfamily/ForkStore.h"

#include <optional>

namespace quilo {
namespace {

struct OpenResourceFile {
    ResFileRefNum refNum = 0;
    FSSpec fileSpec;
    ResourceFork fork;
    bool changed = false;
};

// One current file per thread rather than per process: two jobs on two
// threads then cannot add to each other's file.
struct ResourceManagerState {
    std::optional<OpenResourceFile> current;
    ResFileRefNum nextRefNum = 1;
    OSErr lastError = noErr;
};

thread_local ResourceManagerState state;

void setResError(OSErr error) { state.lastError = error; }

} // namespace

void FSpCreateResFile(const FSSpec& fileSpec, OSType creator, OSType fileType, ScriptCode)
{
    setResError(forkStore().createResourceFork(fileSpec.path(), creator, fileType));
}

ResFileRefNum FSpOpenResFile(const FSSpec& fileSpec, std::int8_t)
{
    std::vector<std::uint8_t> bytes;
    if (const OSErr error = forkStore().readResourceFork(fileSpec.path(), bytes)) {
        setResError(error);
        return kResFileNotOpened;
    }
    auto fork = parseResourceFork(bytes);
    if (!fork) {
        setResError(mapReadErr);
        return kResFileNotOpened;
    }
    state.nextRefNum = ResFileRefNum(state.nextRefNum % 0x7FFF + 1);
    state.current = OpenResourceFile{state.nextRefNum, fileSpec, std::move(*fork), false};
    setResError(noErr);
    return state.current->refNum;
}

const Resource* GetResource(OSType type, ResID id)
{
    const Resource* resource = state.current ? state.current->fork.find(type, id) : nullptr;
    setResError(resource ? noErr : resFNotFound);
    return resource;
}

void RemoveResource(const Resource* resource)
{
    const bool removed = state.current && resource && state.current->fork.remove(resource->type, resource->id);
    if (removed)
        state.current->changed = true;
    setResError(removed ? noErr : rmvResFailed);
}

void AddResource(std::vector<std::uint8_t> data, OSType type, ResID id, const std::string& name)
{
    const bool added = state.current && state.current->fork.add({type, id, name, 0, std::move(data)});
    if (added)
        state.current->changed = true;
    setResError(added ? noErr : addResFailed);
}

void CloseResFile(ResFileRefNum refNum)
{
    if (!state.current || state.current->refNum != refNum) {
        setResError(resFNotFound);
        return;
    }
    OpenResourceFile file = std::move(*state.current);
    state.current.reset();
    if (!file.changed) {
        setResError(noErr);
        return;
    }
    const auto bytes = serialiseResourceFork(file.fork);
    setResError(bytes ? forkStore().writeResourceFork(file.fileSpec.path(), *bytes) : writErr);
}

OSErr ResError() { return state.lastError; }

} // namespace quilo
