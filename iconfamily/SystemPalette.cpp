#include "iconfamily/SystemPalette.h"

#include <cstdlib>

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

// The nearest entry without trying all 256. Squared distance adds up per
// channel, so within the cube the nearest entry is the nearest level in each
// channel (cube levels are 51 apart: no channel value is halfway between
// two). Each ramp varies in one level only, so its nearest entry is the one
// whose level is nearest the channel (for grey, nearest the channels' mean).
// That leaves six candidates, tried in index order so a tie keeps the lowest
// index, as a scan of the whole table would.
namespace {

constexpr int kCubeBlackIndex = 215; // where the cube's black would be; it sits at 255
constexpr int kRampStart = 215;
constexpr int kRampLength = 10;
constexpr int kBlackIndex = 255;

struct NearestTables {
    std::array<std::uint8_t, 256> cubeStep{};  // channel value -> cube level 0..5 (FF first)
    std::array<std::uint8_t, 256> rampStep{};  // channel value -> ramp level 0..9 (EE first)
    std::array<std::uint8_t, 766> greyStep{};  // red + green + blue -> grey ramp level 0..9
};

NearestTables makeNearestTables()
{
    const auto& palette = systemPalette256();
    NearestTables tables;
    for (int value = 0; value < 256; ++value) {
        int best = 0;
        for (int step = 1; step < 6; ++step)
            if (std::abs(palette[std::size_t(36 * step)].red - value) < std::abs(palette[std::size_t(36 * best)].red - value))
                best = step;
        tables.cubeStep[std::size_t(value)] = std::uint8_t(best);
        best = 0;
        for (int step = 1; step < kRampLength; ++step)
            if (std::abs(palette[std::size_t(kRampStart + step)].red - value)
                < std::abs(palette[std::size_t(kRampStart + best)].red - value))
                best = step;
        tables.rampStep[std::size_t(value)] = std::uint8_t(best);
    }
    // A grey level g is at squared distance 3 (g - sum / 3)^2 + constant, so
    // compare |3g - sum|.
    const std::size_t greyStart = kRampStart + 3 * kRampLength;
    for (int sum = 0; sum < 766; ++sum) {
        int best = 0;
        for (int step = 1; step < kRampLength; ++step)
            if (std::abs(3 * palette[greyStart + std::size_t(step)].red - sum)
                < std::abs(3 * palette[greyStart + std::size_t(best)].red - sum))
                best = step;
        tables.greyStep[std::size_t(sum)] = std::uint8_t(best);
    }
    return tables;
}

} // namespace

std::uint8_t nearestSystemPaletteIndex(std::uint8_t red, std::uint8_t green, std::uint8_t blue)
{
    static const NearestTables tables = makeNearestTables();
    const auto& palette = systemPalette256();
    int best = kBlackIndex;
    int bestDistance = 1 << 30;
    const auto consider = [&](int index) {
        const PaletteColor& colour = palette[std::size_t(index)];
        const int dr = int(colour.red) - red;
        const int dg = int(colour.green) - green;
        const int db = int(colour.blue) - blue;
        const int distance = dr * dr + dg * dg + db * db;
        if (distance < bestDistance) {
            bestDistance = distance;
            best = index;
        }
    };
    const int cube = 36 * tables.cubeStep[red] + 6 * tables.cubeStep[green] + tables.cubeStep[blue];
    if (cube != kCubeBlackIndex)
        consider(cube);
    consider(kRampStart + tables.rampStep[red]);
    consider(kRampStart + kRampLength + tables.rampStep[green]);
    consider(kRampStart + 2 * kRampLength + tables.rampStep[blue]);
    consider(kRampStart + 3 * kRampLength + tables.greyStep[std::size_t(red) + green + blue]);
    consider(kBlackIndex);
    return std::uint8_t(best);
}

} // namespace quilo
