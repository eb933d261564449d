#include "iconfamily/vips/VipsModule.h"

#include "iconfamily/vips/VipsRuntime.h"

#include <vips/vips8>

namespace quilo {
namespace {

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

std::optional<RgbaPixels> vipsDecodeEmbeddedImage(std::span<const std::uint8_t> data)
{
    if (!ensureVipsStarted())
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
        result.pixels.resize(std::size_t(image.width()) * std::size_t(image.height()) * 4);
        image.write(vips::VImage::new_from_memory(result.pixels.data(), result.pixels.size(), image.width(),
                                                  image.height(), 4, VIPS_FORMAT_UCHAR));
        return result;
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

} // namespace quilo
