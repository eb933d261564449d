// What file managers put on the clipboard, turned into a selection.
#include "foundation/PathNames.h"
#include "jobs/ClipboardSelection.h"

#include <gtest/gtest.h>

#include <QMimeData>

namespace quilo {
namespace {

QStringList pathsFrom(const QString& format, const QByteArray& bytes)
{
    QMimeData data;
    data.setData(format, bytes);
    return filePathsFromMimeData(data);
}

TEST(ClipboardSelection, TakesLocalFilesFromAUriListInItsOrder)
{
    const QStringList paths = pathsFrom("text/uri-list", "# copied by a file manager\r\n"
                                                         "file:///home/ann/My%20Photos/b%C3%A9b%C3%A9.jpg\r\n"
                                                         "https://example.org/remote.jpg\r\n"
                                                         "file:///home/ann/a.png\r\n"
                                                         "file:///home/ann/bad%FF%FE.jpg\r\n");
    ASSERT_EQ(paths.size(), 3);
    EXPECT_EQ(paths.mid(0, 2), (QStringList{"/home/ann/My Photos/bébé.jpg", "/home/ann/a.png"}));
    EXPECT_EQ(pathFromQString(paths[2]), "/home/ann/bad\xFF\xFE.jpg") << "a name that is not UTF-8, byte for byte";
}

TEST(ClipboardSelection, ReadsGnomesCopiedFilesAndNothingElse)
{
    EXPECT_EQ(pathsFrom("x-special/gnome-copied-files", "cut\nfile:///tmp/x.jpg\nfile:///tmp/y.jpg"),
              (QStringList{"/tmp/x.jpg", "/tmp/y.jpg"}));
    EXPECT_TRUE(pathsFrom("x-special/gnome-copied-files", "file:///tmp/x.jpg").isEmpty())
        << "no copy or cut line";
    QMimeData text;
    text.setText("/tmp/x.jpg");
    EXPECT_TRUE(filePathsFromMimeData(text).isEmpty()) << "plain text is no selection";
}

} // namespace
} // namespace quilo
