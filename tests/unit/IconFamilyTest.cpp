#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconFamily.h"
#include "tests/support/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

BitmapImageRep solid(int side, std::uint8_t red, std::uint8_t alpha)
{
    BitmapImageRep bitmap = BitmapImageRep::rgba(side, side);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            std::uint8_t* pixel = bitmap.row(y) + 4 * x;
            pixel[0] = red;
            pixel[3] = alpha;
        }
    return bitmap;
}

std::vector<OSType> elementTypes(const IconFamily& family)
{
    std::vector<OSType> types;
    const auto elements = parseIconFamily(family.iconFamilyHandle());
    for (const IcnsElement& element : elements.value())
        types.push_back(element.type);
    return types;
}

TEST(IconFamilyElements, TypesOutsideTheTableAreRefusedWithoutALogLine)
{
    test::LogCapture log;
    IconFamily family;
    for (OSType type : {fourCharCode("ih32"), fourCharCode("h8mk"), fourCharCode("ic07"), kIconFamilyType})
        EXPECT_FALSE(family.setIconFamilyElement(type, solid(128, 1, 255)));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(family.iconFamilyHandle().empty());
}

TEST(IconFamilyElements, ABitmapOfTheWrongSizeLogsOnlyTheNullDataLine)
{
    test::LogCapture log;
    IconFamily family;
    EXPECT_FALSE(family.setIconFamilyElement(kThumbnail32BitData, solid(32, 1, 255)));
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Null data returned to setIconFamilyElement:fromBitmapImageRep:"});
}

TEST(IconFamilyElements, ARefusedLayoutLogsTwoLinesAndLeavesTheFamilyAlone)
{
    IconFamily family;
    ASSERT_TRUE(family.setIconFamilyElement(kLarge8BitMask, solid(32, 0, 99)));
    const IconFamilyHandle before = family.iconFamilyHandle();
    test::LogCapture log;
    EXPECT_FALSE(family.setIconFamilyElement(kLarge32BitData, BitmapImageRep(32, 32, 8, 4, 32, true)));
    EXPECT_EQ(log.lines().size(), 2u);
    EXPECT_EQ(family.iconFamilyHandle(), before);
}

TEST(IconFamilyElements, SettingAnElementTwiceKeepsOneHoldingTheSecond)
{
    IconFamily family;
    ASSERT_TRUE(family.setIconFamilyElement(kLarge32BitData, solid(32, 10, 255)));
    ASSERT_TRUE(family.setIconFamilyElement(kLarge8BitMask, solid(32, 0, 255)));
    ASSERT_TRUE(family.setIconFamilyElement(kLarge32BitData, solid(32, 20, 255)));
    EXPECT_EQ(elementTypes(family), (std::vector<OSType>{kLarge32BitData, kLarge8BitMask}));
    const auto rep = family.bitmapImageRepWithAlphaForIconFamilyElement(kLarge32BitData);
    ASSERT_TRUE(rep);
    EXPECT_EQ(rep->bitmapData()[0], 20);
    const auto& block = family.iconFamilyHandle();
    EXPECT_EQ(readBigEndian32(block.data() + 4), block.size());
}

TEST(IconFamilyElements, ColourComesBackStraightWithItsMaskAsAlpha)
{
    IconFamily family;
    ASSERT_TRUE(family.setIconFamilyElement(kThumbnail32BitData, solid(128, 100, 200)));
    ASSERT_TRUE(family.setIconFamilyElement(kThumbnail8BitMask, solid(128, 100, 200)));
    const auto rep = family.bitmapImageRepWithAlphaForIconFamilyElement(kThumbnail32BitData);
    ASSERT_TRUE(rep);
    EXPECT_EQ(rep->pixelsWide(), 128);
    EXPECT_EQ(rep->samplesPerPixel(), 4);
    // 100 * (255 / 200) = 127.5 -> 127, straight.
    EXPECT_EQ(std::vector<std::uint8_t>(rep->bitmapData(), rep->bitmapData() + 4),
              (std::vector<std::uint8_t>{127, 0, 0, 200}));
}

