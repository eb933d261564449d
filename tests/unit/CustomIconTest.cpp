// Custom icons on files and folders, through the platform's own fork store:
// real files and real sidecars in a temporary folder.
#include "iconfamily/AppleDouble.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/ResourceFork.h"
#include "tests/support/AttributeArea.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace quilo {
namespace {

using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;

constexpr OSType kIcns = fourCharCode("icns");

BitmapImageRep solid(int side, std::uint8_t red)
{
    BitmapImageRep bitmap = BitmapImageRep::rgba(side, side);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            std::uint8_t* pixel = bitmap.row(y) + 4 * x;
            pixel[0] = red, pixel[1] = 40, pixel[2] = 90, pixel[3] = 255;
        }
    return bitmap;
}

// Every element Quilo writes, in one colour, less those in `missing`.
IconFamily familyOf(std::uint8_t red, std::set<OSType> missing = {})
{
    IconFamily family;
    for (const ElementGeometry& element : elementGeometries())
        if (!missing.count(element.type))
            family.setIconFamilyElement(element.type, solid(element.width, red));
    return family;
}

fs::path sidecarOf(const fs::path& item) { return item.parent_path() / ("._" + item.filename().string()); }

AppleDouble readSidecar(const fs::path& item)
{
    const auto sidecar = AppleDouble::parse(test::readFileBytes(sidecarOf(item)));
    if (!sidecar)
        throw std::runtime_error("no readable sidecar beside " + item.string());
    return *sidecar;
}

ResourceFork readFork(const fs::path& item)
{
    const AppleDouble sidecar = readSidecar(item);
    const auto bytes = sidecar.resourceFork();
    const auto fork = bytes ? parseResourceFork(*bytes) : std::nullopt;
    if (!fork)
        throw std::runtime_error("no readable fork for " + item.string());
    return *fork;
}

std::uint16_t flagsOf(const fs::path& item) { return readSidecar(item).finderInfo().finderFlags(); }

std::vector<std::pair<std::string, int>> resourceList(const ResourceFork& fork)
{
    std::vector<std::pair<std::string, int>> list;
    for (const Resource& resource : fork.resources)
        list.emplace_back(fourCharCodeString(resource.type), resource.id);
    return list;
}

void writeSidecar(const fs::path& item, const FinderInfo& info, const std::optional<ResourceFork>& fork)
{
    AppleDouble sidecar;
    sidecar.setFinderInfo(info);
    sidecar.setResourceFork(fork ? serialiseResourceFork(*fork).value() : Bytes{});
    test::writeFileBytes(sidecarOf(item), sidecar.serialise().value());
}

class CustomIcon : public ::testing::Test {
protected:
    CustomIcon()
    {
        const Bytes picture{0xFF, 0xD8, 0xFF, 0xE0, 'n', 'o', 't', ' ', 'r', 'e', 'a', 'l'};
        test::writeFileBytes(file_, picture);
    }

    test::TemporaryDirectory directory_;
    fs::path file_ = directory_ / "photo.jpg";
};

TEST_F(CustomIcon, ANewIconMakesTheForkAndAReplacedOneLeavesOneResource)
{
    const IconFamily first = familyOf(10), second = familyOf(200);
    ASSERT_TRUE(first.setAsCustomIconForFile(file_));
    EXPECT_EQ(resourceList(readFork(file_)), (std::vector<std::pair<std::string, int>>{{"icns", -16455}}));
    EXPECT_EQ(flagsOf(file_), kHasCustomIcon);

    ASSERT_TRUE(second.setAsCustomIconForFile(file_));
    const ResourceFork fork = readFork(file_);
    ASSERT_EQ(resourceList(fork), (std::vector<std::pair<std::string, int>>{{"icns", -16455}}));
    EXPECT_EQ(fork.resources[0].data, second.iconFamilyHandle()) << "a copy of the whole block";
    EXPECT_EQ(fork.resources[0].name, "");
    const auto readBack = IconFamily::iconFamilyWithIconOfFile(file_);
    ASSERT_TRUE(readBack);
    EXPECT_EQ(readBack->iconFamilyHandle(), second.iconFamilyHandle());
}

