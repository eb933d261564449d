#pragma once

#include "iconfamily/Image.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quilo {

// The budget every decoder keeps to, checked against the header before any
// buffer is made. Pictures with more pixels than this are refused: past it
// even a streamed decode takes longer than anyone would wait.
constexpr long long kMaxPicturePixels = 1'000'000'000;
// A JPEG whose scans each carry part of the picture (progressive, or one
// component a scan) is held whole as coefficients until its last scan:
// 128 bytes a block. Past this it is refused, so a tiny file claiming a
// huge picture cannot take gigabytes.
constexpr long long kMaxDecodeBytes = 256LL << 20;

struct PictureLoadResult {
    std::optional<Image> image;
    std::string error; // why there is no image, for people
};

// Reads a picture file for thumbnails of at most `forIconWidth` pixels. Large
// pictures are decoded at a reduced scale (never below twice the icon width,
// so the filters have pixels to work with) and streamed, so memory stays
// bounded. The result has one 8-bit R G B A premultiplied sRGB representation,
// upright as its EXIF orientation says, and the picture's full pixel size.
// Truncated, corrupt or unknown files give an error, never a partial picture.
PictureLoadResult imageWithContentsOfFile(const std::filesystem::path& path, int forIconWidth = 128);

} // namespace quilo
