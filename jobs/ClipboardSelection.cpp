#include "jobs/ClipboardSelection.h"

#include "foundation/PathNames.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QThread>
#include <QUrl>

namespace quilo {
namespace {

const QString kUriList = QStringLiteral("text/uri-list");
const QString kGnomeCopiedFiles = QStringLiteral("x-special/gnome-copied-files");

// One URI a line; lines starting with '#' are comments in a URI list.
QStringList localPaths(const QStringList& lines)
{
    QStringList paths;
    for (const QString& line : lines) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith('#'))
            continue;
        const QUrl url(trimmed);
        if (!url.isLocalFile())
            continue;
        // A name's bytes are percent-encoded as they are, UTF-8 or not.
        const QString path = url.host().isEmpty()
            ? qStringFromPath(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString())
            : url.toLocalFile();
        // Only whole paths name a file: not a relative one ("file:a.jpg"), nor
        // one holding a NUL, which opened would name another file.
        if (path.startsWith('/') && !path.contains(QChar(0)))
            paths << path;
    }
    return paths;
}

QStringList readClipboard()
{
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data ? filePathsFromMimeData(*data) : QStringList();
}

} // namespace

QStringList filePathsFromMimeData(const QMimeData& data)
{
    if (data.hasFormat(kUriList))
        return localPaths(QString::fromUtf8(data.data(kUriList)).split('\n'));
    if (data.hasFormat(kGnomeCopiedFiles)) {
        QStringList lines = QString::fromUtf8(data.data(kGnomeCopiedFiles)).split('\n');
        if (lines.isEmpty() || (lines.first().trimmed() != "copy" && lines.first().trimmed() != "cut"))
            return {};
        lines.removeFirst();
        return localPaths(lines);
    }
    return {};
}

QStringList ClipboardSelection::selectedPaths()
{
    QCoreApplication* application = QGuiApplication::instance();
    if (!qobject_cast<QGuiApplication*>(application))
        return {}; // no clipboard without a display
    if (QThread::currentThread() == application->thread())
        return readClipboard();
    QStringList paths;
    QMetaObject::invokeMethod(application, [&paths] { paths = readClipboard(); }, Qt::BlockingQueuedConnection);
    return paths;
}

} // namespace quilo
