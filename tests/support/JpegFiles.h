#pragma once

// JPEGs written and read by libjpeg, the decoder whose output ours is held
// to, and a walk over a file's segments for tests that cut or patch them.
// libjpeg's default error handler exits the process: these helpers are only
// given valid files.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <utility>
#include <vector>
// jpeglib.h needs FILE and size_t declared first.
#include <jpeglib.h>

namespace quilo::test {

struct JpegLayout {
    // Sampling factors, one pair per component: one for grey, three for
    // YCbCr, four for CMYK.
    using Sampling = std::vector<std::pair<int, int>>;
    JpegLayout(int width_, int height_, Sampling sampling_ = {{2, 2}, {1, 1}, {1, 1}})
        : width(width_), height(height_), sampling(std::move(sampling_))
    {
    }

    int width;
    int height;
    Sampling sampling;
    bool progressive = true;
    std::vector<jpeg_scan_info> scans; // none: libjpeg's own progression
    unsigned restartInterval = 0;      // in MCUs
    bool storeRgb = false;             // as RGB rather than YCbCr
    bool arithmetic = false;           // arithmetic coding rather than Huffman
    int firstComponentId = 1;          // the others count on from it
    std::vector<std::pair<int, std::vector<std::uint8_t>>> markers; // written after the tables
};

// Patches of colour that straddle the block edges, different in each
// channel, so every block has a mean of its own and a misplaced one shows.
inline std::uint8_t patternAt(int x, int y, int channel)
{
    const unsigned cell = unsigned(x / 5 + 1) * 73856093u ^ unsigned(y / 3 + 1) * 19349663u
                          ^ unsigned(channel + 1) * 83492791u;
    return std::uint8_t((cell * 2654435761u) >> 24);
}

// libjpeg's compressor writing into memory; finish() gives the file.
class MemoryJpegWriter {
public:
    MemoryJpegWriter()
    {
        c.err = jpeg_std_error(&errors_);
        jpeg_create_compress(&c);
        jpeg_mem_dest(&c, &buffer_, &size_);
    }
    ~MemoryJpegWriter()
    {
        jpeg_destroy_compress(&c);
        std::free(buffer_);
    }
    MemoryJpegWriter(const MemoryJpegWriter&) = delete;
    MemoryJpegWriter& operator=(const MemoryJpegWriter&) = delete;

    std::vector<std::uint8_t> finish()
    {
        jpeg_finish_compress(&c);
        return {buffer_, buffer_ + size_};
    }

    jpeg_compress_struct c{};

private:
    jpeg_error_mgr errors_{};
    unsigned char* buffer_ = nullptr;
    unsigned long size_ = 0;
};

inline std::vector<std::uint8_t> writeJpeg(const JpegLayout& layout)
{
    MemoryJpegWriter writer;
    jpeg_compress_struct& c = writer.c;
    const int channels = int(layout.sampling.size());
    c.image_width = JDIMENSION(layout.width);
    c.image_height = JDIMENSION(layout.height);
    c.input_components = channels;
    c.in_color_space = channels == 1 ? JCS_GRAYSCALE : channels == 3 ? JCS_RGB : JCS_CMYK;
    jpeg_set_defaults(&c);
    if (layout.storeRgb)
        jpeg_set_colorspace(&c, JCS_RGB);
    for (int i = 0; i < channels; ++i) {
        c.comp_info[i].h_samp_factor = layout.sampling[std::size_t(i)].first;
        c.comp_info[i].v_samp_factor = layout.sampling[std::size_t(i)].second;
        if (!layout.storeRgb)
            c.comp_info[i].component_id = layout.firstComponentId + i;
    }
    if (layout.progressive)
        jpeg_simple_progression(&c);
    if (!layout.scans.empty()) {
        c.scan_info = layout.scans.data();
        c.num_scans = int(layout.scans.size());
    }
    c.restart_interval = layout.restartInterval;
    c.arith_code = layout.arithmetic;
    jpeg_start_compress(&c, TRUE);
    for (const auto& [marker, data] : layout.markers)
        jpeg_write_marker(&c, marker, data.data(), unsigned(data.size()));
    std::vector<JSAMPLE> row(std::size_t(layout.width * channels));
    for (int y = 0; y < layout.height; ++y) {
        for (int x = 0; x < layout.width; ++x)
            for (int channel = 0; channel < channels; ++channel)
                row[std::size_t(x * channels + channel)] = patternAt(x, y, channel);
        JSAMPROW rows[] = {row.data()};
        jpeg_write_scanlines(&c, rows, 1);
    }
    return writer.finish();
}

struct RgbaPicture {
    int wide = 0;
    int high = 0;
    std::vector<std::uint8_t> pixels;
};

// libjpeg's decode at an eighth, as 8-bit R G B A.
inline RgbaPicture libjpegEighth(std::span<const std::uint8_t> jpeg)
{
    jpeg_decompress_struct d{};
    jpeg_error_mgr errors{};
    d.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&d);
    jpeg_mem_src(&d, jpeg.data(), (unsigned long)jpeg.size());
    jpeg_read_header(&d, TRUE);
    d.scale_num = 1;
    d.scale_denom = 8;
    d.out_color_space = JCS_EXT_RGBA;
    jpeg_start_decompress(&d);
    RgbaPicture picture{int(d.output_width), int(d.output_height), {}};
    picture.pixels.resize(std::size_t(picture.wide * picture.high * 4));
    while (d.output_scanline < d.output_height) {
        JSAMPROW row = picture.pixels.data() + std::size_t(d.output_scanline) * std::size_t(picture.wide * 4);
        jpeg_read_scanlines(&d, &row, 1);
    }
    jpeg_finish_decompress(&d);
    jpeg_destroy_decompress(&d);
    return picture;
}

