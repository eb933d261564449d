// Writes a family with all ten elements Quilo fills, from a flat-coloured
// picture so the packed colour stays small: the seed from our own writer.
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"

#include <cmath>
#include <cstdio>

namespace {

using namespace quilo;

// Rings of flat colour inside a disc with a soft edge, premultiplied.
BitmapImageRep rings(int side)
{
    BitmapImageRep rep = BitmapImageRep::rgba(side, side);
    const double centre = side / 2.0;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const double distance = std::hypot(x + 0.5 - centre, y + 0.5 - centre) / centre;
            const double coverage = std::fmin(1.0, std::fmax(0.0, (0.95 - distance) * side / 2.0));
            const auto alpha = int(std::lround(coverage * 255));
            const int ring = int(distance * 5);
            const int colour[3] = {40 + 40 * ring, 200 - 30 * ring, 90 + 25 * (ring % 2)};
            std::uint8_t* pixel = rep.row(y) + 4 * x;
            for (int c = 0; c < 3; ++c)
                pixel[c] = std::uint8_t(colour[c] * alpha / 255);
            pixel[3] = std::uint8_t(alpha);
        }
    return rep;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUTPUT.icns\n", argv[0]);
        return 2;
    }
    const BitmapImageRep thumbnail = rings(128), large = rings(32), small = rings(16);
    const struct {
        OSType type;
        const BitmapImageRep& source;
    } fills[] = {
        {kThumbnail32BitData, thumbnail}, {kThumbnail8BitMask, thumbnail}, {kLarge32BitData, large},
        {kLarge8BitData, large},          {kLarge8BitMask, large},         {kLarge1BitMask, large},
        {kSmall32BitData, small},         {kSmall8BitData, small},         {kSmall8BitMask, small},
        {kSmall1BitMask, small},
    };
    IconFamily family;
    for (const auto& fill : fills)
        if (!family.setIconFamilyElement(fill.type, fill.source)) {
            std::fprintf(stderr, "could not set %s\n", fourCharCodeString(fill.type).c_str());
            return 1;
        }
    family.writeToFile(argv[1]);
    std::printf("%s: %zu bytes\n", argv[1], family.iconFamilyHandle().size());
    return 0;
}
