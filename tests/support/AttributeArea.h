#pragma once

#include "foundation/FourCharCode.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// macOS's extended-attribute area in a sidecar's Finder info entry, written
// and read by hand: offsets count from the start of the sidecar file, so a
// sidecar that moves the entry without correcting them loses the attributes.
namespace quilo::test {

// A Finder info entry of macOS's length holding one attribute, for an entry
// that will sit at `entryOffset` in its file.
inline std::vector<std::uint8_t> finderInfoWithAttribute(std::size_t entryOffset, const std::string& name,
                                                         const std::string& value)
{
    std::vector<std::uint8_t> entry(3760, 0);
    entry[9] = 0x20; // a Finder flag, to see it kept
    auto put = [&](std::size_t at, std::size_t v) { writeFourCharCode(entry.data() + at, OSType(v)); };
    const std::size_t header = 34, first = header + 36;
    const std::size_t nameBytes = name.size() + 1, entrySize = (11 + nameBytes + 3) & ~std::size_t(3);
    const std::size_t dataAt = first + entrySize;
    put(header, fourCharCode("ATTR"));
    put(header + 8, entryOffset + entry.size());
    put(header + 12, entryOffset + dataAt);
    put(header + 16, value.size());
    entry[header + 35] = 1; // one attribute
    put(first, entryOffset + dataAt);
    put(first + 4, value.size());
    entry[first + 10] = std::uint8_t(nameBytes);
    std::copy(name.begin(), name.end(), entry.begin() + std::ptrdiff_t(first + 11));
    std::copy(value.begin(), value.end(), entry.begin() + std::ptrdiff_t(dataAt));
    return entry;
}

// The first attribute's value, found the way macOS finds it: through the
// Finder info entry's descriptor and the offsets in the area.
inline std::optional<std::string> firstAttributeValue(const std::vector<std::uint8_t>& sidecar)
{
    auto at = [&](std::size_t i) { return std::size_t(readFourCharCode(sidecar.data() + i)); };
    const std::size_t count = std::size_t(sidecar[24] << 8 | sidecar[25]);
    for (std::size_t i = 0; i < count; ++i) {
        if (at(26 + 12 * i) != 9)
            continue;
        const std::size_t entry = at(30 + 12 * i), first = entry + 34 + 36;
        if (at(entry + 34) != fourCharCode("ATTR") || first + 8 > sidecar.size())
            return std::nullopt;
        const std::size_t offset = at(first), length = at(first + 4);
        if (offset > sidecar.size() || length > sidecar.size() - offset)
            return std::nullopt;
        return std::string(sidecar.begin() + std::ptrdiff_t(offset), sidecar.begin() + std::ptrdiff_t(offset + length));
    }
    return std::nullopt;
}

} // namespace quilo::test
