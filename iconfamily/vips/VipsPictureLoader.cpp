#include "iconfamily/vips/VipsModule.h"

#include "iconfamily/DecodeScale.h"
#include "iconfamily/Orientation.h"
#include "iconfamily/vips/VipsColour.h"
#include "iconfamily/vips/VipsRuntime.h"

#include <algorithm>
#include <cstring>
#include <vips/vips8>

namespace quilo {
namespace {

using vips::VImage;

enum class Loader { Jpeg, Png, Tiff, Webp, Heif, Vector, Other };

Loader loaderKind(const char* name)
{
    const std::string loader = name;
    if (loader.rfind("VipsForeignLoadJpeg", 0) == 0)
        return Loader::Jpeg;
    if (loader.rfind("VipsForeignLoadPng", 0) == 0)
        return Loader::Png;
    if (loader.rfind("VipsForeignLoadTiff", 0) == 0)
        return Loader::Tiff;
    if (loader.rfind("VipsForeignLoadWebp", 0) == 0)
        return Loader::Webp;
    if (loader.rfind("VipsForeignLoadHeif", 0) == 0)
        return Loader::Heif;
    if (loader.rfind("VipsForeignLoadSvg", 0) == 0 || loader.rfind("VipsForeignLoadPdf", 0) == 0)
        return Loader::Vector;
    return Loader::Other;
}

VImage open(const std::filesystem::path& path, vips::VOption* options)
{
    return VImage::new_from_file(path.c_str(), options->set("access", VIPS_ACCESS_SEQUENTIAL)
                                                   ->set("fail_on", VIPS_FAIL_ON_ERROR));
}

bool swapsAxes(const VImage& image)
{
    return image.get_typeof(VIPS_META_ORIENTATION) && orientationSwapsAxes(image.get_int(VIPS_META_ORIENTATION));
}

// Opens the picture decoded at a scale that keeps its longer side at least
// `wanted` pixels where the format can decode at a reduced scale.
VImage openReduced(const std::filesystem::path& path, Loader kind, const VImage& header, int wanted)
{
    const int longer = std::max(header.width(), header.height());
    // A sliver of a picture keeps a pixel across: the fit decides what shows.
    const double scale = std::max(double(wanted) / std::max(longer, 1),
                                  1.0 / std::max(std::min(header.width(), header.height()), 1));
    switch (kind) {
    case Loader::Jpeg:
        return open(path, VImage::option()->set("shrink", jpegScaleDenominator(longer, wanted)));
    case Loader::Webp:
        if (scale < 1)
            return open(path, VImage::option()->set("scale", scale));
        break;
    case Loader::Heif: {
        // Photos carry a preview; it serves when it is large enough.
        VImage preview = open(path, VImage::option()->set("thumbnail", true));
        if (std::max(preview.width(), preview.height()) >= wanted)
            return preview;
        break;
    }
    case Loader::Vector:
        return open(path, VImage::option()->set("scale", scale));
    case Loader::Other: break;
    }
    return open(path, VImage::option());
}

// Whether the decoder hands out rows as it reads them, so shrinking on the
// way keeps memory small. Others (GIF, interlaced PNG, BMP, HEIF without a
// preview, ...) decode the whole picture, as opened, before the first row.
bool streams(Loader kind, const VImage& header)
{
    switch (kind) {
    case Loader::Png:
        return !(header.get_typeof("interlaced") && header.get_int("interlaced"));
    case Loader::Jpeg: // a JPEG that libjpeg would buffer never reaches here
    case Loader::Tiff:
    case Loader::Webp:   // decoded at its reduced scale
    case Loader::Vector: // drawn at its reduced scale
        return true;
    default:
        return false;
    }
}

long long bytesOf(const VImage& image)
{
    return (long long)image.width() * image.height() * image.bands()
           * (long long)vips_format_sizeof(image.format());
}

// Box-reduces by a whole factor while streaming, so a huge picture is never
// held whole in memory.
VImage boxReduced(VImage image, int wanted)
{
    const int factor = boxReductionFactor(std::max(image.width(), image.height()), wanted);
    if (factor < 2)
        return image;
    // Never below one pixel across, however thin the picture.
    return image.shrink(std::min(factor, image.width()), std::min(factor, image.height()));
}

BitmapImageRep premultipliedRep(const VImage& image)
{
    BitmapImageRep rep = BitmapImageRep::rgba(image.width(), image.height());
    const VImage target = VImage::new_from_memory(rep.bitmapData(), rep.bytes().size(), image.width(),
                                                  image.height(), 4, VIPS_FORMAT_UCHAR);
    image.write(target);
    premultiplyRgba(rep);
    return rep;
}

PictureLoadResult failure(std::string error)
{
    return {std::nullopt, std::move(error)};
}

PictureLoadResult load(const std::filesystem::path& path, int forIconWidth)
{
    const char* loaderName = vips_foreign_find_load(path.c_str());
    if (!loaderName) {
        vips_error_clear();
        return failure("not a picture Quilo can read");
    }
    const Loader kind = loaderKind(loaderName);
    const VImage header = open(path, VImage::option());
    const long long pixels = (long long)header.width() * header.height();
    if (pixels > kMaxPicturePixels)
        return failure("picture too large (" + std::to_string(header.width()) + " x "
                       + std::to_string(header.height()) + " pixels)");
    const int wanted = 2 * forIconWidth;
    const VImage opened = openReduced(path, kind, header, wanted);
    if (!streams(kind, header) && bytesOf(opened) > kMaxDecodeBytes)
        return failure("picture too large (" + std::to_string(header.width()) + " x "
                       + std::to_string(header.height()) + " pixels)");
    VImage image = boxReduced(opened, wanted);
    image = toSrgb8WithAlpha(image).copy_memory().autorot();

    Image picture;
    const bool swapped = swapsAxes(header);
    const int fullWide = swapped ? header.height() : header.width();
    const int fullHigh = swapped ? header.width() : header.height();
    picture.setSize(fullWide, fullHigh);
    if (kind != Loader::Vector)
        picture.setPixelSize(fullWide, fullHigh);
    picture.addRepresentation(premultipliedRep(image));
    return {std::move(picture), {}};
}

} // namespace

PictureLoadResult vipsLoadPicture(const std::filesystem::path& path, int forIconWidth)
{
    if (!ensureVipsStarted())
        return failure("the image library could not start");
    try {
        return load(path, forIconWidth);
    } catch (const vips::VError& error) {
        std::string message = error.what();
        vips_error_clear();
        while (!message.empty() && message.back() == '\n')
            message.pop_back();
        // The library's last line says what went wrong; some failures leave none.
        const auto lastLine = message.rfind('\n');
        message = lastLine == std::string::npos ? message : message.substr(lastLine + 1);
        return failure("cannot decode: " + (message.empty() ? std::string("damaged or incomplete") : message));
    }
}

} // namespace quilo
