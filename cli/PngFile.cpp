#include "cli/PngFile.h"

#include "foundation/AtomicFile.h"
#include "iconfamily/ImageCodecs.h"

namespace quilo::cli {

bool writePng(const std::filesystem::path& path, const DecodedElement& element)
{
    const ImageCodecs* codecs = imageCodecs();
    const auto bytes = codecs ? codecs->encodePng(element.pixels.data(), element.width, element.height,
                                                  element.channels)
                              : std::nullopt;
    return bytes && writeFileAtomically(path, *bytes);
}

} // namespace quilo::cli
