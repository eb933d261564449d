#pragma once

#include "foundation/FourCharCode.h"

#include <array>
#include <cstddef>
#include <cstdint>

// A file's FInfo or a folder's FolderInfo with its extended half, 32 bytes as
// stored. The type, creator and flags sit at the same place for files and
// folders (a folder's type and creator bytes are its window rectangle).
namespace quilo {

constexpr std::size_t kFinderInfoSize = 32;

// The Finder flags Quilo changes.
constexpr std::uint16_t kHasCustomIcon = 0x0400;
constexpr std::uint16_t kHasBeenInited = 0x0100;
constexpr std::uint16_t kIsInvisible = 0x4000;

struct FinderInfo {
    std::array<std::uint8_t, kFinderInfoSize> bytes{};

    OSType fileType() const { return readFourCharCode(bytes.data()); }
    OSType creator() const { return readFourCharCode(bytes.data() + 4); }
    std::uint16_t finderFlags() const { return std::uint16_t(bytes[8] << 8 | bytes[9]); }
    void setFileType(OSType type) { writeFourCharCode(bytes.data(), type); }
    void setCreator(OSType creator) { writeFourCharCode(bytes.data() + 4, creator); }
    void setFinderFlags(std::uint16_t flags)
    {
        bytes[8] = std::uint8_t(flags >> 8);
        bytes[9] = std::uint8_t(flags);
    }
    bool isEmpty() const { return bytes == std::array<std::uint8_t, kFinderInfoSize>{}; }
    bool operator==(const FinderInfo&) const = default;
};

} // namespace quilo
