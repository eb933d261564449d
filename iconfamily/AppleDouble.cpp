#include "iconfamily/AppleDouble.h"

#include "iconfamily/RawFields.h"
#include "iconfamily/ResourceFork.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

namespace quilo {
namespace {

using namespace raw;

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint32_t kAppleDoubleMagic = 0x00051607;
constexpr std::uint32_t kAppleDoubleVersion = 0x00020000;

struct RawHeader {
    std::uint8_t magic[4];
    std::uint8_t version[4];
    std::uint8_t filler[16];
    std::uint8_t entryCount[2];
};
static_assert(sizeof(RawHeader) == 26);

struct RawDescriptor {
    std::uint8_t id[4];
    std::uint8_t offset[4]; // from the start of the file
    std::uint8_t length[4];
};
static_assert(sizeof(RawDescriptor) == 12);

// macOS's extended-attribute header, after the Finder info and 2 bytes of
// padding. Samba refuses a long Finder info entry that lacks it.
struct RawAttributeHeader {
    std::uint8_t magic[4];
    std::uint8_t debugTag[4];
    std::uint8_t totalSize[4]; // offsets from the start of the file
    std::uint8_t dataStart[4];
    std::uint8_t dataLength[4];
    std::uint8_t reserved[12];
    std::uint8_t flags[2];
    std::uint8_t attributeCount[2];
};
static_assert(sizeof(RawAttributeHeader) == 36);
constexpr std::size_t kAttributeHeaderOffset = kFinderInfoSize + 2; // within the entry

constexpr std::array<std::uint8_t, 16> kMacFiller{'M', 'a', 'c', ' ', 'O', 'S', ' ', 'X',
                                                  ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};

std::vector<std::uint8_t> emptyMacFinderInfoEntry()
{
    std::vector<std::uint8_t> data(kMacFinderInfoLength);
    RawAttributeHeader header{};
    writeFourCharCode(header.magic, fourCharCode("ATTR"));
    put32(header.totalSize, kMacResourceForkOffset);
    put32(header.dataStart, kMacFinderInfoOffset + kAttributeHeaderOffset + sizeof(RawAttributeHeader));
    std::memcpy(data.data() + kAttributeHeaderOffset, &header, sizeof header);
    return data;
}

bool hasAttributeHeader(const std::vector<std::uint8_t>& finderInfo)
{
    return finderInfo.size() >= kAttributeHeaderOffset + sizeof(RawAttributeHeader)
        && readFourCharCode(finderInfo.data() + kAttributeHeaderOffset) == fourCharCode("ATTR");
}

std::size_t attributeCount(const std::vector<std::uint8_t>& finderInfo)
{
    const auto header = readRaw<RawAttributeHeader>(finderInfo, kAttributeHeaderOffset);
    return be16(header.attributeCount);
}

// The extended-attribute area counts its offsets from the start of the file,
// so when the Finder info entry moves they move with it. Attribute entries
// are an offset, a length, 2 bytes of flags and a counted name, padded to 4.
std::vector<std::uint8_t> movedAttributeArea(std::vector<std::uint8_t> finderInfo, std::size_t from, std::size_t to)
{
    auto shifted = [&](std::uint8_t* field) {
        writeFourCharCode(field, OSType(readFourCharCode(field) - from + to));
    };
    std::uint8_t* header = finderInfo.data() + kAttributeHeaderOffset;
    shifted(header + offsetof(RawAttributeHeader, totalSize));
    shifted(header + offsetof(RawAttributeHeader, dataStart));
    std::size_t at = kAttributeHeaderOffset + sizeof(RawAttributeHeader);
    for (std::size_t i = attributeCount(finderInfo); i > 0 && at + 11 <= finderInfo.size(); --i) {
        shifted(finderInfo.data() + at);
        at += (11 + std::size_t(finderInfo[at + 10]) + 3) & ~std::size_t(3);
    }
    return finderInfo;
}

bool allZero(std::span<const std::uint8_t> bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b == 0; });
}