TEST_F(CustomIcon, AnExistingForkKeepsItsResourcesAndTheFileItsTypeAndCreator)
{
    ResourceFork fork;
    fork.add({fourCharCode("STR "), 128, "greeting", 0x20, Bytes{5, 'h', 'e', 'l', 'l', 'o'}});
    fork.add({kIcns, -16455, "", 0, Bytes{'i', 'c', 'n', 's', 0, 0, 0, 8}});
    fork.mapAttributes = 0x0080;
    FinderInfo info;
    info.setFileType(fourCharCode("JPEG"));
    info.setCreator(fourCharCode("8BIM"));
    info.setFinderFlags(kHasBeenInited | 0x0020);
    writeSidecar(file_, info, fork);

    ASSERT_TRUE(familyOf(30).setAsCustomIconForFile(file_)) << "the fork exists: its dupFNErr is no failure";
    const ResourceFork after = readFork(file_);
    EXPECT_EQ(resourceList(after), (std::vector<std::pair<std::string, int>>{{"STR ", 128}, {"icns", -16455}}));
    EXPECT_EQ(after.resources[0], fork.resources[0]) << "name, attributes and data kept";
    EXPECT_EQ(after.mapAttributes, 0x0080);
    EXPECT_EQ(flagsOf(file_), kHasCustomIcon | 0x0020) << "custom icon set, inited cleared, the rest kept";
    EXPECT_EQ(readSidecar(file_).finderInfo().fileType(), fourCharCode("JPEG"));
    EXPECT_EQ(readSidecar(file_).finderInfo().creator(), fourCharCode("8BIM"));
}

TEST_F(CustomIcon, CompatibilityAddsTheOldResourcesOfTheNewFamilyOnly)
{
    ASSERT_TRUE(familyOf(60).setAsCustomIconForFile(file_, true));
    const IconFamily withoutSmall8 = familyOf(250, {kSmall8BitData});
    ASSERT_TRUE(withoutSmall8.setAsCustomIconForFile(file_, true));
    const ResourceFork fork = readFork(file_);
    EXPECT_EQ(resourceList(fork), (std::vector<std::pair<std::string, int>>{
                                      {"icns", -16455}, {"icl8", -16455}, {"ICN#", -16455}, {"ics#", -16455}}));
    EXPECT_EQ(fork.resources[0].data, withoutSmall8.iconFamilyHandle());
    for (const Resource& resource : std::span(fork.resources).subspan(1)) {
        Bytes element;
        ASSERT_EQ(getIconFamilyData(withoutSmall8.iconFamilyHandle(), resource.type, element), noErr);
        EXPECT_EQ(resource.data, element) << fourCharCodeString(resource.type);
    }
}

TEST_F(CustomIcon, RemovalTakesOnlyTheIconAndExactlyTwoFlags)
{
    ASSERT_TRUE(familyOf(60).setAsCustomIconForFile(file_, true));
    FinderInfo info = readSidecar(file_).finderInfo();
    info.setFinderFlags(0xFFFF);
    writeSidecar(file_, info, readFork(file_));

    ASSERT_TRUE(IconFamily::removeCustomIconFromFile(file_));
    EXPECT_EQ(resourceList(readFork(file_)), (std::vector<std::pair<std::string, int>>{
                                                 {"icl8", -16455}, {"ICN#", -16455}, {"ics8", -16455}, {"ics#", -16455}}));
    EXPECT_EQ(flagsOf(file_), 0xFAFF);
    EXPECT_FALSE(IconFamily::iconFamilyWithIconOfFile(file_));
}

TEST_F(CustomIcon, RemovalFromAFileWithoutAForkFailsAndLeavesItsFlags)
{
    FinderInfo info;
    info.setFinderFlags(kHasCustomIcon | kHasBeenInited);
    writeSidecar(file_, info, std::nullopt);
    const Bytes before = test::readFileBytes(sidecarOf(file_));
    EXPECT_FALSE(IconFamily::removeCustomIconFromFile(file_));
    EXPECT_EQ(test::readFileBytes(sidecarOf(file_)), before);

    fs::remove(sidecarOf(file_));
    EXPECT_FALSE(IconFamily::removeCustomIconFromFile(file_));
    EXPECT_FALSE(fs::exists(sidecarOf(file_)));
}

