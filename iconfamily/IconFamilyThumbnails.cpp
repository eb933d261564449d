// Thumbnails: any picture into a family of 128, 32 and 16 pixel renderings.
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"

#include <cmath>

namespace quilo {
namespace {

// The fitted size: the longer side fills the square (a square counts as
// wide). Product and quotient in single precision, rounding half up in double.
DrawRect fittedRect(float w, float h, float side)
{
    float newWidth = side;
    float newHeight = side;
    if (w >= h)
        newHeight = float(std::floor(double(h * side / w) + 0.5));
    else
        newWidth = float(std::floor(double(w * side / h) + 0.5));
    // The origin is not rounded: an odd margin leaves a half-pixel offset.
    return {(side - newWidth) * 0.5, (side - newHeight) * 0.5, newWidth, newHeight};
}

void setElements(IconFamily& family, const BitmapImageRep& bitmap, std::initializer_list<OSType> types)
{
    // A refused element is skipped (it logs why); the others still go in.
    for (OSType type : types)
        family.setIconFamilyElement(type, bitmap);
}

} // namespace

Image IconFamily::resampleImage(const Image& image, int toIconWidth, ImageInterpolation usingImageInterpolation)
{
    const auto side = float(toIconWidth);
    Image canvas(side, side);
    canvas.setPixelSize(toIconWidth, toIconWidth);
    const BitmapImageRep* rep = image.bestRepresentation();
    if (!rep) {
        canvas.addRepresentation(BitmapImageRep::rgba(toIconWidth, toIconWidth));
        return canvas;
    }
    // A bitmap is fitted by its pixel count, whatever resolution it declares.
    float w = float(image.width());
    float h = float(image.height());
    if (image.pixelsWide() > 0 && image.pixelsHigh() > 0) {
        w = float(image.pixelsWide());
        h = float(image.pixelsHigh());
    }
    const DrawRect rect = fittedRect(w, h, side);
    canvas.addRepresentation(drawInClearSquare(*rep, toIconWidth, rect, usingImageInterpolation));
    return canvas;
}

IconFamily::IconFamily(const Image& thumbnailsOfImage, ImageInterpolation usingImageInterpolation)
{
    // The finished 128 px thumbnail, a 128-point picture of one bitmap, is
    // also the source of the smaller sizes: they never go back to the picture.
    const Image source = resampleImage(thumbnailsOfImage, 128, usingImageInterpolation);
    setElements(*this, source.representations().front(), {kThumbnail32BitData, kThumbnail8BitMask});
    setElements(*this, resampleImage(source, 32, usingImageInterpolation).representations().front(),
                {kLarge32BitData, kLarge8BitData, kLarge8BitMask, kLarge1BitMask});
    setElements(*this, resampleImage(source, 16, usingImageInterpolation).representations().front(),
                {kSmall32BitData, kSmall8BitData, kSmall8BitMask, kSmall1BitMask});
}

std::unique_ptr<IconFamily> IconFamily::iconFamilyWithThumbnailsOfImage(const Image& image,
                                                                         ImageInterpolation usingImageInterpolation)
{
    return std::make_unique<IconFamily>(image, usingImageInterpolation);
}

} // namespace quilo
