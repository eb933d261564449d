#pragma once

// Families written by us from crafted bitmaps, and what a reader must see in
// each element: the colour and indices our packers chose, the opacity of the
// bitmap.

#include "Interop.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/SystemPalette.h"

#include <functional>
#include <random>

namespace quilo::test {

struct CraftedCase {
    const char* name;
    std::function<BitmapImageRep(int n)> bitmap;
};

inline void setPremultiplied(std::uint8_t* pixel, int red, int green, int blue, int alpha)
{
    pixel[0] = std::uint8_t((red * alpha + 127) / 255);
    pixel[1] = std::uint8_t((green * alpha + 127) / 255);
    pixel[2] = std::uint8_t((blue * alpha + 127) / 255);
    pixel[3] = std::uint8_t(alpha);
}

// Alpha rising across the picture, with the extremes 0, 1, 254, 255 each in a
// column of its own; colour ramps under it.
inline BitmapImageRep alphaGradient(int n)
{
    BitmapImageRep bitmap = BitmapImageRep::rgba(n, n);
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            int alpha = x * 255 / (n - 1);
            alpha = x == 1 ? 1 : x == n - 2 ? 254 : alpha;
            setPremultiplied(bitmap.row(y) + 4 * x, y * 255 / (n - 1), 255 - x * 255 / (n - 1), (x * y) & 0xFF, alpha);
        }
    return bitmap;
}

// A transparent field, an opaque square with hard edges, a half-transparent
// frame, and lone pixels: one opaque, one nearly invisible.
inline BitmapImageRep hardEdges(int n)
{
    BitmapImageRep bitmap = BitmapImageRep::rgba(n, n);
    for (int y = n / 4 - 1; y <= 3 * n / 4; ++y)
        for (int x = n / 4 - 1; x <= 3 * n / 4; ++x) {
            const bool frame = y == n / 4 - 1 || y == 3 * n / 4 || x == n / 4 - 1 || x == 3 * n / 4;
            setPremultiplied(bitmap.row(y) + 4 * x, 30, 144, 255, frame ? 128 : 255);
        }
    setPremultiplied(bitmap.row(0), 255, 0, 255, 255);
    setPremultiplied(bitmap.row(n - 1), 255, 255, 255, 1);
    return bitmap;
}

// Noise of every alpha, the extremes more often than the rest.
inline BitmapImageRep premultipliedNoise(int n)
{
    constexpr int extremes[] = {0, 1, 254, 255};
    std::mt19937 random(std::uint32_t(1000 + n));
    BitmapImageRep bitmap = BitmapImageRep::rgba(n, n);
    for (int i = 0; i < n * n; ++i) {
        const unsigned pick = random() % 8;
        const int alpha = pick < 4 ? extremes[pick] : int(random() % 256);
        const int red = int(random() % 256), green = int(random() % 256), blue = int(random() % 256);
        setPremultiplied(bitmap.bitmapData() + 4 * i, red, green, blue, alpha);
    }
    return bitmap;
}

// An opaque bitmap with no alpha at all: channels go into the element verbatim.
inline BitmapImageRep opaqueRgb(int n, const std::function<std::uint8_t(int channel, int index)>& sample)
{
    BitmapImageRep bitmap(n, n, 8, 3, 24);
    for (int i = 0; i < n * n; ++i)
        for (int c = 0; c < 3; ++c)
            bitmap.bitmapData()[3 * i + c] = sample(c, i);
    return bitmap;
}

// Each channel is runs of every length from 1 to 140 in turn (each channel
// starting elsewhere in the cycle), so the packer writes repeats of every
// length, repeats too long for one control byte, and literals between them.
inline BitmapImageRep runsOfEveryLength(int n)
{
    std::vector<std::uint8_t> channels[3];
    std::mt19937 random(7);
    for (int c = 0; c < 3; ++c) {
        std::uint8_t value = 0;
        for (int length = 1 + 47 * c; int(channels[c].size()) < n * n; length = length % 140 + 1) {
            value = std::uint8_t(value + 1 + random() % 255); // never the previous value
            channels[c].insert(channels[c].end(), std::size_t(length), value);
        }
    }
    return opaqueRgb(n, [&](int c, int i) { return channels[c][std::size_t(i)]; });
}

// Plain noise: literal runs only.
inline BitmapImageRep opaqueNoise(int n)
{
    std::mt19937 random(std::uint32_t(2000 + n));
    return opaqueRgb(n, [&](int, int) { return std::uint8_t(random()); });
}

// Channels that pack to exactly their own size: one repeat whose saving pays
// for the control bytes of the literals after it. The whole element then packs
// to width x height x 3 bytes, which readers take for uncompressed pixels, so
// the writer has to step off that length.
inline std::size_t repeatThatPacksToSize(std::size_t n)
{
    for (std::size_t repeat = 3; repeat <= 130; ++repeat)
        if (2 + (n - repeat) + (n - repeat + 127) / 128 == n)
            return repeat;
    return 0;
}

