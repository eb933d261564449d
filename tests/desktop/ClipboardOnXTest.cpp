// The selection taken from the clipboard of a real X server, put there by
// another program (xclip) as a file manager puts copied files.
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "iconfamily/IconFamily.h"
#include "jobs/ClipboardSelection.h"
#include "jobs/CreatingThumbnailsController.h"
#include "tests/desktop/DesktopUser.h"
#include "tests/jobs/RecordingJobInterface.h"
#include "tests/support/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryDirectory.h"

#include <QUrl>

namespace quilo {
namespace {

namespace fs = std::filesystem;
using namespace quilo::test;

class ClipboardOnX : public ::testing::Test {
protected:
    // Another program owns the clipboard with this one target, as a file
    // manager does after Copy.
    void putOnClipboard(const std::string& target, const std::string& content)
    {
        const fs::path file = folder_ / "clipboard";
        writeFileBytes(file, std::span(reinterpret_cast<const std::uint8_t*>(content.data()), content.size()));
        const std::string command = "xclip -selection clipboard -t '" + target + "' -i " + file.string();
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        // xclip returns before its background copy owns the clipboard.
        const std::string readBack = "xclip -selection clipboard -o -t '" + target + "' 2>/dev/null";
        for (int attempt = 0; attempt < 250 && commandOutput(readBack) != content; ++attempt)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ASSERT_EQ(commandOutput(readBack), content);
    }

    std::string uri(const fs::path& path) const
    {
        return QUrl::fromLocalFile(QString::fromStdString(path.string())).toEncoded().toStdString();
    }

    // Read from a thread other than the GUI thread, as a job does.
    QStringList selectionAsAJobSeesIt()
    {
        QStringList paths;
        actAsUser([&] { paths = ClipboardSelection().selectedPaths(); });
        return paths;
    }

    TemporaryDirectory folder_;
};

TEST_F(ClipboardOnX, CopiedFilesAreTheSelectionInTheFileManagersOrder)
{
    const fs::path first = folder_ / "a picture #1.jpg";
    const fs::path second = folder_ / "ünïcode 100%.png";
    putOnClipboard("text/uri-list", uri(first) + "\r\n" + uri(second) + "\r\n");
    EXPECT_EQ(selectionAsAJobSeesIt(),
              (QStringList{QString::fromStdString(first.string()), QString::fromStdString(second.string())}));

    putOnClipboard("x-special/gnome-copied-files", "cut\n" + uri(second) + "\n" + uri(first));
    EXPECT_EQ(selectionAsAJobSeesIt(),
              (QStringList{QString::fromStdString(second.string()), QString::fromStdString(first.string())}));
}

// A request's own files come first; without any, the copied files count.
TEST_F(ClipboardOnX, HandedOverFilesComeBeforeTheClipboard)
{
    const fs::path copied = folder_ / "copied.jpg";
    putOnClipboard("text/uri-list", uri(copied));
    ClipboardSelection clipboard;
    QStringList paths;
    actAsUser([&] {
        paths = FileManagerSelection({"/handed/over.jpg"}, clipboard).selectedPaths();
        paths += FileManagerSelection({}, clipboard).selectedPaths();
    });
    EXPECT_EQ(paths, (QStringList{"/handed/over.jpg", QString::fromStdString(copied.string())}));
}

TEST_F(ClipboardOnX, TextOnTheClipboardIsNoSelection)
{
    putOnClipboard("UTF8_STRING", (folder_ / "photo.jpg").string());
    EXPECT_TRUE(selectionAsAJobSeesIt().isEmpty());
    putOnClipboard("text/uri-list", "https://example.org/photo.jpg\r\n");
    EXPECT_TRUE(selectionAsAJobSeesIt().isEmpty());
}

// A whole job over copied files: the pictures are walked from the last copied
// to the first, and each gets its icon.
TEST_F(ClipboardOnX, JobRunsOnTheCopiedFiles)
{
    const fs::path pictures = fs::path(QUILO_SOURCE_DIR) / "tests/fixtures/pictures";
    std::vector<fs::path> copied;
    std::string uris;
    for (const char* name : {"one.jpg", "two.jpg"}) {
        copied.push_back(folder_ / name);
        fs::copy_file(pictures / "gradient.jpg", copied.back());
        uris += uri(copied.back()) + "\r\n";
    }
    putOnClipboard("text/uri-list", uris);

    UserDefaults defaults(QString::fromStdString((folder_ / "defaults.conf").string()));
    defaults.registerDefaults(booleanFactoryDefaults());
    RecordingJobInterface ui;
    ClipboardSelection selection;
    LogCapture log;
    CreatingThumbnailsController controller(ui, selection, defaults);
    controller.startThumbActionForType(kCreateThumbnails);
    actAsUser([&] { controller.waitUntilFinished(); });

    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Processing " + copied[1].string(),
                                                     "Processing " + copied[0].string()}));
    for (const fs::path& path : copied)
        EXPECT_TRUE(IconFamily::iconFamilyWithIconOfFile(path));
}

} // namespace
} // namespace quilo
