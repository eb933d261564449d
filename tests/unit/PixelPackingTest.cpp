#include "iconfamily/IconFamily.h"
#include "iconfamily/SystemPalette.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

using Packer = IconFamily::ElementData (*)(const BitmapImageRep&, int);

void setPixel(BitmapImageRep& bitmap, int x, int y, std::initializer_list<std::uint8_t> samples)
{
    std::uint8_t* pixel = bitmap.row(y) + x * (bitmap.bitsPerPixel() / 8);
    for (std::uint8_t sample : samples)
        *pixel++ = sample;
}

TEST(Packing32Bit, UndoesPremultiplicationInSinglePrecisionAndTruncates)
{
    BitmapImageRep bitmap = BitmapImageRep::rgba(16, 16);
    setPixel(bitmap, 0, 0, {128, 64, 0, 128});   // f = 1.9921875; 64 * f = 127.5 -> 127
    setPixel(bitmap, 1, 0, {200, 10, 20, 128});  // 200 * f = 398.4375 -> 398 -> low byte 142
    setPixel(bitmap, 2, 0, {99, 98, 97, 0});     // transparent: colour dropped
    setPixel(bitmap, 3, 0, {255, 255, 255, 255});
    const auto data = IconFamily::get32BitDataFromBitmapImageRep(bitmap, 16);
    ASSERT_TRUE(data);
    ASSERT_EQ(data->size(), 16u * 16u * 4u);
    EXPECT_EQ(std::vector<std::uint8_t>(data->begin(), data->begin() + 16),
              (std::vector<std::uint8_t>{128, 255, 127, 0, 128, 142, 19, 39, 0, 0, 0, 0, 255, 255, 255, 255}));
}

TEST(Packing32Bit, ThreeSampleBitmapGivesZeroAlphaAndUnchangedColour)
{
    BitmapImageRep bitmap(16, 16, 8, 3, 24);
    setPixel(bitmap, 15, 15, {1, 2, 3});
    const auto data = IconFamily::get32BitDataFromBitmapImageRep(bitmap, 16);
    ASSERT_TRUE(data);
    EXPECT_EQ(std::vector<std::uint8_t>(data->end() - 4, data->end()), (std::vector<std::uint8_t>{0, 1, 2, 3}));
    for (std::size_t i = 0; i < data->size(); i += 4)
        EXPECT_EQ((*data)[i], 0);
}

TEST(Packing, RowPaddingIsSkipped)
{
    BitmapImageRep bitmap(16, 16, 8, 4, 32, false, 16 * 4 + 12);
    setPixel(bitmap, 0, 1, {10, 20, 30, 255});
    const auto data = IconFamily::get32BitDataFromBitmapImageRep(bitmap, 16);
    ASSERT_TRUE(data);
    EXPECT_EQ((*data)[16 * 4], 255);
    EXPECT_EQ((*data)[16 * 4 + 1], 10);
}

TEST(Packing, WrongSizeIsRefusedSilently)
{
    test::LogCapture log;
    const BitmapImageRep small = BitmapImageRep::rgba(16, 16);
    const BitmapImageRep notSquare = BitmapImageRep::rgba(32, 31);
    for (Packer pack : {&IconFamily::get32BitDataFromBitmapImageRep, &IconFamily::get8BitDataFromBitmapImageRep,
                        &IconFamily::get8BitMaskFromBitmapImageRep, &IconFamily::get1BitMaskFromBitmapImageRep}) {
        EXPECT_FALSE(pack(small, 32));
        EXPECT_FALSE(pack(notSquare, 32));
    }
    EXPECT_TRUE(log.lines().empty());
}

struct Refusal {
    BitmapImageRep bitmap;
    std::vector<std::string> lines; // one per packer: 32-bit, 8-bit data, 8-bit mask, 1-bit
};

