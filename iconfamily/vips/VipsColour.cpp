#include "iconfamily/vips/VipsColour.h"

namespace quilo {

vips::VImage toSrgb8WithAlpha(vips::VImage image)
{
    using vips::VImage;
    if (image.get_typeof(VIPS_META_ICC_NAME))
        image = image.icc_transform("srgb", VImage::option()->set("embedded", true)->set("depth", 8));
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    if (image.bands() == 3)
        image = image.bandjoin_const({255});
    return image;
}

} // namespace quilo
