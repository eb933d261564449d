#pragma once

#include <array>
#include <cstdint>

// The Mac OS standard system colour tables, which 8-bit and 4-bit icon
// elements index into.
namespace quilo {

struct PaletteColor {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

const std::array<PaletteColor, 256>& systemPalette256();
const std::array<PaletteColor, 16>& systemPalette16();

// The index of the 256-colour entry nearest to (red, green, blue) by
// Euclidean distance; on a tie, the lowest index.
std::uint8_t nearestSystemPaletteIndex(std::uint8_t red, std::uint8_t green, std::uint8_t blue);

} // namespace quilo
