// Families we write, read by Pillow: each 32-bit element with its mask must
// come out as exactly the pixels we packed. Pillow takes a 32-bit element of
// exactly width x height x 3 bytes for uncompressed data, so it also catches a
// packed length landing there.
#include "OurFamilies.h"
#include "iconfamily/IcnsContainer.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace quilo::test {
namespace {

class PillowReadsOurs : public ::testing::TestWithParam<CraftedCase> {};

TEST_P(PillowReadsOurs, ColourElementsWithMasksPixelExact)
{
    TemporaryDirectory directory;
    const IconFamily family = craftedFamily(GetParam());
    family.writeToFile(directory / "family.icns");
    ASSERT_TRUE(ran({kSystemPython, (kInteropDir / "pillow_icns.py").string(), "read",
                     (directory / "family.icns").string(), directory.path().string()}));

    for (const ElementSet& set : kElementSets) {
        const std::string name = std::to_string(set.size) + "x" + std::to_string(set.size) + "x1.rgba";
        Picture read{set.size, set.size, 4, readFileBytes(directory / name)};
        EXPECT_TRUE(samePixels(read, expectedColour32(GetParam().bitmap(set.size), set.size))) << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Crafted, PillowReadsOurs, ::testing::ValuesIn(craftedCases()), caseName);

// The crafted case must really sit on the length readers misread, or the test
// above proves nothing: its elements are stored one control byte or so off it.
TEST(PillowReadsOursCraft, UncompressedSizeCaseLandsNextToThatLength)
{
    const IconFamily family = craftedFamily({"PacksToUncompressedSize", packsToUncompressedSize});
    const auto elements = parseIconFamily(family.iconFamilyHandle());
    ASSERT_TRUE(elements);
    for (const ElementSet& set : kElementSets) {
        const IcnsElement* element = findElement(*elements, set.colour32);
        ASSERT_NE(element, nullptr);
        const std::size_t prefix = set.colour32 == kThumbnail32BitData ? 4 : 0;
        const std::size_t uncompressed = std::size_t(set.size * set.size * 3);
        EXPECT_NE(element->dataSize - prefix, uncompressed) << set.size << " px";
        EXPECT_LE(element->dataSize - prefix, uncompressed + 2) << set.size << " px";
    }
}

} // namespace
} // namespace quilo::test
