// The quilo command line, run as a user runs it: a real process, real files.
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/VipsRuntime.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <array>
#include <cstdio>
#include <sys/wait.h>

namespace quilo {
namespace {

struct Outcome {
    int status;
    std::string output; // stdout and stderr together
};

Outcome quilo(const std::string& arguments)
{
    const std::string command = std::string(QUILO_BINARY) + " " + arguments + " 2>&1";
    FILE* pipe = ::popen(command.c_str(), "r");
    Outcome outcome{-1, {}};
    std::array<char, 4096> buffer{};
    while (std::size_t read = std::fread(buffer.data(), 1, buffer.size(), pipe))
        outcome.output.append(buffer.data(), read);
    const int status = ::pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

std::string quoted(const std::filesystem::path& path)
{
    return "'" + path.string() + "'";
}

TEST(QuiloCommandLine, ExplainsItselfAndRefusesWhatItDoesNotKnow)
{
    EXPECT_EQ(quilo("").status, 2);
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

TEST_F(ExtractedFamily, ExtractWritesOnePngPerElementWithMasksApplied)
{
    const auto output = directory_ / "out";
    const Outcome extract = quilo("extract " + quoted(directory_ / "family.icns") + " --output " + quoted(output));
    ASSERT_EQ(extract.status, 0) << extract.output;
    for (const char* name : {"il32.png", "l8mk.png", "icl8.png", "ICN#.png"})
        EXPECT_TRUE(std::filesystem::exists(output / name)) << name;

    ASSERT_TRUE(ensureVipsStarted());
    const vips::VImage png = vips::VImage::new_from_file((output / "il32.png").c_str());
    ASSERT_EQ(png.bands(), 4);
    std::size_t size = 0;
    void* pixels = png.write_to_memory(&size);
    const auto expected = family_.bitmapImageRepWithAlphaForIconFamilyElement(kLarge32BitData);
    EXPECT_TRUE(std::ranges::equal(std::span(static_cast<const std::uint8_t*>(pixels), size), expected->bytes()));
    g_free(pixels);
}

} // namespace
} // namespace quilo