inline BitmapImageRep packsToUncompressedSize(int n)
{
    const std::size_t pixels = std::size_t(n) * std::size_t(n);
    const std::size_t repeat = repeatThatPacksToSize(pixels);
    EXPECT_NE(repeat, 0u);
    std::mt19937 random(std::uint32_t(3000 + n));
    std::vector<std::uint8_t> channels[3];
    for (auto& channel : channels) {
        channel.assign(repeat, std::uint8_t(random()));
        while (channel.size() < pixels) // no two neighbours alike: nothing but literals
            channel.push_back(std::uint8_t(channel.back() + 1 + random() % 255));
    }
    return opaqueRgb(n, [&](int c, int i) { return channels[c][std::size_t(i)]; });
}

inline const std::vector<CraftedCase>& craftedCases()
{
    static const std::vector<CraftedCase> cases{
        {"AlphaGradient", alphaGradient},
        {"HardEdgesAndLonePixels", hardEdges},
        {"PremultipliedNoise", premultipliedNoise},
        {"RunsOfEveryLength", runsOfEveryLength},
        {"OpaqueNoise", opaqueNoise},
        {"PacksToUncompressedSize", packsToUncompressedSize},
    };
    return cases;
}

inline std::string caseName(const ::testing::TestParamInfo<CraftedCase>& info)
{
    return info.param.name;
}

inline void PrintTo(const CraftedCase& crafted, std::ostream* out)
{
    *out << crafted.name;
}

struct ElementSet {
    int size;
    OSType colour32, mask8, palette8, oneBit; // palette8 and oneBit 0 at 128 px
};

inline const ElementSet kElementSets[] = {
    {128, kThumbnail32BitData, kThumbnail8BitMask, 0, 0},
    {32, kLarge32BitData, kLarge8BitMask, kLarge8BitData, kLarge1BitMask},
    {16, kSmall32BitData, kSmall8BitMask, kSmall8BitData, kSmall1BitMask},
};

// All ten elements, each packed from the case's bitmap of its size.
inline IconFamily craftedFamily(const CraftedCase& crafted)
{
    IconFamily family;
    for (const ElementSet& set : kElementSets) {
        const BitmapImageRep bitmap = crafted.bitmap(set.size);
        for (OSType type : {set.colour32, set.mask8, set.palette8, set.oneBit}) {
            if (type) {
                EXPECT_TRUE(family.setIconFamilyElement(type, bitmap));
            }
        }
    }
    return family;
}

// The bitmap's opacity at pixel i; a bitmap without alpha is opaque.
inline std::uint8_t alphaAt(const BitmapImageRep& bitmap, std::size_t i)
{
    return bitmap.samplesPerPixel() == 4 ? bitmap.bitmapData()[4 * i + 3] : 255;
}

// The 32-bit element with its mask: the colour our packer stores, the alpha
// of the bitmap.
inline Picture expectedColour32(const BitmapImageRep& bitmap, int n)
{
    const auto argb = IconFamily::get32BitDataFromBitmapImageRep(bitmap, n);
    Picture picture = blankPicture(n, n);
    for (std::size_t i = 0; i < std::size_t(n * n); ++i) {
        std::copy_n(argb->begin() + std::ptrdiff_t(4 * i + 1), 3, picture.pixels.begin() + std::ptrdiff_t(4 * i));
        picture.pixels[4 * i + 3] = alphaAt(bitmap, i);
    }
    return picture;
}

// The 1-bit element: black and opaque wherever the bitmap is not fully
// transparent, white and transparent elsewhere.
inline Picture expectedOneBit(const BitmapImageRep& bitmap, int n)
{
    Picture picture = blankPicture(n, n);
    for (std::size_t i = 0; i < std::size_t(n * n); ++i) {
        const bool set = alphaAt(bitmap, i) != 0;
        std::fill_n(picture.pixels.begin() + std::ptrdiff_t(4 * i), 3, set ? 0 : 255);
        picture.pixels[4 * i + 3] = set ? 255 : 0;
    }
    return picture;
}

// The 8-bit element: the system colour of the index our packer chose, opacity
// from the 1-bit mask.
inline Picture expectedPalette8(const BitmapImageRep& bitmap, int n)
{
    const auto indices = IconFamily::get8BitDataFromBitmapImageRep(bitmap, n);
    Picture picture = expectedOneBit(bitmap, n);
    for (std::size_t i = 0; i < std::size_t(n * n); ++i) {
        const PaletteColor colour = systemPalette256()[(*indices)[i]];
        picture.pixels[4 * i] = colour.red;
        picture.pixels[4 * i + 1] = colour.green;
        picture.pixels[4 * i + 2] = colour.blue;
    }
    return picture;
}

} // namespace quilo::test
