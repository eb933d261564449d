#pragma once

#include <algorithm>

// How far a picture may be reduced while it is decoded, for thumbnails whose
// longer side is `wanted` pixels: never below that, so the fine filter still
// has pixels to weigh.
namespace quilo {

// The largest power-of-two reduction a JPEG decoder offers (up to 8).
inline int jpegScaleDenominator(int longer, int wanted)
{
    int denominator = 8;
    while (denominator > 1 && longer / denominator < wanted)
        denominator /= 2;
    return denominator;
}

// The whole factor a box reduction may shrink by; below 2 it is not worth a pass.
inline int boxReductionFactor(int longer, int wanted)
{
    return longer / std::max(wanted, 1);
}

} // namespace quilo
