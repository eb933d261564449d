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
#include <cstdlib>
#include <fcntl.h>
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

// Runs quilo without waiting for it, its output dropped.
pid_t spawnQuilo(const std::vector<std::string>& arguments)
{
    std::vector<char*> argv{const_cast<char*>("quilo")};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nothing = ::open("/dev/null", O_WRONLY);
        ::dup2(nothing, STDOUT_FILENO);
        ::dup2(nothing, STDERR_FILENO);
        ::execv(QUILO_BINARY, argv.data());
        ::_exit(127);
    }
    return child;
}

int waitFor(pid_t child)
{
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

// How many rounds a stress test runs: a few by default, the full count when
// QUILO_FULL_STRESS is set.
int rounds(int quick, int full) { return std::getenv("QUILO_FULL_STRESS") ? full : quick; }

// Two set-icon processes on one file at once: each must see the other's
// change whole, so the sidecar ends with one family's icon and compatibility
// resources, never one's icon beside the other's old-style icons.
TEST_F(CustomIconCommands, TwoWritersOfOneFileTakeTurns)
{
    const std::string families[] = {(directory_ / "A.icns").string(), (directory_ / "B.icns").string()};
    ASSERT_EQ(quilo("icns " + quoted(kSamples / "hills.jpg") + " " + quoted(kSamples / "lighthouse.png") + " --output "
                    + quoted(directory_.path())).status, 0);
    fs::rename(directory_ / "hills.icns", families[0]);
    fs::rename(directory_ / "lighthouse.icns", families[1]);
    const auto resourcesOf = [](const Bytes& family) {
        std::vector<Resource> expected{{fourCharCode("icns"), kCustomIconResource, "", 0, family}};
        for (OSType type : {fourCharCode("icl8"), fourCharCode("ICN#"), fourCharCode("ics8"), fourCharCode("ics#")}) {
            Bytes element;
            EXPECT_EQ(getIconFamilyData(family, type, element), noErr);
            expected.push_back({type, kCustomIconResource, "", 0, element});
        }
        return expected;
    };
    const std::vector<Resource> expected[] = {resourcesOf(readFileBytes(families[0])),
                                              resourcesOf(readFileBytes(families[1]))};
    for (int pair = 0, pairs = rounds(20, 200); pair < pairs; ++pair) {
        const fs::path file = directory_ / ("f" + std::to_string(pair));
        writeFileBytes(file, Bytes{'x'});
        const pid_t a = spawnQuilo({"set-icon", file.string(), families[0], "--compatibility"});
        const pid_t b = spawnQuilo({"set-icon", file.string(), families[1], "--compatibility"});
        ASSERT_EQ(waitFor(a), 0) << "pair " << pair;
        ASSERT_EQ(waitFor(b), 0) << "pair " << pair;
        const auto sidecar = AppleDouble::parse(readFileBytes(directory_ / ("._f" + std::to_string(pair))));
        const auto fork = sidecar ? parseResourceFork(sidecar->resourceFork().value()) : std::nullopt;
        ASSERT_TRUE(fork) << "pair " << pair;
        ASSERT_TRUE(fork->resources == expected[0] || fork->resources == expected[1]) << "pair " << pair;
    }
}

// A sidecar as a Mac may leave it: an old icon and a resource of its own.
Bytes sidecarFromBefore()
{
    ResourceFork fork;
    fork.add({fourCharCode("STR "), 1, "", 0, Bytes{3, 'o', 'l', 'd'}});
    fork.add({fourCharCode("icns"), kCustomIconResource, "", 0, readFileBytes(kSamples / "pillow.icns")});
    AppleDouble sidecar;
    sidecar.setResourceFork(serialiseResourceFork(fork).value());
    return sidecar.serialise().value();
}

// Kills create-thumbnails at random moments over 50 pictures, some with
// sidecars of their own: each sidecar is then the one from before, or none
// as before, or complete (new icon, its flag and the old resource kept).
TEST_F(CustomIconCommands, KilledAtAnyMomentEverySidecarIsAsBeforeOrComplete)
{
    std::vector<std::string> arguments{"create-thumbnails"};
    for (int i = 0; i < 50; ++i) {
        arguments.push_back((directory_ / ("p" + std::to_string(i) + ".jpg")).string());
        fs::copy_file(kSamples / "hills.jpg", arguments.back());
    }
    const auto sidecarOf = [](const fs::path& picture) { return picture.parent_path() / ("._" + picture.filename().string()); };
    const Bytes before = sidecarFromBefore();
    std::mt19937 random(20261124);
    int killedMidway = 0;
    const int kills = rounds(10, 100);
    for (int round = 0; round < 3 * kills && killedMidway < kills; ++round) {
        for (std::size_t i = 1; i < arguments.size(); ++i) {
            fs::remove(sidecarOf(arguments[i]));
            if (random() % 2)
                writeFileBytes(sidecarOf(arguments[i]), before);
        }
        const pid_t child = spawnQuilo(arguments);
        ::usleep(useconds_t(random() % 600'000));
        ::kill(child, SIGKILL);
        killedMidway += WIFSIGNALED(waitFor(child));
        for (std::size_t i = 1; i < arguments.size(); ++i) {
            const fs::path sidecarPath = sidecarOf(arguments[i]);
            if (!fs::exists(sidecarPath))
                continue;
            const Bytes bytes = readFileBytes(sidecarPath);
            if (bytes == before)
                continue;
            const auto sidecar = AppleDouble::parse(bytes);
            const auto fork = sidecar ? parseResourceFork(sidecar->resourceFork().value()) : std::nullopt;
            ASSERT_TRUE(fork) << "round " << round << ": " << sidecarPath;
            const Resource* icon = fork->find(fourCharCode("icns"), kCustomIconResource);
            ASSERT_TRUE(icon && icon->data != readFileBytes(kSamples / "pillow.icns")) << "round " << round;
            ASSERT_TRUE(sidecar->finderInfo().finderFlags() & kHasCustomIcon) << "round " << round;
        }
    }
    EXPECT_EQ(killedMidway, kills) << "the kills should land while it works";
    for (const std::string& name : directoryListing(directory_.path()))
        EXPECT_TRUE(name.rfind(".._q", 0) != 0 || name.size() == 10) << "a temporary of the fixed length: " << name;
}

} // namespace
} // namespace quilo
