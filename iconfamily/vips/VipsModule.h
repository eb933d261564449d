#pragma once

// The image-library side of ImageCodecs, built into the loadable module.
#include "iconfamily/ImageCodecs.h"

namespace quilo {

PictureLoadResult vipsLoadPicture(const std::filesystem::path& path, int forIconWidth);
std::optional<RgbaPixels> vipsDecodeEmbeddedImage(std::span<const std::uint8_t> data);
std::optional<std::vector<std::uint8_t>> vipsEncodePng(const std::uint8_t* pixels, int width, int height,
                                                       int channels);

} // namespace quilo