TEST(IconFamilyElements, AMissingMaskReadsFullyOpaque)
{
    IconFamily family;
    ASSERT_TRUE(family.setIconFamilyElement(kLarge32BitData, solid(32, 0, 0)));
    const auto rep = family.bitmapImageRepWithAlphaForIconFamilyElement(kLarge32BitData);
    ASSERT_TRUE(rep);
    for (int i = 0; i < 32 * 32; ++i)
        ASSERT_EQ(rep->bitmapData()[4 * i + 3], 255);
}

TEST(IconFamilyElements, OnlyPresentThirtyTwoBitElementsReadBack)
{
    IconFamily family;
    ASSERT_TRUE(family.setIconFamilyElement(kLarge8BitData, solid(32, 255, 255)));
    EXPECT_FALSE(family.bitmapImageRepWithAlphaForIconFamilyElement(kLarge8BitData));
    EXPECT_FALSE(family.bitmapImageRepWithAlphaForIconFamilyElement(kSmall32BitData));
}

TEST(IconFamilyFile, AnEmptyFamilyWritesZeroBytes)
{
    test::TemporaryDirectory directory;
    const auto path = directory / "empty.icns";
    IconFamily().writeToFile(path);
    EXPECT_EQ(std::filesystem::file_size(path), 0u);
}

TEST(IconFamilyFile, WritesTheBlockVerbatimAndReadsItBack)
{
    test::TemporaryDirectory directory;
    IconFamily family;
    ASSERT_TRUE(family.setIconFamilyElement(kSmall32BitData, solid(16, 50, 255)));
    ASSERT_TRUE(family.setIconFamilyElement(kSmall1BitMask, solid(16, 50, 255)));
    const auto path = directory / "family.icns";
    family.writeToFile(path);
    EXPECT_EQ(test::readFileBytes(path), family.iconFamilyHandle());
    const auto read = IconFamily::iconFamilyWithContentsOfFile(path);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->iconFamilyHandle(), family.iconFamilyHandle());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path()), {}), 1)
        << "no temporary file left behind";
}

TEST(IconFamilyFile, MissingOrForeignFilesGiveNull)
{
    test::TemporaryDirectory directory;
    EXPECT_FALSE(IconFamily::iconFamilyWithContentsOfFile(directory / "absent.icns"));
    EXPECT_FALSE(IconFamily::iconFamilyWithContentsOfFile(directory.path()));
    const std::vector<std::uint8_t> png = {0x89, 'P', 'N', 'G', 0, 0, 0, 8, 1, 2, 3};
    test::writeFileBytes(directory / "fake.icns", png);
    EXPECT_FALSE(IconFamily::iconFamilyWithContentsOfFile(directory / "fake.icns"));
}

TEST(IconFamilyImage, HasOneRepresentationPerPictureElement)
{
    const std::pair<OSType, int> elements[] = {
        {kThumbnail32BitData, 128}, {kThumbnail8BitMask, 128}, {kLarge32BitData, 32}, {kLarge8BitMask, 32},
        {kLarge8BitData, 32},       {kLarge1BitMask, 32},      {kSmall32BitData, 16}, {kSmall8BitMask, 16},
        {kSmall8BitData, 16},       {kSmall1BitMask, 16},
    };
    IconFamily family;
    for (const auto& [type, side] : elements)
        ASSERT_TRUE(family.setIconFamilyElement(type, solid(side, 128, 128)));
    const auto image = family.imageWithAllReps();
    ASSERT_EQ(image->representations().size(), 7u);
    const BitmapImageRep& thumbnail = image->representations()[0];
    EXPECT_EQ(thumbnail.pixelsWide(), 128);
    // Straight (255, 0, 0) at alpha 128, premultiplied again.
    EXPECT_EQ(thumbnail.bitmapData()[0], 128);
    EXPECT_EQ(thumbnail.bitmapData()[3], 128);
}

} // namespace
} // namespace quilo
