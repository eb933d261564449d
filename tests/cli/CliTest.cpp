// The quilo command line, run as a user runs it: a real process, real files.
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/vips/VipsRuntime.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/cli/RunQuilo.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <array>
#include <cstdio>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quilo {
namespace {

using test::quilo;
using test::quoted;
using test::Outcome;

TEST(QuiloCommandLine, ExplainsItselfAndRefusesWhatItDoesNotKnow)
{
    // With no command it is the tray application, which needs a display.
    const Outcome tray = quilo("", "unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM;");
    EXPECT_EQ(tray.status, 1);
    EXPECT_NE(tray.output.find("quilo: no display to show the tray application on"), std::string::npos) << tray.output;
    const Outcome overview = quilo("--help");
    EXPECT_EQ(overview.status, 0);
    EXPECT_NE(overview.output.find("extract"), std::string::npos);
    for (const char* command : {"info", "extract"}) {
        const Outcome help = quilo(std::string(command) + " --help");
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.output.rfind(std::string("Usage: quilo ") + command, 0), 0u) << help.output;
    }
    EXPECT_EQ(quilo("frobnicate").status, 2);
    EXPECT_EQ(quilo("extract x.icns --colour red").status, 2);
    EXPECT_EQ(quilo("extract x.icns").status, 2);
    EXPECT_EQ(quilo("extract x.icns --output").status, 2);
    EXPECT_EQ(quilo("info").status, 2);
}

TEST(QuiloCommandLine, ReportsFilesThatAreNotIconFamilies)
{
    test::TemporaryDirectory directory;
    test::writeFileBytes(directory / "notes.icns", std::vector<std::uint8_t>{'h', 'e', 'l', 'l', 'o', '\n'});
    const Outcome info = quilo("info " + quoted(directory / "notes.icns"));
    EXPECT_EQ(info.status, 1);
    EXPECT_NE(info.output.find("notes.icns: not a readable .icns file"), std::string::npos) << info.output;
    EXPECT_EQ(quilo("extract " + quoted(directory / "absent.icns") + " --output " + quoted(directory / "out")).status,
              1);
}

class ExtractedFamily : public ::testing::Test {
protected:
    void SetUp() override
    {
        BitmapImageRep large = BitmapImageRep::rgba(32, 32);
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x) {
                std::uint8_t* pixel = large.row(y) + 4 * x;
                pixel[3] = std::uint8_t(x * 8);
                pixel[0] = std::uint8_t(pixel[3] * y / 32);
            }
        for (OSType type : {kLarge32BitData, kLarge8BitMask, kLarge8BitData, kLarge1BitMask})
            ASSERT_TRUE(family_.setIconFamilyElement(type, large));
        family_.writeToFile(directory_ / "family.icns");
    }

    test::TemporaryDirectory directory_;
    IconFamily family_;
};

TEST_F(ExtractedFamily, InfoListsEveryElement)
{
    const Outcome info = quilo("info " + quoted(directory_ / "family.icns"));
    EXPECT_EQ(info.status, 0);
    EXPECT_NE(info.output.find("4 elements"), std::string::npos) << info.output;
    EXPECT_NE(info.output.find("il32         32 x 32    32-bit, run-length packed"), std::string::npos) << info.output;
    EXPECT_NE(info.output.find("ICN#"), std::string::npos);
}

const std::filesystem::path kPictures = std::filesystem::path(QUILO_SOURCE_DIR) / "tests/fixtures/pictures";

TEST(QuiloIcns, MakesOneFamilyPerPictureAndTheSameBytesOnAnyNumberOfCores)
{
    test::TemporaryDirectory directory;
    std::string pictures;
    for (const char* name : {"gradient.jpg", "gradient.png", "gradient-alpha.png", "gradient.heic", "gradient.svg",
                             "gradient.webp", "gradient.JPG"})
        pictures += quoted(kPictures / name) + " ";
    const Outcome parallel = quilo("icns " + pictures + "--jobs 2 --output " + quoted(directory / "two"));
    ASSERT_EQ(parallel.status, 0) << parallel.output;
    EXPECT_NE(parallel.output.find("7 of 7 pictures"), std::string::npos) << parallel.output;
    ASSERT_EQ(quilo("icns " + pictures + "--jobs 1 --output " + quoted(directory / "one")).status, 0);
    // gradient.jpg and gradient.JPG share a stem: the second keeps its whole name.
    for (const char* name : {"gradient.icns", "gradient-alpha.icns", "gradient.JPG.icns"}) {
        const auto family = IconFamily::iconFamilyWithContentsOfFile(directory / "two" / name);
        ASSERT_TRUE(family) << name;
        EXPECT_EQ(family->iconFamilyHandle(), test::readFileBytes(directory / "one" / name)) << name;
    }
}

TEST(QuiloIcns, ReportsEachFailingPictureAndGoesOn)
{
    test::TemporaryDirectory directory;
    test::writeFileBytes(directory / "broken.jpg", std::vector<std::uint8_t>{0xFF, 0xD8, 0xFF, 0xE0, 0});
    const Outcome outcome = quilo("icns " + quoted(directory / "broken.jpg") + " " + quoted(kPictures / "gradient.png")
                                  + " --output " + quoted(directory / "out"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.output.find("broken.jpg: "), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("1 of 2 pictures"), std::string::npos) << outcome.output;
    EXPECT_TRUE(std::filesystem::exists(directory / "out" / "gradient.icns"));
    EXPECT_FALSE(std::filesystem::exists(directory / "out" / "broken.icns"));
    EXPECT_EQ(quilo("icns " + quoted(kPictures / "gradient.png") + " --output x --interpolation cubic").status, 2);
}

TEST(QuiloIcns, AHugePictureIsStreamedInBoundedMemory)
{
    ASSERT_TRUE(ensureVipsStarted());
    test::TemporaryDirectory directory;
    // 400 megapixels of black: a few hundred kilobytes of PNG.
    vips::VImage::black(20000, 20000).pngsave((directory / "huge.png").c_str());
    const Outcome outcome = quilo("icns " + quoted(directory / "huge.png") + " --output " + quoted(directory.path()));
    ASSERT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_LT(outcome.peakKilobytes, 150 * 1024);
    const auto family = IconFamily::iconFamilyWithContentsOfFile(directory / "huge.icns");
    ASSERT_TRUE(family);
    const auto thumbnail = family->bitmapImageRepWithAlphaForIconFamilyElement(kThumbnail32BitData);
    EXPECT_EQ(std::vector<std::uint8_t>(thumbnail->bitmapData(), thumbnail->bitmapData() + 4),
              (std::vector<std::uint8_t>{0, 0, 0, 255}));
}

} // namespace
} // namespace quilo
