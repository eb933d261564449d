#pragma once

#include "iconfamily/BitmapImageRep.h"

namespace quilo {

// How a picture is filtered when it is drawn at another size.
enum class ImageInterpolation : int {
    Default = 0, // the same as High
    None = 1,    // nearest pixel
    Low = 2,     // bilinear
    High = 3,    // Lanczos-3, widened when reducing so every source pixel counts
};

// A rectangle in canvas pixels, measured from the top-left corner; the edges
// may fall between pixels.
struct DrawRect {
    double x;
    double y;
    double width;
    double height;
};

// Draws `source` (8-bit R G B A, premultiplied) scaled into `rect` of a clear
// square canvas of `side` pixels and returns the canvas in the same layout.
// Edges are antialiased by coverage: a pixel the rectangle half covers gets
// half the opacity. The picture is filtered with its edge pixels extended, so
// it has no dark rim where it meets the canvas edge.
BitmapImageRep drawInClearSquare(const BitmapImageRep& source, int side, DrawRect rect,
                                 ImageInterpolation interpolation);

// Averages blocks of factor x factor pixels (8-bit R G B A): a cheap first
// step down for a large picture before the fine filter. Blocks cut off at
// the right and bottom edges average the pixels they have.
BitmapImageRep boxReduced(const BitmapImageRep& source, int factor);

} // namespace quilo
