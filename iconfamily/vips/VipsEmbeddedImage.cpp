#include "iconfamily/vips/VipsModule.h"

#include "iconfamily/vips/VipsColour.h"
#include "iconfamily/vips/VipsRuntime.h"

#include <vips/vips8>

namespace quilo {
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
        image = toSrgb8WithAlpha(image);
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
