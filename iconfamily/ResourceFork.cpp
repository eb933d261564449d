#include "iconfamily/ResourceFork.h"

#include "iconfamily/RawFields.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quilo {
namespace {

using namespace raw;

using Bytes = std::span<const std::uint8_t>;

// The on-disk layouts, every field big-endian.
struct RawHeader {
    std::uint8_t dataOffset[4];
    std::uint8_t mapOffset[4];
    std::uint8_t dataLength[4];
    std::uint8_t mapLength[4];
};
static_assert(sizeof(RawHeader) == kResourceForkHeaderSize);

struct RawMapHeader {
    RawHeader headerCopy;
    std::uint8_t handle[4];
    std::uint8_t fileRef[2];
    std::uint8_t attributes[2];
    std::uint8_t typeListOffset[2]; // from the start of the map
    std::uint8_t nameListOffset[2]; // from the start of the map
};
static_assert(sizeof(RawMapHeader) == 28);

struct RawTypeEntry {
    std::uint8_t type[4];
    std::uint8_t countMinusOne[2];
    std::uint8_t referenceListOffset[2]; // from the start of the type list
};
static_assert(sizeof(RawTypeEntry) == 8);

struct RawReference {
    std::uint8_t id[2];
    std::uint8_t nameOffset[2]; // from the start of the name list; 0xFFFF for none
    std::uint8_t attributes;
    std::uint8_t dataOffset[3]; // from the start of the data area
    std::uint8_t handle[4];
};
static_assert(sizeof(RawReference) == 12);

constexpr std::uint16_t kNoName = 0xFFFF;

template<typename T>
void appendRaw(std::vector<std::uint8_t>& out, const T& raw)
{
    const auto* p = reinterpret_cast<const std::uint8_t*>(&raw);
    out.insert(out.end(), p, p + sizeof(T));
}

using Range = std::pair<std::size_t, std::size_t>; // [first, second)

// Ranges that must not share a byte: two resources on one data block, or
// reference lists on top of each other, mean a fork that lies.
bool disjoint(std::vector<Range> ranges)
{
    std::sort(ranges.begin(), ranges.end());
    for (std::size_t i = 1; i < ranges.size(); ++i)
        if (ranges[i].first < ranges[i - 1].second)
            return false;
    return true;
}

} // namespace

const Resource* ResourceFork::find(OSType type, std::int16_t id) const
{
    for (const Resource& resource : resources)
        if (resource.type == type && resource.id == id)
            return &resource;
    return nullptr;
}

bool ResourceFork::add(Resource resource)
{
    if (find(resource.type, resource.id) || resource.name.size() > 255)
        return false;
    // Kept beside the others of its type, so the vector stays in map order.
    auto last = std::find_if(resources.rbegin(), resources.rend(),
                             [&](const Resource& r) { return r.type == resource.type; });
    if (last == resources.rend())
        resources.push_back(std::move(resource));
    else
        resources.insert(last.base(), std::move(resource));
    return true;
}

bool ResourceFork::remove(OSType type, std::int16_t id)
{
    const auto it = std::find_if(resources.begin(), resources.end(),
                                 [&](const Resource& r) { return r.type == type && r.id == id; });
    if (it == resources.end())
        return false;
    resources.erase(it);
    return true;
}

