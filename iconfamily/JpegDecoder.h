#pragma once

#include "iconfamily/Image.h"

#include <cstdio>
#include <optional>
#include <string>

namespace quilo {

// JPEG pictures straight through libjpeg-turbo's scaled decoding: for a
// thumbnail it decodes at an eighth, a quarter or a half of the size, which
// is as fast as a JPEG can be read. A progressive JPEG wanted at an eighth is
// read from its DC scans alone by a decoder of our own (ProgressiveDcDecoder),
// in a few MB where libjpeg would keep every coefficient.
struct JpegDecodeResult {
    enum class Outcome {
        Decoded,
        NotHandled, // valid but needs colour management (CMYK, an ICC profile): use the general path
        Failed,     // corrupt or truncated
    };
    Outcome outcome = Outcome::Failed;
    std::optional<Image> image;
    std::string error;
};

bool looksLikeJpeg(std::FILE* file);

// Decodes the file (read from its start) so the longer side keeps at least
// `wantedSide` pixels, upright as the EXIF orientation says, as 8-bit
// R G B A (opaque). Pictures over the decode budget fail before any buffer
// is made for them, those for the general path included.
JpegDecodeResult decodeJpeg(std::FILE* file, int wantedSide);

} // namespace quilo
