#include "iconfamily/DcPicture.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace quilo {
namespace {

// libjpeg's tables, so pictures come out as its decoder gives them.
struct YccTables {
    std::array<int, 256> crToR{}, cbToB{}, crToG{}, cbToG{};
};

constexpr int kFixedBits = 16;

constexpr YccTables makeYccTables()
{
    constexpr int kHalf = 1 << (kFixedBits - 1);
    auto fixed = [](double x) { return int(x * (1 << kFixedBits) + 0.5); };
    YccTables t;
    for (int i = 0; i < 256; ++i) {
        const int x = i - 128;
        t.crToR[std::size_t(i)] = (fixed(1.40200) * x + kHalf) >> kFixedBits;
        t.cbToB[std::size_t(i)] = (fixed(1.77200) * x + kHalf) >> kFixedBits;
        t.crToG[std::size_t(i)] = -fixed(0.71414) * x;
        t.cbToG[std::size_t(i)] = -fixed(0.34414) * x + kHalf;
    }
    return t;
}

constexpr YccTables kYcc = makeYccTables();

std::uint8_t clampByte(int value)
{
    return std::uint8_t(std::clamp(value, 0, 255));
}

// The 1x1 inverse DCT: the dequantised DC over 8, rounded, level-shifted.
// (libjpeg wraps values far out of range where this clamps; only hostile
// files have them.)
std::uint8_t blockLevel(std::int16_t dc, int quant)
{
    return clampByte(((dc * quant + 4) >> 3) + 128);
}

void levelsOfRow(const DcPlane& plane, int y, std::span<std::uint8_t> out)
{
    const std::int16_t* dc = plane.dc + std::size_t(y / plane.down) * plane.stride;
    for (std::size_t x = 0; x < out.size(); ++x)
        out[x] = blockLevel(dc[int(x) / plane.across], plane.quant);
}

void greyToRgba(const std::uint8_t* grey, std::uint8_t* pixel, int wide)
{
    for (int x = 0; x < wide; ++x, pixel += 4) {
        std::memset(pixel, grey[x], 3);
        pixel[3] = 255;
    }
}

void yccToRgba(const std::uint8_t* luma, const std::uint8_t* cb, const std::uint8_t* cr, std::uint8_t* pixel, int wide)
{
    for (int x = 0; x < wide; ++x, pixel += 4) {
        const int y = luma[x];
        pixel[0] = clampByte(y + kYcc.crToR[cr[x]]);
        pixel[1] = clampByte(y + ((kYcc.cbToG[cb[x]] + kYcc.crToG[cr[x]]) >> kFixedBits));
        pixel[2] = clampByte(y + kYcc.cbToB[cb[x]]);
        pixel[3] = 255;
    }
}

} // namespace

BitmapImageRep dcPicture(std::span<const DcPlane> planes, int pixelsWide, int pixelsHigh)
{
    BitmapImageRep rep = BitmapImageRep::rgba(pixelsWide, pixelsHigh);
    const std::size_t wide = std::size_t(rep.pixelsWide());
    std::vector<std::uint8_t> levels(wide * planes.size());
    for (int y = 0; y < rep.pixelsHigh(); ++y) {
        for (std::size_t i = 0; i < planes.size(); ++i)
            levelsOfRow(planes[i], y, std::span(levels).subspan(i * wide, wide));
        if (planes.size() == 1)
            greyToRgba(levels.data(), rep.row(y), int(wide));
        else
            yccToRgba(levels.data(), levels.data() + wide, levels.data() + 2 * wide, rep.row(y), int(wide));
    }
    return rep;
}

} // namespace quilo
