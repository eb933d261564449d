// Families written by other tools from PNGs made here, read by our engine
// (and once by `quilo extract`): every element must decode to exactly the PNG
// the tool was given at that size. All four tools write only lossless
// elements when asked as below, so nothing is left out of the comparison.
#include "Interop.h"
#include "iconfamily/IconFamily.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <functional>
#include <random>
#include <set>

namespace quilo::test {
namespace {

using Source = std::function<Picture(int size)>;

void setPixel(std::uint8_t* pixel, std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t alpha)
{
    pixel[0] = red;
    pixel[1] = green;
    pixel[2] = blue;
    pixel[3] = alpha;
}

// Noise with every kind of alpha, colour kept under zero alpha (PNG and
// separate masks both keep it), and a flat band so packed elements get repeats.
Picture noiseSource(int size)
{
    constexpr std::uint8_t extremes[] = {0, 1, 254, 255};
    std::mt19937 random{std::uint32_t(size)};
    Picture picture = blankPicture(size, size);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            std::uint8_t* pixel = picture.at(x, y);
            if (y >= size / 4 && y < size / 2) {
                setPixel(pixel, 40, 90, 200, 255);
                continue;
            }
            for (int c = 0; c < 3; ++c)
                pixel[c] = std::uint8_t(random());
            pixel[3] = random() % 2 ? extremes[random() % 4] : std::uint8_t(random());
        }
    return picture;
}

// png2icons scales its one source to every size. A source of 64 px blocks
// scaled by nearest neighbour gives each size the 16 px picture below blown
// up, exactly. That picture ends in a long repeat and one different pixel, so
// png2icons closes each channel with the short literal it miscounts.
Picture png2iconsPicture(int size)
{
    Picture base = noiseSource(16);
    for (int x = 0; x < 15; ++x)
        setPixel(base.at(x, 15), 9, 9, 9, 255);
    Picture picture = blankPicture(size, size);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            std::copy_n(base.at(x * 16 / size, y * 16 / size), 4, picture.at(x, y));
    return picture;
}

std::vector<std::string> writeSources(const TemporaryDirectory& directory, const Source& source,
                                      const std::vector<int>& sizes)
{
    std::vector<std::string> paths;
    for (int size : sizes) {
        paths.push_back((directory / ("source" + std::to_string(size) + ".png")).string());
        writePng(paths.back(), source(size));
    }
    return paths;
}

// What an element must show: the source at its size, or for a mask the
// source's alpha.
Picture expectedFor(const Source& source, int width, int channels)
{
    const Picture picture = source(width);
    return channels == 1 ? alphaOf(picture) : picture;
}

void expectFamilyMatches(const std::filesystem::path& path, const std::set<std::string>& types, const Source& source)
{
    const auto family = IconFamily::iconFamilyWithContentsOfFile(path);
    ASSERT_NE(family, nullptr) << path;
    std::set<std::string> decodedTypes;
    for (const DecodedElement& element : decodeElements(family->iconFamilyHandle(), DecodeMasks::Yes)) {
        const std::string type = fourCharCodeString(element.type);
        decodedTypes.insert(type);
        ASSERT_EQ(element.width, element.height) << type;
        EXPECT_TRUE(samePixels(pictureOf(element), expectedFor(source, element.width, element.channels)))
            << type << ", " << element.encoding;
    }
    // An element we fail to decode is left out of decodeElements: it shows here.
    EXPECT_EQ(decodedTypes, types);
}

const std::set<std::string> kFiahfyTypes{"is32", "s8mk", "il32", "l8mk", "ih32", "h8mk", "it32",
                                         "t8mk", "ic04", "ic05", "icp4", "icp5", "icp6", "ic07",
                                         "ic08", "ic09", "ic11", "ic12", "ic13", "ic14"};

// Each writer is given a source at each size it writes, so that it
// resamples nothing (png2icons, which scales one source, excepted).
struct PeerWriter {
    const char* name;
    std::vector<std::string> command; // the sources follow
    std::vector<int> sizes;
    Source source;
    std::set<std::string> types;
};

std::vector<PeerWriter> peerWriters()
{
    const std::string out = "peer.icns";
    return {
        // 256 and 512 px go in as JPEG 2000, which libicns writes losslessly.
        {"libicns", {"png2icns", out}, {16, 32, 48, 128, 256, 512}, noiseSource,
         {"is32", "s8mk", "il32", "l8mk", "ih32", "h8mk", "it32", "t8mk", "ic08", "ic09"}},
        {"Pillow", {kSystemPython, (kInteropDir / "pillow_icns.py").string(), "write", out},
         {32, 64, 128, 256, 512, 1024}, noiseSource, {"ic07", "ic08", "ic09", "ic10", "ic11", "ic12", "ic13", "ic14"}},
        {"png2icons", {"node", (kPeersDir / "png2icons.js").string(), out}, {1024}, png2iconsPicture,
         {"is32", "s8mk", "il32", "l8mk", "ic07", "ic08", "ic09", "ic10", "ic11", "ic12", "ic13", "ic14"}},
        {"fiahfy-icns", {"node", (kPeersDir / "fiahfy-icns.js").string(), out}, {16, 32, 48, 64, 128, 256, 512},
         noiseSource, kFiahfyTypes},
    };
}

std::filesystem::path writeWith(const PeerWriter& writer, const TemporaryDirectory& directory)
{
    std::vector<std::string> command = writer.command;
    for (std::string& argument : command)
        if (argument == "peer.icns")
            argument = (directory / "peer.icns").string();
    for (const std::string& path : writeSources(directory, writer.source, writer.sizes))
        command.push_back(path);
    EXPECT_TRUE(ran(command));
    return directory / "peer.icns";
}

TEST(WeReadPeerFamilies, OfEveryWriter)
{
    for (const PeerWriter& writer : peerWriters()) {
        SCOPED_TRACE(writer.name);
        TemporaryDirectory directory;
        expectFamilyMatches(writeWith(writer, directory), writer.types, writer.source);
    }
}

// The command line tool on the family with the most kinds of element: one PNG
// per element, masks as grey pictures.
TEST(WeReadPeerFamilies, QuiloExtractWritesEachElementAsPng)
{
    TemporaryDirectory directory;
    const auto family = writeWith(peerWriters().back(), directory);
    ASSERT_TRUE(ran({QUILO_CLI, "extract", family.string(), "--output", (directory / "out").string()}));
    std::set<std::string> written;
    for (const auto& entry : std::filesystem::directory_iterator(directory / "out")) {
        written.insert(entry.path().stem().string());
        const Picture picture = readPng(entry.path());
        EXPECT_TRUE(samePixels(picture, expectedFor(noiseSource, picture.width, picture.channels)))
            << entry.path().filename();
    }
    EXPECT_EQ(written, kFiahfyTypes);
}

} // namespace
} // namespace quilo::test
