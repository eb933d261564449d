// The file managers' menu entries, installed and removed by the real
// command in a home of the test's own.
#include "foundation/QuiloKeys.h"
#include "tests/cli/FileManagerHome.h"
#include "tests/support/InstanceServing.h"

#include <map>

namespace quilo {
namespace {

using namespace test;

// Every file and folder below `root` with its content and mode.
std::map<std::string, std::string> snapshot(const fs::path& root)
{
    std::map<std::string, std::string> entries;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const auto mode = std::to_string(int(entry.status().permissions()));
        entries[fs::relative(entry.path(), root)] =
            entry.is_directory() ? "folder " + mode : mode + readFileText(entry.path());
    }
    return entries;
}

// Thunar's own layout and one of a hand's, a comment, entities, CDATA,
// characters beyond 16 bits, and an id that holds "quilo-" inside.
const std::string kUsersActions = R"(<?xml version="1.0" encoding="UTF-8"?>
<actions>
<!-- mine -->
<action>
	<icon>utilities-terminal</icon>
	<name>Open Terminal Here</name>
	<unique-id>1389887426553470-1</unique-id>
	<command>exo-open --working-directory %f --launch TerminalEmulator</command>
	<description>Example for a custom action</description>
	<patterns>*</patterns>
	<startup-notify/>
	<directories/>
</action>
  <action><icon/><name xml:lang="fr">Tom &amp; Jerry's &lt;b&gt; âÃ¼nÃ¯â ð</name><unique-id>7-quilo-1</unique-id><command>sh -c 'echo "$1" &gt; "$1.txt"' _ %f</command><description><![CDATA[<raw> & ]]></description><patterns>*.txt;*.md</patterns><text-files/></action>
</actions>
)";

TEST_F(FileManagerActions, InstallsForTheFileManagersOnPathOrThoseNamed)
{
    fs::create_directories(programs_);
    const std::string noXdgHomes = environment() + " unset XDG_DATA_HOME XDG_CONFIG_HOME;";
    const Outcome none = quilo("install-file-manager-actions", noXdgHomes);
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(contains(none, "--for")) << none.output;

    writeFileText(programs_ / "nemo", "");
    writeFileText(programs_ / "thunar", "");
    writeFileText(programs_ / "caja", ""); // not executable: not a program
    fs::permissions(programs_ / "nemo", fs::perms::owner_all);
    fs::permissions(programs_ / "thunar", fs::perms::owner_all);
    const Outcome found = quilo("install-file-manager-actions", noXdgHomes);
    EXPECT_EQ(found.status, 0) << found.output;
    EXPECT_TRUE(contains(
        found, "Nemo: wrote " + (home_ / ".local/share/nemo/actions/quilo-create-thumbnails.nemo_action").string()))
        << found.output;
    EXPECT_TRUE(contains(found, "Thunar: wrote " + (home_ / ".config/Thunar/uca.xml").string())) << found.output;
    EXPECT_FALSE(contains(found, "Caja") || contains(found, "Nautilus") || contains(found, "Dolphin"));
    EXPECT_EQ(directoryListing(home_ / ".local/share"), std::set<std::string>{"nemo"});

    EXPECT_EQ(run("install-file-manager-actions --for dolphin,caja").status, 0);
    EXPECT_TRUE(fs::exists(serviceMenu()) && fs::exists(script("caja", kActions[2])));
    EXPECT_EQ(run("install-file-manager-actions --for nemo,finder").status, 2);
    EXPECT_FALSE(fs::exists(data_ / "nemo"));
}

TEST_F(FileManagerActions, ThunarKeepsTheUsersActionsByteForByte)
{
    writeFileText(uca(), kUsersActions);
    ASSERT_EQ(run("install-file-manager-actions --for thunar").status, 0);
    const std::string installed = readFileText(uca());
    const std::size_t end = kUsersActions.rfind("</actions>");
    EXPECT_EQ(installed.substr(0, end), kUsersActions.substr(0, end));
    EXPECT_EQ(xpath(uca(), "count(/actions/action)"), "5");
    EXPECT_EQ(xpath(uca(), "count(/actions/action[starts-with(unique-id, 'quilo-')])"), "3");
    ASSERT_EQ(run("install-file-manager-actions --for thunar").status, 0);
    EXPECT_EQ(readFileText(uca()), installed);

    // An action added after ours, as Thunar's dialog adds it: a reinstall
    // keeps ours where they are, an uninstall takes out only them.
    const std::string added = "<action>\n\t<name>Later</name>\n\t<unique-id>99-1</unique-id>\n</action>\n";
    const std::string withLater = installed.substr(0, installed.rfind("</actions>")) + added + "</actions>\n";
    writeFileText(uca(), withLater);
    ASSERT_EQ(run("install-file-manager-actions --for thunar").status, 0);
    EXPECT_EQ(readFileText(uca()), withLater);
    const Outcome removed = run("uninstall-file-manager-actions --for thunar");
    EXPECT_EQ(removed.output, "Thunar: wrote " + uca().string() + "\n");
    EXPECT_EQ(readFileText(uca()), kUsersActions.substr(0, end) + added + "</actions>\n");
}

// Without a uca.xml of the user's, Thunar shows the system's.
TEST_F(FileManagerActions, ThunarStartsFromTheSystemsActionsAndGivesThemBack)
{
    for (const bool systemActions : {true, false}) {
        if (systemActions)
            writeFileText(system_ / "Thunar/uca.xml", kUsersActions);
        else
            fs::remove_all(system_);
        ASSERT_EQ(run("install-file-manager-actions --for thunar").status, 0);
        EXPECT_EQ(xpath(uca(), "count(/actions/action)"), systemActions ? "5" : "3");
        EXPECT_EQ(xpath(uca(), "string(/actions/action[1]/name)"),
                  systemActions ? "Open Terminal Here" : "Create Thumbnails");
        const Outcome removed = run("uninstall-file-manager-actions --for thunar");
        EXPECT_EQ(removed.output, "Thunar: removed " + uca().string() + "\n");
        EXPECT_FALSE(fs::exists(uca()));
    }
}

