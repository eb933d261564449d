#include "iconfamily/Rgb32Element.h"

#include "iconfamily/IcnsRle.h"

#include <algorithm>
#include <array>

namespace quilo {
namespace {

constexpr std::array<std::uint8_t, 4> kIt32Prefix{0, 0, 0, 0};

std::span<const std::uint8_t> prefixFor(const ElementGeometry& geometry)
{
    if (geometry.type == kThumbnail32BitData)
        return kIt32Prefix;
    return {};
}

std::vector<std::uint8_t> argbFromPlanes(std::span<const std::uint8_t> planes, std::size_t pixels)
{
    std::vector<std::uint8_t> argb(pixels * 4);
    for (std::size_t i = 0; i < pixels; ++i) {
        argb[4 * i] = 0xFF;
        argb[4 * i + 1] = planes[i];
        argb[4 * i + 2] = planes[pixels + i];
        argb[4 * i + 3] = planes[2 * pixels + i];
    }
    return argb;
}

std::vector<std::uint8_t> argbFromInterleavedRgb(std::span<const std::uint8_t> rgb, std::size_t pixels)
{
    std::vector<std::uint8_t> argb(pixels * 4);
    for (std::size_t i = 0; i < pixels; ++i) {
        argb[4 * i] = 0xFF;
        std::copy_n(rgb.begin() + std::ptrdiff_t(3 * i), 3, argb.begin() + std::ptrdiff_t(4 * i + 1));
    }
    return argb;
}

// Packed channels; when `exactly`, the data must end with the last run.
std::optional<std::vector<std::uint8_t>> unpackChannels(std::span<const std::uint8_t> packed,
                                                        std::size_t pixels, bool exactly)
{
    std::vector<std::uint8_t> planes(pixels * 3);
    const std::size_t used = icnsrle::unpackChannels(packed, planes, pixels);
    if (used == 0 || (exactly && used != packed.size()))
        return std::nullopt;
    return argbFromPlanes(planes, pixels);
}

} // namespace

std::vector<std::uint8_t> packRgb32Element(const ElementGeometry& geometry,
                                           std::span<const std::uint8_t> argb)
{
    const std::size_t pixels = std::size_t(geometry.width) * std::size_t(geometry.height);
    const std::span<const std::uint8_t> prefix = prefixFor(geometry);
    // Lengths that some readers take for uncompressed pixels, counted with and
    // without the 'it32' prefix.
    const std::size_t rgbSize = pixels * 3;
    const std::size_t argbSize = pixels * 4;
    return icnsrle::pack({{argb.data() + 1, pixels, 4}, {argb.data() + 2, pixels, 4}, {argb.data() + 3, pixels, 4}},
                         prefix,
                         {rgbSize, argbSize, rgbSize + prefix.size(), argbSize + prefix.size()});
}

std::optional<std::vector<std::uint8_t>> unpackRgb32Element(const ElementGeometry& geometry,
                                                            std::span<const std::uint8_t> stored)
{
    const std::size_t pixels = std::size_t(geometry.width) * std::size_t(geometry.height);
    if (stored.size() == pixels * 4)
        return std::vector<std::uint8_t>(stored.begin(), stored.end());
    std::span<const std::uint8_t> packed = stored;
    if (geometry.type == kThumbnail32BitData && packed.size() >= 4
        && std::all_of(packed.begin(), packed.begin() + 4, [](std::uint8_t b) { return b == 0; }))
        packed = packed.subspan(4);
    // Data exactly as long as raw RGB is packed only if it decodes to the byte.
    const bool rawSized = stored.size() == pixels * 3;
    if (auto argb = unpackChannels(packed, pixels, rawSized))
        return argb;
    if (rawSized)
        return argbFromInterleavedRgb(stored, pixels);
    return std::nullopt;
}

} // namespace quilo
