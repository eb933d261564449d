#pragma once

#include "iconfamily/EmbeddedImage.h"
#include "iconfamily/PictureLoader.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace quilo {

// What the general image library does for the engine. It lives in a module
// of its own that is loaded on first use: the library pulls in a hundred
// shared libraries whose loading alone costs more than decoding a JPEG, and
// JPEGs, the pictures people have most of, never need it.
struct ImageCodecs {
    PictureLoadResult (*loadPicture)(const std::filesystem::path& path, int forIconWidth);
    std::optional<RgbaPixels> (*decodeEmbeddedImage)(std::span<const std::uint8_t> data);
    // The pixels as a PNG file's bytes, for the caller to write without
    // following links.
    std::optional<std::vector<std::uint8_t>> (*encodePng)(const std::uint8_t* pixels, int width, int height,
                                                          int channels);
};

// Null if the module cannot be loaded (then only JPEGs can be read).
const ImageCodecs* imageCodecs();

// The module's entry point.
extern "C" const ImageCodecs* quiloImageCodecs();

} // namespace quilo
