#include "iconfamily/IcnsContainer.h"

#include "iconfamily/IconElementTypes.h"

namespace quilo {

std::uint32_t readBigEndian32(const std::uint8_t* bytes)
{
    return readFourCharCode(bytes);
}

void writeBigEndian32(std::uint8_t* bytes, std::uint32_t value)
{
    writeFourCharCode(bytes, value);
}

std::optional<std::vector<IcnsElement>> parseIconFamily(std::span<const std::uint8_t> block)
{
    std::vector<IcnsElement> elements;
    if (block.empty())
        return elements;
    if (block.size() < kIcnsHeaderSize || readFourCharCode(block.data()) != kIconFamilyType
        || readBigEndian32(block.data() + 4) != block.size())
        return std::nullopt;
    std::size_t offset = kIcnsHeaderSize;
    while (offset < block.size()) {
        // Compared as remaining sizes, so no sum can overflow.
        const std::size_t remaining = block.size() - offset;
        if (remaining < kIcnsHeaderSize)
            return std::nullopt;
        const std::size_t length = readBigEndian32(block.data() + offset + 4);
        if (length < kIcnsHeaderSize || length > remaining)
            return std::nullopt;
        elements.push_back({readFourCharCode(block.data() + offset), offset + kIcnsHeaderSize,
                            length - kIcnsHeaderSize});
        offset += length;
    }
    return elements;
}

const IcnsElement* findElement(const std::vector<IcnsElement>& elements, OSType type)
{
    for (const IcnsElement& element : elements)
        if (element.type == type)
            return &element;
    return nullptr;
}

} // namespace quilo