TEST_F(FileManagerActions, AUcaXmlThatCannotBeReadIsLeftAlone)
{
    for (const std::string broken : {"<actions>\n<action><name>half", "", "<menu></menu>\n",
                                     "<actions><action><name>caf\xe9</name></action></actions>\n"}) {
        writeFileText(uca(), broken);
        const Outcome installed = run("install-file-manager-actions --for thunar,nemo");
        EXPECT_EQ(installed.status, 1);
        EXPECT_TRUE(contains(installed, "Thunar: " + uca().string())) << installed.output;
        EXPECT_TRUE(fs::exists(nemoAction(kActions[0])));
        EXPECT_EQ(run("uninstall-file-manager-actions --for thunar").status, 1);
        EXPECT_EQ(readFileText(uca()), broken);
    }
}

TEST_F(FileManagerActions, UninstallLeavesEverythingAsItWas)
{
    writeFileText(data_ / "nautilus/scripts/Mine", "#!/bin/sh\n");
    writeFileText(config_ / "caja/scripts/Quilo/Mine", "put in our folder by hand\n");
    writeFileText(data_ / "nemo/actions/other.nemo_action", "[Nemo Action]\n");
    writeFileText(data_ / "kio/servicemenus/other.desktop", "[Desktop Entry]\n");
    writeFileText(uca(), kUsersActions);
    const auto before = snapshot(directory_.path());
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(run("install-file-manager-actions --for all").status, 0);
    ASSERT_NE(snapshot(directory_.path()), before);
    const Outcome removed = run("uninstall-file-manager-actions");
    EXPECT_EQ(removed.status, 0) << removed.output;
    EXPECT_TRUE(contains(removed, "Dolphin: removed " + serviceMenu().string())) << removed.output;
    EXPECT_EQ(snapshot(directory_.path()), before);
    const Outcome again = run("uninstall-file-manager-actions");
    EXPECT_EQ(again.status, 0);
    EXPECT_TRUE(contains(again, "Nemo: nothing to remove")) << again.output;
}

TEST_F(FileManagerActions, AFileThatCannotBeWrittenIsNamedAndNothingIsLeftHalfDone)
{
    fs::create_directories(serviceMenu() / "in the way");
    writeFileText(data_ / "nemo", "a file where a folder goes");
    const Outcome outcome = run("install-file-manager-actions --for all");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(contains(outcome, "cannot write " + serviceMenu().string() + ":")) << outcome.output;
    EXPECT_TRUE(contains(outcome, "Nemo: cannot make the folder " + (data_ / "nemo/actions").string()));
    EXPECT_EQ(directoryListing(serviceMenu().parent_path()), std::set<std::string>{"quilo.desktop"});
    EXPECT_TRUE(fs::exists(uca()) && fs::exists(script("nautilus", kActions[2])));
}

// The entries run for real: the Nautilus script (given names relative to
// the folder shown) and the Nemo actions hand the pictures in a folder with
// a space in its name to the running Quilo. (What the jobs then do is the
// job commands' part.)
TEST_F(FileManagerActions, TheEntriesHandTheSelectedPicturesToTheRunningQuilo)
{
    const fs::path folder = directory_ / "Holiday Pictures";
    const std::vector<std::string> names{"hills by night.jpg", "it's a lighthouse.png"};
    fs::create_directories(folder);
    fs::copy_file(kSamples / "hills.jpg", folder / names[0]);
    fs::copy_file(kSamples / "lighthouse.png", folder / names[1]);
    ASSERT_EQ(run("install-file-manager-actions --for nautilus,nemo").status, 0);
    const std::string session = environment() + " export PATH=/usr/bin:/bin QT_QPA_PLATFORM=offscreen;";

    CoreApplication application;
    TestSession instanceSession;
    RecordingInstance instance(instanceSession.address());
    ASSERT_TRUE(instance.server().listen());
    const std::map<std::string, int> kinds{{"create-thumbnails", kCreateThumbnails},
                                           {"restore-thumbnails", kRestoreThumbnails}};
    auto entryRan = [&](const std::string& commandLine, const Action& action) {
        const Outcome ran = whileServing([&] { return shell(session + commandLine + " 2>&1"); });
        EXPECT_EQ(ran.status, 0) << commandLine << "\n" << ran.output;
        ASSERT_EQ(instance.jobs.size(), 1u);
        const ReceivedJob job = instance.jobs.front();
        instance.jobs.clear();
        EXPECT_EQ(job.kind, kinds.at(action.word));
        std::string paths;
        for (const std::string& name : names)
            paths += " " + sq(folder / name);
        std::string handed;
        for (const QString& path : job.paths)
            handed += " " + sq(path.toStdString());
        EXPECT_EQ(handed, paths) << "whole paths, in the file manager's order";
    };

    entryRan(" cd " + sq(folder) + " && " + sq(script("nautilus", kActions[0])) + " " + sq(names[0]) + " "
                 + sq(names[1]),
             kActions[0]);

    std::string selection;
    for (const std::string& name : names)
        selection += " " + sq(folder / name);
    for (const Action& action : {kActions[1], kActions[0]}) {
        std::string line = nemoExec(action);
        line.replace(line.find("%F"), 2, selection);
        entryRan(" cd " + sq(home_) + " && " + line, action);
    }
}

} // namespace
} // namespace quilo
