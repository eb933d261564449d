#pragma once

#include "iconfamily/BitmapImageRep.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quilo {

// One component of a JPEG as its blocks' DC coefficients, row after row.
struct DcPlane {
    const std::int16_t* dc = nullptr;
    std::size_t stride = 0; // values from one row of blocks to the next
    int quant = 0;          // the DC quantiser
    // The picture's pixels one block covers at an eighth: the largest
    // sampling factor over the component's own.
    int across = 1;
    int down = 1;
};

// A JPEG at an eighth of its size from the DC alone, as libjpeg decodes it
// at that scale: each block one level (its DC over 8, rounded) repeated
// over the pixels it covers, YCbCr made R G B by libjpeg's fixed-point JFIF
// equations. One plane is grey, three are Y, Cb and Cr. Opaque R G B A.
BitmapImageRep dcPicture(std::span<const DcPlane> planes, int pixelsWide, int pixelsHigh);

} // namespace quilo
