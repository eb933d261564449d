// Quilo in the XDG autostart folder, as the preferences window puts it there,
// finds it and takes it out.
#include "prefs/AutostartStore.h"
#include "prefs/RTZAliasDataHelper.h"
#include "prefs/RTZLoginItemHelper.h"
#include "tests/prefs/AutostartFolder.h"
#include "tests/support/Files.h"

#include <QCoreApplication>

#include <sys/stat.h>

namespace quilo::test {
namespace {

using RTZLoginItemHelperTest = AutostartFolderTest;

ino_t inodeOf(const std::filesystem::path& path)
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

TEST_F(RTZLoginItemHelperTest, NoListThenOneItemThenAnEmptyList)
{
    ASSERT_EQ(QCoreApplication::applicationFilePath().section('/', -1), "quilo");
    EXPECT_FALSE(RTZLoginItemHelper::isSelfInLoginItems());
    RTZLoginItemHelper::removeSelfFromLoginItems();
    EXPECT_FALSE(std::filesystem::exists(autostart()));

    RTZLoginItemHelper::addSelfToLoginItems(false);
    EXPECT_TRUE(RTZLoginItemHelper::isSelfInLoginItems());
    EXPECT_EQ(directoryListing(autostart()), std::set<std::string>{"quilo.desktop"});
    const QList<AutostartEntry> entries = makeAutostartStore()->readEntries();
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries[0].value("Path").toString(), QCoreApplication::applicationFilePath());
    EXPECT_EQ(entries[0].value("Hide"), QVariant(false));
    EXPECT_EQ(RTZAliasDataHelper::filePathFromAliasData(entries[0].value("AliasData").toByteArray()),
              QCoreApplication::applicationFilePath());

    RTZLoginItemHelper::removeSelfFromLoginItems();
    EXPECT_FALSE(RTZLoginItemHelper::isSelfInLoginItems());
    EXPECT_TRUE(directoryListing(autostart()).empty());
}

// Quilo's items are found by the program's name however they were written:
// by Quilo (X-Quilo-Path) or by hand or another tool (the program of Exec,
// quoted or not). Other programs' files stay byte for byte, unwritten.
TEST_F(RTZLoginItemHelperTest, RemovesEveryItemOfQuiloAndNothingElse)
{
    writeFileText(autostart() / "a-quilo.desktop",
                  "[Desktop Entry]\nType=Application\nName=Q\nExec=\"/opt/other apps/quilo\" --tray %U\n");
    const std::string stranger = "# kept as it is\n[Desktop Entry]\nType=Application\nName = Mail\n"
                                 "Exec=/usr/bin/mail-client --quilo\nPath=/home/someone/quilo\n"
                                 "[Desktop Action Compose]\nExec=quilo\n";
    writeFileText(autostart() / "m-stranger.desktop", stranger);
    writeFileText(autostart() / "n-capitals.desktop",
                  "[Desktop Entry]\nType=Application\nName=Q\nExec=/Applications/Quilo\n"
                  "X-Quilo-Path=/Applications/Quilo\n");
    writeFileText(autostart() / "z-copy.desktop",
                  "[Desktop Entry]\nType=Application\nName=Q\nExec=/bin/true\n"
                  "X-Quilo-Path=/home/someone/Desktop/quilo\n");
    writeFileText(autostart() / "notes.txt", "not a desktop file\n");
    const ino_t strangerInode = inodeOf(autostart() / "m-stranger.desktop");

    EXPECT_TRUE(RTZLoginItemHelper::isSelfInLoginItems());
    RTZLoginItemHelper::removeSelfFromLoginItems();
    EXPECT_FALSE(RTZLoginItemHelper::isSelfInLoginItems());
    EXPECT_EQ(directoryListing(autostart()),
              (std::set<std::string>{"m-stranger.desktop", "n-capitals.desktop", "notes.txt"}));
    EXPECT_EQ(readFileText(autostart() / "m-stranger.desktop"), stranger);
    EXPECT_EQ(inodeOf(autostart() / "m-stranger.desktop"), strangerInode);
}

// A desktop's startup settings switch Quilo off in its file, and a switched-off
// Quilo does not start: it is not in the login items until it is added again,
// which switches it on in the same file.
TEST_F(RTZLoginItemHelperTest, SwitchedOffIsNotInUntilAddedAgain)
{
    for (const std::string off : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
        writeFileText(autostart() / "quilo.desktop", "[Desktop Entry]\nType=Application\nName=Quilo\nExec=/opt/quilo\n"
                                                     + off + "\nX-GNOME-Autostart-Delay=2\n");
        EXPECT_FALSE(RTZLoginItemHelper::isSelfInLoginItems()) << off;
        RTZLoginItemHelper::addSelfToLoginItems(false);
        EXPECT_TRUE(RTZLoginItemHelper::isSelfInLoginItems()) << off;
        EXPECT_EQ(directoryListing(autostart()), std::set<std::string>{"quilo.desktop"}) << off;
        EXPECT_EQ(readFileText(autostart() / "quilo.desktop").find(off), std::string::npos) << off;
    }
}

} // namespace
} // namespace quilo::test
