#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <sys/types.h>

namespace quilo {

// Replaces (or creates) the file at `path` with `bytes`: written to a
// temporary file in the same folder, flushed to disk, then renamed over the
// target, so readers see the old file or the new one, never a mixture, and a
// link at `path` is replaced rather than written through. A replaced regular
// file keeps its permissions; a new file (or one replacing a link) gets
// `newFileMode` less the umask. `executable` adds execute permission
// wherever reading is allowed (for scripts, which must never be seen
// half-written or not yet executable). False, with nothing changed and errno
// telling why, on error.
bool writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                         bool executable = false, mode_t newFileMode = 0666);

} // namespace quilo
