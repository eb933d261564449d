// The file managers' menu entries, installed by the real command into a home
// of the test's own, read back by independent parsers (GLib's key files, as
// Nemo and KIO read theirs; xmllint; desktop-file-validate; the shell) and
// run the way each file manager runs them.
#include "tests/cli/RunQuilo.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <sstream>

namespace quilo {
namespace {

using namespace test;
namespace fs = std::filesystem;

struct Action {
    std::string label, word;
};
const std::vector<Action> kActions{{"Create Thumbnails", "create-thumbnails"},
                                   {"Restore Thumbnails", "restore-thumbnails"},
                                   {"Save as ICNS Files", "save-as-icns"}};

std::string sq(const std::string& word)
{
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string text(const fs::path& path)
{
    const auto bytes = readFileBytes(path);
    return {bytes.begin(), bytes.end()};
}

void writeText(const fs::path& path, const std::string& content)
{
    fs::create_directories(path.parent_path());
    writeFileBytes(path, std::span(reinterpret_cast<const std::uint8_t*>(content.data()), content.size()));
}

bool isExecutable(const fs::path& path)
{
    return (fs::status(path).permissions() & fs::perms::owner_exec) != fs::perms::none;
}

// A string value as GLib reads it, escapes undone.
std::optional<std::string> keyFileValue(const fs::path& file, const std::string& group, const char* key)
{
    GKeyFile* keys = g_key_file_new();
    std::optional<std::string> value;
    if (g_key_file_load_from_file(keys, file.c_str(), G_KEY_FILE_NONE, nullptr))
        if (gchar* found = g_key_file_get_string(keys, group.c_str(), key, nullptr)) {
            value = found;
            g_free(found);
        }
    g_key_file_free(keys);
    return value;
}

std::string xpath(const fs::path& file, const std::string& expression)
{
    std::string value = shell("xmllint --xpath " + sq(expression) + " " + sq(file) + " 2>&1").output;
    if (!value.empty() && value.back() == '\n')
        value.pop_back();
    return value;
}

// Every file and folder below `root` with its content and mode.
std::map<std::string, std::string> snapshot(const fs::path& root)
{
    std::map<std::string, std::string> entries;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const auto mode = std::to_string(int(entry.status().permissions()));
        entries[fs::relative(entry.path(), root)] = entry.is_directory() ? "folder " + mode : mode + text(entry.path());
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

class FileManagerActions : public ::testing::Test {
protected:
    FileManagerActions() { fs::create_directories(home_); }

    // A home of the test's own, with nothing of the system's: no file
    // manager on PATH, no system-wide Thunar actions.
    std::string environment() const
    {
        return "export HOME=" + sq(home_) + " XDG_DATA_HOME=" + sq(data_) + " XDG_CONFIG_HOME=" + sq(config_)
            + " XDG_CONFIG_DIRS=" + sq(system_) + " PATH=" + sq(programs_) + ";";
    }
    Outcome run(const std::string& arguments) const { return quilo(arguments, environment()); }

    fs::path script(const char* fileManager, const Action& action) const
    {
        return fs::path(fileManager) == "nautilus" ? data_ / "nautilus/scripts/Quilo" / action.label
                                                   : config_ / "caja/scripts/Quilo" / action.label;
    }
    fs::path nemoAction(const Action& action) const
    {
        return data_ / "nemo/actions" / ("quilo-" + action.word + ".nemo_action");
    }
    fs::path serviceMenu() const { return data_ / "kio/servicemenus/quilo.desktop"; }
    fs::path uca() const { return config_ / "Thunar/uca.xml"; }

    // The command line each entry runs, before the selection goes in.
    std::string nemoExec(const Action& action) const
    {
        return keyFileValue(nemoAction(action), "Nemo Action", "Exec").value_or("");
    }
    std::string dolphinExec(const Action& action) const
    {
        return keyFileValue(serviceMenu(), "Desktop Action " + action.word, "Exec").value_or("");
    }
    std::string thunarCommand(const Action& action) const
    {
        return xpath(uca(), "string(//action[unique-id='quilo-" + action.word + "']/command)");
    }

    TemporaryDirectory directory_;
    fs::path home_ = directory_ / "home", data_ = directory_ / "data", config_ = directory_ / "config";
    fs::path system_ = directory_ / "etc", programs_ = directory_ / "bin";
};

TEST_F(FileManagerActions, InstallsForTheFileManagersOnPathOrThoseNamed)
{
    fs::create_directories(programs_);
    const std::string noXdgHomes = environment() + " unset XDG_DATA_HOME XDG_CONFIG_HOME;";
    const Outcome none = quilo("install-file-manager-actions", noXdgHomes);
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(contains(none, "--for")) << none.output;

    writeText(programs_ / "nemo", "");
    writeText(programs_ / "thunar", "");
    writeText(programs_ / "caja", ""); // not executable: not a program
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

    const Outcome named = run("install-file-manager-actions --for dolphin,caja");
    EXPECT_EQ(named.status, 0) << named.output;
    EXPECT_EQ(named.output,
              "Caja: wrote " + script("caja", kActions[0]).string() + ", " + script("caja", kActions[1]).string() + ", "
                  + script("caja", kActions[2]).string() + "\nDolphin: wrote " + serviceMenu().string() + "\n");
    EXPECT_EQ(run("install-file-manager-actions --for nemo,finder").status, 2);
    EXPECT_EQ(run("install-file-manager-actions --for ,").status, 2);
    EXPECT_EQ(run("install-file-manager-actions nemo").status, 2);
    EXPECT_FALSE(fs::exists(data_ / "nemo"));
}

// The binary's path and the selected names hold what each format must
// quote: spaces, both quotes, $, `, \, %, a line break.
class FileManagerActionsOnOddPaths : public FileManagerActions {
protected:
    FileManagerActionsOnOddPaths()
    {
        fs::create_directories(binary_.parent_path());
        std::error_code crossDevice;
        fs::create_hard_link(QUILO_BINARY, binary_, crossDevice);
        if (crossDevice)
            fs::copy_file(QUILO_BINARY, binary_);
        installed_ = shell(environment() + " exec " + sq(binary_) + " install-file-manager-actions --for all 2>&1");
        for (const std::string& name : names_)
            writeText(folder_ / name, "");
    }

    // A stand-in for quilo at the path the entries run, to tell what they
    // ran. Unlinked first: the binary there is a hard link to the real one.
    void replaceQuiloWithStandIn()
    {
        fs::remove(binary_);
        writeText(binary_, "#!/bin/sh\nprintf '%s\\0' \"$0\" \"$@\" > \"${0%/*}/ran\"\n");
        fs::permissions(binary_, fs::perms::owner_all);
    }

    std::vector<std::string> argumentsOf(const std::string& commandLine, const fs::path& cwd)
    {
        writeText(binary_.parent_path() / "ran", "");
        const Outcome ran = shell("cd " + sq(cwd) + " && " + commandLine + " 2>&1");
        EXPECT_EQ(ran.status, 0) << ran.output;
        std::vector<std::string> arguments;
        std::istringstream record(text(binary_.parent_path() / "ran"));
        for (std::string argument; std::getline(record, argument, '\0');)
            arguments.push_back(argument);
        return arguments;
    }

    // The selection in place of %F, each path quoted for the shell, as
    // Nemo and Thunar put it (KIO passes each as an argument of its own).
    std::string expanded(const std::string& line) const
    {
        std::string result;
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] != '%') {
                result += line[i];
            } else if (line[++i] == 'F') {
                for (const std::string& name : names_)
                    result += " " + sq(folder_ / name);
            } else {
                EXPECT_EQ(line[i], '%') << line;
                result += '%';
            }
        }
        return result;
    }

