// Reads the input as the files another program put on the clipboard, as a
// URI list and as GNOME's copied files.
#include "tests/fuzz/FuzzTarget.h"

#include "jobs/ClipboardSelection.h"
#include "tests/fuzz/FuzzCheck.h"

#include <QMimeData>

namespace quilo::fuzz {

void fuzzInput(std::span<const std::uint8_t> bytes)
{
    const QByteArray data(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
    for (const char* type : {"text/uri-list", "x-special/gnome-copied-files"}) {
        QMimeData mime;
        mime.setData(QString::fromLatin1(type), data);
        for (const QString& path : filePathsFromMimeData(mime))
            expect(path.startsWith('/') && !path.contains(QChar(0)), "copied files", "a path is local and whole",
                   type);
    }
}

} // namespace quilo::fuzz
