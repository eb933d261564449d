#pragma once

#include "iconfamily/ForkStore.h"

#include <optional>
#include <utility>
#include <vector>

namespace quilo::test {

// The platform's fork store with a test's hand on it: it records what
// resource forks were created with, can pretend an item's attributes are
// unreadable, and can make Finder info writes fail. Installed for the
// object's lifetime.
class RecordingForkStore final : public ForkStore {
public:
    RecordingForkStore() : inner_(platformForkStore()) { replaceForkStore(this); }
    ~RecordingForkStore() override { replaceForkStore(nullptr); }
    RecordingForkStore(const RecordingForkStore&) = delete;
    RecordingForkStore& operator=(const RecordingForkStore&) = delete;

    std::vector<HfsCodes> created; // the creator and type each creation got
    bool attributesUnreadable = false;
    bool finderInfoWritesFail = false;

    OSErr createResourceFork(const std::filesystem::path& item, OSType creator, OSType type) override
    {
        created.push_back({type, creator});
        return inner_.createResourceFork(item, creator, type);
    }
    OSErr readResourceFork(const std::filesystem::path& item, std::vector<std::uint8_t>& fork) override
    {
        return inner_.readResourceFork(item, fork);
    }
    OSErr writeResourceFork(const std::filesystem::path& item, std::span<const std::uint8_t> fork) override
    {
        return inner_.writeResourceFork(item, fork);
    }
    OSErr readFinderInfo(const std::filesystem::path& item, FinderInfo& info) override
    {
        return inner_.readFinderInfo(item, info);
    }
    OSErr writeFinderInfo(const std::filesystem::path& item, const FinderInfo& info) override
    {
        return finderInfoWritesFail ? ioErr : inner_.writeFinderInfo(item, info);
    }
    std::optional<HfsCodes> hfsCodes(const std::filesystem::path& item) override
    {
        return attributesUnreadable ? std::nullopt : inner_.hfsCodes(item);
    }
    std::string whereKept(const std::filesystem::path& item) override { return inner_.whereKept(item); }
    bool holdsAnything(const std::filesystem::path& item) override { return inner_.holdsAnything(item); }
    OSErr removeItem(const std::filesystem::path& item) override { return inner_.removeItem(item); }

private:
    ForkStore& inner_;
};

} // namespace quilo::test