bool finderInfoEntryHoldsNothing(const std::vector<std::uint8_t>& data)
{
    const std::span<const std::uint8_t> bytes(data);
    if (!allZero(bytes.first(std::min(bytes.size(), kFinderInfoSize))))
        return false;
    return hasAttributeHeader(data) ? attributeCount(data) == 0 : allZero(bytes);
}

bool forkHoldsNothing(std::span<const std::uint8_t> bytes)
{
    const auto fork = parseResourceFork(bytes);
    return fork && fork->resources.empty();
}

} // namespace

AppleDouble::AppleDouble()
    : AppleDouble(kMacFiller, {{kAppleDoubleFinderInfo, emptyMacFinderInfoEntry(), kMacFinderInfoOffset},
                               {kAppleDoubleResourceFork, {}, kMacResourceForkOffset}})
{
}

AppleDouble::AppleDouble(std::array<std::uint8_t, 16> filler, std::vector<AppleDoubleEntry> entries)
    : filler_(filler)
    , entries_(std::move(entries))
{
}

std::optional<AppleDouble> AppleDouble::parse(Bytes bytes)
{
    if (bytes.size() < sizeof(RawHeader))
        return std::nullopt;
    const auto header = readRaw<RawHeader>(bytes, 0);
    if (be32(header.magic) != kAppleDoubleMagic || be32(header.version) != kAppleDoubleVersion)
        return std::nullopt;
    const std::size_t count = std::size_t(header.entryCount[0]) << 8 | header.entryCount[1];
    if (count > (bytes.size() - sizeof(RawHeader)) / sizeof(RawDescriptor))
        return std::nullopt;
    const std::size_t headerEnd = sizeof(RawHeader) + count * sizeof(RawDescriptor);

    // Every descriptor is checked before anything is copied, so entries
    // that lie about sharing bytes cannot make the reader copy them twice.
    std::vector<RawDescriptor> descriptors(count);
    std::vector<std::pair<std::size_t, std::size_t>> ranges;
    std::vector<std::uint32_t> ids;
    for (std::size_t i = 0; i < count; ++i) {
        descriptors[i] = readRaw<RawDescriptor>(bytes, sizeof(RawHeader) + i * sizeof(RawDescriptor));
        const std::uint32_t id = be32(descriptors[i].id);
        const std::size_t offset = be32(descriptors[i].offset), length = be32(descriptors[i].length);
        // Compared as remaining sizes, so no sum can overflow.
        if (id == 0 || offset > bytes.size() || length > bytes.size() - offset || (length > 0 && offset < headerEnd))
            return std::nullopt;
        ids.push_back(id);
        if (length > 0)
            ranges.emplace_back(offset, offset + length);
    }
    std::sort(ids.begin(), ids.end());
    if (std::adjacent_find(ids.begin(), ids.end()) != ids.end())
        return std::nullopt;
    std::sort(ranges.begin(), ranges.end());
    for (std::size_t i = 1; i < ranges.size(); ++i)
        if (ranges[i].first < ranges[i - 1].second)
            return std::nullopt;
    std::vector<AppleDoubleEntry> entries;
    entries.reserve(count);
    for (const RawDescriptor& descriptor : descriptors) {
        const auto data = bytes.subspan(be32(descriptor.offset), be32(descriptor.length));
        entries.push_back({be32(descriptor.id), {data.begin(), data.end()}, be32(descriptor.offset)});
    }
    std::array<std::uint8_t, 16> filler;
    std::copy(std::begin(header.filler), std::end(header.filler), filler.begin());
    return AppleDouble(filler, std::move(entries));
}

