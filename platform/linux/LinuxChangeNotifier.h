#pragma once

#include "iconfamily/ChangeNotifier.h"

namespace quilo {

// File managers on Linux watch the folders they show (inotify) and see the
// sidecar change by themselves: there is nobody to tell.
class LinuxChangeNotifier final : public ChangeNotifier {
public:
    OSErr directoryModified(const std::filesystem::path&) override { return noErr; }
    void noteFileSystemChanged(const std::filesystem::path&) override {}
};

} // namespace quilo
