#pragma once

#include "iconfamily/IconServices.h"

#include <filesystem>

// Tells file browsers that a folder's contents changed, so they show a new
// custom icon without waiting.
namespace quilo {

class ChangeNotifier {
public:
    virtual ~ChangeNotifier() = default;
    virtual OSErr directoryModified(const std::filesystem::path& folder) = 0;
    // A job's word that it changed the item; nothing is reported back.
    virtual void noteFileSystemChanged(const std::filesystem::path& item) = 0;
};

ChangeNotifier& changeNotifier();

} // namespace quilo
