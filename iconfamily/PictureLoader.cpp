#include "iconfamily/PictureLoader.h"

#include "iconfamily/DecodeScale.h"
#include "iconfamily/ImageCodecs.h"
#include "iconfamily/JpegDecoder.h"
#include "iconfamily/Resampler.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace quilo {
namespace {

bool isJpegFile(const std::filesystem::path& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    return file && looksLikeJpeg(file.get());
}

// A decoded picture still more than twice the wanted size is box-reduced
// first: the fine filter then has far fewer pixels to weigh.
Image reducedByWholeFactor(Image image, int wanted)
{
    const BitmapImageRep& rep = *image.bestRepresentation();
    const int factor = boxReductionFactor(std::max(rep.pixelsWide(), rep.pixelsHigh()), wanted);
    if (factor < 2)
        return image;
    Image reduced(image.width(), image.height());
    reduced.setPixelSize(image.pixelsWide(), image.pixelsHigh());
    reduced.addRepresentation(boxReduced(rep, factor));
    return reduced;
}

} // namespace

PictureLoadResult imageWithContentsOfFile(const std::filesystem::path& path, int forIconWidth)
{
    const int wanted = 2 * forIconWidth;
    if (isJpegFile(path)) {
        JpegDecodeResult jpeg = decodeJpeg(path, wanted);
        if (jpeg.outcome == JpegDecodeResult::Outcome::Failed)
            return {std::nullopt, std::move(jpeg.error)};
        if (jpeg.outcome == JpegDecodeResult::Outcome::Decoded) {
            return {reducedByWholeFactor(std::move(*jpeg.image), wanted), {}};
        }
    }
    const ImageCodecs* codecs = imageCodecs();
    if (!codecs)
        return {std::nullopt, "the image library is not available"};
    return codecs->loadPicture(path, forIconWidth);
}

} // namespace quilo
