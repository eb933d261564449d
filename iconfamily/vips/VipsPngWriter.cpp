#include "iconfamily/vips/VipsModule.h"

#include "iconfamily/vips/VipsRuntime.h"

#include <vips/vips8>

namespace quilo {

bool vipsWritePng(const std::filesystem::path& path, const std::uint8_t* pixels, int width, int height,
                  int channels)
{
    if (!ensureVipsStarted())
        return false;
    try {
        const std::size_t size = std::size_t(width) * std::size_t(height) * std::size_t(channels);
        const vips::VImage image = vips::VImage::new_from_memory(const_cast<std::uint8_t*>(pixels), size, width,
                                                                 height, channels, VIPS_FORMAT_UCHAR);
        image.pngsave(path.c_str());
        return true;
    } catch (const vips::VError&) {
        return false;
    }
}

} // namespace quilo
