// The autostart folder as the login items' store, checked by readers of
// desktop files that Quilo did not write: the validator of
// desktop-file-utils, and GLib, which starts the program.
#include "platform/linux/XdgAutostartStore.h"
#include "tests/prefs/AutostartFolder.h"
#include "tests/support/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Process.h"

namespace quilo::test {
namespace {

using XdgAutostartStoreTest = AutostartFolderTest;

// Standard output and error of a program that must succeed.
std::string runToSuccess(const std::vector<std::string>& command)
{
    const Outcome outcome = runProgram(command);
    EXPECT_EQ(outcome.status, 0) << command[0] << ": " << outcome.output;
    return outcome.output;
}

// Every character that Exec quoting or value escaping treats specially, '%'
// too (GLib looks for the program before it undoes "%%", so that entry starts
// it through a link of Quilo's, which goes with the entry).
TEST_F(XdgAutostartStoreTest, ItemIsAValidEntryThatStartsItsProgram)
{
    TemporaryDirectory programs;
    const std::filesystem::path marker = programs / "started";
    const std::filesystem::path program = programs / " odd 100% \\ \"$HOME\" `x` 'q' #;&|<>*?()~" / "quilo";
    writeFileText(program, "#!/bin/sh\necho \"$@\" > '" + marker.string() + "'\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_exec, std::filesystem::perm_options::add);
    const AutostartEntry item{{"Path", QString::fromStdString(program.string())},
                              {"Hide", true},
                              {"AliasData", QByteArray("\0\1\2\xff alias", 11)}};

    XdgAutostartStore store;
    ASSERT_TRUE(store.writeEntries({item}));
    const QList<AutostartEntry> entries = store.readEntries();
    ASSERT_EQ(entries.size(), 1);
    for (const char* key : {"Path", "Hide", "AliasData"})
        EXPECT_EQ(entries[0].value(key), item.value(key)) << key;

    const std::string file = (autostart() / "quilo.desktop").string();
    EXPECT_EQ(runToSuccess({"desktop-file-validate", file}), "");
    runToSuccess({"gio", "launch", file});
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(marker); }, 10)) << readFileText(file);
    ASSERT_TRUE(store.writeEntries({}));
    EXPECT_TRUE(directoryListing(dataHome() / "quilo" / "login-items").empty());
}

// An item read and written back changed goes back to its own file.
TEST_F(XdgAutostartStoreTest, ChangedItemKeepsItsFile)
{
    writeFileText(autostart() / "org.example.Tool.desktop",
                  "[Desktop Entry]\nType=Application\nName=Tool\nExec=tool\nX-Quilo-Hide=false\n");
    XdgAutostartStore store;
    QList<AutostartEntry> entries = store.readEntries();
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries[0].value("Path"), "tool");
    entries[0]["Hide"] = true;
    ASSERT_TRUE(store.writeEntries(entries));
    EXPECT_EQ(directoryListing(autostart()), std::set<std::string>{"org.example.Tool.desktop"});
    EXPECT_EQ(store.readEntries(), entries);
}

TEST_F(XdgAutostartStoreTest, UnwritableFolderIsReportedNotHidden)
{
    writeFileText(autostart(), "a file where the folder should be\n");
    LogCapture log;
    XdgAutostartStore store;
    EXPECT_TRUE(store.readEntries().isEmpty());
    EXPECT_FALSE(store.writeEntries({{{"Path", "/usr/bin/quilo"}}}));
    EXPECT_FALSE(store.writeEntries({{{"Hide", true}}}));
    ASSERT_EQ(log.lines().size(), 2u);
    EXPECT_TRUE(log.lines()[0].starts_with("XdgAutostartStore: Could not write " + autostart().string()))
        << log.lines()[0];
    EXPECT_TRUE(log.lines()[1].ends_with("the item names no program")) << log.lines()[1];
}

} // namespace
} // namespace quilo::test
