// set-icon, remove-icon, get-icon and info on real files, and what an
// interrupted or failing write leaves behind.
#include "iconfamily/AppleDouble.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/ResourceFork.h"
#include "tests/cli/RunQuilo.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <set>

namespace quilo {
namespace {

using namespace test;
using Bytes = std::vector<std::uint8_t>;
namespace fs = std::filesystem;

// The 'icns' -16455 resource of a sidecar, or nullopt when the sidecar or
// its fork is unreadable or holds none.
std::optional<Bytes> customIconIn(const fs::path& sidecarPath)
{
    const auto sidecar = AppleDouble::parse(readFileBytes(sidecarPath));
    const auto forkBytes = sidecar ? sidecar->resourceFork() : std::nullopt;
    const auto fork = forkBytes ? parseResourceFork(*forkBytes) : std::nullopt;
    const Resource* icon = fork ? fork->find(fourCharCode("icns"), kCustomIconResource) : nullptr;
    return icon ? std::optional(icon->data) : std::nullopt;
}

class CustomIconCommands : public ::testing::Test {
protected:
    CustomIconCommands() { fs::copy_file(kSamples / "hills.jpg", photo_); }

    TemporaryDirectory directory_;
    fs::path photo_ = directory_ / "photo.jpg";
    fs::path sidecar_ = directory_ / "._photo.jpg";
};

TEST_F(CustomIconCommands, SetShowGetAndRemoveAFilesIcon)
{
    const Bytes picture = readFileBytes(photo_);
    // A picture as the icon: its thumbnails, with the old resources too.
    ASSERT_EQ(quilo("set-icon " + quoted(photo_) + " " + quoted(kSamples / "lighthouse.png") + " --compatibility").status,
              0);
    const Outcome info = quilo("info " + quoted(photo_));
    EXPECT_EQ(info.status, 0);
    for (const char* line : {"photo.jpg: file, custom icon: yes", "flags 0x0400 (has custom icon)",
                             "resource fork: 5 resources", "icns       -16455", "ics#       -16455"})
        EXPECT_TRUE(contains(info, line)) << line << " not in\n" << info.output;
    ASSERT_EQ(quilo("get-icon " + quoted(photo_) + " " + quoted(directory_ / "out.icns")).status, 0);
    EXPECT_EQ(readFileBytes(directory_ / "out.icns"), customIconIn(sidecar_));

    // An .icns file as the icon: its bytes, as they are.
    ASSERT_EQ(quilo("set-icon " + quoted(photo_) + " " + quoted(kSamples / "pillow.icns")).status, 0);
    ASSERT_EQ(quilo("get-icon " + quoted(photo_) + " " + quoted(directory_ / "out.icns")).status, 0);
    EXPECT_EQ(readFileBytes(directory_ / "out.icns"), readFileBytes(kSamples / "pillow.icns"));

    ASSERT_EQ(quilo("remove-icon " + quoted(photo_)).status, 0);
    const Outcome removed = quilo("info " + quoted(photo_));
    EXPECT_TRUE(contains(removed, "custom icon: no")) << removed.output;
    EXPECT_TRUE(contains(removed, "resource fork: 4 resources")) << "the old resources stay\n" << removed.output;
    EXPECT_EQ(readFileBytes(photo_), picture);
}

TEST_F(CustomIconCommands, AFoldersIconIsShownFromItsIconFileAndNotRemoved)
{
    const fs::path folder = directory_ / "Holiday";
    fs::create_directory(folder);
    ASSERT_EQ(quilo("set-icon " + quoted(folder) + " " + quoted(kSamples / "pillow.icns")).status, 0);
    const Outcome info = quilo("info " + quoted(folder));
    for (const char* line : {"Holiday: folder, custom icon: yes", "icon file \"Icon\\r\":",
                             "type ????, creator ????, flags 0x4000 (invisible)", "icns       -16455"})
        EXPECT_TRUE(contains(info, line)) << line << " not in\n" << info.output;
    const Outcome remove = quilo("remove-icon " + quoted(folder));
    EXPECT_EQ(remove.status, 1);
    EXPECT_TRUE(contains(remove, "is a folder")) << remove.output;
}

TEST_F(CustomIconCommands, EveryFailureSaysWhatAndWhy)
{
    const std::string icon = quoted(kSamples / "pillow.icns");
    const std::pair<std::string, std::string> failures[] = {
        {"set-icon " + quoted(directory_ / "absent.jpg") + " " + icon, "absent.jpg: no such file or folder"},
        {"set-icon " + quoted(photo_) + " " + quoted(directory_ / "absent.png"),
         "absent.png: neither an .icns file nor a picture Quilo can read"},
        {"remove-icon " + quoted(photo_), "photo.jpg: has no resource fork, so no custom icon to remove"},
        {"get-icon " + quoted(photo_) + " " + quoted(directory_ / "out.icns"), "photo.jpg: has no custom icon"},
        {"info " + quoted(directory_ / "absent"), "absent: no such file or folder"},
    };
    for (const auto& [arguments, message] : failures) {
        const Outcome outcome = quilo(arguments);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_TRUE(contains(outcome, message)) << message << " not in\n" << outcome.output;
    }
    EXPECT_EQ(directoryListing(directory_.path()), (std::set<std::string>{"photo.jpg"})) << "nothing made on the way";
    for (const char* usage : {"set-icon", "set-icon a", "remove-icon", "get-icon a", "set-icon a b --colour red"})
        EXPECT_EQ(quilo(usage).status, 2) << usage;
}

TEST_F(CustomIconCommands, ADamagedSidecarIsReportedAndLeftAsItIs)
{
    const Bytes damaged{0x00, 0x05, 0x16, 0x07, 0x00, 0x02, 0x00, 0x00, 'c', 'u', 't'};
    writeFileBytes(sidecar_, damaged);
    for (const std::string& command : {"set-icon " + quoted(photo_) + " " + quoted(kSamples / "pillow.icns"),
                                      "remove-icon " + quoted(photo_), "info " + quoted(photo_)}) {
        const Outcome outcome = quilo(command);
        EXPECT_EQ(outcome.status, 1) << command;
        EXPECT_TRUE(contains(outcome, sidecar_.string())) << outcome.output;
    }
    EXPECT_TRUE(contains(quilo("set-icon " + quoted(photo_) + " " + quoted(kSamples / "pillow.icns")),
                         "is damaged or not one Quilo can read; it was left as it is"));
    EXPECT_EQ(readFileBytes(sidecar_), damaged);
}

TEST_F(CustomIconCommands, AWriteThatFailsLeavesTheOldSidecarWhole)
{
    ASSERT_EQ(quilo("set-icon " + quoted(photo_) + " " + quoted(kSamples / "pillow.icns")).status, 0);
    const Bytes before = readFileBytes(sidecar_);
    // Files may not grow past 2 KB: the new sidecar cannot be written.
    const Outcome outcome = quilo("set-icon " + quoted(photo_) + " " + quoted(kSamples / "shapes-png2icns.icns"),
                                  "ulimit -f 4; trap '' XFSZ;");
    EXPECT_EQ(outcome.status, 1) << outcome.output;
    EXPECT_EQ(readFileBytes(sidecar_), before);
    EXPECT_EQ(directoryListing(directory_.path()), (std::set<std::string>{"photo.jpg", "._photo.jpg"})) << "no temporary left";
}

// Kills set-icon at random moments of its work, over and over: whatever
// moment it dies, the sidecar is the old one or the new one, never a mixture.
TEST_F(CustomIconCommands, KilledAtAnyMomentTheSidecarIsOldOrNew)
{
    const fs::path icons[] = {kSamples / "pillow.icns", kSamples / "shapes-png2icns.icns"};
    const Bytes families[] = {readFileBytes(icons[0]), readFileBytes(icons[1])};
    std::mt19937 random(20261122);
    std::uniform_int_distribution<int> delayMicroseconds(0, 8000);
    // A loaded machine stretches the sleeps, so more rounds may be needed
    // before enough kills have landed while set-icon works.
    int killedMidway = 0;
    for (int round = 0; round < 1000 && killedMidway < 100; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::execl(QUILO_BINARY, "quilo", "set-icon", photo_.c_str(), icons[round % 2].c_str(), nullptr);
            ::_exit(127);
        }
        ::usleep(useconds_t(delayMicroseconds(random)));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        killedMidway += WIFSIGNALED(status);
        if (!fs::exists(sidecar_))
            continue; // killed before its first write
        // Between the fork's creation and the first icon the fork is empty;
        // after that it holds one family or the other, whole.
        const auto sidecar = AppleDouble::parse(readFileBytes(sidecar_));
        ASSERT_TRUE(sidecar) << "round " << round << ": a sidecar that does not read back";
        const auto forkBytes = sidecar->resourceFork();
        const auto fork = forkBytes ? parseResourceFork(*forkBytes) : std::nullopt;
        ASSERT_TRUE(fork) << "round " << round << ": a fork that does not read back";
        if (const Resource* icon = fork->find(fourCharCode("icns"), kCustomIconResource))
            ASSERT_TRUE(icon->data == families[0] || icon->data == families[1]) << "round " << round;
        else
            ASSERT_TRUE(fork->resources.empty()) << "round " << round;
    }
    EXPECT_EQ(killedMidway, 100) << "the kills should land while it works";
    // A kill between writing the temporary file and renaming it leaves the
    // temporary; nothing else may be there.
    for (const std::string& name : directoryListing(directory_.path()))
        EXPECT_TRUE(name == "photo.jpg" || name == "._photo.jpg" || name.rfind(".._photo.jpg.quilo-", 0) == 0) << name;
}

} // namespace
} // namespace quilo