// The same picture with every AC coefficient set to zero, rewritten by
// libjpeg (as a baseline file): what an eighth shows from the DC alone.
inline std::vector<std::uint8_t> withoutDetail(std::span<const std::uint8_t> jpeg)
{
    jpeg_decompress_struct d{};
    jpeg_error_mgr readErrors{};
    d.err = jpeg_std_error(&readErrors);
    jpeg_create_decompress(&d);
    jpeg_mem_src(&d, jpeg.data(), (unsigned long)jpeg.size());
    jpeg_read_header(&d, TRUE);
    jvirt_barray_ptr* coefficients = jpeg_read_coefficients(&d);
    for (int c = 0; c < d.num_components; ++c) {
        const jpeg_component_info& component = d.comp_info[c];
        for (JDIMENSION row = 0; row < component.height_in_blocks; ++row) {
            JBLOCKARRAY blocks = d.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&d), coefficients[c], row, 1, TRUE);
            for (JDIMENSION b = 0; b < component.width_in_blocks; ++b)
                std::fill(blocks[0][b] + 1, blocks[0][b] + DCTSIZE2, JCOEF(0));
        }
    }
    MemoryJpegWriter writer;
    jpeg_copy_critical_parameters(&d, &writer.c);
    jpeg_write_coefficients(&writer.c, coefficients);
    std::vector<std::uint8_t> bytes = writer.finish();
    jpeg_finish_decompress(&d);
    jpeg_destroy_decompress(&d);
    return bytes;
}

struct JpegSegment {
    std::uint8_t marker;
    std::size_t at;     // of its 0xFF
    std::size_t end;    // past its data, a scan's coded data included
    int firstCoefficient; // of a scan
};

// The marker segments of a well-formed file, up to its end-of-image marker.
inline std::vector<JpegSegment> segmentsOf(std::span<const std::uint8_t> jpeg)
{
    std::vector<JpegSegment> segments;
    std::size_t at = 2;
    while (at + 1 < jpeg.size() && jpeg[at + 1] != 0xD9) {
        JpegSegment segment{jpeg[at + 1], at, at + 2 + std::size_t(jpeg[at + 2] << 8 | jpeg[at + 3]), 0};
        if (segment.marker == 0xDA) {
            segment.firstCoefficient = jpeg[at + 5 + 2 * std::size_t(jpeg[at + 4])];
            // Coded data runs to the next marker that is no restart marker.
            while (segment.end + 1 < jpeg.size()
                   && (jpeg[segment.end] != 0xFF || jpeg[segment.end + 1] == 0 || (jpeg[segment.end + 1] & 0xF8) == 0xD0))
                ++segment.end;
        }
        segments.push_back(segment);
        at = segment.end;
    }
    return segments;
}

// Where a decoder that wants only the DC may stop: the first scan of detail
// after the last DC scan.
inline std::size_t endOfDcScans(std::span<const std::uint8_t> jpeg)
{
    const auto segments = segmentsOf(jpeg);
    const auto lastDc = std::find_if(segments.rbegin(), segments.rend(), [](const JpegSegment& s) {
        return s.marker == 0xDA && s.firstCoefficient == 0;
    });
    const auto next = std::find_if(lastDc.base(), segments.end(), [](const JpegSegment& s) { return s.marker == 0xDA; });
    return next == segments.end() ? jpeg.size() - 2 : next->at;
}

} // namespace quilo::test
