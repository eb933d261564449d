#pragma once

#include "iconfamily/IconServices.h"

#include <QByteArray>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace quilo {

// What finds a file again after it moved within its file system: its path
// when the record was made, and its device and inode, which a rename keeps.
struct AliasRecord {
    std::filesystem::path path;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const AliasRecord&) const = default;
};

// The record of the item at `path` (absolute, links followed), as it is now.
// Nullopt when nothing is there.
std::optional<AliasRecord> aliasRecordOfItem(const std::filesystem::path& path);

// The bytes of a record, all numbers big-endian:
//   'QAls', version (u16) 1, path length (u16), device (u64), inode (u64),
//   the path's bytes.
QByteArray encodedAliasRecord(const AliasRecord& record);
// Nullopt unless the bytes are exactly one record of a known version with an
// absolute path.
std::optional<AliasRecord> decodedAliasRecord(const QByteArray& bytes);

// Where the record's item is now: its old path while that still names the
// same device and inode, else the first entry with both found in the old
// folder, or in one of its ancestors or their immediate subfolders, up to a
// bounded number of entries. fnfErr when it is not found.
OSErr resolveAliasRecord(const AliasRecord& record, std::filesystem::path& resolved);

} // namespace quilo
