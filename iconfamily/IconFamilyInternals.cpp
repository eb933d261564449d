// The packing routines (one square bitmap into the raw data of one element),
// and the copy of one element into a resource.
#include "iconfamily/IconFamily.h"

#include "foundation/Log.h"
#include "iconfamily/ResourceFork.h"
#include "iconfamily/SystemPalette.h"

#include <algorithm>

namespace quilo {
namespace {

bool hasRequiredSize(const BitmapImageRep& bitmap, int n)
{
    return bitmap.pixelsWide() == n && bitmap.pixelsHigh() == n;
}

bool isRgb24(const BitmapImageRep& bitmap)
{
    return bitmap.samplesPerPixel() == 3 && bitmap.bitsPerPixel() == 24;
}

bool isRgba32(const BitmapImageRep& bitmap)
{
    return bitmap.samplesPerPixel() == 4 && bitmap.bitsPerPixel() == 32;
}

bool isGrey8(const BitmapImageRep& bitmap)
{
    return bitmap.samplesPerPixel() == 1 && bitmap.bitsPerPixel() == 8;
}

// The checks shared by the three 8-bit-a-sample converters; logs the first
// refusal under the converter's own name.
bool acceptsLayout(const BitmapImageRep& bitmap, const char* name, bool acceptsGrey)
{
    if (bitmap.isPlanar()) {
        logFormat("%s returning NULL due to isPlanar == YES", name);
        return false;
    }
    if (bitmap.bitsPerSample() != 8) {
        logFormat("%s returning NULL due to bitsPerSample == %d", name, bitmap.bitsPerSample());
        return false;
    }
    if (!isRgb24(bitmap) && !isRgba32(bitmap) && !(acceptsGrey && isGrey8(bitmap))) {
        // The line ends in a bare "%": bitsPerPixel is passed but never printed.
        logFormat("%s returning NULL due to samplesPerPixel == %d, bitsPerPixel == %%", name,
                  bitmap.samplesPerPixel());
        return false;
    }
    return true;
}

bool oneBitLayoutAccepted(const BitmapImageRep& bitmap)
{
    const int spp = bitmap.samplesPerPixel();
    const int bps = bitmap.bitsPerSample();
    switch (bitmap.bitsPerPixel()) {
    case 1: return spp == 1 && bps == 1;
    case 8: return spp == 1 && bps == 8;
    case 24: return spp == 3 && bps == 8;
    case 32: return spp == 4 && bps == 8;
    default: return false;
    }
}

std::uint8_t unpremultiplied(std::uint8_t sample, float factor)
{
    // Truncated toward zero, then only the low byte kept: colour above its
    // alpha wraps around, as the original arithmetic does.
    return std::uint8_t(int(float(sample) * factor));
}

// Sets bits of a plane (leftmost pixel in the top bit) where `isSet` holds.
template <typename IsSet>
void fillPlane(std::uint8_t* plane, int n, IsSet isSet)
{
    const int rowBytes = n / 8;
    for (int y = 0; y < n; ++y) {
        std::uint8_t* out = plane + std::size_t(y) * std::size_t(rowBytes);
        for (int x = 0; x < rowBytes * 8; ++x)
            if (isSet(x, y))
                out[x / 8] = std::uint8_t(out[x / 8] | (0x80 >> (x % 8)));
    }
}

} // namespace

IconFamily::ElementData IconFamily::get32BitDataFromBitmapImageRep(const BitmapImageRep& bitmap, int n)
{
    if (!hasRequiredSize(bitmap, n)
        || !acceptsLayout(bitmap, "get32BitDataFromBitmapImageRep:requiredPixelSize:", false))
        return std::nullopt;
    std::vector<std::uint8_t> data(std::size_t(n) * std::size_t(n) * 4);
    std::uint8_t* out = data.data();
    const bool hasAlpha = isRgba32(bitmap);
    const int stride = hasAlpha ? 4 : 3;
    for (int y = 0; y < n; ++y) {
        const std::uint8_t* pixel = bitmap.row(y);
        for (int x = 0; x < n; ++x, pixel += stride, out += 4) {
            if (!hasAlpha) {
                out[0] = 0;
                std::copy_n(pixel, 3, out + 1);
                continue;
            }
            const std::uint8_t alpha = pixel[3];
            out[0] = alpha;
            if (alpha == 0) {
                out[1] = out[2] = out[3] = 0;
                continue;
            }
            const float factor = 255.0f / float(alpha);
            out[1] = unpremultiplied(pixel[0], factor);
            out[2] = unpremultiplied(pixel[1], factor);
            out[3] = unpremultiplied(pixel[2], factor);
        }
    }
    return data;
}

IconFamily::ElementData IconFamily::get8BitDataFromBitmapImageRep(const BitmapImageRep& bitmap, int n)
{
    if (!hasRequiredSize(bitmap, n)
        || !acceptsLayout(bitmap, "get8BitDataFromBitmapImageRep:requiredPixelSize:", false))
        return std::nullopt;
    std::vector<std::uint8_t> data(std::size_t(n) * std::size_t(n));
    const int stride = bitmap.samplesPerPixel();
    std::uint8_t* out = data.data();
    // Alpha is ignored and colour stays premultiplied: transparent pixels map
    // to black.
    for (int y = 0; y < n; ++y) {
        const std::uint8_t* pixel = bitmap.row(y);
        for (int x = 0; x < n; ++x, pixel += stride)
            *out++ = nearestSystemPaletteIndex(pixel[0], pixel[1], pixel[2]);
    }
    return data;
}

IconFamily::ElementData IconFamily::get8BitMaskFromBitmapImageRep(const BitmapImageRep& bitmap, int n)
{
    if (!hasRequiredSize(bitmap, n)
        || !acceptsLayout(bitmap, "get8BitMaskFromBitmapImageRep:requiredPixelSize:", true))
        return std::nullopt;
    std::vector<std::uint8_t> data(std::size_t(n) * std::size_t(n));
    if (isRgb24(bitmap)) {
        std::fill(data.begin(), data.end(), 0xFF);
        return data;
    }
    for (int y = 0; y < n; ++y) {
        std::uint8_t* out = data.data() + std::size_t(y) * std::size_t(n);
        const std::uint8_t* row = bitmap.row(y);
        if (isGrey8(bitmap)) {
            std::copy_n(row, n, out);
            continue;
        }
        for (int x = 0; x < n; ++x)
            out[x] = row[4 * x + 3];
    }
    return data;
}

IconFamily::ElementData IconFamily::get1BitMaskFromBitmapImageRep(const BitmapImageRep& bitmap, int n)
{
    static constexpr const char* name = "get1BitMaskFromBitmapImageRep:requiredPixelSize:";
    if (!hasRequiredSize(bitmap, n))
        return std::nullopt;
    if (bitmap.isPlanar()) {
        logFormat("%s returning NULL due to isPlanar == YES", name);
        return std::nullopt;
    }
    if (!oneBitLayoutAccepted(bitmap)) {
        logFormat("%s returning NULL due to bitsPerPixel == %d, samplesPerPixel== %d, bitsPerSample == %d",
                  name, bitmap.bitsPerPixel(), bitmap.samplesPerPixel(), bitmap.bitsPerSample());
        return std::nullopt;
    }
    const int size = n * n / 4;
    std::vector<std::uint8_t> data(std::size_t(std::max(size, 0)), 0);
    const std::size_t planeSize = data.size() / 2;
    if (isRgb24(bitmap)) {
        std::fill(data.begin(), data.end(), 0xFF);
        return data;
    }
    if (bitmap.bitsPerPixel() == 1) {
        const int rowBytes = n / 8;
        for (int y = 0; y < n; ++y)
            std::copy_n(bitmap.row(y), rowBytes, data.data() + std::size_t(y) * std::size_t(rowBytes));
    } else {
        const int alphaOffset = isRgba32(bitmap) ? 3 : 0;
        const int stride = bitmap.bitsPerPixel() / 8;
        fillPlane(data.data(), n, [&](int x, int y) { return bitmap.row(y)[stride * x + alphaOffset] != 0; });
    }
    std::copy_n(data.begin(), planeSize, data.begin() + std::ptrdiff_t(planeSize));
    return data;
}

} // namespace quilo

namespace quilo {

bool IconFamily::addResourceType(ResourceFork& fork, OSType type, std::int16_t asResID) const
{
    std::vector<std::uint8_t> data;
    if (getIconFamilyData(hIconFamily_, type, data) != noErr || data.empty())
        return false;
    return fork.add({type, asResID, "", 0, std::move(data)});
}

} // namespace quilo
