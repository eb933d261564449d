// quilo copy-icon and paste-icon as a user runs them on a desktop: each a
// process of its own, the copied family held by the process that copy-icon
// leaves behind, read by other programs (xclip) and by paste-icon.
#include "iconfamily/IconFamily.h"
#include "tests/cli/RunQuilo.h"
#include "tests/desktop/DesktopUser.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <signal.h>
#include <sys/prctl.h>

namespace quilo {
namespace {

namespace fs = std::filesystem;
using namespace quilo::test;

class IconClipboardCommands : public ::testing::Test {
protected:
    // What copy-icon leaves behind becomes this process's child, to be seen
    // ending.
    void SetUp() override { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }
    void TearDown() override
    {
        for (const pid_t owner : clipboardOwners()) {
            ::kill(owner, SIGTERM);
            ::waitpid(owner, nullptr, 0);
        }
    }

    // The processes that hold a copied icon.
    static std::vector<pid_t> clipboardOwners()
    {
        std::vector<pid_t> owners;
        for (const auto& entry : fs::directory_iterator("/proc")) {
            const std::string name = entry.path().filename();
            if (name.find_first_not_of("0123456789") != std::string::npos)
                continue;
            const std::string stat = readFileText(entry.path() / "stat");
            const std::string commandLine = readFileText(entry.path() / "cmdline");
            pid_t parent = 0;
            const auto afterName = stat.rfind(") ");
            if (afterName != std::string::npos && std::sscanf(stat.c_str() + afterName + 2, "%*c %d", &parent) == 1
                && parent == ::getpid() && commandLine.find("copy-icon") != std::string::npos)
                owners.push_back(std::stoi(name));
        }
        return owners;
    }

    static bool endsSoon(pid_t owner)
    {
        return waitUntil([owner] { return ::waitpid(owner, nullptr, WNOHANG) == owner; }, 10);
    }

    static std::string clipboard(const std::string& target)
    {
        return shell("xclip -selection clipboard -o -t " + target + " 2>/dev/null").output;
    }

    static Outcome withoutDisplay(const std::string& arguments, const std::string& display)
    {
        return quilo(arguments, "unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM; " + display);
    }

    static std::string familyOf(const fs::path& path)
    {
        const auto family = IconFamily::iconFamilyWithIconOfFile(path);
        return family ? std::string(family->iconFamilyHandle().begin(), family->iconFamilyHandle().end()) : "";
    }

    TemporaryDirectory folder_;
    TemporaryDirectory scratch_; // for what other programs put on the clipboard
};

TEST_F(IconClipboardCommands, ACopiedIconOutlivesCopyIconAndPastesOntoFilesAndFolders)
{
    const fs::path icns = kSamples / "pillow.icns";
    const Outcome copied = quilo("copy-icon " + quoted(icns));
    ASSERT_EQ(copied.status, 0) << copied.output;
    ASSERT_EQ(clipboardOwners().size(), 1u);

    const std::string targets = clipboard("TARGETS");
    EXPECT_NE(targets.find("image/x-icns"), std::string::npos) << targets;
    EXPECT_EQ(targets.find("STRING"), std::string::npos) << targets;
    EXPECT_EQ(targets.find("text/"), std::string::npos) << targets;
    EXPECT_EQ(clipboard("image/x-icns"), readFileText(icns));

    const fs::path file = folder_ / "fresh.txt";
    const fs::path folder = folder_ / "fresh folder";
    writeFileText(file, "text");
    fs::create_directory(folder);
    for (const fs::path& path : {file, folder}) {
        const Outcome pasted = quilo("paste-icon " + quoted(path));
        EXPECT_EQ(pasted.status, 0) << pasted.output;
        EXPECT_EQ(familyOf(path), readFileText(icns)) << path;
    }
}

TEST_F(IconClipboardCommands, TheHolderGivesWayToTheNextCopyAndToAnotherProgram)
{
    ASSERT_EQ(quilo("copy-icon " + quoted(kSamples / "pillow.icns")).status, 0);
    const std::vector<pid_t> first = clipboardOwners();
    ASSERT_EQ(first.size(), 1u);

    const fs::path file = folder_ / "with an icon";
    writeFileText(file, "text");
    ASSERT_EQ(quilo("set-icon " + quoted(file) + " " + quoted(kSamples / "shapes-png2icns.icns")).status, 0);
    ASSERT_EQ(quilo("copy-icon " + quoted(file)).status, 0);
    EXPECT_TRUE(endsSoon(first[0]));
    EXPECT_EQ(clipboard("image/x-icns"), familyOf(file)) << "the custom icon before the file's own bytes";

    const std::vector<pid_t> second = clipboardOwners();
    ASSERT_EQ(second.size(), 1u);
    putOnClipboard("UTF8_STRING", "someone else's text", scratch_.path());
    EXPECT_TRUE(endsSoon(second[0]));
}

TEST_F(IconClipboardCommands, NothingToCopyOrPasteFailsClearlyAndChangesNothing)
{
    const fs::path plain = folder_ / "plain.txt";
    writeFileText(plain, "no icon here");
    const Outcome noIcon = quilo("copy-icon " + quoted(plain));
    EXPECT_EQ(noIcon.status, 1);
    EXPECT_TRUE(contains(noIcon, "has no custom icon and is not an .icns file")) << noIcon.output;
    EXPECT_TRUE(clipboardOwners().empty());

    const auto before = directoryListing(folder_.path());
    // A display named but with no server behind it is as good as none.
    const Outcome noDisplay = withoutDisplay("paste-icon " + quoted(plain), "export DISPLAY=:4321;");
    EXPECT_EQ(noDisplay.status, 1);
    EXPECT_TRUE(contains(noDisplay, "no display")) << noDisplay.output;
    putOnClipboard("UTF8_STRING", "just text", scratch_.path());
    const Outcome noFamily = quilo("paste-icon " + quoted(plain));
    EXPECT_EQ(noFamily.status, 1);
    EXPECT_TRUE(contains(noFamily, "the clipboard holds no icon family")) << noFamily.output;
    putOnClipboard("image/x-icns", "not an icon family", scratch_.path());
    const Outcome damaged = quilo("paste-icon " + quoted(plain));
    EXPECT_EQ(damaged.status, 1);
    EXPECT_TRUE(contains(damaged, "empty or damaged")) << damaged.output;
    EXPECT_EQ(directoryListing(folder_.path()), before);
}

} // namespace
} // namespace quilo
