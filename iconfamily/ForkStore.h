#pragma once

#include "iconfamily/FinderInfo.h"
#include "iconfamily/IconServices.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Where a file's or folder's resource fork and Finder info live. A Mac keeps
// them in the file system itself; elsewhere the platform keeps them beside
// the item. Paths name the item itself (links already followed). Every
// change replaces what was there atomically: an interrupted write leaves
// the old state or the new one, never a mixture.
namespace quilo {

constexpr OSErr eofErr = -39;
constexpr OSErr dupFNErr = -48;
constexpr OSErr permErr = -54;
constexpr OSErr resFNotFound = -193;
constexpr OSErr mapReadErr = -199;

struct HfsCodes {
    OSType type = 0;
    OSType creator = 0;
};

class ForkStore {
public:
    virtual ~ForkStore() = default;

    // Gives the item an empty resource fork. dupFNErr when it has a fork
    // already; where the item had no Finder info yet, it gets this type and
    // creator.
    virtual OSErr createResourceFork(const std::filesystem::path& item, OSType creator, OSType type) = 0;
    // The fork's bytes. resFNotFound when the item has no fork (or an empty one).
    virtual OSErr readResourceFork(const std::filesystem::path& item, std::vector<std::uint8_t>& fork) = 0;
    virtual OSErr writeResourceFork(const std::filesystem::path& item, std::span<const std::uint8_t> fork) = 0;

    // Zeros for an item that has none yet.
    virtual OSErr readFinderInfo(const std::filesystem::path& item, FinderInfo& info) = 0;
    virtual OSErr writeFinderInfo(const std::filesystem::path& item, const FinderInfo& info) = 0;

    // The type and creator among the item's attributes, read without
    // following a link: zeros when it has none, nullopt when its attributes
    // cannot be read at all.
    virtual std::optional<HfsCodes> hfsCodes(const std::filesystem::path& item) = 0;

    // Where the item's fork and Finder info are kept, for messages.
    virtual std::string whereKept(const std::filesystem::path& item) = 0;
    // Whether a fork or Finder info is kept for the item, even one whose
    // item is gone.
    virtual bool holdsAnything(const std::filesystem::path& item) = 0;
    // Deletes the item together with its fork and Finder info; an item
    // already gone is no error when its fork or Finder info was still kept.
    virtual OSErr removeItem(const std::filesystem::path& item) = 0;
};

// The store every custom-icon operation uses: the platform's.
ForkStore& forkStore();
// The platform's own, made on first use.
ForkStore& platformForkStore();

} // namespace quilo
