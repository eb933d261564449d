#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

// An opaque picture of one colour, `pixelsWide` x `pixelsHigh`.
Image solidPicture(int pixelsWide, int pixelsHigh, std::array<std::uint8_t, 4> rgba = {200, 40, 10, 255})
{
    BitmapImageRep rep = BitmapImageRep::rgba(pixelsWide, pixelsHigh);
    for (std::size_t i = 0; i < rep.bytes().size(); i += 4)
        std::copy(rgba.begin(), rgba.end(), rep.bitmapData() + i);
    Image image(pixelsWide, pixelsHigh);
    image.setPixelSize(pixelsWide, pixelsHigh);
    image.addRepresentation(std::move(rep));
    return image;
}

std::uint8_t alphaAt(const Image& canvas, int x, int y)
{
    return canvas.representations().front().row(y)[4 * x + 3];
}

// The rows (or columns) whose alpha is 255, 0 or in between, as a string:
// '#' opaque, '.' clear, '+' partly covered.
std::string profile(const Image& canvas, bool rows)
{
    const int side = canvas.representations().front().pixelsWide();
    std::string text;
    for (int i = 0; i < side; ++i) {
        const std::uint8_t alpha = rows ? alphaAt(canvas, side / 2, i) : alphaAt(canvas, i, side / 2);
        text += alpha == 255 ? '#' : alpha == 0 ? '.' : '+';
    }
    return text;
}

TEST(ResampleImage, FitsTheLongerSideAndCentresTheOther)
{
    const Image wide = IconFamily::resampleImage(solidPicture(400, 100), 128, ImageInterpolation::High);
    EXPECT_EQ(profile(wide, true), std::string(48, '.') + std::string(32, '#') + std::string(48, '.'));
    EXPECT_EQ(profile(wide, false), std::string(128, '#'));

    const Image tall = IconFamily::resampleImage(solidPicture(100, 400), 128, ImageInterpolation::High);
    EXPECT_EQ(profile(tall, false), std::string(48, '.') + std::string(32, '#') + std::string(48, '.'));

    // Enlarged too: 40 x 20 fills the width.
    const Image small = IconFamily::resampleImage(solidPicture(40, 20), 128, ImageInterpolation::High);
    EXPECT_EQ(profile(small, true), std::string(32, '.') + std::string(64, '#') + std::string(32, '.'));
}

TEST(ResampleImage, AnOddMarginLeavesHalfCoveredEdgeRows)
{
    // 200 x 16 / 300 = 10.67 -> 11 rows, from y = 2.5 to 13.5.
    const Image icon = IconFamily::resampleImage(solidPicture(300, 200), 16, ImageInterpolation::High);
    EXPECT_EQ(profile(icon, true), "..+##########+..");
    EXPECT_NEAR(alphaAt(icon, 8, 2), 128, 1);
    EXPECT_NEAR(alphaAt(icon, 8, 13), 128, 1);
}

TEST(ResampleImage, ASquarePictureFillsTheCanvasWithoutARim)
{
    for (ImageInterpolation interpolation :
         {ImageInterpolation::None, ImageInterpolation::Low, ImageInterpolation::High, ImageInterpolation::Default}) {
        const Image icon = IconFamily::resampleImage(solidPicture(333, 333), 32, interpolation);
        const auto& rep = icon.representations().front();
        for (std::size_t i = 0; i < rep.bytes().size(); i += 4)
            ASSERT_EQ(std::vector<std::uint8_t>(rep.bytes().begin() + long(i), rep.bytes().begin() + long(i) + 4),
                      (std::vector<std::uint8_t>{200, 40, 10, 255}))
                << "pixel " << i / 4 << " with interpolation " << int(interpolation);
    }
}

