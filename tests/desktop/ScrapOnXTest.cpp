// The family on a real X server's clipboard, put and read by this process
// through the platform's clipboard; the text comes from another program
// (xclip) where it matters that it is someone else's.
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/Scrap.h"
#include "tests/desktop/DesktopUser.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <QClipboard>

namespace quilo {
namespace {

using namespace quilo::test;

const std::filesystem::path kFamilyFile = std::filesystem::path(QUILO_SOURCE_DIR) / "samples" / "pillow.icns";

std::vector<ScrapFlavorType> flavorTypes()
{
    std::vector<ScrapFlavorType> types;
    for (const ScrapFlavorInfo& flavor : currentScrap().flavorInfoList())
        types.push_back(flavor.flavorType);
    return types;
}

TEST(ScrapOnX, AClipboardWithoutAFamilyReadsAsAnEmptyOne)
{
    QGuiApplication::clipboard()->clear();
    EXPECT_FALSE(IconFamily::canInitWithScrap());
    EXPECT_TRUE(IconFamily::iconFamilyWithScrap()->iconFamilyHandle().empty());

    TemporaryDirectory scratch;
    putOnClipboard("UTF8_STRING", "icns", scratch.path());
    EXPECT_FALSE(IconFamily::canInitWithScrap()) << "another program's text";
    EXPECT_TRUE(IconFamily::iconFamilyWithScrap()->iconFamilyHandle().empty());
}

TEST(ScrapOnX, PuttingLeavesTheFamilyAloneAndItReadsBackByteForByte)
{
    const IconFamily family(readFileBytes(kFamilyFile));
    ASSERT_FALSE(family.iconFamilyHandle().empty());
    QGuiApplication::clipboard()->setText(QStringLiteral("copied text"));
    EXPECT_TRUE(family.putOnScrap());
    EXPECT_EQ(flavorTypes(), std::vector<ScrapFlavorType>{kIconFamilyType});
    EXPECT_TRUE(IconFamily::canInitWithScrap());
    EXPECT_EQ(IconFamily::iconFamilyWithScrap()->iconFamilyHandle(), family.iconFamilyHandle());

    // A flavour with no MIME type of its own travels under a made-up one and
    // comes back as itself; the next put clears it too.
    const std::vector<std::uint8_t> other{0, 1, 2, 0xFF};
    currentScrap().putFlavor(fourCharCode("Qlo\x01"), kScrapFlavorMaskNone, other);
    std::vector<std::uint8_t> read;
    EXPECT_EQ(currentScrap().flavorData(fourCharCode("Qlo\x01"), read), noErr);
    EXPECT_EQ(read, other);
    EXPECT_EQ(flavorTypes().size(), 2u);
    family.putOnScrap();
    EXPECT_EQ(flavorTypes(), std::vector<ScrapFlavorType>{kIconFamilyType});
}

} // namespace
} // namespace quilo
