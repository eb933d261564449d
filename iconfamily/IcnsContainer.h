#pragma once

#include "foundation/FourCharCode.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// The 'icns' container: an 8-byte header ('icns', big-endian total length),
// then elements, each a type code, a big-endian length that counts its own
// 8-byte header, and its data.
namespace quilo {

constexpr std::size_t kIcnsHeaderSize = 8;

struct IcnsElement {
    OSType type;
    std::size_t dataOffset; // from the start of the block
    std::size_t dataSize;
};

// The elements of a well-formed family block, in order. An empty block is a
// family with no elements. Anything else that is not exactly tiled by its
// elements (wrong signature, a length that lies, an element shorter than its
// header or running past the end) gives nullopt.
std::optional<std::vector<IcnsElement>> parseIconFamily(std::span<const std::uint8_t> block);

// The first element of `type`, if any.
const IcnsElement* findElement(const std::vector<IcnsElement>& elements, OSType type);

void writeBigEndian32(std::uint8_t* bytes, std::uint32_t value);
std::uint32_t readBigEndian32(const std::uint8_t* bytes);

} // namespace quilo