TEST(ResampleImage, FitsABitmapByItsPixelsWhateverSizeItDeclares)
{
    Image picture = solidPicture(200, 100);
    picture.setSize(100, 100); // 144 dpi across, 72 dpi down
    const Image icon = IconFamily::resampleImage(picture, 128, ImageInterpolation::High);
    EXPECT_EQ(profile(icon, true), std::string(32, '.') + std::string(64, '#') + std::string(32, '.'));

    // A drawing (no pixel size) is fitted by its points.
    Image drawing = solidPicture(200, 100);
    drawing.setPixelSize(0, 0);
    drawing.setSize(100, 100);
    EXPECT_EQ(profile(IconFamily::resampleImage(drawing, 128, ImageInterpolation::High), true), std::string(128, '#'));
}

TEST(ResampleImage, InterpolationValuesAreDifferentFilters)
{
    // A 2 x 2 checkerboard enlarged: nearest keeps hard blocks, the others blend.
    BitmapImageRep board = BitmapImageRep::rgba(2, 2);
    for (int i : {0, 3})
        std::fill_n(board.bitmapData() + 4 * i, 4, 255);
    board.bitmapData()[4 * 1 + 3] = board.bitmapData()[4 * 2 + 3] = 255;
    Image picture(2, 2);
    picture.setPixelSize(2, 2);
    picture.addRepresentation(board);
    auto distinctGreys = [&](ImageInterpolation interpolation) {
        const auto icon = IconFamily::resampleImage(picture, 16, interpolation);
        std::set<std::uint8_t> greys;
        for (std::size_t i = 0; i < 16 * 16; ++i)
            greys.insert(icon.representations().front().bytes()[4 * i]);
        return greys.size();
    };
    EXPECT_EQ(distinctGreys(ImageInterpolation::None), 2u);
    EXPECT_GT(distinctGreys(ImageInterpolation::Low), 2u);
    EXPECT_GT(distinctGreys(ImageInterpolation::High), distinctGreys(ImageInterpolation::Low));
}

TEST(ResampleImage, RingingNeverLeavesColourAboveAlpha)
{
    // A hard edge between opaque white and clear makes Lanczos overshoot.
    BitmapImageRep rep = BitmapImageRep::rgba(64, 64);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            if ((x / 8 + y / 8) % 2 == 0)
                std::fill_n(rep.row(y) + 4 * x, 4, 255);
    Image picture(64, 64);
    picture.setPixelSize(64, 64);
    picture.addRepresentation(std::move(rep));
    const auto icon = IconFamily::resampleImage(picture, 128, ImageInterpolation::High);
    const auto bytes = icon.representations().front().bytes();
    for (std::size_t i = 0; i < bytes.size(); i += 4)
        for (int c = 0; c < 3; ++c)
            ASSERT_LE(bytes[i + std::size_t(c)], bytes[i + 3]) << "pixel " << i / 4;
}

TEST(ThumbnailFamily, HasTheTenElementsInOrderAndSmallSizesFromTheThumbnail)
{
    const Image picture = solidPicture(400, 100);
    const auto family = IconFamily::iconFamilyWithThumbnailsOfImage(picture);
    std::vector<OSType> types;
    const auto elements = parseIconFamily(family->iconFamilyHandle());
    for (const IcnsElement& element : elements.value())
        types.push_back(element.type);
    EXPECT_EQ(types, (std::vector<OSType>{kThumbnail32BitData, kThumbnail8BitMask, kLarge32BitData, kLarge8BitData,
                                          kLarge8BitMask, kLarge1BitMask, kSmall32BitData, kSmall8BitData,
                                          kSmall8BitMask, kSmall1BitMask}));
    const Image thumbnail = IconFamily::resampleImage(picture, 128, ImageInterpolation::High);
    const auto fromThumbnail = IconFamily::get8BitMaskFromBitmapImageRep(
        IconFamily::resampleImage(thumbnail, 16, ImageInterpolation::High).representations().front(), 16);
    std::vector<std::uint8_t> mask;
    ASSERT_EQ(getIconFamilyData(family->iconFamilyHandle(), kSmall8BitMask, mask), noErr);
    EXPECT_EQ(mask, *fromThumbnail);
}

} // namespace
} // namespace quilo
