#include "iconfamily/ElementDecoder.h"

#include "iconfamily/EmbeddedImage.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IcnsRle.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconServices.h"
#include "iconfamily/Rgb32Element.h"
#include "iconfamily/SystemPalette.h"

#include <algorithm>
#include <optional>

namespace quilo {
namespace {

using Bytes = std::span<const std::uint8_t>;

struct Family {
    Bytes block;
    const std::vector<IcnsElement>& elements;

    // The data of the first element of `type` when it has exactly `size` bytes.
    std::optional<Bytes> dataOf(OSType type, std::size_t size) const
    {
        const IcnsElement* element = findElement(elements, type);
        if (!element || element->dataSize != size)
            return std::nullopt;
        return block.subspan(element->dataOffset, element->dataSize);
    }
};

bool bitAt(Bytes plane, std::size_t index)
{
    return (plane[index / 8] & (0x80 >> (index % 8))) != 0;
}

DecodedElement blank(const ElementGeometry& geometry, int channels, std::string encoding)
{
    DecodedElement out{geometry.type, geometry.width, geometry.height, channels, {}, std::move(encoding)};
    out.pixels.resize(std::size_t(geometry.width) * std::size_t(geometry.height) * std::size_t(channels));
    return out;
}

// Alpha from the 1-bit mask plane of the element's '#' partner; opaque without one.
void applyOneBitMask(const Family& family, const ElementGeometry& geometry, DecodedElement& out)
{
    const std::size_t pixels = out.pixels.size() / 4;
    const ElementGeometry* maskGeometry = elementGeometry(geometry.maskType);
    Bytes maskPlane;
    if (maskGeometry)
        if (const auto pair = family.dataOf(geometry.maskType, std::size_t(elementDataSize(*maskGeometry))))
            maskPlane = pair->subspan(pair->size() / 2);
    for (std::size_t i = 0; i < pixels; ++i)
        out.pixels[4 * i + 3] = (maskPlane.empty() || bitAt(maskPlane, i)) ? 255 : 0;
}

template <typename IndexAt, std::size_t N>
DecodedElement decodePalette(const Family& family, const ElementGeometry& geometry,
                             const std::array<PaletteColor, N>& palette, IndexAt indexAt, const char* encoding)
{
    DecodedElement out = blank(geometry, 4, encoding);
    for (std::size_t i = 0; i < out.pixels.size() / 4; ++i) {
        const PaletteColor colour = palette[indexAt(i) % N];
        out.pixels[4 * i] = colour.red;
        out.pixels[4 * i + 1] = colour.green;
        out.pixels[4 * i + 2] = colour.blue;
    }
    applyOneBitMask(family, geometry, out);
    return out;
}

DecodedElement decodeOneBit(Bytes data, const ElementGeometry& geometry, bool hasMaskPlane)
{
    DecodedElement out = blank(geometry, 4, hasMaskPlane ? "1-bit image and mask" : "1-bit image");
    const std::size_t pixels = out.pixels.size() / 4;
    const Bytes mask = data.subspan(hasMaskPlane ? data.size() / 2 : 0);
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint8_t level = bitAt(data, i) ? 0 : 255;
        std::fill_n(out.pixels.begin() + std::ptrdiff_t(4 * i), 3, level);
        out.pixels[4 * i + 3] = (!hasMaskPlane || bitAt(mask, i)) ? 255 : 0;
    }
    return out;
}

// Straight R G B A from A R G B, the alpha taken from `mask` (opaque without one).
void fillFromArgb(const std::vector<std::uint8_t>& argb, Bytes mask, DecodedElement& out)
{
    for (std::size_t i = 0; i < argb.size() / 4; ++i) {
        out.pixels[4 * i] = argb[4 * i + 1];
        out.pixels[4 * i + 1] = argb[4 * i + 2];
        out.pixels[4 * i + 2] = argb[4 * i + 3];
        out.pixels[4 * i + 3] = mask.empty() ? 255 : mask[i];
    }
}

std::optional<DecodedElement> decodeRgb32(const Family& family, const ElementGeometry& geometry, Bytes data)
{
    const auto argb = unpackRgb32Element(geometry, data);
    if (!argb)
        return std::nullopt;
    const std::size_t pixels = argb->size() / 4;
    const bool packed = data.size() != pixels * 4 && data.size() != pixels * 3;
    DecodedElement out = blank(geometry, 4, packed ? "32-bit, run-length packed" : "32-bit, uncompressed");
    fillFromArgb(*argb, family.dataOf(geometry.maskType, pixels).value_or(Bytes()), out);
    return out;
}

// 'ARGB' followed by the four channels run-length packed ('ic04', 'ic05').
std::optional<DecodedElement> decodePackedArgb(const ElementGeometry& geometry, Bytes data)
{
    const std::size_t pixels = std::size_t(geometry.width) * std::size_t(geometry.height);
    std::vector<std::uint8_t> planes(pixels * 4);
    if (icnsrle::unpackChannels(data.subspan(4), planes, pixels) == 0)
        return std::nullopt;
    DecodedElement out = blank(geometry, 4, "ARGB, run-length packed");
    for (std::size_t i = 0; i < pixels; ++i) {
        out.pixels[4 * i] = planes[pixels + i];
        out.pixels[4 * i + 1] = planes[2 * pixels + i];
        out.pixels[4 * i + 2] = planes[3 * pixels + i];
        out.pixels[4 * i + 3] = planes[i];
    }
    return out;
}

std::optional<DecodedElement> decodeEmbedded(const ElementGeometry& geometry, Bytes data)
{
    if (data.size() >= 4 && readFourCharCode(data.data()) == fourCharCode("ARGB"))
        return decodePackedArgb(geometry, data);
    const EmbeddedFormat format = sniffEmbeddedFormat(data);
    if (format == EmbeddedFormat::None) {
        // Some 'icp4'/'icp5' elements hold packed RGB like 'is32'/'il32'.
        ElementGeometry asRgb = geometry;
        asRgb.encoding = ElementEncoding::Rgb32;
        auto argb = unpackRgb32Element(asRgb, data);
        if (!argb)
            return std::nullopt;
        DecodedElement out = blank(geometry, 4, "32-bit, run-length packed");
        fillFromArgb(*argb, {}, out);
        return out;
    }
    auto picture = decodeEmbeddedImage(data);
    if (!picture)
        return std::nullopt;
    return DecodedElement{geometry.type, picture->width, picture->height, 4, std::move(picture->pixels),
                          format == EmbeddedFormat::Png ? "PNG" : "JPEG 2000"};
}

std::optional<DecodedElement> decodeOne(const Family& family, const IcnsElement& element)
{
    const ElementGeometry* geometry = elementGeometry(element.type);
    if (!geometry)
        return std::nullopt;
    const Bytes data = family.block.subspan(element.dataOffset, element.dataSize);
    const std::size_t expected = std::size_t(elementDataSize(*geometry));
    switch (geometry->encoding) {
    case ElementEncoding::Rgb32: return decodeRgb32(family, *geometry, data);
    case ElementEncoding::Embedded: return decodeEmbedded(*geometry, data);
    default: break;
    }
    if (data.size() != expected)
        return std::nullopt;
    switch (geometry->encoding) {
    case ElementEncoding::Mask8: {
        DecodedElement out = blank(*geometry, 1, "8-bit mask");
        std::copy(data.begin(), data.end(), out.pixels.begin());
        return out;
    }
    case ElementEncoding::Palette8:
        return decodePalette(family, *geometry, systemPalette256(), [&](std::size_t i) { return data[i]; },
                             "8-bit, system palette");
    case ElementEncoding::Palette4:
        return decodePalette(
            family, *geometry, systemPalette16(),
            [&](std::size_t i) { return (i % 2 == 0) ? data[i / 2] >> 4 : data[i / 2] & 0x0F; },
            "4-bit, system palette");
    case ElementEncoding::OneBitPair: return decodeOneBit(data, *geometry, true);
    case ElementEncoding::OneBit: return decodeOneBit(data, *geometry, false);
    default: return std::nullopt;
    }
}

} // namespace

std::vector<DecodedElement> decodeElements(std::span<const std::uint8_t> block, DecodeMasks masks)
{
    std::vector<DecodedElement> decoded;
    const auto elements = parseIconFamily(block);
    if (!elements)
        return decoded;
    for (const IcnsElement& element : *elements)
        if (auto one = decodeElement(block, *elements, element))
            if (masks == DecodeMasks::Yes || one->channels == 4)
                decoded.push_back(std::move(*one));
    return decoded;
}

std::optional<DecodedElement> decodeElement(std::span<const std::uint8_t> block,
                                            const std::vector<IcnsElement>& elements, const IcnsElement& element)
{
    return decodeOne(Family{block, elements}, element);
}

BitmapImageRep premultipliedBitmap(const DecodedElement& element)
{
    BitmapImageRep rep = BitmapImageRep::rgba(element.width, element.height);
    std::copy(element.pixels.begin(), element.pixels.end(), rep.bitmapData());
    premultiplyRgba(rep);
    return rep;
}

} // namespace quilo