    std::vector<std::string> expected(const Action& action) const
    {
        std::vector<std::string> arguments{binary_, "request", action.word};
        for (const std::string& name : names_)
            arguments.push_back(folder_ / name);
        return arguments;
    }

    fs::path binary_ = directory_ / "it's a \"quilo\" $HOME `x` \\no 100%\nbin" / "quilo";
    fs::path folder_ = directory_ / "My Pictures";
    std::vector<std::string> names_{"a b.jpg", "it's \"x\".jpg", "new\nline.png", "$(touch y) %F.gif", "-x.jpg"};
    Outcome installed_;
};

TEST_F(FileManagerActionsOnOddPaths, EachFileIsWhatItsFileManagerReads)
{
    ASSERT_EQ(installed_.status, 0) << installed_.output;
    for (const char* fileManager : {"nautilus", "caja"})
        for (const Action& action : kActions) {
            EXPECT_TRUE(isExecutable(script(fileManager, action))) << script(fileManager, action);
            EXPECT_EQ(shell("sh -n " + sq(script(fileManager, action))).status, 0);
        }
    for (const Action& action : kActions) {
        EXPECT_EQ(keyFileValue(nemoAction(action), "Nemo Action", "Name"), action.label);
        EXPECT_EQ(keyFileValue(nemoAction(action), "Nemo Action", "Selection"), "notnone");
        EXPECT_EQ(keyFileValue(nemoAction(action), "Nemo Action", "Mimetypes"), "image/*;");
        EXPECT_TRUE(keyFileValue(nemoAction(action), "Nemo Action", "Comment"));
        EXPECT_TRUE(keyFileValue(nemoAction(action), "Nemo Action", "Icon-Name"));
        EXPECT_EQ(keyFileValue(serviceMenu(), "Desktop Action " + action.word, "Name"), action.label);
    }
    EXPECT_EQ(keyFileValue(serviceMenu(), "Desktop Entry", "Actions"),
              "create-thumbnails;restore-thumbnails;save-as-icns;");
    EXPECT_EQ(keyFileValue(serviceMenu(), "Desktop Entry", "MimeType"), "image/*;");
    EXPECT_EQ(keyFileValue(serviceMenu(), "Desktop Entry", "X-KDE-Submenu"), "Quilo");
    EXPECT_TRUE(isExecutable(serviceMenu()));

    // The validator knows no service menus: it objects to the keys that
    // Type=Service makes KDE's own, and may to the service-type key.
    std::istringstream complaints(shell("desktop-file-validate " + sq(serviceMenu()) + " 2>&1").output);
    for (std::string line; std::getline(complaints, line);)
        EXPECT_TRUE(line.find("the type is \"Service\"") != std::string::npos
                    || line.find("X-KDE-ServiceTypes") != std::string::npos)
            << line;

    EXPECT_EQ(shell("xmllint --noout " + sq(uca()) + " 2>&1").output, "");
    EXPECT_EQ(xpath(uca(), "count(/actions/action[image-files and patterns='*' and submenu='Quilo'])"), "3");
    for (std::size_t i = 0; i < kActions.size(); ++i)
        EXPECT_EQ(xpath(uca(), "string(/actions/action[" + std::to_string(i + 1) + "]/name)"), kActions[i].label);
}

TEST_F(FileManagerActionsOnOddPaths, TheBinaryAndTheSelectionSurviveEachFormatsQuoting)
{
    ASSERT_EQ(installed_.status, 0) << installed_.output;
    replaceQuiloWithStandIn();
    for (const Action& action : kActions) {
        // Scripts get names relative to the folder shown, or whole paths.
        std::string names;
        for (const std::string& name : names_)
            names += " " + (name == names_[1] ? sq(folder_ / name) : sq(name));
        for (const char* fileManager : {"nautilus", "caja"})
            EXPECT_EQ(argumentsOf(sq(script(fileManager, action)) + names, folder_), expected(action)) << fileManager;
        EXPECT_EQ(argumentsOf(expanded(nemoExec(action)), home_), expected(action)) << nemoExec(action);
        EXPECT_EQ(argumentsOf(expanded(dolphinExec(action)), home_), expected(action)) << dolphinExec(action);
        EXPECT_EQ(argumentsOf(expanded(thunarCommand(action)), home_), expected(action)) << thunarCommand(action);
    }
    EXPECT_FALSE(fs::exists(home_ / "y") || fs::exists(folder_ / "y"));
}

TEST_F(FileManagerActions, ThunarKeepsTheUsersActionsByteForByte)
{
    writeText(uca(), kUsersActions);
    ASSERT_EQ(run("install-file-manager-actions --for thunar").status, 0);
    const std::string installed = text(uca());
    const std::size_t end = kUsersActions.rfind("</actions>");
    EXPECT_EQ(installed.substr(0, end), kUsersActions.substr(0, end));
    EXPECT_EQ(xpath(uca(), "count(/actions/action)"), "5");
    EXPECT_EQ(xpath(uca(), "count(/actions/action[starts-with(unique-id, 'quilo-')])"), "3");
    ASSERT_EQ(run("install-file-manager-actions --for thunar").status, 0);
    EXPECT_EQ(text(uca()), installed);

    // An action added after ours, as Thunar's dialog adds it: a reinstall
    // keeps ours where they are, an uninstall takes out only them.
    const std::string added = "<action>\n\t<name>Later</name>\n\t<unique-id>99-1</unique-id>\n</action>\n";
    const std::string withLater = installed.substr(0, installed.rfind("</actions>")) + added + "</actions>\n";
    writeText(uca(), withLater);
    ASSERT_EQ(run("install-file-manager-actions --for thunar").status, 0);
    EXPECT_EQ(text(uca()), withLater);
    const Outcome removed = run("uninstall-file-manager-actions --for thunar");
    EXPECT_EQ(removed.output, "Thunar: wrote " + uca().string() + "\n");
    EXPECT_EQ(text(uca()), kUsersActions.substr(0, end) + added + "</actions>\n");
}

// Without a uca.xml of the user's, Thunar shows the system's.
TEST_F(FileManagerActions, ThunarStartsFromTheSystemsActionsAndGivesThemBack)
{
    for (const bool systemActions : {true, false}) {
        if (systemActions)
            writeText(system_ / "Thunar/uca.xml", kUsersActions);
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
        writeText(uca(), broken);
        const Outcome installed = run("install-file-manager-actions --for thunar,nemo");
        EXPECT_EQ(installed.status, 1);
        EXPECT_TRUE(contains(installed, "Thunar: " + uca().string())) << installed.output;
        EXPECT_TRUE(fs::exists(nemoAction(kActions[0])));
        EXPECT_EQ(run("uninstall-file-manager-actions --for thunar").status, 1);
        EXPECT_EQ(text(uca()), broken);
    }
}

TEST_F(FileManagerActions, UninstallLeavesEverythingAsItWas)
{
    writeText(data_ / "nautilus/scripts/Mine", "#!/bin/sh\n");
    writeText(config_ / "caja/scripts/Quilo/Mine", "put in our folder by hand\n");
    writeText(data_ / "nemo/actions/other.nemo_action", "[Nemo Action]\n");
    writeText(data_ / "kio/servicemenus/other.desktop", "[Desktop Entry]\n");
    writeText(uca(), kUsersActions);
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
    writeText(data_ / "nemo", "a file where a folder goes");
    const Outcome outcome = run("install-file-manager-actions --for all");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(contains(outcome, "cannot write " + serviceMenu().string() + ":")) << outcome.output;
    EXPECT_TRUE(contains(outcome, "Nemo: cannot make the folder " + (data_ / "nemo/actions").string()));
    EXPECT_EQ(directoryListing(serviceMenu().parent_path()), std::set<std::string>{"quilo.desktop"});
    EXPECT_TRUE(fs::exists(uca()) && fs::exists(script("nautilus", kActions[2])));
}

} // namespace
} // namespace quilo
