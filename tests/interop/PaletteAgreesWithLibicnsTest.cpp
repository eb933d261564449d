// Our system colour tables against libicns's: a 32 px 8-bit element holding
// every index (and a 4-bit one holding every nibble), extracted by icns2png,
// must show our table's colour for each index.
#include "Interop.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/SystemPalette.h"
#include "tests/support/TemporaryDirectory.h"

namespace quilo::test {
namespace {

constexpr int kSide = 32;
constexpr std::size_t kPixels = kSide * kSide;

// Each index whose colour differs, listed once, as "index: libicns vs ours".
template <std::size_t N>
std::string differingEntries(const Picture& extracted, const std::array<PaletteColor, N>& palette)
{
    std::string report;
    std::array<bool, N> reported{};
    for (std::size_t i = 0; i < kPixels; ++i) {
        const std::uint8_t* got = extracted.pixels.data() + 4 * i;
        const PaletteColor ours = palette[i % N];
        if ((got[0] == ours.red && got[1] == ours.green && got[2] == ours.blue && got[3] == 255)
            || std::exchange(reported[i % N], true))
            continue;
        char line[96];
        std::snprintf(line, sizeof line, "\n  %3zu: libicns %02X%02X%02X (alpha %d), ours %02X%02X%02X", i % N,
                      got[0], got[1], got[2], got[3], ours.red, ours.green, ours.blue);
        report += line;
    }
    return report;
}

TEST(PaletteAgreesWithLibicns, EveryEntryOfBothTables)
{
    IconFamilyHandle block;
    std::vector<std::uint8_t> indices8(kPixels), indices4(kPixels / 2);
    for (std::size_t i = 0; i < kPixels; ++i)
        indices8[i] = std::uint8_t(i % 256);
    for (std::size_t i = 0; i < kPixels / 2; ++i) // pixel 2i in the high nibble
        indices4[i] = std::uint8_t(((2 * i % 16) << 4) | ((2 * i + 1) % 16));
    ASSERT_EQ(setIconFamilyData(block, kLarge8BitData, indices8), noErr);
    ASSERT_EQ(setIconFamilyData(block, fourCharCode("icl4"), indices4), noErr);
    // Image and mask planes all set: every pixel opaque.
    ASSERT_EQ(setIconFamilyData(block, kLarge1BitMask, std::vector<std::uint8_t>(kPixels / 4, 0xFF)), noErr);

    TemporaryDirectory directory;
    IconFamily(std::move(block)).writeToFile(directory / "palette.icns");
    ASSERT_TRUE(ran({"icns2png", "-x", "-o", directory.path().string(), (directory / "palette.icns").string()}));

    const Picture eightBit = readPng(directory / "palette_32x32x8.png");
    ASSERT_EQ(eightBit.pixels.size(), kPixels * 4);
    EXPECT_EQ(differingEntries(eightBit, systemPalette256()), "") << "256-colour entries that differ";
    const Picture fourBit = readPng(directory / "palette_32x32x4.png");
    ASSERT_EQ(fourBit.pixels.size(), kPixels * 4);
    EXPECT_EQ(differingEntries(fourBit, systemPalette16()), "") << "16-colour entries that differ";
}

} // namespace
} // namespace quilo::test