std::optional<std::vector<std::uint8_t>> AppleDouble::serialise() const
{
    // Entries stay where they were read from unless one before them grew;
    // new entries go at the end.
    std::vector<std::size_t> order(entries_.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        const auto& x = entries_[a].offset;
        const auto& y = entries_[b].offset;
        return x && (!y || *x < *y);
    });
    const std::size_t headerEnd = sizeof(RawHeader) + entries_.size() * sizeof(RawDescriptor);
    if (entries_.size() > 0xFFFF)
        return std::nullopt;
    std::vector<std::size_t> offsets(entries_.size());
    std::size_t end = headerEnd;
    constexpr std::size_t kLimit = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t i : order) {
        const AppleDoubleEntry& entry = entries_[i];
        const std::size_t offset = std::max(entry.offset.value_or(0), end);
        if (offset > kLimit || entry.data.size() > kLimit - offset)
            return std::nullopt;
        offsets[i] = offset;
        end = offset + entry.data.size();
    }

    std::vector<std::uint8_t> out(end);
    RawHeader header;
    put32(header.magic, kAppleDoubleMagic);
    put32(header.version, kAppleDoubleVersion);
    std::copy(filler_.begin(), filler_.end(), header.filler);
    header.entryCount[0] = std::uint8_t(entries_.size() >> 8);
    header.entryCount[1] = std::uint8_t(entries_.size());
    std::memcpy(out.data(), &header, sizeof header);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        RawDescriptor descriptor;
        put32(descriptor.id, entries_[i].id);
        put32(descriptor.offset, offsets[i]);
        put32(descriptor.length, entries_[i].data.size());
        std::memcpy(out.data() + sizeof(RawHeader) + i * sizeof(RawDescriptor), &descriptor, sizeof descriptor);
        const AppleDoubleEntry& entry = entries_[i];
        const bool movedAttributes = entry.id == kAppleDoubleFinderInfo && entry.offset && *entry.offset != offsets[i]
                                  && hasAttributeHeader(entry.data);
        const auto data = movedAttributes ? movedAttributeArea(entry.data, *entry.offset, offsets[i]) : entry.data;
        std::copy(data.begin(), data.end(), out.begin() + std::ptrdiff_t(offsets[i]));
    }
    return out;
}

const AppleDoubleEntry* AppleDouble::entry(std::uint32_t id) const
{
    for (const AppleDoubleEntry& e : entries_)
        if (e.id == id)
            return &e;
    return nullptr;
}

AppleDoubleEntry& AppleDouble::entryForWriting(std::uint32_t id)
{
    for (AppleDoubleEntry& e : entries_)
        if (e.id == id)
            return e;
    return entries_.emplace_back(AppleDoubleEntry{id, {}, std::nullopt});
}

FinderInfo AppleDouble::finderInfo() const
{
    FinderInfo info;
    if (const AppleDoubleEntry* e = entry(kAppleDoubleFinderInfo))
        std::copy_n(e->data.begin(), std::min(e->data.size(), kFinderInfoSize), info.bytes.begin());
    return info;
}

void AppleDouble::setFinderInfo(const FinderInfo& info)
{
    AppleDoubleEntry& e = entryForWriting(kAppleDoubleFinderInfo);
    if (e.data.size() < kFinderInfoSize)
        e.data.resize(kFinderInfoSize);
    std::copy(info.bytes.begin(), info.bytes.end(), e.data.begin());
}

std::optional<std::span<const std::uint8_t>> AppleDouble::resourceFork() const
{
    if (const AppleDoubleEntry* e = entry(kAppleDoubleResourceFork))
        return std::span<const std::uint8_t>(e->data);
    return std::nullopt;
}

void AppleDouble::setResourceFork(std::vector<std::uint8_t> fork)
{
    entryForWriting(kAppleDoubleResourceFork).data = std::move(fork);
}

bool AppleDouble::holdsNothing() const
{
    return std::all_of(entries_.begin(), entries_.end(), [](const AppleDoubleEntry& e) {
        switch (e.id) {
        case kAppleDoubleFinderInfo:
            return finderInfoEntryHoldsNothing(e.data);
        case kAppleDoubleResourceFork:
            return e.data.empty() || forkHoldsNothing(e.data);
        default:
            return e.data.empty();
        }
    });
}

} // namespace quilo
