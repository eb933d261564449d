#include "iconfamily/SystemPalette.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

namespace quilo {
namespace {

// Every one of the 2^24 colours against the plain definition: every entry
// tried, the first of equally near ones kept. The fast search must never pick
// another entry, ties included.
TEST(NearestSystemPaletteIndex, AgreesWithAFullScanForEveryColour)
{
    const auto& palette = systemPalette256();
    int mismatches = 0;
    std::array<int, 256> redGreenDistance{};
    for (int red = 0; red < 256; ++red)
        for (int green = 0; green < 256; ++green) {
            for (std::size_t i = 0; i < 256; ++i) {
                const int dr = palette[i].red - red;
                const int dg = palette[i].green - green;
                redGreenDistance[i] = dr * dr + dg * dg;
            }
            for (int blue = 0; blue < 256; ++blue) {
                int scanned = 0;
                int bestDistance = 1 << 30;
                for (std::size_t i = 0; i < 256; ++i) {
                    const int db = palette[i].blue - blue;
                    const int distance = redGreenDistance[i] + db * db;
                    if (distance < bestDistance) {
                        bestDistance = distance;
                        scanned = int(i);
                    }
                }
                const int fast = nearestSystemPaletteIndex(std::uint8_t(red), std::uint8_t(green), std::uint8_t(blue));
                if (fast != scanned && ++mismatches <= 10)
                    ADD_FAILURE() << "colour " << red << ", " << green << ", " << blue << ": " << fast
                                  << " instead of " << scanned;
            }
        }
    EXPECT_EQ(mismatches, 0);
}

} // namespace
} // namespace quilo