// A sidecar from a Mac: an attribute area with content, a comment, dates
// and a fork with a resource of its own, each written by hand.
Bytes sidecarFromAMac(const ResourceFork& fork)
{
    const Bytes forkBytes = serialiseResourceFork(fork).value();
    const Bytes comment{'k', 'e', 'e', 'p', ' ', 'm', 'e'}, dates(16, 0x77);
    const Bytes finderInfo = test::finderInfoWithAttribute(74, "com.apple.quarantine", "0081;6543;Safari;");
    Bytes bytes(74);
    writeFourCharCode(bytes.data(), 0x00051607);
    writeFourCharCode(bytes.data() + 4, 0x00020000);
    bytes[25] = 4;
    std::size_t slot = 0;
    for (const auto& [id, data] : {std::pair{9u, &finderInfo}, std::pair{4u, &comment}, std::pair{8u, &dates},
                                   std::pair{2u, &forkBytes}}) {
        writeFourCharCode(bytes.data() + 26 + 12 * slot, id);
        writeFourCharCode(bytes.data() + 30 + 12 * slot, OSType(bytes.size()));
        writeFourCharCode(bytes.data() + 34 + 12 * slot++, OSType(data->size()));
        bytes.insert(bytes.end(), data->begin(), data->end());
    }
    return bytes;
}

TEST_F(CustomIcon, EverythingElseInTheSidecarSurvivesSetAndRemove)
{
    ResourceFork fork;
    fork.add({fourCharCode("vers"), 1, "version", 0x20, Bytes{1, 2, 3}});
    const Bytes original = sidecarFromAMac(fork);
    const auto parsedOriginal = AppleDouble::parse(original).value();
    test::writeFileBytes(sidecarOf(file_), original);
    const Bytes picture = test::readFileBytes(file_);

    ASSERT_TRUE(familyOf(60).setAsCustomIconForFile(file_, true));
    ASSERT_TRUE(IconFamily::removeCustomIconFromFile(file_));
    const Bytes after = test::readFileBytes(sidecarOf(file_));
    EXPECT_EQ(test::firstAttributeValue(after), "0081;6543;Safari;");
    const AppleDouble sidecar = readSidecar(file_);
    for (std::uint32_t id : {4u, 8u})
        EXPECT_EQ(*sidecar.entry(id), *parsedOriginal.entry(id));
    EXPECT_EQ(sidecar.finderInfo(), parsedOriginal.finderInfo()) << "flags set, then cleared again";
    EXPECT_TRUE(std::equal(sidecar.entry(9)->data.begin(), sidecar.entry(9)->data.end(),
                           parsedOriginal.entry(9)->data.begin(), parsedOriginal.entry(9)->data.end()));
    EXPECT_EQ(readFork(file_).resources.front(), fork.resources.front());
    EXPECT_EQ(test::readFileBytes(file_), picture);
}

TEST_F(CustomIcon, SetThenRemoveLeavesNoSidecarBehindAndThePictureUntouched)
{
    const Bytes picture = test::readFileBytes(file_);
    ASSERT_TRUE(familyOf(60).setAsCustomIconForFile(file_));
    ASSERT_TRUE(IconFamily::removeCustomIconFromFile(file_));
    EXPECT_EQ(test::directoryListing(directory_.path()), (std::set<std::string>{"photo.jpg"}));
    EXPECT_EQ(test::readFileBytes(file_), picture);
}

TEST_F(CustomIcon, MissingPathsAndWrongKindsFailWithoutMakingAnything)
{
    const IconFamily family = familyOf(60);
    EXPECT_FALSE(family.setAsCustomIconForFile(directory_ / "absent.jpg"));
    EXPECT_FALSE(family.setAsCustomIconForDirectory(file_));
    EXPECT_FALSE(family.setAsCustomIconForDirectory(directory_ / "absent"));
    EXPECT_FALSE(IconFamily::removeCustomIconFromFile(directory_ / "absent.jpg"));
    EXPECT_FALSE(IconFamily::iconFamilyWithIconOfFile(directory_ / "absent.jpg"));
    EXPECT_EQ(test::directoryListing(directory_.path()), (std::set<std::string>{"photo.jpg"}));
}

