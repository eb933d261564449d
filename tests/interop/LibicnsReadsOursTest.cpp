// Families we write, extracted by libicns (icns2png): every element must come
// out as exactly the pixels we packed.
#include "OurFamilies.h"
#include "tests/support/TemporaryDirectory.h"

namespace quilo::test {
namespace {

class LibicnsReadsOurs : public ::testing::TestWithParam<CraftedCase> {};

TEST_P(LibicnsReadsOurs, EveryElementPixelExact)
{
    TemporaryDirectory directory;
    const IconFamily family = craftedFamily(GetParam());
    family.writeToFile(directory / "family.icns");
    // -x alone extracts every element, 8-bit and 1-bit ones included, as
    // family_<size>x<size>x<depth>.png.
    ASSERT_TRUE(ran({"icns2png", "-x", "-o", directory.path().string(), (directory / "family.icns").string()}));

    for (const ElementSet& set : kElementSets) {
        const BitmapImageRep bitmap = GetParam().bitmap(set.size);
        const std::string stem = "family_" + std::to_string(set.size) + "x" + std::to_string(set.size) + "x";
        EXPECT_TRUE(samePixels(readPng(directory / (stem + "32.png")), expectedColour32(bitmap, set.size)))
            << set.size << " px, 32-bit";
        if (!set.palette8)
            continue;
        EXPECT_TRUE(samePixels(readPng(directory / (stem + "8.png")), expectedPalette8(bitmap, set.size)))
            << set.size << " px, 8-bit";
        EXPECT_TRUE(samePixels(readPng(directory / (stem + "1.png")), expectedOneBit(bitmap, set.size)))
            << set.size << " px, 1-bit";
    }
}

INSTANTIATE_TEST_SUITE_P(Crafted, LibicnsReadsOurs, ::testing::ValuesIn(craftedCases()), caseName);

} // namespace
} // namespace quilo::test
