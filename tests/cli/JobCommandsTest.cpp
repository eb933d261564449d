// The thumbnail jobs from the command line: a real process over real files.
#include "iconfamily/IconFamily.h"
#include "tests/cli/RunQuilo.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <cstdio>
#include <sys/stat.h>

namespace quilo {
namespace {

using namespace test;
using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;

class JobCommands : public ::testing::Test {
protected:
    JobCommands()
    {
        ::setenv("XDG_CONFIG_HOME", (directory_ / "config").c_str(), 1); // factory defaults only
        for (const char* name : {"a.jpg", "b.jpg"})
            fs::copy_file(kSamples / "hills.jpg", directory_ / name);
    }

    std::string picturesArgument(const std::vector<std::string>& names) const
    {
        std::string argument;
        for (const std::string& name : names)
            argument += " " + quoted(directory_ / name);
        return argument;
    }

    bool hasIcon(const char* name) const { return IconFamily::iconFamilyWithIconOfFile(directory_ / name) != nullptr; }

    TemporaryDirectory directory_;
};

TEST_F(JobCommands, EveryJobRunsAndWalksTheSelectionBackwards)
{
    const Outcome created = quilo("create-thumbnails" + picturesArgument({"a.jpg", "b.jpg"}));
    EXPECT_EQ(created.status, 0) << created.output;
    EXPECT_LT(created.output.find("[1/2] b.jpg"), created.output.find("[2/2] a.jpg")) << created.output;
    EXPECT_TRUE(contains(created, "\n2 pictures: 2 with icons\n")) << created.output;
    EXPECT_TRUE(hasIcon("a.jpg") && hasIcon("b.jpg"));
    // A name that is not UTF-8 is a name like any other.
    fs::copy_file(directory_ / "a.jpg", directory_ / "bad\xFF\xFE.jpg");
    EXPECT_EQ(quilo("create-thumbnails" + picturesArgument({"bad\xFF\xFE.jpg"})).status, 0);
    EXPECT_TRUE(hasIcon("bad\xFF\xFE.jpg"));
    // On a terminal the progress line names each file; the log does not
    // name it a second time.
    const Outcome onTerminal = shell("script -qec '" + std::string(QUILO_BINARY) + " create-thumbnails" +
                                     picturesArgument({"a.jpg"}) + "' /dev/null");
    EXPECT_TRUE(contains(onTerminal, "1 picture: 1 with icons") && !contains(onTerminal, "Processing"))
        << onTerminal.output;

    const Outcome restored = quilo("restore-thumbnails" + picturesArgument({"a.jpg", "b.jpg"}));
    EXPECT_EQ(restored.status, 0) << restored.output;
    EXPECT_TRUE(restored.output.find("Restoring Thumbnails...") != std::string::npos);
    EXPECT_FALSE(hasIcon("a.jpg") || hasIcon("b.jpg"));

    // --output answers the folder panel; the slot gives b.icns a's family.
    const Outcome saved = quilo("save-as-icns" + picturesArgument({"b.jpg", "a.jpg"}) + " --output " +
                                quoted(directory_ / "out"));
    EXPECT_EQ(saved.status, 0) << saved.output;
    EXPECT_FALSE(fs::exists(directory_ / "out/a.icns"));
    EXPECT_EQ(readFileBytes(directory_ / "out/b.icns"),
              IconFamily::iconFamilyWithIconOfFile(directory_ / "a.jpg")->iconFamilyHandle());
}

TEST_F(JobCommands, AlertsEndWithTheirTextAndAFailingStatus)
{
    writeFileBytes(directory_ / "notes.txt", Bytes{'x'});
    const Outcome refused = quilo("create-thumbnails" + picturesArgument({"a.jpg", "notes.txt"}));
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.output.find("quilo create-thumbnails: Not an Image: One or more of the selected files is not an "
                                  "image and will not be processed."),
              std::string::npos)
        << refused.output;
    EXPECT_FALSE(hasIcon("a.jpg"));
    EXPECT_EQ(quilo("create-thumbnails").status, 2);
    EXPECT_EQ(quilo("create-thumbnails x.jpg --keep-dates --no-keep-dates").status, 2);
    EXPECT_EQ(quilo("save-as-icns x.jpg").status, 2);
}

TEST_F(JobCommands, AReadOnlyFolderLeavesEveryFileAsItWas)
{
    const Bytes before = readFileBytes(directory_ / "a.jpg");
    fs::permissions(directory_.path(), fs::perms(0755));
    fs::create_directory(directory_ / "locked");
    for (const char* name : {"a.jpg", "b.jpg"})
        fs::copy_file(directory_ / name, directory_ / "locked" / name);
    fs::permissions(directory_ / "locked", fs::perms(0555));
    // Root writes anywhere: the job then runs as nobody.
    const std::string asUser = ::geteuid() == 0 ? "runuser -u nobody -- " : "";
    const Outcome locked = shell(asUser + QUILO_BINARY + " create-thumbnails " + quoted(directory_ / "locked/a.jpg") +
                                 " " + quoted(directory_ / "locked/b.jpg") + " 2>&1");
    EXPECT_EQ(locked.status, 1) << "the job runs; the failures are the files' own";
    EXPECT_TRUE(contains(locked, "quilo create-thumbnails: " + (directory_ / "locked/a.jpg").string() + ": ")
                && contains(locked, "\n2 pictures: 0 with icons, 2 could not be changed\n"))
        << locked.output;
    EXPECT_EQ(directoryListing(directory_ / "locked"), (std::set<std::string>{"a.jpg", "b.jpg"}));
    EXPECT_EQ(readFileBytes(directory_ / "locked/a.jpg"), before);
    fs::permissions(directory_ / "locked", fs::perms(0755));
}

// Ctrl-C is the Stop button: the picture in hand is finished, no other is
// begun, and the summary says how far the job got.
TEST_F(JobCommands, InterruptStopsBetweenPictures)
{
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i) {
        names.push_back("p" + std::to_string(i) + ".jpg");
        fs::copy_file(kSamples / "hills.jpg", directory_ / names.back());
    }
    const std::string log = quoted(directory_ / "log");
    const Outcome outcome = shell(std::string(QUILO_BINARY) + " create-thumbnails" + picturesArgument(names) + " 2>" +
                                  log + " & until grep -q '\\[2/40\\]' " + log + "; do sleep 0.01; done; kill -INT $!;" +
                                  " wait $!; echo status $?; cat " + log);
    int iconed = 0, done = 0, stoppedAfter = 0;
    for (const std::string& name : names)
        iconed += hasIcon(name.c_str());
    const auto summary = outcome.output.find("40 pictures: ");
    ASSERT_NE(summary, std::string::npos) << outcome.output;
    std::sscanf(outcome.output.c_str() + summary, "40 pictures: %d with icons, stopped after %d", &done, &stoppedAfter);
    EXPECT_TRUE(contains(outcome, "status 130\n")) << outcome.output;
    EXPECT_TRUE(iconed == done && done == stoppedAfter && done < 40) << outcome.output;
}

// A file-manager action's request (run for real by the file-manager tests)
// is refused plainly where there is no display to show its window on.
TEST_F(JobCommands, RequestNeedsADisplay)
{
    const Outcome noDisplay = quilo("request create-thumbnails" + picturesArgument({"a.jpg"}),
                                    "unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM;");
    EXPECT_EQ(noDisplay.status, 1);
    EXPECT_TRUE(contains(noDisplay, "no display")) << noDisplay.output;
    EXPECT_FALSE(hasIcon("a.jpg"));
}

} // namespace
} // namespace quilo
