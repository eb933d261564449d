#include "iconfamily/JpegDecoder.h"

#include "iconfamily/DecodeScale.h"
#include "iconfamily/ExifOrientation.h"
#include "iconfamily/Orientation.h"
#include "iconfamily/PictureLoader.h"
#include "iconfamily/ProgressiveDcDecoder.h"

#include <algorithm>
#include <csetjmp>
#include <memory>
#include <vector>
// jpeglib.h needs FILE and size_t declared first.
#include <jerror.h>
#include <jpeglib.h>

namespace quilo {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kIccMarker = JPEG_APP0 + 2;

struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf jump;
    int firstWarning = 0;
    char message[JMSG_LENGTH_MAX] = {};
};

[[noreturn]] void onError(j_common_ptr info)
{
    auto* manager = reinterpret_cast<ErrorManager*>(info->err);
    manager->base.format_message(info, manager->message);
    std::longjmp(manager->jump, 1);
}

// Warnings mean damaged data (a truncated file is filled with grey); only
// stray bytes between segments, common in camera files, are harmless.
void onMessage(j_common_ptr info, int level)
{
    auto* manager = reinterpret_cast<ErrorManager*>(info->err);
    if (level == -1 && manager->base.msg_code != JWRN_EXTRANEOUS_DATA && manager->firstWarning == 0) {
        manager->firstWarning = manager->base.msg_code;
        manager->base.format_message(info, manager->message);
    }
}

bool hasMarker(const jpeg_decompress_struct& info, int marker)
{
    for (jpeg_saved_marker_ptr m = info.marker_list; m; m = m->next)
        if (m->marker == marker)
            return true;
    return false;
}

int orientationOf(const jpeg_decompress_struct& info)
{
    // APP1 also carries XMP; the EXIF block is the one that starts "Exif".
    for (jpeg_saved_marker_ptr m = info.marker_list; m; m = m->next)
        if (m->marker == kExifMarker && isExifBlock({m->data, m->data_length}))
            return exifOrientation({m->data, m->data_length});
    return 1;
}

// A file cut short ends without its end-of-image marker. The marker cannot
// occur inside compressed data (0xFF is always escaped there), so finding it
// near the end is proof enough without decoding what lies before it.
bool endsWithEndOfImage(std::FILE* file)
{
    constexpr long kTail = 64 * 1024;
    if (std::fseek(file, 0, SEEK_END) != 0)
        return false;
    const long size = std::ftell(file);
    const long start = std::max(0L, size - kTail);
    std::vector<unsigned char> tail(std::size_t(size - start));
    const bool read = std::fseek(file, start, SEEK_SET) == 0 && std::fread(tail.data(), 1, tail.size(), file) == tail.size();
    std::rewind(file);
    for (std::size_t i = 1; read && i < tail.size(); ++i)
        if (tail[i - 1] == 0xFF && tail[i] == 0xD9)
            return true;
    return false;
}

// The decoded bitmap turned upright, in an image sized as the whole picture
// (upright too).
JpegDecodeResult decodedImage(BitmapImageRep stored, int orientation, int storedWide, int storedHigh)
{
    const bool swap = orientationSwapsAxes(orientation);
    const int fullWide = swap ? storedHigh : storedWide;
    const int fullHigh = swap ? storedWide : storedHigh;
    Image image(fullWide, fullHigh);
    image.setPixelSize(fullWide, fullHigh);
    image.addRepresentation(orientedUpright(std::move(stored), orientation));
    return {JpegDecodeResult::Outcome::Decoded, std::move(image), {}};
}

struct Decompressor {
    jpeg_decompress_struct info{};
    ErrorManager errors;
    std::FILE* file = nullptr;
    ~Decompressor() { jpeg_destroy_decompress(&info); }
};

JpegDecodeResult failed(std::string error)
{
    return {JpegDecodeResult::Outcome::Failed, std::nullopt, std::move(error)};
}

// Everything that can longjmp lives here, with no objects that need unwinding.
// Saved markers live until the decompression finishes, so the orientation
// is read right after the header.
struct Decoded {
    std::optional<BitmapImageRep> rep;
    int orientation = 1;
    bool notHandled = false;
    bool tooLarge = false;
};

