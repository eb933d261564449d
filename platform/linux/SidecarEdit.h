#pragma once

#include "iconfamily/AppleDouble.h"
#include "iconfamily/ForkStore.h"

#include <filesystem>
#include <optional>

namespace quilo {

// An edit of one item's sidecar. The item's folder is locked (flock) for the
// edit's lifetime: every writer of a sidecar in that folder takes the same
// lock, so two writers of one item take turns, each reading what the other
// committed. A folder whose file system has no locks is edited unlocked.
class SidecarEdit final : public ForkEdit {
public:
    SidecarEdit(const std::filesystem::path& item, const std::filesystem::path& sidecarPath);
    ~SidecarEdit() override;
    SidecarEdit(const SidecarEdit&) = delete;
    SidecarEdit& operator=(const SidecarEdit&) = delete;

    ForkFailure commit() override;

private:
    ForkFailure read();

    std::filesystem::path item_;
    std::filesystem::path sidecarPath_;
    int folder_ = -1;
    std::optional<AppleDouble> sidecar_; // as read; nullopt when there was none
};

} // namespace quilo