std::vector<Refusal> refusals()
{
    const std::string p32 = "get32BitDataFromBitmapImageRep:requiredPixelSize: returning NULL due to ";
    const std::string p8 = "get8BitDataFromBitmapImageRep:requiredPixelSize: returning NULL due to ";
    const std::string m8 = "get8BitMaskFromBitmapImageRep:requiredPixelSize: returning NULL due to ";
    const std::string p1 = "get1BitMaskFromBitmapImageRep:requiredPixelSize: returning NULL due to ";
    return {
        {BitmapImageRep(16, 16, 8, 4, 32, true),
         {p32 + "isPlanar == YES", p8 + "isPlanar == YES", m8 + "isPlanar == YES", p1 + "isPlanar == YES"}},
        {BitmapImageRep(16, 16, 16, 4, 64),
         {p32 + "bitsPerSample == 16", p8 + "bitsPerSample == 16", m8 + "bitsPerSample == 16",
          p1 + "bitsPerPixel == 64, samplesPerPixel== 4, bitsPerSample == 16"}},
        {BitmapImageRep(16, 16, 8, 2, 16),
         {p32 + "samplesPerPixel == 2, bitsPerPixel == %", p8 + "samplesPerPixel == 2, bitsPerPixel == %",
          m8 + "samplesPerPixel == 2, bitsPerPixel == %",
          p1 + "bitsPerPixel == 16, samplesPerPixel== 2, bitsPerSample == 8"}},
        {BitmapImageRep(16, 16, 8, 4, 24),
         {p32 + "samplesPerPixel == 4, bitsPerPixel == %", p8 + "samplesPerPixel == 4, bitsPerPixel == %",
          m8 + "samplesPerPixel == 4, bitsPerPixel == %",
          p1 + "bitsPerPixel == 24, samplesPerPixel== 4, bitsPerSample == 8"}},
        {BitmapImageRep(16, 16, 8, 1, 8),
         {p32 + "samplesPerPixel == 1, bitsPerPixel == %", p8 + "samplesPerPixel == 1, bitsPerPixel == %", "", ""}},
        {BitmapImageRep(16, 16, 1, 1, 1),
         {p32 + "bitsPerSample == 1", p8 + "bitsPerSample == 1", m8 + "bitsPerSample == 1", ""}},
        {BitmapImageRep(16, 16, 1, 3, 8),
         {p32 + "bitsPerSample == 1", p8 + "bitsPerSample == 1", m8 + "bitsPerSample == 1",
          p1 + "bitsPerPixel == 8, samplesPerPixel== 3, bitsPerSample == 1"}},
        {BitmapImageRep(16, 16, 2, 1, 1),
         {p32 + "bitsPerSample == 2", p8 + "bitsPerSample == 2", m8 + "bitsPerSample == 2",
          p1 + "bitsPerPixel == 1, samplesPerPixel== 1, bitsPerSample == 2"}},
    };
}

TEST(Packing, RefusedLayoutsLogTheFirstFaultInOrder)
{
    const Packer packers[] = {&IconFamily::get32BitDataFromBitmapImageRep, &IconFamily::get8BitDataFromBitmapImageRep,
                              &IconFamily::get8BitMaskFromBitmapImageRep, &IconFamily::get1BitMaskFromBitmapImageRep};
    for (const Refusal& refusal : refusals()) {
        for (std::size_t p = 0; p < 4; ++p) {
            test::LogCapture log;
            const auto data = packers[p](refusal.bitmap, 16);
            const std::string& expected = refusal.lines[p];
            SCOPED_TRACE(expected);
            EXPECT_EQ(!data, !expected.empty());
            EXPECT_EQ(log.lines(), expected.empty() ? std::vector<std::string>{} : std::vector{expected});
        }
    }
}

