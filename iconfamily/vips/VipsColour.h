#pragma once

#include <vips/vips8>

namespace quilo {

// Any picture as 8-bit sRGB with an alpha band: an embedded colour profile
// applied, grey, CMYK and 16-bit converted, opaque pictures given full alpha.
vips::VImage toSrgb8WithAlpha(vips::VImage image);

} // namespace quilo
