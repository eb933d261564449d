#include "iconfamily/EmbeddedImage.h"

#include "iconfamily/ImageCodecs.h"

#include <algorithm>
#include <array>

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
    if (sniffEmbeddedFormat(data) == EmbeddedFormat::None)
        return std::nullopt;
    const ImageCodecs* codecs = imageCodecs();
    return codecs ? codecs->decodeEmbeddedImage(data) : std::nullopt;
}

} // namespace quilo
