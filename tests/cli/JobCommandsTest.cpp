// The thumbnail jobs from the command line: a real process over real files.
#include "iconfamily/IconFamily.h"
#include "tests/cli/RunQuilo.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <csignal>
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
    EXPECT_TRUE(hasIcon("a.jpg") && hasIcon("b.jpg"));

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
    const std::string line = asUser + QUILO_BINARY + " create-thumbnails " + quoted(directory_ / "locked/a.jpg") + " " +
                             quoted(directory_ / "locked/b.jpg") + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0) << "the job runs; the failures are the files' own";
    EXPECT_EQ(directoryListing(directory_ / "locked"), (std::set<std::string>{"a.jpg", "b.jpg"}));
    EXPECT_EQ(readFileBytes(directory_ / "locked/a.jpg"), before);
    fs::permissions(directory_ / "locked", fs::perms(0755));
}

// Ctrl-C is the Stop button: the picture in hand is finished, no other is begun.
TEST_F(JobCommands, InterruptStopsBetweenPictures)
{
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i) {
        names.push_back("p" + std::to_string(i) + ".jpg");
        fs::copy_file(kSamples / "hills.jpg", directory_ / names.back());
    }
    std::vector<std::string> command{QUILO_BINARY, "create-thumbnails"};
    for (const std::string& name : names)
        command.push_back(directory_ / name);
    ChildProgram job(command, directory_ / "job.log");
    ASSERT_TRUE(job.waitForLog("[2/40]", 60)) << job.log();
    ::kill(job.pid(), SIGINT);
    ASSERT_EQ(job.waitForExit(60'000), std::optional(0)) << job.log();
    const std::string output = job.log();
    int started = 0, iconed = 0;
    for (std::size_t at = 0; (at = output.find("Processing ", at)) != std::string::npos; ++at)
        ++started;
    for (const std::string& name : names)
        iconed += hasIcon(name.c_str());
    EXPECT_LT(started, 40) << output;
    EXPECT_EQ(iconed, started) << "every picture begun was finished";
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
