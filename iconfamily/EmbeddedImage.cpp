#include "iconfamily/EmbeddedImage.h"

#include "iconfamily/VipsRuntime.h"

#include <algorithm>
#include <array>
#include <vips/vips8>

namespace quilo {
namespace {

constexpr std::array<std::uint8_t, 8> kPngSignature{0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
constexpr std::array<std::uint8_t, 12> kJp2Signature{0, 0, 0, 0x0C, 'j', 'P', ' ', ' ', 0x0D, 0x0A, 0x87, 0x0A};
constexpr std::array<std::uint8_t, 4> kJ2kCodestream{0xFF, 0x4F, 0xFF, 0x51};

template <std::size_t N>
bool startsWith(std::span<const std::uint8_t> data, const std::array<std::uint8_t, N>& prefix)
{
    return data.size() >= N && std::equal(prefix.begin(), prefix.end(), data.begin());
}

vips::VImage toSrgbRgba(vips::VImage image)
{
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    if (image.bands() == 3)
        image = image.bandjoin_const({255});
    return image;
}

} // namespace

EmbeddedFormat sniffEmbeddedFormat(std::span<const std::uint8_t> data)
{
    if (startsWith(data, kPngSignature))
        return EmbeddedFormat::Png;
    if (startsWith(data, kJp2Signature) || startsWith(data, kJ2kCodestream))
        return EmbeddedFormat::Jpeg2000;
    return EmbeddedFormat::None;
}

std::optional<RgbaPixels> decodeEmbeddedImage(std::span<const std::uint8_t> data)
{
    const EmbeddedFormat format = sniffEmbeddedFormat(data);
    if (format == EmbeddedFormat::None || !ensureVipsStarted())
        return std::nullopt;
    try {
        vips::VImage image = vips::VImage::new_from_buffer(
            data.data(), data.size(), "",
            vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL)->set("fail_on", VIPS_FAIL_ON_ERROR));
        if (image.width() > kMaxEmbeddedSide || image.height() > kMaxEmbeddedSide)
            return std::nullopt;
        image = toSrgbRgba(image);
        if (image.bands() != 4)
            return std::nullopt;
        RgbaPixels result{image.width(), image.height(), {}};
        std::size_t size = 0;
        void* memory = image.write_to_memory(&size);
        const auto* bytes = static_cast<const std::uint8_t*>(memory);
        result.pixels.assign(bytes, bytes + size);
        g_free(memory);
        return result;
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

} // namespace quilo
