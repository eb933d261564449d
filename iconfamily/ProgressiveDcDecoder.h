#pragma once

#include "iconfamily/BitmapImageRep.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

namespace quilo {

// Progressive JPEGs at an eighth of their size, from their DC scans alone.
// At an eighth each 8x8 block is one pixel, its DC coefficient (the block's
// mean), and a progressive file sends every DC coefficient before the detail
// that makes up most of it: the detail is skipped unread, and the picture
// costs one 16-bit number per block (about 1 MB for 24 megapixels) where a
// general decoder keeps all 64.
struct DcDecodeResult {
    enum class Outcome {
        Decoded,
        // Another decoder's job: not a progressive 8-bit grey or YCbCr JPEG
        // with whole sampling ratios, has a colour profile, or is too small
        // to reduce by eight.
        NotOurs,
        Failed, // corrupt or truncated
    };
    Outcome outcome = Outcome::Failed;
    // ceil(width / 8) x ceil(height / 8), 8-bit R G B A, opaque, as stored
    // (the EXIF orientation not yet applied).
    std::optional<BitmapImageRep> rep;
    int pixelsWide = 0; // the whole picture, as stored
    int pixelsHigh = 0;
    int orientation = 1; // EXIF, 1 to 8
    std::string error;
};

// Decodes when an eighth keeps the longer side at least `wantedSide` pixels
// (0: always). A file is read from its current position, a chunk at a time
// and no further than the last DC scan.
DcDecodeResult decodeProgressiveDc(std::FILE* file, int wantedSide);
DcDecodeResult decodeProgressiveDc(std::span<const std::uint8_t> jpeg, int wantedSide);

} // namespace quilo
