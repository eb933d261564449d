#pragma once

#include "iconfamily/FinderInfo.h"
#include "iconfamily/IconServices.h"
#include "iconfamily/ResourceFork.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Where a file's or folder's resource fork and Finder info live. A Mac keeps
// them in the file system itself; elsewhere the platform keeps them beside
// the item. Paths name the item itself (links already followed).
namespace quilo {

constexpr OSErr writErr = -20;
constexpr OSErr eofErr = -39;
constexpr OSErr dupFNErr = -48;
constexpr OSErr permErr = -54;
constexpr OSErr resFNotFound = -193;
constexpr OSErr addResFailed = -194;
constexpr OSErr mapReadErr = -199;
// The fork or the file that keeps it would pass what the format holds.
constexpr OSErr fsDataTooBigErr = -1310;

// What stopped a change: the Mac's error code, the system's errno where the
// system said why (0 otherwise), and the item whose fork was being changed.
struct ForkFailure {
    OSErr error = noErr;
    int systemError = 0;
    std::filesystem::path item;
};

// One item's resource fork and Finder info, read once and changed in memory
// while other writers of the same item wait; commit writes every change in
// one atomic replacement, so the item has the old state or the new one, never
// a mixture. Dropped without a commit, nothing is written.
class ForkEdit {
public:
    virtual ~ForkEdit() = default;

    // Why the item's fork and Finder info could not be read (error noErr when
    // they were); an edit that failed to read must not be committed.
    const ForkFailure& readFailure() const { return readFailure_; }
    // Whether nothing was kept for the item yet.
    bool isNew() const { return isNew_; }
    // The fork, or nullopt when the item has none.
    std::optional<ResourceFork>& resourceFork() { return fork_; }
    // Zeros for an item that has none yet.
    FinderInfo& finderInfo() { return finderInfo_; }

    // Writes what changed; a store left holding nothing goes. fsDataTooBigErr,
    // with nothing written, when the result would pass what is read back.
    virtual ForkFailure commit() = 0;

protected:
    ForkFailure readFailure_;
    bool isNew_ = true;
    std::optional<ResourceFork> fork_;
    FinderInfo finderInfo_;
};

class ForkStore {
public:
    virtual ~ForkStore() = default;

    // Starts a change of the item's fork and Finder info, waiting for other
    // writers of the item to finish. fnfErr when the item does not exist,
    // mapReadErr when what is kept for it cannot be parsed.
    virtual std::unique_ptr<ForkEdit> edit(const std::filesystem::path& item) = 0;

    // The fork's bytes. resFNotFound when the item has no fork (or an empty one).
    virtual OSErr readResourceFork(const std::filesystem::path& item, std::vector<std::uint8_t>& fork) = 0;
    // Zeros for an item that has none yet.
    virtual OSErr readFinderInfo(const std::filesystem::path& item, FinderInfo& info) = 0;

    // Where the item's fork and Finder info are kept, for messages.
    virtual std::string whereKept(const std::filesystem::path& item) = 0;
    // Whether a fork or Finder info is kept for the item, even one whose
    // item is gone.
    virtual bool holdsAnything(const std::filesystem::path& item) = 0;
    // Deletes the item together with its fork and Finder info; an item
    // already gone is no error when its fork or Finder info was still kept.
    virtual OSErr removeItem(const std::filesystem::path& item) = 0;
};

// The platform's store, made on first use.
ForkStore& forkStore();

} // namespace quilo
