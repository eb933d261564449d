#include "iconfamily/Orientation.h"

#include <cstring>

namespace quilo {

BitmapImageRep orientedUpright(BitmapImageRep stored, int orientation)
{
    if (orientation < 2 || orientation > 8)
        return stored;
    const int w = stored.pixelsWide();
    const int h = stored.pixelsHigh();
    const bool swap = orientationSwapsAxes(orientation);
    BitmapImageRep upright = BitmapImageRep::rgba(swap ? h : w, swap ? w : h);
    // For each stored pixel, where it lands in the upright picture.
    for (int y = 0; y < h; ++y) {
        const std::uint8_t* in = stored.row(y);
        for (int x = 0; x < w; ++x) {
            int ux = x, uy = y;
            switch (orientation) {
            case 2: ux = w - 1 - x; break;
            case 3: ux = w - 1 - x; uy = h - 1 - y; break;
            case 4: uy = h - 1 - y; break;
            case 5: ux = y; uy = x; break;
            case 6: ux = h - 1 - y; uy = x; break;
            case 7: ux = h - 1 - y; uy = w - 1 - x; break;
            case 8: ux = y; uy = w - 1 - x; break;
            }
            std::memcpy(upright.row(uy) + 4 * ux, in + 4 * x, 4);
        }
    }
    return upright;
}

} // namespace quilo
