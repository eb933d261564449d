// The custom icon quilo set-icon stores, taken out of the sidecar's fork and
// read by libicns (icns2png): every element must show exactly the pixels the
// family decodes to. The older icons stored beside the family for Mac OS 9
// must show the same pictures as the family's elements of those types.
#include "CustomIconTree.h"
#include "iconfamily/IconElementTypes.h"
#include "tests/support/TemporaryDirectory.h"

namespace quilo::test {
namespace {

constexpr std::int16_t kCustomIconId = -16455;

int depthOf(OSType type)
{
    switch (elementGeometry(type)->encoding) {
    case ElementEncoding::Rgb32:
        return 32;
    case ElementEncoding::Palette8:
        return 8;
    default:
        return 1;
    }
}

// icns2png -x writes each element of STEM.icns as STEM_<w>x<h>x<depth>.png.
void expectLibicnsShows(const std::filesystem::path& icns, const std::vector<DecodedElement>& elements)
{
    ASSERT_TRUE(ran({"icns2png", "-x", "-o", icns.parent_path().string(), icns.string()}));
    for (const DecodedElement& element : elements) {
        const std::string size = std::to_string(element.width) + "x" + std::to_string(element.height);
        const auto png = icns.parent_path()
                       / (icns.stem().string() + "_" + size + "x" + std::to_string(depthOf(element.type)) + ".png");
        EXPECT_TRUE(samePixels(readPng(png), pictureOf(element)))
            << fourCharCodeString(element.type) << " from " << icns.filename();
    }
}

TEST(LibicnsReadsCustomIcon, OfAFileAndOfAFolder)
{
    if (!installed("icns2png"))
        FAIL() << "icns2png is not installed (scripts/setup installs icnsutils)";
    TemporaryDirectory directory;
    const CustomIconTree tree(directory / "tree");
    struct Case {
        const char* name;
        std::filesystem::path item, forkHolder;
    };
    for (const Case& c : {Case{"file", tree.photo, tree.photo}, Case{"folder", tree.folder, tree.iconFile}}) {
        SCOPED_TRACE(c.name);
        const Sidecar sidecar = readSidecar(CustomIconTree::sidecarOf(c.forkHolder));
        std::vector<ForkResource> icons;
        std::vector<ForkResource> older;
        for (ForkResource& resource : forkResources(sidecar.fork)) {
            EXPECT_EQ(resource.id, kCustomIconId) << fourCharCodeString(resource.type);
            (resource.type == kIconFamilyType ? icons : older).push_back(std::move(resource));
        }
        ASSERT_EQ(icons.size(), 1u);
        ASSERT_EQ(older.size(), 4u);

        // The command's copy of the icon and ours, walked out of the fork, agree.
        const auto fromFork = directory / (std::string(c.name) + "-fork.icns");
        const auto fromCommand = directory / (std::string(c.name) + "-command.icns");
        writeFileBytes(fromFork, icons[0].data);
        ASSERT_TRUE(ran({QUILO_CLI, "get-icon", c.item.string(), fromCommand.string()}));
        EXPECT_TRUE(readFileBytes(fromCommand) == icons[0].data) << "get-icon wrote other bytes than the fork holds";

        const std::vector<DecodedElement> elements = decodeElements(icons[0].data, DecodeMasks::No);
        ASSERT_EQ(elements.size(), 7u) << "three 32-bit elements, two 8-bit, two 1-bit";
        expectLibicnsShows(fromFork, elements);

        // The four older resources are bare element data: wrapped as a family
        // of their own they must show what the family shows at those types.
        std::vector<std::uint8_t> wrapped{'i', 'c', 'n', 's', 0, 0, 0, 0};
        std::vector<DecodedElement> same;
        for (const ForkResource& resource : older) {
            const std::size_t length = 8 + resource.data.size();
            for (int shift = 24; shift >= 0; shift -= 8)
                wrapped.push_back(std::uint8_t(resource.type >> shift));
            for (int shift = 24; shift >= 0; shift -= 8)
                wrapped.push_back(std::uint8_t(length >> shift));
            wrapped.insert(wrapped.end(), resource.data.begin(), resource.data.end());
            for (const DecodedElement& element : elements)
                if (element.type == resource.type)
                    same.push_back(element);
        }
        for (int i = 0; i < 4; ++i)
            wrapped[4 + std::size_t(i)] = std::uint8_t(wrapped.size() >> (24 - 8 * i));
        ASSERT_EQ(same.size(), 4u) << "the family lacks one of the older icons' types";
        const auto olderIcns = directory / (std::string(c.name) + "-older.icns");
        writeFileBytes(olderIcns, wrapped);
        expectLibicnsShows(olderIcns, same);
    }
}

} // namespace
} // namespace quilo::test
