// The binary's path and the selected names as each format quotes them, read
// back by their file managers' parsers and run as those run them.
#include "tests/cli/FileManagerHome.h"

#include <sstream>

namespace quilo {
namespace {

using namespace test;

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
            writeFileText(folder_ / name, "");
    }

    // A stand-in for quilo at the path the entries run, to tell what they
    // ran. Unlinked first: the binary there is a hard link to the real one.
    void replaceQuiloWithStandIn()
    {
        fs::remove(binary_);
        writeFileText(binary_, "#!/bin/sh\nprintf '%s\\0' \"$0\" \"$@\" > \"${0%/*}/ran\"\n");
        fs::permissions(binary_, fs::perms::owner_all);
    }

    std::vector<std::string> argumentsOf(const std::string& commandLine, const fs::path& cwd)
    {
        writeFileText(binary_.parent_path() / "ran", "");
        const Outcome ran = shell("cd " + sq(cwd) + " && " + commandLine + " 2>&1");
        EXPECT_EQ(ran.status, 0) << ran.output;
        std::vector<std::string> arguments;
        std::istringstream record(readFileText(binary_.parent_path() / "ran"));
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
    // Pictures only, where the file manager can tell.
    for (const Action& action : kActions)
        EXPECT_EQ(keyFileValue(nemoAction(action), "Nemo Action", "Mimetypes"), "image/*;");
    EXPECT_EQ(keyFileValue(serviceMenu(), "Desktop Entry", "MimeType"), "image/*;");
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

} // namespace
} // namespace quilo
