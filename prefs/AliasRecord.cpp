#include "prefs/AliasRecord.h"

#include <QtEndian>

#include <sys/stat.h>
#include <vector>

namespace quilo {
namespace {

namespace fs = std::filesystem;

constexpr char kMagic[4] = {'Q', 'A', 'l', 's'};
constexpr quint16 kVersion = 1;
constexpr qsizetype kHeaderSize = 4 + 2 + 4 + 8 + 8;

// A move is looked for this many folders up from the old one, and among this
// many entries in all: enough for a rename or a move to a sibling folder,
// cheap enough to run on the main thread.
constexpr int kAncestorsSearched = 3;
constexpr int kEntriesSearched = 10000;

template <typename Number>
void append(QByteArray& bytes, Number number)
{
    const Number bigEndian = qToBigEndian(number);
    bytes.append(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
}

template <typename Number>
Number read(const QByteArray& bytes, qsizetype at)
{
    return qFromBigEndian<Number>(bytes.constData() + at);
}

bool statusOf(const fs::path& path, struct stat& status) { return ::lstat(path.c_str(), &status) == 0; }

bool isRecordedItem(const struct stat& status, const AliasRecord& record)
{
    return std::uint64_t(status.st_dev) == record.device && std::uint64_t(status.st_ino) == record.inode;
}

// The entries of `folder` and, `depth` levels down, of its subfolders on the
// record's device, spending one of `budget` per entry.
std::optional<fs::path> findIn(const fs::path& folder, const AliasRecord& record, int depth, int& budget)
{
    std::vector<fs::path> subfolders;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end && budget > 0;
         entry.increment(error)) {
        --budget;
        struct stat status {};
        if (!statusOf(entry->path(), status))
            continue;
        if (isRecordedItem(status, record))
            return entry->path();
        if (depth > 0 && S_ISDIR(status.st_mode) && std::uint64_t(status.st_dev) == record.device)
            subfolders.push_back(entry->path());
    }
    for (const fs::path& subfolder : subfolders) {
        if (auto found = findIn(subfolder, record, depth - 1, budget))
            return found;
    }
    return std::nullopt;
}

} // namespace

std::optional<AliasRecord> aliasRecordOfItem(const fs::path& path)
{
    struct stat status {};
    if (!statusOf(path, status))
        return std::nullopt;
    return AliasRecord{path, std::uint64_t(status.st_dev), std::uint64_t(status.st_ino)};
}

QByteArray encodedAliasRecord(const AliasRecord& record)
{
    const std::string& path = record.path.native();
    QByteArray bytes(kMagic, sizeof kMagic);
    append(bytes, kVersion);
    append(bytes, quint32(path.size()));
    append(bytes, quint64(record.device));
    append(bytes, quint64(record.inode));
    bytes.append(path.data(), qsizetype(path.size()));
    return bytes;
}

std::optional<AliasRecord> decodedAliasRecord(const QByteArray& bytes)
{
    if (bytes.size() < kHeaderSize || !bytes.startsWith(QByteArrayView(kMagic, sizeof kMagic))
        || read<quint16>(bytes, 4) != kVersion)
        return std::nullopt;
    const quint32 pathLength = read<quint32>(bytes, 6);
    if (pathLength != quint64(bytes.size() - kHeaderSize))
        return std::nullopt;
    const std::string path(bytes.constData() + kHeaderSize, pathLength);
    if (!path.starts_with('/') || path.find('\0') != std::string::npos)
        return std::nullopt;
    return AliasRecord{path, read<quint64>(bytes, 10), read<quint64>(bytes, 18)};
}

OSErr resolveAliasRecord(const AliasRecord& record, fs::path& resolved)
{
    struct stat status {};
    if (statusOf(record.path, status) && isRecordedItem(status, record)) {
        resolved = record.path;
        return noErr;
    }
    int budget = kEntriesSearched;
    fs::path folder = record.path.parent_path();
    for (int level = 0; level <= kAncestorsSearched && budget > 0; ++level) {
        // The old folder's own entries first: a rename in place is the likeliest move.
        if (auto found = findIn(folder, record, level == 0 ? 0 : 1, budget)) {
            resolved = *found;
            return noErr;
        }
        if (folder == folder.parent_path())
            break;
        folder = folder.parent_path();
    }
    return fnfErr;
}

} // namespace quilo
