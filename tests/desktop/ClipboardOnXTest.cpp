// The selection taken from the clipboard of a real X server, put there by
// another program (xclip) as a file manager puts copied files. What counts
// as copied files is tested on the formats alone in tests/jobs.
#include "jobs/ClipboardSelection.h"
#include "tests/desktop/DesktopUser.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

#include <QUrl>

namespace quilo {
namespace {

namespace fs = std::filesystem;
using namespace quilo::test;

class ClipboardOnX : public ::testing::Test {
protected:
    void putOnClipboard(const std::string& target, const std::string& content)
    {
        test::putOnClipboard(target, content, folder_.path());
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

// Both formats file managers copy in, read from another program as a job
// reads them; a request's own files come before them.
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

    // A request's own files come first; without any, the copied files count.
    ClipboardSelection clipboard;
    QStringList paths;
    actAsUser([&] {
        paths = FileManagerSelection({"/handed/over.jpg"}, clipboard).selectedPaths();
        paths += FileManagerSelection({}, clipboard).selectedPaths();
    });
    EXPECT_EQ(paths, (QStringList{"/handed/over.jpg", QString::fromStdString(second.string()),
                                  QString::fromStdString(first.string())}));
}

} // namespace
} // namespace quilo
