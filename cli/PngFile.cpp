#include "cli/PngFile.h"

#include "iconfamily/ImageCodecs.h"

namespace quilo::cli {

bool writePng(const std::filesystem::path& path, const DecodedElement& element)
{
    const ImageCodecs* codecs = imageCodecs();
    return codecs
        && codecs->writePng(path, element.pixels.data(), element.width, element.height, element.channels);
}

} // namespace quilo::cli
