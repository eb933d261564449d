#pragma once

#include "iconfamily/Image.h"

#include <filesystem>
#include <optional>
#include <string>

namespace quilo {

// Pictures with more pixels than this are refused before any decoding: past
// it even a streamed decode takes longer than anyone would wait.
constexpr long long kMaxPicturePixels = 1'000'000'000;

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