TEST_F(CustomIcon, AFolderGetsAFreshInvisibleIconFileAndTheFlagBesideIt)
{
    const fs::path folder = directory_ / "Holiday";
    fs::create_directory(folder);
    const fs::path iconFile = folder / "Icon\r";
    // An earlier icon file with a resource of its own: it must not survive.
    test::writeFileBytes(iconFile, Bytes{'o', 'l', 'd'});
    ResourceFork old;
    old.add({fourCharCode("STR "), 1, "", 0, Bytes{0}});
    writeSidecar(iconFile, {}, old);

    const IconFamily family = familyOf(120);
    ASSERT_TRUE(family.setAsCustomIconForDirectory(folder));
    EXPECT_EQ(fs::file_size(iconFile), 0u) << "recreated empty, not edited";
    EXPECT_EQ(resourceList(readFork(iconFile)), (std::vector<std::pair<std::string, int>>{{"icns", -16455}}));
    const FinderInfo iconInfo = readSidecar(iconFile).finderInfo();
    EXPECT_EQ(iconInfo.finderFlags(), kIsInvisible);
    EXPECT_EQ(iconInfo.fileType(), kUnknownFourCharCode);
    EXPECT_EQ(iconInfo.creator(), kUnknownFourCharCode);
    EXPECT_EQ(flagsOf(folder), kHasCustomIcon);
    EXPECT_EQ(test::directoryListing(directory_.path()), (std::set<std::string>{"photo.jpg", "Holiday", "._Holiday"}));

    const auto readBack = IconFamily::iconFamilyWithIconOfFile(folder);
    ASSERT_TRUE(readBack);
    EXPECT_EQ(readBack->iconFamilyHandle(), family.iconFamilyHandle());

    // An icon file deleted by a tool that knows nothing of sidecars leaves
    // its fork behind; that must not block the next icon.
    fs::remove(iconFile);
    ASSERT_TRUE(familyOf(5).setAsCustomIconForDirectory(folder));
    EXPECT_EQ(readFork(iconFile).find(kIcns, -16455)->data, familyOf(5).iconFamilyHandle());
}

TEST_F(CustomIcon, ALinkGivesItsTargetTheIcon)
{
    const fs::path link = directory_ / "link.jpg";
    fs::create_symlink(file_, link);
    ASSERT_TRUE(familyOf(60).setAsCustomIconForFile(link));
    EXPECT_TRUE(fs::exists(sidecarOf(file_)));
    EXPECT_FALSE(fs::exists(sidecarOf(link)));
    EXPECT_TRUE(IconFamily::iconFamilyWithIconOfFile(link));
}

TEST_F(CustomIcon, AnUnreadableSidecarIsNeverWrittenOver)
{
    const Bytes good = [&] {
        writeSidecar(file_, {}, ResourceFork{});
        return test::readFileBytes(sidecarOf(file_));
    }();
    for (const Bytes& damaged : {Bytes{'j', 'u', 'n', 'k'}, Bytes(good.begin(), good.begin() + 3900)}) {
        test::writeFileBytes(sidecarOf(file_), damaged);
        EXPECT_FALSE(familyOf(60).setAsCustomIconForFile(file_));
        EXPECT_FALSE(IconFamily::removeCustomIconFromFile(file_));
        EXPECT_FALSE(IconFamily::iconFamilyWithIconOfFile(file_));
        EXPECT_EQ(test::readFileBytes(sidecarOf(file_)), damaged);
    }
    // A well-formed sidecar whose fork is not a fork.
    AppleDouble sidecar;
    sidecar.setResourceFork(Bytes(300, 0xEE));
    const Bytes forkless = sidecar.serialise().value();
    test::writeFileBytes(sidecarOf(file_), forkless);
    EXPECT_FALSE(familyOf(60).setAsCustomIconForFile(file_));
    EXPECT_EQ(test::readFileBytes(sidecarOf(file_)), forkless);
}

} // namespace
} // namespace quilo
