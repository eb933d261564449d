#include "cli/PngFile.h"

#include "iconfamily/VipsRuntime.h"

#include <vips/vips8>

namespace quilo::cli {

bool writePng(const std::filesystem::path& path, const DecodedElement& element)
{
    if (!ensureVipsStarted())
        return false;
    try {
        const vips::VImage image = vips::VImage::new_from_memory(
            const_cast<std::uint8_t*>(element.pixels.data()), element.pixels.size(), element.width,
            element.height, element.channels, VIPS_FORMAT_UCHAR);
        image.pngsave(path.c_str());
        return true;
    } catch (const vips::VError&) {
        return false;
    }
}

} // namespace quilo::cli
