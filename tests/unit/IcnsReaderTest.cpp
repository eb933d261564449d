// Reading families that other tools wrote, and bytes that are not families
// at all: nothing may crash, read out of bounds or be taken for a picture.
#include "iconfamily/ElementDecoder.h"
#include "iconfamily/EmbeddedImage.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/vips/VipsRuntime.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <vips/vips8>

namespace quilo {
namespace {

using Bytes = std::vector<std::uint8_t>;

void appendBigEndian(Bytes& bytes, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(std::uint8_t(value >> shift));
}

Bytes family(std::initializer_list<std::pair<OSType, Bytes>> elements)
{
    Bytes block;
    appendBigEndian(block, kIconFamilyType);
    appendBigEndian(block, 0);
    for (const auto& [type, data] : elements) {
        appendBigEndian(block, type);
        appendBigEndian(block, std::uint32_t(data.size() + 8));
        block.insert(block.end(), data.begin(), data.end());
    }
    writeBigEndian32(block.data() + 4, std::uint32_t(block.size()));
    return block;
}

class IcnsReader : public ::testing::Test {
protected:
    std::unique_ptr<IconFamily> read(const Bytes& bytes)
    {
        const auto path = directory_ / "family.icns";
        test::writeFileBytes(path, bytes);
        return IconFamily::iconFamilyWithContentsOfFile(path);
    }

