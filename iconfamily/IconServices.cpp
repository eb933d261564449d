#include "iconfamily/IconServices.h"

#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/RegularFile.h"
#include "iconfamily/Rgb32Element.h"


namespace quilo {
namespace {

bool isRgb32(const ElementGeometry* geometry)
{
    return geometry && geometry->encoding == ElementEncoding::Rgb32;
}

void appendElement(IconFamilyHandle& block, OSType type, std::span<const std::uint8_t> data)
{
    const std::size_t offset = block.size();
    block.resize(offset + kIcnsHeaderSize + data.size());
    writeFourCharCode(block.data() + offset, type);
    writeBigEndian32(block.data() + offset + 4, std::uint32_t(kIcnsHeaderSize + data.size()));
    std::copy(data.begin(), data.end(), block.begin() + std::ptrdiff_t(offset + kIcnsHeaderSize));
}

// A new block with `type`'s first element replaced by `data` (or `data`
// appended), the other elements in their order.
IconFamilyHandle rebuiltFamily(std::span<const std::uint8_t> old, const std::vector<IcnsElement>& elements,
                               OSType type, std::span<const std::uint8_t> data)
{
    IconFamilyHandle block(kIcnsHeaderSize);
    block.reserve(old.size() + kIcnsHeaderSize + data.size());
    writeFourCharCode(block.data(), kIconFamilyType);
    bool placed = false;
    for (const IcnsElement& element : elements) {
        if (element.type == type && !placed) {
            appendElement(block, type, data);
            placed = true;
        } else {
            appendElement(block, element.type, old.subspan(element.dataOffset, element.dataSize));
        }
    }
    if (!placed)
        appendElement(block, type, data);
    writeBigEndian32(block.data() + 4, std::uint32_t(block.size()));
    return block;
}

} // namespace

OSErr getIconFamilyData(std::span<const std::uint8_t> family, OSType type, std::vector<std::uint8_t>& data)
{
    const auto elements = parseIconFamily(family);
    if (!elements)
        return invalidIconRefErr;
    const IcnsElement* element = findElement(*elements, type);
    if (!element)
        return noSuchIconErr;
    const auto stored = family.subspan(element->dataOffset, element->dataSize);
    const ElementGeometry* geometry = elementGeometry(type);
    if (!isRgb32(geometry)) {
        data.assign(stored.begin(), stored.end());
        return noErr;
    }
    auto argb = unpackRgb32Element(*geometry, stored);
    if (!argb)
        return invalidIconRefErr;
    data = std::move(*argb);
    return noErr;
}

OSErr setIconFamilyData(IconFamilyHandle& family, OSType type, std::span<const std::uint8_t> data)
{
    const auto elements = parseIconFamily(family);
    if (!elements)
        return invalidIconRefErr;
    const ElementGeometry* geometry = elementGeometry(type);
    if (!isRgb32(geometry)) {
        family = rebuiltFamily(family, *elements, type, data);
        return noErr;
    }
    if (data.size() != std::size_t(elementDataSize(*geometry)))
        return paramErr;
    const std::vector<std::uint8_t> packed = packRgb32Element(*geometry, data);
    family = rebuiltFamily(family, *elements, type, packed);
    return noErr;
}

OSErr readIconFile(const std::filesystem::path& path, IconFamilyHandle& family)
{
    std::string error;
    const FileStream file = openRegularFile(path, error);
    if (!file)
        return fnfErr;
    std::fseek(file.get(), 0, SEEK_END);
    const long size = std::ftell(file.get());
    std::rewind(file.get());
    if (size < long(kIcnsHeaderSize) || std::uintmax_t(size) > kMaxIconFileSize)
        return paramErr;
    IconFamilyHandle bytes(std::size_t(size), 0);
    if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size())
        return ioErr;
    // Bytes behind the declared length are not part of the family.
    const std::uint32_t declared = readBigEndian32(bytes.data() + 4);
    if (declared < kIcnsHeaderSize || declared > std::uintmax_t(size))
        return paramErr;
    bytes.resize(declared);
    if (!parseIconFamily(bytes))
        return paramErr;
    family = std::move(bytes);
    return noErr;
}

} // namespace quilo
