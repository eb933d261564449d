#pragma once

#include "foundation/FourCharCode.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

// The element store: what the Mac's Icon Services do for a family block. All
// element access goes through here; nobody else walks the block.
namespace quilo {

// A family block ('icns' data). Owned by value: moving it hands it over.
using IconFamilyHandle = std::vector<std::uint8_t>;

using OSErr = std::int16_t;
constexpr OSErr noErr = 0;
constexpr OSErr paramErr = -50;
constexpr OSErr fnfErr = -43;
constexpr OSErr ioErr = -36;
constexpr OSErr memFullErr = -108;
constexpr OSErr noSuchIconErr = -2582;
constexpr OSErr invalidIconRefErr = -2580;

// Largest .icns file we read (a family of 1024 px PNGs is a few MiB).
constexpr std::uintmax_t kMaxIconFileSize = 64u << 20;

// The data of the first element of `type`. 32-bit colour comes back as plain
// A, R, G, B whatever encoding the block stores; packed data has no A, which
// comes back as 255 (opacity lives in the mask element), while uncompressed
// data comes back as stored. noSuchIconErr when the family lacks the element.
OSErr getIconFamilyData(std::span<const std::uint8_t> family, OSType type,
                        std::vector<std::uint8_t>& data);

// Adds the element, or replaces the first one of its type in place. 32-bit
// colour (plain A, R, G, B of the element's size) is stored run-length packed.
// An empty block becomes a family with a header.
OSErr setIconFamilyData(IconFamilyHandle& family, OSType type, std::span<const std::uint8_t> data);

// Reads a whole .icns file; anything that is not a well-formed family is an
// error and leaves `family` untouched.
OSErr readIconFile(const std::filesystem::path& path, IconFamilyHandle& family);

} // namespace quilo
