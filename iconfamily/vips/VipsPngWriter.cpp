#include "iconfamily/vips/VipsModule.h"

#include "iconfamily/vips/VipsRuntime.h"

#include <vips/vips8>

namespace quilo {

std::optional<std::vector<std::uint8_t>> vipsEncodePng(const std::uint8_t* pixels, int width, int height,
                                                       int channels)
{
    if (!ensureVipsStarted())
        return std::nullopt;
    try {
        const std::size_t size = std::size_t(width) * std::size_t(height) * std::size_t(channels);
        const vips::VImage image = vips::VImage::new_from_memory(const_cast<std::uint8_t*>(pixels), size, width,
                                                                 height, channels, VIPS_FORMAT_UCHAR);
        void* buffer = nullptr;
        std::size_t length = 0;
        image.write_to_buffer(".png", &buffer, &length);
        std::vector<std::uint8_t> bytes(static_cast<std::uint8_t*>(buffer), static_cast<std::uint8_t*>(buffer) + length);
        g_free(buffer);
        return bytes;
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

} // namespace quilo