namespace {

// One reference as the map gives it, its extents already checked.
struct Reference {
    OSType type;
    std::int16_t id;
    std::uint8_t attributes;
    std::size_t block;  // the data's first byte, within the data area
    std::size_t length;
    std::size_t name;   // the name's length byte within the map, or kNoName
};

// A type listed twice, or two resources of one type with one ID, make a
// map that cannot be edited without losing one.
bool uniqueTypesAndIds(std::vector<OSType> types, const std::vector<Reference>& references)
{
    std::vector<std::pair<OSType, std::int16_t>> keys;
    for (const Reference& reference : references)
        keys.emplace_back(reference.type, reference.id);
    std::sort(keys.begin(), keys.end());
    std::sort(types.begin(), types.end());
    return std::adjacent_find(keys.begin(), keys.end()) == keys.end()
        && std::adjacent_find(types.begin(), types.end()) == types.end();
}

// Every reference of the map, or nullopt when one points outside the fork,
// when two share bytes or an ID, or when lists overlap. Nothing is copied
// here: a lying map cannot make the reader copy one block many times.
std::optional<std::vector<Reference>> readReferences(Bytes map, Bytes data)
{
    const std::size_t mapLength = map.size(), dataLength = data.size();
    const auto mapHeader = readRaw<RawMapHeader>(map, 0);
    const std::size_t typeList = be16(mapHeader.typeListOffset), nameList = be16(mapHeader.nameListOffset);
    if (typeList < sizeof(RawMapHeader) || typeList > mapLength - 2 || nameList < sizeof(RawMapHeader)
        || nameList > mapLength)
        return std::nullopt;
    // The count is stored minus one: an empty list says 0xFFFF.
    const std::size_t typeCount = ((std::size_t(map[typeList]) << 8 | map[typeList + 1]) + 1) & 0xFFFF;
    if (typeCount > (mapLength - typeList - 2) / sizeof(RawTypeEntry))
        return std::nullopt;

    std::vector<Range> mapRanges{{typeList, typeList + 2 + typeCount * sizeof(RawTypeEntry)}};
    std::vector<Range> dataRanges;
    std::vector<Reference> references;
    std::vector<OSType> types;
    for (std::size_t t = 0; t < typeCount; ++t) {
        const auto entry = readRaw<RawTypeEntry>(map, typeList + 2 + t * sizeof(RawTypeEntry));
        const OSType type = be32(entry.type);
        types.push_back(type);
        const std::size_t count = be16(entry.countMinusOne) + 1;
        const std::size_t listOffset = be16(entry.referenceListOffset);
        if (listOffset > mapLength - typeList)
            return std::nullopt;
        const std::size_t list = typeList + listOffset;
        // Reference lists may not share bytes, so all of them together fit
        // the map: that bounds the work before the overlap check below.
        if (count > (mapLength - list) / sizeof(RawReference)
            || references.size() + count > mapLength / sizeof(RawReference))
            return std::nullopt;
        mapRanges.emplace_back(list, list + count * sizeof(RawReference));
        for (std::size_t i = 0; i < count; ++i) {
            const auto raw = readRaw<RawReference>(map, list + i * sizeof(RawReference));
            Reference reference{type, std::int16_t(std::uint16_t(be16(raw.id))), raw.attributes, be24(raw.dataOffset),
                                0, be16(raw.nameOffset)};
            if (reference.block > dataLength || dataLength - reference.block < 4)
                return std::nullopt;
            reference.length = readFourCharCode(data.data() + reference.block);
            if (reference.length > dataLength - reference.block - 4)
                return std::nullopt;
            dataRanges.emplace_back(reference.block, reference.block + 4 + reference.length);
            reference.block += 4;
            if (reference.name != kNoName) {
                if (reference.name >= mapLength - nameList || map[nameList + reference.name] > mapLength - nameList - reference.name - 1)
                    return std::nullopt;
                reference.name += nameList;
            }
            references.push_back(reference);
        }
    }
    if (!disjoint(std::move(mapRanges)) || !disjoint(std::move(dataRanges)) || !uniqueTypesAndIds(std::move(types), references))
        return std::nullopt;
    return references;
}

} // namespace

std::optional<ResourceFork> parseResourceFork(Bytes bytes)
{
    if (bytes.size() < kResourceForkHeaderSize)
        return std::nullopt;
    const auto header = readRaw<RawHeader>(bytes, 0);
    const std::size_t dataOffset = be32(header.dataOffset), dataLength = be32(header.dataLength);
    const std::size_t mapOffset = be32(header.mapOffset), mapLength = be32(header.mapLength);
    // Compared as remaining sizes, so no sum can overflow.
    if (dataOffset < kResourceForkHeaderSize || dataOffset > bytes.size() || dataLength > bytes.size() - dataOffset
        || mapOffset < kResourceForkHeaderSize || mapOffset > bytes.size() || mapLength > bytes.size() - mapOffset
        || mapLength < sizeof(RawMapHeader) + 2)
        return std::nullopt;
    if (!disjoint({{dataOffset, dataOffset + dataLength}, {mapOffset, mapOffset + mapLength}}))
        return std::nullopt;
    const Bytes data = bytes.subspan(dataOffset, dataLength);
    const Bytes map = bytes.subspan(mapOffset, mapLength);
    const auto references = readReferences(map, data);
    if (!references)
        return std::nullopt;

    ResourceFork fork;
    const std::size_t systemEnd = std::min({dataOffset, mapOffset, kResourceDataStart});
    std::copy(bytes.begin() + kResourceForkHeaderSize, bytes.begin() + std::ptrdiff_t(systemEnd),
              fork.systemArea.begin());
    const auto mapHeader = readRaw<RawMapHeader>(map, 0);
    fork.mapHandle = be32(mapHeader.handle);
    fork.mapFileRef = std::uint16_t(be16(mapHeader.fileRef));
    fork.mapAttributes = std::uint16_t(be16(mapHeader.attributes));
    fork.resources.reserve(references->size());
    for (const Reference& reference : *references) {
        const auto block = data.subspan(reference.block, reference.length);
        Resource& resource = fork.resources.emplace_back(
            Resource{reference.type, reference.id, {}, reference.attributes, {block.begin(), block.end()}});
        if (reference.name != kNoName)
            resource.name.assign(reinterpret_cast<const char*>(map.data() + reference.name + 1), map[reference.name]);
    }
    return fork;
}

