#pragma once

#include "foundation/FourCharCode.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// A resource fork in the Resource Manager's file format: a 16-byte header,
// the data area (each block prefixed by its 4-byte length) and the map (type
// list, reference lists, name list). Reading refuses anything whose offsets,
// lengths or counts do not hold up; writing lays the fork out the way
// CloseResFile does: header at 0, data at 256, map after the data.
namespace quilo {

constexpr std::size_t kResourceForkHeaderSize = 16;
// Where the data area starts; the bytes before it are the system's.
constexpr std::size_t kResourceDataStart = 256;
// The most data a fork Quilo writes holds: the map addresses the data with
// 24 bits, so no block of a larger data area could be found by its offset.
constexpr std::size_t kMaxResourceDataSize = std::size_t(1) << 24;
// The size of a fork with an empty map, as macOS writes it.
constexpr std::size_t kEmptyResourceForkSize = 286;

struct Resource {
    OSType type = 0;
    std::int16_t id = 0;
    std::string name; // empty: the resource has no name
    std::uint8_t attributes = 0;
    std::vector<std::uint8_t> data;

    bool operator==(const Resource&) const = default;
};

struct ResourceFork {
    // In map order: types in the order of the type list, each type's
    // resources in the order of its reference list.
    std::vector<Resource> resources;
    std::uint16_t mapAttributes = 0;
    // The bytes between the header and the data area, and the map's handle
    // and file reference: nobody here uses them, but they round-trip.
    std::array<std::uint8_t, kResourceDataStart - kResourceForkHeaderSize> systemArea{};
    std::uint32_t mapHandle = 0;
    std::uint16_t mapFileRef = 0;

    bool operator==(const ResourceFork&) const = default;

    // GetResource: the resource of that type and ID, or nullptr.
    const Resource* find(OSType type, std::int16_t id) const;
    // AddResource: appended after the others. False, and nothing added, when
    // the type and ID are taken or the name does not fit a Pascal string.
    bool add(Resource resource);
    // RemoveResource. False when there is no such resource.
    bool remove(OSType type, std::int16_t id);
};

// The fork in `bytes`, or nullopt when it is not a well-formed fork. An empty
// input is not a fork; a fork with no resources is.
std::optional<ResourceFork> parseResourceFork(std::span<const std::uint8_t> bytes);

// The fork in canonical layout, or nullopt when it does not fit the format
// (data area past kMaxResourceDataSize, a map past 64 KB, more than 65536 resources).
std::optional<std::vector<std::uint8_t>> serialiseResourceFork(const ResourceFork& fork);

} // namespace quilo