// A file of several scans is buffered whole as coefficients by libjpeg
// (and by the general path, which decodes JPEGs with it too).
bool overBudget(j_decompress_ptr info)
{
    if ((long long)info->image_width * info->image_height > kMaxPicturePixels)
        return true;
    if (!jpeg_has_multiple_scans(info))
        return false;
    long long bytes = 0;
    for (int c = 0; c < info->num_components; ++c)
        bytes += (long long)info->comp_info[c].width_in_blocks * info->comp_info[c].height_in_blocks
                 * long(sizeof(JBLOCK));
    return bytes > kMaxDecodeBytes;
}

bool decodeInto(Decompressor& d, int wantedSide, Decoded& decoded)
{
    if (setjmp(d.errors.jump))
        return false;
    jpeg_create_decompress(&d.info);
    jpeg_stdio_src(&d.info, d.file);
    jpeg_save_markers(&d.info, kExifMarker, 0xFFFF);
    jpeg_save_markers(&d.info, kIccMarker, 0xFFFF);
    jpeg_read_header(&d.info, TRUE);
    if (overBudget(&d.info)) {
        decoded.tooLarge = true;
        return true;
    }
    // What the header did not foresee (markers, tables) stays bounded too.
    d.info.mem->max_memory_to_use = kMaxDecodeBytes;
    const J_COLOR_SPACE space = d.info.jpeg_color_space;
    if (space == JCS_CMYK || space == JCS_YCCK || hasMarker(d.info, kIccMarker)) {
        decoded.notHandled = true;
        return true;
    }
    decoded.orientation = orientationOf(d.info);
    d.info.scale_num = 1;
    d.info.scale_denom = unsigned(jpegScaleDenominator(int(std::max(d.info.image_width, d.info.image_height)), wantedSide));
    d.info.out_color_space = JCS_EXT_RGBA;
    jpeg_start_decompress(&d.info);
    decoded.rep.emplace(BitmapImageRep::rgba(int(d.info.output_width), int(d.info.output_height)));
    while (d.info.output_scanline < d.info.output_height) {
        JSAMPROW row = decoded.rep->row(int(d.info.output_scanline));
        jpeg_read_scanlines(&d.info, &row, 1);
    }
    jpeg_finish_decompress(&d.info);
    return true;
}

} // namespace

bool looksLikeJpeg(std::FILE* file)
{
    unsigned char start[3] = {};
    const bool jpeg = std::fread(start, 1, 3, file) == 3 && start[0] == 0xFF && start[1] == 0xD8 && start[2] == 0xFF;
    std::rewind(file);
    return jpeg;
}

JpegDecodeResult decodeJpeg(std::FILE* file, int wantedSide)
{
    Decompressor d;
    d.info.err = jpeg_std_error(&d.errors.base);
    d.errors.base.error_exit = onError;
    d.errors.base.emit_message = onMessage;
    d.file = file;
    if (!endsWithEndOfImage(d.file))
        return failed("cannot decode: the file is cut short");

    // libjpeg would keep every coefficient of a progressive picture in
    // memory even to show an eighth of it.
    DcDecodeResult dc = decodeProgressiveDc(d.file, wantedSide);
    if (dc.outcome == DcDecodeResult::Outcome::Decoded)
        return decodedImage(std::move(*dc.rep), dc.orientation, dc.pixelsWide, dc.pixelsHigh);
    if (dc.outcome == DcDecodeResult::Outcome::Failed)
        return failed("cannot decode: " + dc.error);
    // The rest, with the rare progressive files ours leaves alone
    // (arithmetic-coded, RGB, CMYK), libjpeg decodes whole at its scale.
    std::rewind(d.file);
    Decoded decoded;
    if (!decodeInto(d, wantedSide, decoded))
        return failed(std::string("cannot decode: ") + d.errors.message);
    if (decoded.tooLarge)
        return failed("picture too large (" + std::to_string(d.info.image_width) + " x "
                      + std::to_string(d.info.image_height) + " pixels)");
    if (decoded.notHandled)
        return {JpegDecodeResult::Outcome::NotHandled, std::nullopt, {}};
    if (d.errors.firstWarning != 0)
        return failed(std::string("cannot decode: ") + d.errors.message);
    return decodedImage(std::move(*decoded.rep), decoded.orientation, int(d.info.image_width),
                        int(d.info.image_height));
}

} // namespace quilo
