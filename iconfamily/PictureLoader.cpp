#include "iconfamily/PictureLoader.h"

#include "iconfamily/DecodeScale.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/ImageCodecs.h"
#include "iconfamily/JpegDecoder.h"
#include "iconfamily/RegularFile.h"
#include "iconfamily/Resampler.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace quilo {
namespace {

bool isIcnsFile(std::FILE* file)
{
    char start[4] = {};
    const bool icns = std::fread(start, 1, 4, file) == 4 && std::memcmp(start, "icns", 4) == 0;
    std::rewind(file);
    return icns;
}

// An .icns file's picture is its largest element.
PictureLoadResult iconFileImage(const std::filesystem::path& path)
{
    const auto family = IconFamily::iconFamilyWithContentsOfFile(path);
    const auto all = family ? family->imageWithAllReps() : nullptr;
    if (!all || all->representations().empty())
        return {std::nullopt, "not an icon family Quilo can read"};
    const auto& reps = all->representations();
    const BitmapImageRep& largest = *std::max_element(reps.begin(), reps.end(), [](const auto& a, const auto& b) {
        return a.pixelsWide() * a.pixelsHigh() < b.pixelsWide() * b.pixelsHigh();
    });
    Image image(largest.pixelsWide(), largest.pixelsHigh());
    image.setPixelSize(largest.pixelsWide(), largest.pixelsHigh());
    image.addRepresentation(largest);
    return {std::move(image), {}};
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
    std::string error;
    const FileStream file = openRegularFile(path, error);
    if (!file)
        return {std::nullopt, error};
    if (isIcnsFile(file.get()))
        return iconFileImage(path);
    if (looksLikeJpeg(file.get())) {
        JpegDecodeResult jpeg = decodeJpeg(file.get(), wanted);
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
