#include "iconfamily/ExifOrientation.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/ImageFileTypes.h"
#include "iconfamily/PictureLoader.h"
#include "iconfamily/vips/VipsRuntime.h"
#include "tests/support/Files.h"
#include "tests/support/JpegFiles.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vips/vips8>

namespace quilo {
namespace {

const std::filesystem::path kPictures = std::filesystem::path(QUILO_SOURCE_DIR) / "tests/fixtures/pictures";

std::array<int, 4> pixelAt(const Image& image, int x, int y)
{
    const std::uint8_t* pixel = image.bestRepresentation()->row(y) + 4 * x;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

struct Expected {
    const char* file;
    int tolerance; // how far a lossy format may stray
};

TEST(PictureLoader, ReadsEveryFormatUprightIn8BitPremultipliedSrgb)
{
    // The fixtures hold red = 4x, green = 5y, blue = red; the rotated one is
    // stored on its side with an EXIF orientation that stands it up.
    const Expected gradients[] = {
        {"gradient.jpg", 6},  {"gradient.JPG", 6},     {"gradient.png", 0},          {"gradient.gif", 12},
        {"gradient.webp", 8}, {"gradient.tif", 0},     {"gradient.jp2", 6},          {"gradient.bmp", 0},
        {"gradient.jxl", 10},  {"gradient.heic", 12},   {"gradient.avif", 12},        {"gradient-16bit.png", 0},
        {"gradient-rotated.jpg", 6},
    };
    for (const Expected& expected : gradients) {
        SCOPED_TRACE(expected.file);
        const PictureLoadResult result = imageWithContentsOfFile(kPictures / expected.file);
        ASSERT_TRUE(result.image) << result.error;
        EXPECT_EQ(result.image->pixelsWide(), 64);
        EXPECT_EQ(result.image->pixelsHigh(), 48);
        const BitmapImageRep& rep = *result.image->bestRepresentation();
        ASSERT_EQ(rep.pixelsWide(), 64);
        ASSERT_EQ(rep.samplesPerPixel(), 4);
        for (auto [x, y] : {std::pair{40, 30}, std::pair{5, 40}, std::pair{60, 2}}) {
            const auto pixel = pixelAt(*result.image, x, y);
            EXPECT_NEAR(pixel[0], 4 * x, expected.tolerance) << x << "," << y;
            EXPECT_NEAR(pixel[1], 5 * y, expected.tolerance) << x << "," << y;
            EXPECT_NEAR(pixel[2], 4 * x, expected.tolerance) << x << "," << y;
            EXPECT_EQ(pixel[3], 255);
        }
    }
}

TEST(PictureLoader, PremultipliesAlphaAndMeasuresDrawingsInPoints)
{
    const auto translucent = imageWithContentsOfFile(kPictures / "gradient-alpha.png");
    ASSERT_TRUE(translucent.image);
    EXPECT_EQ(pixelAt(*translucent.image, 40, 30), (std::array<int, 4>{80, 75, 80, 128}));

    const auto grey = imageWithContentsOfFile(kPictures / "gradient-grey.png");
    ASSERT_TRUE(grey.image);
    EXPECT_EQ(pixelAt(*grey.image, 40, 30), (std::array<int, 4>{160, 160, 160, 255}));

    // CMYK goes through a colour profile: saturated colours move, greys stay.
    const auto cmyk = imageWithContentsOfFile(kPictures / "gradient-cmyk.jpg");
    ASSERT_TRUE(cmyk.image);
    const auto neutral = pixelAt(*cmyk.image, 40, 30);
    EXPECT_NEAR(neutral[0], 160, 10);
    EXPECT_NEAR(neutral[1], 150, 10);
    EXPECT_NEAR(neutral[2], 160, 10);

    for (const char* drawing : {"gradient.svg", "gradient.pdf"}) {
        const auto loaded = imageWithContentsOfFile(kPictures / drawing);
        ASSERT_TRUE(loaded.image) << drawing << ": " << loaded.error;
        EXPECT_EQ(loaded.image->pixelsWide(), 0) << "a drawing has no pixel size of its own";
        EXPECT_DOUBLE_EQ(loaded.image->width(), 64);
        EXPECT_DOUBLE_EQ(loaded.image->height(), 48);
        // Rendered for the icon, not at its own small size.
        EXPECT_GE(loaded.image->bestRepresentation()->pixelsWide(), 256) << drawing;
        EXPECT_EQ(pixelAt(*loaded.image, 10, 10), (std::array<int, 4>{255, 0, 0, 255})) << drawing;
    }
}

TEST(PictureLoader, DecodesALargePhotoAtAReducedScale)
{
    ASSERT_TRUE(ensureVipsStarted());
    test::TemporaryDirectory directory;
    const auto path = directory / "large.jpg";
    vips::VImage::black(6000, 4000, vips::VImage::option()->set("bands", 3)).jpegsave(path.c_str());
    const auto loaded = imageWithContentsOfFile(path);
    ASSERT_TRUE(loaded.image) << loaded.error;
    EXPECT_EQ(loaded.image->pixelsWide(), 6000);
    EXPECT_EQ(loaded.image->pixelsHigh(), 4000);
    // Decoded at an eighth (750 x 500), then box-reduced while streaming to
    // no less than twice the 128 px icon.
    EXPECT_EQ(loaded.image->bestRepresentation()->pixelsWide(), 375);
    EXPECT_EQ(loaded.image->bestRepresentation()->pixelsHigh(), 250);
}

// A tiny JPEG claiming 30000 x 30000 pixels over several scans, for which
// libjpeg would hold every coefficient (5 GB): one component a scan, or
// arithmetic-coded progressive scans.
std::vector<std::uint8_t> jpegBomb(bool arithmetic)
{
    test::JpegLayout layout(16, 16, {{1, 1}, {1, 1}, {1, 1}});
    layout.progressive = layout.arithmetic = arithmetic;
    for (int c = 0; c < 3 && !arithmetic; ++c)
        layout.scans.push_back({1, {c}, 0, 63, 0, 0});
    std::vector<std::uint8_t> jpeg = test::writeJpeg(layout);
    for (const test::JpegSegment& segment : test::segmentsOf(jpeg))
        for (std::size_t at : {segment.at + 5, segment.at + 7})
            if (segment.marker == 0xC0 || segment.marker == 0xCA)
                std::tie(jpeg[at], jpeg[at + 1]) = std::pair<std::uint8_t, std::uint8_t>(30000 >> 8, 30000 & 0xFF);
    return jpeg;
}

// In a child: the loader's error, with 512 MB more than the process holds.
[[noreturn]] void loadWithLittleMemory(const std::filesystem::path& path)
{
    const rlim_t size = rlim_t(::sysconf(_SC_PAGESIZE)) * std::stoul(test::readFileText("/proc/self/statm"));
    const rlimit limit{size + (512u << 20), size + (512u << 20)};
    ::setrlimit(RLIMIT_AS, &limit);
    std::fputs(imageWithContentsOfFile(path).error.c_str(), stderr);
    std::_Exit(0);
}

// A GIF is decoded whole: one claiming 20000 x 20000 pixels would take 1.6 GB.
std::vector<std::uint8_t> gifBomb(const std::filesystem::path& scratch)
{
    EXPECT_TRUE(ensureVipsStarted());
    vips::VImage::black(16, 16).gifsave(scratch.c_str());
    std::vector<std::uint8_t> gif = test::readFileBytes(scratch);
    const auto screen = gif.begin() + 6;
    const auto frame = std::find(gif.begin() + 13, gif.end(), 0x2C) + 5; // the first image descriptor's size
    for (auto size : {screen, screen + 2, frame, frame + 2})
        std::tie(size[0], size[1]) = std::pair<std::uint8_t, std::uint8_t>(20000 & 0xFF, 20000 >> 8);
    return gif;
}

TEST(PictureLoaderDeathTest, RefusesBombsBeforeTakingMemory)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // the image library's threads do not survive a bare fork
    test::TemporaryDirectory directory;
    const std::tuple<const char*, std::vector<std::uint8_t>, const char*> bombs[] = {
        {"baseline.jpg", jpegBomb(false), "30000 x 30000"},
        {"sof10.jpg", jpegBomb(true), "30000 x 30000"},
        {"bomb.gif", gifBomb(directory / "small.gif"), "20000 x 20000"},
        {"bomb.png", test::readFileBytes(kPictures / "bomb.png"), "100000 x 100000"},
    };
    for (const auto& [name, bytes, size] : bombs) {
        test::writeFileBytes(directory / name, bytes);
        EXPECT_EXIT(loadWithLittleMemory(directory / name), ::testing::ExitedWithCode(0),
                    std::string("^picture too large \\(") + size + " pixels\\)$")
            << name;
    }
}

// A sliver fits like any picture: too thin to draw at 4000 x 1, a band one
// pixel high at a half-pixel offset at 4000 x 16, whatever decodes it.
TEST(PictureLoader, ThinPicturesFitLikeAnyOtherOnEveryDecodePath)
{
    ASSERT_TRUE(ensureVipsStarted());
    test::TemporaryDirectory directory;
    for (const auto& [wide, high, rows] : {std::tuple{4000, 1, 0}, {1, 4000, 0}, {4000, 16, 2}}) {
        const vips::VImage grey = (vips::VImage::black(wide, high) + 128).cast(VIPS_FORMAT_UCHAR);
        grey.pngsave((directory / "thin.png").c_str());
        grey.jpegsave((directory / "thin.jpg").c_str());
        grey.jpegsave((directory / "thin-progressive.jpg").c_str(), vips::VImage::option()->set("interlace", true));
        for (const char* name : {"thin.png", "thin.jpg", "thin-progressive.jpg"}) {
            const auto loaded = imageWithContentsOfFile(directory / name);
            ASSERT_TRUE(loaded.image) << wide << "x" << high << " " << name << ": " << loaded.error;
            const auto family = IconFamily::iconFamilyWithThumbnailsOfImage(*loaded.image);
            std::vector<std::uint8_t> mask;
            ASSERT_EQ(getIconFamilyData(family->iconFamilyHandle(), kThumbnail8BitMask, mask), noErr);
            const auto halfCovered = [](std::uint8_t a) { return a > 100 && a < 150; };
            EXPECT_EQ(std::count_if(mask.begin(), mask.end(), halfCovered) + std::count(mask.begin(), mask.end(), 0),
                      long(mask.size()));
            EXPECT_EQ(std::count_if(mask.begin(), mask.end(), halfCovered), rows * 128) << wide << "x" << high << name;
        }
    }
}

TEST(PictureLoader, ReadsAProgressiveJpegFromItsFirstScansAlone)
{
    ASSERT_TRUE(ensureVipsStarted());
    test::TemporaryDirectory directory;
    const vips::VImage picture = vips::VImage::perlin(2400, 1600, vips::VImage::option()->set("uchar", true))
                                     .bandjoin(vips::VImage::xyz(2400, 1600)[0].cast(VIPS_FORMAT_UCHAR))
                                     .bandjoin(vips::VImage::xyz(2400, 1600)[1].cast(VIPS_FORMAT_UCHAR));
    picture.jpegsave((directory / "baseline.jpg").c_str());
    picture.jpegsave((directory / "progressive.jpg").c_str(), vips::VImage::option()->set("interlace", true));
    const auto baseline = imageWithContentsOfFile(directory / "baseline.jpg");
    const auto progressive = imageWithContentsOfFile(directory / "progressive.jpg");
    ASSERT_TRUE(baseline.image && progressive.image) << progressive.error;
    const auto a = baseline.image->bestRepresentation()->bytes();
    const auto b = progressive.image->bestRepresentation()->bytes();
    ASSERT_EQ(a.size(), b.size());
    // libjpeg scales the subsampled chroma of the baseline file up with
    // some of its AC coefficients; the progressive one shows the DC alone.
    int largest = 0;
    long total = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        largest = std::max(largest, std::abs(int(a[i]) - int(b[i])));
        total += std::abs(int(a[i]) - int(b[i]));
    }
    EXPECT_LE(largest, 10);
    EXPECT_LT(double(total) / double(a.size()), 1.0);
}

TEST(PictureLoader, GivesACleanErrorForWhatIsNotAWholePicture)
{
    test::TemporaryDirectory directory;
    const auto jpeg = test::readFileBytes(kPictures / "gradient.jpg");
    const auto png = test::readFileBytes(kPictures / "gradient.png");
    test::writeFileBytes(directory / "empty.jpg", {});
    test::writeFileText(directory / "text.jpg", "Dear diary, today I named a text file .jpg\n");
    test::writeFileBytes(directory / "cut.jpg", std::span(jpeg).first(jpeg.size() / 2));
    test::writeFileBytes(directory / "cut.png", std::span(png).first(png.size() / 2));
    ::mkfifo((directory / "pipe.jpg").c_str(), 0600); // no writer: an open that waits would wait for ever
    for (const char* name : {"empty.jpg", "text.jpg", "cut.jpg", "cut.png", "absent.png", "pipe.jpg"}) {
        const auto loaded = imageWithContentsOfFile(directory / name);
        EXPECT_FALSE(loaded.image) << name;
        EXPECT_FALSE(loaded.error.empty()) << name;
    }
}

// The fixture's bytes with its EXIF orientation (little-endian, tag 0x0112)
// set to `orientation`.
std::vector<std::uint8_t> withOrientation(std::vector<std::uint8_t> jpeg, std::uint8_t orientation)
{
    const std::uint8_t entry[] = {0x12, 0x01, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00};
    const auto found = std::search(jpeg.begin(), jpeg.end(), std::begin(entry), std::end(entry));
    EXPECT_NE(found, jpeg.end());
    found[8] = orientation;
    return jpeg;
}

TEST(PictureLoader, TurnsJpegsUprightLikeAnIndependentDecoder)
{
    ASSERT_TRUE(ensureVipsStarted());
    test::TemporaryDirectory directory;
    const auto stored = test::readFileBytes(kPictures / "gradient-rotated.jpg");
    for (std::uint8_t orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(int(orientation));
        const auto path = directory / ("o" + std::to_string(orientation) + ".jpg");
        test::writeFileBytes(path, withOrientation(stored, orientation));
        const auto ours = imageWithContentsOfFile(path);
        ASSERT_TRUE(ours.image) << ours.error;
        vips::VImage reference = vips::VImage::new_from_file(path.c_str()).autorot().bandjoin_const({255});
        ASSERT_EQ(ours.image->pixelsWide(), reference.width());
        const auto& rep = *ours.image->bestRepresentation();
        ASSERT_EQ(rep.pixelsWide(), reference.width());
        ASSERT_EQ(rep.pixelsHigh(), reference.height());
        std::size_t size = 0;
        void* pixels = reference.write_to_memory(&size);
        EXPECT_TRUE(std::ranges::equal(rep.bytes(), std::span(static_cast<const std::uint8_t*>(pixels), size)));
        g_free(pixels);
    }
}

TEST(PictureLoader, SurvivesEveryTruncationOfItsExifBlock)
{
    const auto jpeg = test::readFileBytes(kPictures / "gradient-rotated.jpg");
    // The APP1 segment: marker at 2, length at 4, "Exif" from 6.
    const std::size_t length = std::size_t(jpeg[4]) * 256 + jpeg[5] - 2;
    const std::span<const std::uint8_t> exif(jpeg.data() + 6, length);
    EXPECT_EQ(exifOrientation(exif), 6);
    for (std::size_t cut = 0; cut < exif.size(); ++cut) {
        const int orientation = exifOrientation(exif.first(cut));
        EXPECT_TRUE(orientation == 1 || orientation == 6) << cut;
    }
    std::vector<std::uint8_t> lying(exif.begin(), exif.end());
    lying[6 + 4] = 0xFF; // the first directory's offset points far outside
    EXPECT_EQ(exifOrientation(lying), 1);
}

TEST(ImageFileTypes, ComparesTheExtensionExactly)
{
    for (const char* path : {"a.jpg", "/x/IMG_0001.JPG", "b.jpeg", "c.png", "d.HEIC", "e.tiff", "f.svg", "g.pdf",
                             "h.webp", "dir.v2/i.gif", ".jpg", "j.icns"})
        EXPECT_TRUE(isImageFileType(path)) << path;
    for (const char* path : {"a.Jpg", "photo", "dir.jpg/photo", "a.jpg.txt", "a.", ""})
        EXPECT_FALSE(isImageFileType(path)) << path;
}

} // namespace
} // namespace quilo