    test::TemporaryDirectory directory_;
};

TEST_F(IcnsReader, RejectsEveryMalformedContainer)
{
    const Bytes good = family({{kSmall8BitMask, Bytes(256, 7)}, {kLarge8BitMask, Bytes(1024, 9)}});
    ASSERT_TRUE(read(good));
    for (std::size_t cut : {0u, 4u, 7u, 8u, 15u, 200u, 1300u})
        EXPECT_FALSE(read(Bytes(good.begin(), good.begin() + std::ptrdiff_t(cut)))) << "cut at " << cut;

    auto withLength = [&](std::size_t at, std::uint32_t length) {
        Bytes bytes = good;
        writeBigEndian32(bytes.data() + at, length);
        return bytes;
    };
    EXPECT_FALSE(read(withLength(4, std::uint32_t(good.size() + 1)))) << "total longer than the file";
    EXPECT_FALSE(read(withLength(4, 100))) << "total that splits an element";
    EXPECT_FALSE(read(withLength(4, 0)));
    EXPECT_FALSE(read(withLength(12, 0))) << "zero-length element";
    EXPECT_FALSE(read(withLength(12, 7))) << "element shorter than its header";
    EXPECT_FALSE(read(withLength(12, 0xFFFFFFFF))) << "length that would overflow an offset";
    EXPECT_FALSE(read(withLength(12, 264 + 1)));
}

TEST_F(IcnsReader, IgnoresBytesBehindTheDeclaredLength)
{
    Bytes bytes = family({{kSmall8BitMask, Bytes(256, 7)}});
    const std::size_t declared = bytes.size();
    bytes.insert(bytes.end(), {'j', 'u', 'n', 'k'});
    const auto read = this->read(bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->iconFamilyHandle().size(), declared);
}

TEST_F(IcnsReader, SkipsElementsThatHoldNoPictureOrAreCorrupt)
{
    const Bytes nested = family({{kSmall8BitMask, Bytes(256, 1)}});
    const auto read = this->read(family({
        {fourCharCode("TOC "), Bytes(8, 0)},
        {kIconFamilyType, nested},
        {fourCharCode("dark"), nested},
        {kSmall32BitData, Bytes{0x85, 1, 0x80}},     // packed data that ends too soon
        {kLarge8BitData, Bytes(100, 0)},               // wrong size for 32 x 32
        {fourCharCode("ic07"), Bytes{0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A, 1, 2}},
        {fourCharCode("icp6"), Bytes{}},
        {kSmall8BitMask, Bytes(256, 200)},
    }));
    ASSERT_TRUE(read);
    const auto decoded = decodeElements(read->iconFamilyHandle(), DecodeMasks::Yes);
    ASSERT_EQ(decoded.size(), 1u);
    EXPECT_EQ(decoded[0].type, kSmall8BitMask);
    EXPECT_FALSE(read->bitmapImageRepWithAlphaForIconFamilyElement(kSmall32BitData));
    EXPECT_TRUE(read->imageWithAllReps()->representations().empty());
}

TEST_F(IcnsReader, RefusesAnEmbeddedPictureLargerThanAnyIcon)
{
    ASSERT_TRUE(ensureVipsStarted());
    vips::VImage wide = vips::VImage::black(kMaxEmbeddedSide + 1, 1);
    void* buffer = nullptr;
    std::size_t size = 0;
    wide.write_to_buffer(".png", &buffer, &size);
    const Bytes png(static_cast<std::uint8_t*>(buffer), static_cast<std::uint8_t*>(buffer) + size);
    g_free(buffer);
    const auto read = this->read(family({{fourCharCode("ic10"), png}}));
    ASSERT_TRUE(read);
    EXPECT_TRUE(decodeElements(read->iconFamilyHandle(), DecodeMasks::Yes).empty());
}

// A 16 x 16 'is32' whose pixels are red (r, 0, 0) with r = the pixel index.
Bytes expectedArgb()
{
    Bytes argb(256 * 4, 0);
    for (std::size_t i = 0; i < 256; ++i) {
        argb[4 * i] = 255;
        argb[4 * i + 1] = std::uint8_t(i);
    }
    return argb;
}

TEST_F(IcnsReader, ReadsThirtyTwoBitDataInEveryEncodingOthersWrite)
{
    Bytes raw = expectedArgb();
    Bytes rgb;
    for (std::size_t i = 0; i < 256; ++i)
        rgb.insert(rgb.end(), {std::uint8_t(i), 0, 0});
    // Red as two literal runs of 128; green and blue (512 zeros) as repeats of
    // 130, 130, 130 and 122, the second running from green into blue.
    Bytes packed = {127};
    for (int i = 0; i < 128; ++i)
        packed.push_back(std::uint8_t(i));
    packed.push_back(127);
    for (int i = 128; i < 256; ++i)
        packed.push_back(std::uint8_t(i));
    for (int k = 0; k < 3; ++k)
        packed.insert(packed.end(), {0xFF, 0});
    packed.insert(packed.end(), {0x80 + 122 - 3, 0});

    for (const Bytes& stored : {raw, rgb, packed}) {
        const auto read = this->read(family({{kSmall32BitData, stored}}));
        ASSERT_TRUE(read);
        std::vector<std::uint8_t> argb;
        ASSERT_EQ(getIconFamilyData(read->iconFamilyHandle(), kSmall32BitData, argb), noErr) << stored.size();
        EXPECT_EQ(argb, expectedArgb()) << stored.size();
    }
}

TEST_F(IcnsReader, ReadsThumbnailsWithAndWithoutTheirZeroPrefix)
{
    IconFamily written;
    BitmapImageRep bitmap = BitmapImageRep::rgba(128, 128);
    for (int y = 0; y < 128; ++y)
        for (int x = 0; x < 128; ++x) {
            bitmap.row(y)[4 * x + 1] = std::uint8_t(x ^ y);
            bitmap.row(y)[4 * x + 3] = 255;
        }
    ASSERT_TRUE(written.setIconFamilyElement(kThumbnail32BitData, bitmap));
    const auto& block = written.iconFamilyHandle();
    ASSERT_EQ(std::vector<std::uint8_t>(block.begin() + 16, block.begin() + 20), Bytes(4, 0));
    const Bytes withoutPrefix(block.begin() + 20, block.end());
    const auto read = this->read(family({{kThumbnail32BitData, withoutPrefix}}));
    ASSERT_TRUE(read);
    const auto expected = written.bitmapImageRepWithAlphaForIconFamilyElement(kThumbnail32BitData);
    const auto actual = read->bitmapImageRepWithAlphaForIconFamilyElement(kThumbnail32BitData);
    ASSERT_TRUE(actual);
    EXPECT_TRUE(std::ranges::equal(actual->bytes(), expected->bytes()));
}

} // namespace
} // namespace quilo
