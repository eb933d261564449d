#pragma once

#include "iconfamily/AppleDouble.h"
#include "iconfamily/ForkStore.h"

#include <filesystem>
#include <optional>

// Reading and replacing one sidecar file.
namespace quilo::sidecar {

// The largest sidecar read or written: room for the largest fork Quilo
// writes (16 MB of data and its map) and whatever else a Mac keeps beside it.
// Larger ones are not read, so none is written.
constexpr std::uintmax_t kMaxSidecarSize = 32u << 20;

// noErr with nullopt when there is no sidecar (or none can exist: a name too
// long for one); mapReadErr when there is one that is not a regular file or
// not a well-formed AppleDouble file; ioErr or permErr when it cannot be
// read, with the system's reason in `failure`.
ForkFailure load(const std::filesystem::path& path, std::optional<AppleDouble>& sidecar);

// Replaces the sidecar atomically (a new one is 0644 less the umask, a
// replaced one keeps its mode), or deletes it when it holds nothing.
// fsDataTooBigErr, with nothing written, when it would be too large to read
// back; writErr with the system's reason when it cannot be written.
ForkFailure store(const std::filesystem::path& path, const AppleDouble& sidecar);

} // namespace quilo::sidecar
