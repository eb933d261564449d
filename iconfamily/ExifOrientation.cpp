#include "iconfamily/ExifOrientation.h"

#include <algorithm>
#include <array>

namespace quilo {
namespace {

constexpr std::array<std::uint8_t, 6> kExifHeader{'E', 'x', 'i', 'f', 0, 0};
constexpr std::uint16_t kOrientationTag = 0x0112;
constexpr std::uint16_t kShortType = 3;

struct TiffReader {
    std::span<const std::uint8_t> bytes;
    bool bigEndian;

    bool has(std::size_t offset, std::size_t size) const
    {
        return offset <= bytes.size() && size <= bytes.size() - offset;
    }
    std::uint16_t u16(std::size_t offset) const
    {
        const std::uint16_t a = bytes[offset], b = bytes[offset + 1];
        return std::uint16_t(bigEndian ? (a << 8) | b : (b << 8) | a);
    }
    std::uint32_t u32(std::size_t offset) const
    {
        const std::uint32_t high = u16(offset + (bigEndian ? 0 : 2));
        const std::uint32_t low = u16(offset + (bigEndian ? 2 : 0));
        return (high << 16) | low;
    }
};

} // namespace

bool isExifBlock(std::span<const std::uint8_t> app1)
{
    return app1.size() >= kExifHeader.size() && std::equal(kExifHeader.begin(), kExifHeader.end(), app1.begin());
}

int exifOrientation(std::span<const std::uint8_t> app1)
{
    if (!isExifBlock(app1))
        return 1;
    const auto tiff = app1.subspan(kExifHeader.size());
    if (tiff.size() < 8 || tiff[0] != tiff[1] || (tiff[0] != 'I' && tiff[0] != 'M'))
        return 1;
    const TiffReader reader{tiff, tiff[0] == 'M'};
    if (reader.u16(2) != 42)
        return 1;
    const std::size_t directory = reader.u32(4);
    if (!reader.has(directory, 2))
        return 1;
    const std::size_t entries = reader.u16(directory);
    for (std::size_t i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + 12 * i;
        if (!reader.has(entry, 12))
            return 1;
        if (reader.u16(entry) != kOrientationTag)
            continue;
        if (reader.u16(entry + 2) != kShortType || reader.u32(entry + 4) != 1)
            return 1;
        const int orientation = reader.u16(entry + 8);
        return orientation >= 1 && orientation <= 8 ? orientation : 1;
    }
    return 1;
}

} // namespace quilo
