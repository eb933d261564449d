#pragma once

#include "iconfamily/FileReference.h"
#include "iconfamily/ResourceFork.h"

#include <cstdint>
#include <string>
#include <vector>

// The Resource Manager's calls that custom icons need, over the fork store.
// Opening a resource file makes it the current one until it is closed;
// changes are written when it is closed, in one atomic replacement. Each
// call leaves its result for ResError.
namespace quilo {

using ResID = std::int16_t;
using ResFileRefNum = std::int16_t;
using ScriptCode = std::int16_t;

constexpr ResFileRefNum kResFileNotOpened = -1;
constexpr std::int8_t fsRdWrPerm = 3;
constexpr ScriptCode smSystemScript = 0;
constexpr OSErr writErr = -20;
constexpr OSErr addResFailed = -194;
constexpr OSErr rmvResFailed = -196;

void FSpCreateResFile(const FSSpec& fileSpec, OSType creator, OSType fileType, ScriptCode scriptTag);
// kResFileNotOpened when the item has no fork or its fork cannot be read.
ResFileRefNum FSpOpenResFile(const FSSpec& fileSpec, std::int8_t permission);
// The resource in the current file, or null. Valid until the next change.
const Resource* GetResource(OSType type, ResID id);
void RemoveResource(const Resource* resource);
void AddResource(std::vector<std::uint8_t> data, OSType type, ResID id, const std::string& name);
void CloseResFile(ResFileRefNum refNum);
OSErr ResError();

} // namespace quilo
