#include "iconfamily/SystemPalette.h"

namespace quilo {
namespace {

// The table is a 6 x 6 x 6 colour cube (levels FF CC 99 66 33 00, red
// slowest, black left out) followed by ten-step ramps of red, green, blue and
// grey at the levels the cube skips (EE DD BB AA 88 77 55 44 22 11), and black.
std::array<PaletteColor, 256> makePalette256()
{
    constexpr std::uint8_t cube[6] = {0xFF, 0xCC, 0x99, 0x66, 0x33, 0x00};
    constexpr std::uint8_t ramp[10] = {0xEE, 0xDD, 0xBB, 0xAA, 0x88, 0x77, 0x55, 0x44, 0x22, 0x11};
    std::array<PaletteColor, 256> palette{};
    std::size_t index = 0;
    for (std::uint8_t r : cube)
        for (std::uint8_t g : cube)
            for (std::uint8_t b : cube)
                if (index < 215)
                    palette[index++] = {r, g, b};
    for (std::uint8_t level : ramp)
        palette[index++] = {level, 0, 0};
    for (std::uint8_t level : ramp)
        palette[index++] = {0, level, 0};
    for (std::uint8_t level : ramp)
        palette[index++] = {0, 0, level};
    for (std::uint8_t level : ramp)
        palette[index++] = {level, level, level};
    palette[index] = {0, 0, 0};
    return palette;
}

} // namespace

const std::array<PaletteColor, 256>& systemPalette256()
{
    static const std::array<PaletteColor, 256> palette = makePalette256();
    return palette;
}

const std::array<PaletteColor, 16>& systemPalette16()
{
    static const std::array<PaletteColor, 16> palette{{
        {0xFF, 0xFF, 0xFF}, {0xFC, 0xF3, 0x05}, {0xFF, 0x64, 0x02}, {0xDD, 0x08, 0x06},
        {0xF2, 0x08, 0x84}, {0x46, 0x00, 0xA5}, {0x00, 0x00, 0xD4}, {0x02, 0xAB, 0xEA},
        {0x1F, 0xB7, 0x14}, {0x00, 0x64, 0x11}, {0x56, 0x2C, 0x05}, {0x90, 0x71, 0x3A},
        {0xC0, 0xC0, 0xC0}, {0x80, 0x80, 0x80}, {0x40, 0x40, 0x40}, {0x00, 0x00, 0x00},
    }};
    return palette;
}

std::uint8_t nearestSystemPaletteIndex(std::uint8_t red, std::uint8_t green, std::uint8_t blue)
{
    const auto& palette = systemPalette256();
    int best = 0;
    int bestDistance = 1 << 30;
    for (int i = 0; i < 256; ++i) {
        const int dr = int(palette[std::size_t(i)].red) - red;
        const int dg = int(palette[std::size_t(i)].green) - green;
        const int db = int(palette[std::size_t(i)].blue) - blue;
        const int distance = dr * dr + dg * dg + db * db;
        if (distance < bestDistance) {
            bestDistance = distance;
            best = i;
        }
    }
    return std::uint8_t(best);
}

} // namespace quilo
