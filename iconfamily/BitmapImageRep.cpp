#include "iconfamily/BitmapImageRep.h"

#include <algorithm>

namespace quilo {

BitmapImageRep::BitmapImageRep(int pixelsWide, int pixelsHigh, int bitsPerSample,
                               int samplesPerPixel, int bitsPerPixel, bool isPlanar,
                               int bytesPerRow)
    : pixelsWide_(std::max(pixelsWide, 0))
    , pixelsHigh_(std::max(pixelsHigh, 0))
    , bitsPerSample_(bitsPerSample)
    , samplesPerPixel_(samplesPerPixel)
    , bitsPerPixel_(bitsPerPixel)
    , isPlanar_(isPlanar)
    // Rows are never shorter than their pixels, so no reader can run off the end.
    , bytesPerRow_(std::max(bytesPerRow, int((std::int64_t(pixelsWide_) * std::max(bitsPerPixel, 0) + 7) / 8)))
    , width_(pixelsWide_)
    , height_(pixelsHigh_)
{
    // A planar bitmap keeps one plane per sample, each of the same row size.
    const std::size_t planes = isPlanar_ ? std::size_t(std::max(samplesPerPixel_, 1)) : 1;
    bytes_.assign(planes * std::size_t(bytesPerRow_) * std::size_t(pixelsHigh_), 0);
}

BitmapImageRep BitmapImageRep::rgba(int pixelsWide, int pixelsHigh)
{
    return BitmapImageRep(pixelsWide, pixelsHigh, 8, 4, 32);
}

void premultiplyRgba(BitmapImageRep& rgba)
{
    std::uint8_t* pixel = rgba.bitmapData();
    for (std::size_t i = 0; i < rgba.bytes().size(); i += 4) {
        const unsigned alpha = pixel[i + 3];
        if (alpha == 255)
            continue;
        for (std::size_t c = 0; c < 3; ++c)
            pixel[i + c] = std::uint8_t((pixel[i + c] * alpha + 127) / 255);
    }
}

} // namespace quilo
