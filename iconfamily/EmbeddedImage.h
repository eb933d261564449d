#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Elements that embed a whole picture file: PNG or JPEG 2000.
namespace quilo {

enum class EmbeddedFormat { None, Png, Jpeg2000 };

EmbeddedFormat sniffEmbeddedFormat(std::span<const std::uint8_t> data);

struct RgbaPixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels; // straight R G B A
};

// Largest side we decode: the largest icon element is 1024 px, and a header
// that claims more is not decoded at all.
constexpr int kMaxEmbeddedSide = 2048;

std::optional<RgbaPixels> decodeEmbeddedImage(std::span<const std::uint8_t> data);

} // namespace quilo
