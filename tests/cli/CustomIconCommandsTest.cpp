// set-icon, remove-icon, get-icon and info on real files, and what an
// interrupted or failing write leaves behind.
#include "iconfamily/AppleDouble.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/ResourceFork.h"
#include "tests/cli/RunQuilo.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
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
    EXPECT_TRUE(contains(outcome, "cannot write the AppleDouble sidecar " + sidecar_.string() + ": File too large"))
        << outcome.output;
    EXPECT_EQ(readFileBytes(sidecar_), before);
    EXPECT_EQ(directoryListing(directory_.path()), (std::set<std::string>{"photo.jpg", "._photo.jpg"})) << "no temporary left";
}

// A 16 MB sidecar whose fork has 300 references to its one data block.
Bytes forkBomb()
{
    const std::size_t blockLength = (16u << 20) - 4, references = 300;
    Bytes fork(256 + 4 + blockLength);
    const std::size_t map = fork.size(), mapLength = 28 + 2 + 8 + references * 12;
    fork.resize(map + mapLength);
    const auto put32 = [&](std::size_t at, std::uint32_t value) { writeFourCharCode(fork.data() + at, value); };
    const auto put16 = [&](std::size_t at, std::uint32_t value) { fork[at] = std::uint8_t(value >> 8), fork[at + 1] = std::uint8_t(value); };
    for (std::size_t header : {std::size_t(0), map}) {
        put32(header, 256), put32(header + 4, std::uint32_t(map));
        put32(header + 8, std::uint32_t(4 + blockLength)), put32(header + 12, std::uint32_t(mapLength));
    }
    put32(256, std::uint32_t(blockLength));
    put16(map + 24, 28), put16(map + 26, std::uint32_t(mapLength));
    put16(map + 28, 0), put32(map + 30, fourCharCode("icns"));
    put16(map + 34, references - 1), put16(map + 36, 10);
    for (std::size_t i = 0; i < references; ++i) {
        put16(map + 38 + 12 * i, std::uint32_t(i)), put16(map + 40 + 12 * i, 0xFFFF); // data offset 0 for all
    }
    AppleDouble sidecar;
    sidecar.setResourceFork(std::move(fork));
    return sidecar.serialise().value();
}

// An .icns file of 40 MB: one PNG element no fork can hold.
Bytes hugeFamily()
{
    Bytes family(40u << 20);
    writeFourCharCode(family.data(), fourCharCode("icns"));
    writeFourCharCode(family.data() + 4, std::uint32_t(family.size()));
    writeFourCharCode(family.data() + 8, fourCharCode("ic10"));
    writeFourCharCode(family.data() + 12, std::uint32_t(family.size() - 8));
    const Bytes png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::copy(png.begin(), png.end(), family.begin() + 16);
    return family;
}

// Sidecars and icons made to hurt: each refused at once, in little memory,
// with the reason, and the sidecar left as it was.
TEST_F(CustomIconCommands, HostileSidecarsAndIconsAreRefusedInBoundedMemory)
{
    const std::string icon = quoted(kSamples / "pillow.icns"), photo = quoted(photo_);
    writeFileBytes(sidecar_, forkBomb());
    const Bytes bomb = readFileBytes(sidecar_);
    for (const std::string& command : {"info " + photo, "set-icon " + photo + " " + icon, "create-thumbnails " + photo}) {
        const Outcome outcome = quilo(command);
        EXPECT_LT(outcome.peakKilobytes, 200 * 1024) << command;
        EXPECT_TRUE(command[0] == 'c' || contains(outcome, "._photo.jpg")) << outcome.output;
    }
    EXPECT_EQ(readFileBytes(sidecar_), bomb);

    fs::remove(sidecar_);
    ASSERT_EQ(::mkfifo(sidecar_.c_str(), 0644), 0);
    for (const std::string& command : {"info " + photo, "set-icon " + photo + " " + icon, "remove-icon " + photo}) {
        const Outcome outcome = shell("timeout 20 " + std::string(QUILO_BINARY) + " " + command + " 2>&1");
        EXPECT_EQ(outcome.status, 1) << command << ": a FIFO is an unreadable sidecar, at once\n" << outcome.output;
    }
    fs::remove(sidecar_);

    ASSERT_EQ(quilo("set-icon " + photo + " " + icon).status, 0);
    const Bytes before = readFileBytes(sidecar_);
    writeFileBytes(directory_ / "big.icns", hugeFamily());
    const Outcome huge = quilo("set-icon " + photo + " " + quoted(directory_ / "big.icns"));
    EXPECT_EQ(huge.status, 1);
    EXPECT_TRUE(contains(huge, "the icon (40.0 MB) is too large for a resource fork, which holds at most 16.0 MB"))
        << huge.output;
    EXPECT_LT(huge.peakKilobytes, 150 * 1024);
    EXPECT_EQ(readFileBytes(sidecar_), before);
}

// Links where outputs go are replaced, never written through; sidecars keep
// their own mode, never a link target's; any name that fits gets an icon.
TEST_F(CustomIconCommands, OutputsReplaceLinksAndEveryNameThatFitsGetsAnIcon)
{
    // Readable as a sidecar too, so that the one planted as a link is read.
    const fs::path victim = directory_ / "precious";
    const Bytes precious = AppleDouble().serialise().value();
    writeFileBytes(victim, precious);
    fs::permissions(victim, fs::perms::all);
    fs::create_directory(directory_ / "out");
    const std::string icon = quoted(kSamples / "pillow.icns");
    const std::pair<fs::path, std::string> outputs[] = {
        {directory_ / "out/ic07.png", "extract " + icon + " --output " + quoted(directory_ / "out")},
        {directory_ / "got.icns", "get-icon " + quoted(photo_) + " " + quoted(directory_ / "got.icns")},
        {sidecar_, "set-icon " + quoted(photo_) + " " + icon},
    };
    for (const auto& [link, command] : outputs)
        fs::create_symlink(victim, link);
    const mode_t umask = ::umask(002); // a shared folder's: new files would be group-writable
    for (const auto& [link, command] : std::vector(std::rbegin(outputs), std::rend(outputs))) {
        EXPECT_EQ(quilo(command).status, 0) << command;
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(link))) << link;
    }
    EXPECT_EQ(readFileBytes(victim), precious);
    ::umask(umask);
    EXPECT_EQ(fs::status(sidecar_).permissions(), fs::perms(0644)) << "new: 0644 less the umask";
    fs::permissions(sidecar_, fs::perms(0600));
    ASSERT_EQ(quilo("set-icon " + quoted(photo_) + " " + quoted(kSamples / "shapes-png2icns.icns")).status, 0);
    EXPECT_EQ(fs::status(sidecar_).permissions(), fs::perms(0600)) << "rewritten: the mode it had";

    const fs::path longest = directory_ / std::string(253, 'n'), tooLong = directory_ / std::string(255, 'n');
    for (const fs::path& file : {longest, tooLong})
        writeFileBytes(file, Bytes{'x'});
    EXPECT_EQ(quilo("set-icon " + quoted(longest) + " " + icon).status, 0);
    EXPECT_TRUE(IconFamily::iconFamilyWithIconOfFile(longest));
    const Outcome refused = quilo("set-icon " + quoted(tooLong) + " " + icon);
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(contains(refused, "File name too long")) << refused.output;
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
    // The kills land anywhere in the time a whole run takes here.
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(waitFor(spawnQuilo(arguments)), 0);
    const auto wholeRun = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
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
        ::usleep(useconds_t(random() % std::max<long long>(wholeRun.count(), 1000)));
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