TEST(Packing8Bit, MapsPremultipliedColourToTheNearestPaletteEntry)
{
    BitmapImageRep bitmap = BitmapImageRep::rgba(16, 16);
    setPixel(bitmap, 0, 0, {255, 255, 255, 255});
    setPixel(bitmap, 1, 0, {0xCC, 0x99, 0x33, 255});
    setPixel(bitmap, 2, 0, {0xEE, 0x01, 0x00, 255});
    setPixel(bitmap, 3, 0, {128, 128, 128, 128}); // half-transparent white: grey by its premultiplied colour
    const auto data = IconFamily::get8BitDataFromBitmapImageRep(bitmap, 16);
    ASSERT_TRUE(data);
    const auto& palette = systemPalette256();
    EXPECT_EQ((*data)[0], 0);
    EXPECT_EQ(palette[(*data)[1]].red, 0xCC);
    EXPECT_EQ(palette[(*data)[1]].green, 0x99);
    EXPECT_EQ(palette[(*data)[1]].blue, 0x33);
    EXPECT_EQ(palette[(*data)[2]].red, 0xEE);
    EXPECT_EQ(palette[(*data)[3]].red, 0x88);
    EXPECT_EQ((*data)[4], 255) << "transparent black maps to the palette's black";
}

TEST(Packing8BitMask, TakesAlphaGreyOrFullOpacity)
{
    BitmapImageRep rgba = BitmapImageRep::rgba(16, 16);
    setPixel(rgba, 5, 2, {0, 0, 0, 77});
    EXPECT_EQ((*IconFamily::get8BitMaskFromBitmapImageRep(rgba, 16))[2 * 16 + 5], 77);

    BitmapImageRep grey(16, 16, 8, 1, 8, false, 20);
    setPixel(grey, 3, 1, {200});
    const auto fromGrey = IconFamily::get8BitMaskFromBitmapImageRep(grey, 16);
    EXPECT_EQ((*fromGrey)[16 + 3], 200);
    EXPECT_EQ(std::count(fromGrey->begin(), fromGrey->end(), 0), 255);

    const auto fromRgb = IconFamily::get8BitMaskFromBitmapImageRep(BitmapImageRep(32, 32, 8, 3, 24), 32);
    EXPECT_EQ(std::count(fromRgb->begin(), fromRgb->end(), 255), 1024);
}

TEST(Packing1Bit, LoneTopLeftPixelSetsTheFirstBitOfBothPlanes)
{
    BitmapImageRep bitmap = BitmapImageRep::rgba(32, 32);
    setPixel(bitmap, 0, 0, {0, 0, 0, 1}); // the least opacity counts
    const auto data = IconFamily::get1BitMaskFromBitmapImageRep(bitmap, 32);
    ASSERT_TRUE(data);
    ASSERT_EQ(data->size(), 256u);
    for (std::size_t i = 0; i < data->size(); ++i)
        EXPECT_EQ((*data)[i], (i == 0 || i == 128) ? 0x80 : 0x00) << i;
}

TEST(Packing1Bit, BitsFollowPixelsLeftToRightInEveryLayout)
{
    BitmapImageRep grey(16, 16, 8, 1, 8);
    setPixel(grey, 9, 3, {1});
    const auto fromGrey = IconFamily::get1BitMaskFromBitmapImageRep(grey, 16);
    EXPECT_EQ((*fromGrey)[3 * 2 + 1], 0x40);
    EXPECT_EQ((*fromGrey)[32 + 3 * 2 + 1], 0x40);

    BitmapImageRep bits(16, 16, 1, 1, 1, false, 4);
    bits.row(2)[0] = 0xA5;
    bits.row(2)[2] = 0xFF; // padding beyond the row's two bytes is not copied
    const auto fromBits = IconFamily::get1BitMaskFromBitmapImageRep(bits, 16);
    EXPECT_EQ((*fromBits)[4], 0xA5);
    EXPECT_EQ(std::count(fromBits->begin(), fromBits->end(), 0), 62);

    const auto fromRgb = IconFamily::get1BitMaskFromBitmapImageRep(BitmapImageRep(16, 16, 8, 3, 24), 16);
    EXPECT_EQ(std::count(fromRgb->begin(), fromRgb->end(), 0xFF), 64);
}

} // namespace
} // namespace quilo
