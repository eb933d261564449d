#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quilo {

// A bitmap as the packing routines see it: any layout can be described, so the
// routines' refusals can be exercised. Rows are bytesPerRow apart, top row
// first; a 4-sample colour bitmap holds colour premultiplied by alpha.
class BitmapImageRep {
public:
    // bytesPerRow 0 (or too small for the row) means tightly packed rows.
    // The pixels start out zero: transparent black.
    BitmapImageRep(int pixelsWide, int pixelsHigh, int bitsPerSample, int samplesPerPixel,
                   int bitsPerPixel, bool isPlanar = false, int bytesPerRow = 0);

    // The common layout: 8 bits a sample, R G B A, premultiplied, packed rows.
    static BitmapImageRep rgba(int pixelsWide, int pixelsHigh);

    int pixelsWide() const { return pixelsWide_; }
    int pixelsHigh() const { return pixelsHigh_; }
    int bitsPerSample() const { return bitsPerSample_; }
    int samplesPerPixel() const { return samplesPerPixel_; }
    int bitsPerPixel() const { return bitsPerPixel_; }
    bool isPlanar() const { return isPlanar_; }
    int bytesPerRow() const { return bytesPerRow_; }

    // The size in points; a bitmap declaring another resolution than 72 dpi has
    // a size that differs from its pixel count.
    double width() const { return width_; }
    double height() const { return height_; }
    void setSize(double width, double height)
    {
        width_ = width;
        height_ = height;
    }

    std::uint8_t* bitmapData() { return bytes_.data(); }
    const std::uint8_t* bitmapData() const { return bytes_.data(); }
    std::span<const std::uint8_t> bytes() const { return bytes_; }
    const std::uint8_t* row(int y) const { return bytes_.data() + std::size_t(y) * std::size_t(bytesPerRow_); }
    std::uint8_t* row(int y) { return bytes_.data() + std::size_t(y) * std::size_t(bytesPerRow_); }

private:
    int pixelsWide_;
    int pixelsHigh_;
    int bitsPerSample_;
    int samplesPerPixel_;
    int bitsPerPixel_;
    bool isPlanar_;
    int bytesPerRow_;
    double width_;
    double height_;
    std::vector<std::uint8_t> bytes_;
};

// Premultiplies the colour of an 8-bit R G B A bitmap holding straight colour,
// rounding to nearest.
void premultiplyRgba(BitmapImageRep& rgba);

} // namespace quilo