std::optional<std::vector<std::uint8_t>> serialiseResourceFork(const ResourceFork& fork)
{
    // Types in the order they first appear, each with its resources in order.
    std::vector<std::pair<OSType, std::vector<const Resource*>>> types;
    for (const Resource& resource : fork.resources) {
        auto it = std::find_if(types.begin(), types.end(), [&](const auto& t) { return t.first == resource.type; });
        if (it == types.end())
            it = types.insert(types.end(), {resource.type, {}});
        it->second.push_back(&resource);
    }

    std::vector<std::uint8_t> data;
    std::vector<std::uint8_t> references, names;
    std::vector<std::uint8_t> typeList;
    const std::size_t listsStart = 2 + types.size() * sizeof(RawTypeEntry);
    const std::size_t nameListOffset = sizeof(RawMapHeader) + listsStart + fork.resources.size() * sizeof(RawReference);
    if (types.size() > 0xFFFF || nameListOffset > 0xFFFF)
        return std::nullopt;
    typeList.push_back(std::uint8_t((types.size() - 1) >> 8));
    typeList.push_back(std::uint8_t(types.size() - 1));
    for (const auto& [type, members] : types) {
        if (members.size() > 0x10000)
            return std::nullopt;
        RawTypeEntry entry;
        put32(entry.type, type);
        put16(entry.countMinusOne, members.size() - 1);
        put16(entry.referenceListOffset, listsStart + references.size());
        appendRaw(typeList, entry);
        for (const Resource* resource : members) {
            // Checked before anything is copied: a family too large for a fork
            // is refused without ever being laid out.
            if (resource->name.size() > 255 || resource->data.size() > kMaxResourceDataSize - 4
                || resource->data.size() + 4 > kMaxResourceDataSize - data.size())
                return std::nullopt;
            RawReference reference{};
            put16(reference.id, std::uint16_t(resource->id));
            reference.attributes = resource->attributes;
            put24(reference.dataOffset, data.size());
            if (resource->name.empty()) {
                put16(reference.nameOffset, kNoName);
            } else {
                if (names.size() >= kNoName)
                    return std::nullopt;
                put16(reference.nameOffset, names.size());
                names.push_back(std::uint8_t(resource->name.size()));
                names.insert(names.end(), resource->name.begin(), resource->name.end());
            }
            appendRaw(references, reference);
            std::uint8_t length[4];
            put32(length, resource->data.size());
            data.insert(data.end(), length, length + 4);
            data.insert(data.end(), resource->data.begin(), resource->data.end());
        }
    }

    const std::size_t mapLength = nameListOffset + names.size();
    RawHeader header;
    put32(header.dataOffset, kResourceDataStart);
    put32(header.mapOffset, kResourceDataStart + data.size());
    put32(header.dataLength, data.size());
    put32(header.mapLength, mapLength);
    RawMapHeader mapHeader;
    mapHeader.headerCopy = header;
    put32(mapHeader.handle, fork.mapHandle);
    put16(mapHeader.fileRef, fork.mapFileRef);
    put16(mapHeader.attributes, fork.mapAttributes);
    put16(mapHeader.typeListOffset, sizeof(RawMapHeader));
    put16(mapHeader.nameListOffset, nameListOffset);

    std::vector<std::uint8_t> out;
    out.reserve(kResourceDataStart + data.size() + mapLength);
    appendRaw(out, header);
    out.insert(out.end(), fork.systemArea.begin(), fork.systemArea.end());
    out.insert(out.end(), data.begin(), data.end());
    appendRaw(out, mapHeader);
    out.insert(out.end(), typeList.begin(), typeList.end());
    out.insert(out.end(), references.begin(), references.end());
    out.insert(out.end(), names.begin(), names.end());
    return out;
}

} // namespace quilo
