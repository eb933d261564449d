#pragma once

#include "iconfamily/ForkStore.h"

// The fork store of volumes without forks: an AppleDouble sidecar `._NAME`
// beside the item, laid out as macOS lays it out, so a Mac that reaches the
// folder (a share, a stick, an archive) sees the fork and the Finder info.
// A sidecar that cannot be parsed is never written over.
namespace quilo {

class SidecarForkStore final : public ForkStore {
public:
    std::unique_ptr<ForkEdit> edit(const std::filesystem::path& item) override;
    OSErr readResourceFork(const std::filesystem::path& item, std::vector<std::uint8_t>& fork) override;
    OSErr readFinderInfo(const std::filesystem::path& item, FinderInfo& info) override;
    std::string whereKept(const std::filesystem::path& item) override;
    bool holdsAnything(const std::filesystem::path& item) override;
    OSErr removeItem(const std::filesystem::path& item) override;
};

// `._NAME` beside the item; empty for a path with no name (the root).
std::filesystem::path sidecarPath(const std::filesystem::path& item);

} // namespace quilo
