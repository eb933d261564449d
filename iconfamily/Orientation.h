#pragma once

#include "iconfamily/BitmapImageRep.h"

namespace quilo {

// Turns a bitmap stored with EXIF orientation 2 to 8 upright (orientation 1
// or anything else returns it unchanged). Works on 4-sample, 8-bit bitmaps.
BitmapImageRep orientedUpright(BitmapImageRep stored, int orientation);

// Whether the orientation swaps width and height (5 to 8).
inline bool orientationSwapsAxes(int orientation)
{
    return orientation >= 5 && orientation <= 8;
}

} // namespace quilo
