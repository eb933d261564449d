#pragma once

#include "iconfamily/FinderInfo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// An AppleDouble file (version 2): the resource fork, Finder info and other
// Mac metadata of a file, kept as `._NAME` beside it where the volume has no
// place for them. Entries are kept byte for byte; only the Finder info and
// the resource fork are ever changed.
namespace quilo {

enum AppleDoubleEntryId : std::uint32_t {
    kAppleDoubleResourceFork = 2,
    kAppleDoubleRealName = 3,
    kAppleDoubleComment = 4,
    kAppleDoubleDates = 8,
    kAppleDoubleFinderInfo = 9,
};

// What macOS writes on volumes without forks: the Finder info entry at 50,
// 3760 bytes long (Finder info, then the extended-attribute area), and the
// resource fork right after it.
constexpr std::size_t kMacFinderInfoOffset = 50;
constexpr std::size_t kMacFinderInfoLength = 3760;
constexpr std::size_t kMacResourceForkOffset = kMacFinderInfoOffset + kMacFinderInfoLength;

struct AppleDoubleEntry {
    std::uint32_t id = 0;
    std::vector<std::uint8_t> data;
    // Where the entry was read from; a rewrite keeps it there when it can,
    // since macOS's extended-attribute area holds offsets from the file start.
    std::optional<std::size_t> offset;

    // Equal in meaning: where an entry sits is layout, not content.
    bool operator==(const AppleDoubleEntry& other) const { return id == other.id && data == other.data; }
};

class AppleDouble {
public:
    // A new sidecar as macOS lays one out: zero Finder info, an empty
    // extended-attribute area and an empty resource fork.
    AppleDouble();

    // The sidecar in `bytes`, or nullopt when it is not a well-formed one.
    static std::optional<AppleDouble> parse(std::span<const std::uint8_t> bytes);
    // The file's bytes, or nullopt when an entry is too large for the format.
    std::optional<std::vector<std::uint8_t>> serialise() const;

    // Zeros where the entry is missing or short.
    FinderInfo finderInfo() const;
    void setFinderInfo(const FinderInfo& info);
    // The fork entry's bytes, or nullopt when there is no fork entry.
    std::optional<std::span<const std::uint8_t>> resourceFork() const;
    void setResourceFork(std::vector<std::uint8_t> fork);

    // Whether the sidecar says nothing a file without one would not: zero
    // Finder info, no extended attributes, a fork without resources and
    // no other entry with content.
    bool holdsNothing() const;

    const AppleDoubleEntry* entry(std::uint32_t id) const;
    const std::vector<AppleDoubleEntry>& entries() const { return entries_; }
    const std::array<std::uint8_t, 16>& filler() const { return filler_; }

    bool operator==(const AppleDouble&) const = default;

private:
    AppleDouble(std::array<std::uint8_t, 16> filler, std::vector<AppleDoubleEntry> entries);
    AppleDoubleEntry& entryForWriting(std::uint32_t id);

    std::array<std::uint8_t, 16> filler_;
    std::vector<AppleDoubleEntry> entries_; // in descriptor order
};

} // namespace quilo
