#include "resources/ImageNamed.h"

#include "foundation/Log.h"

#include <QFileInfo>
#include <QImageReader>
#include <QPixmap>

#include <algorithm>

namespace quilo {
namespace {

const QString imageFolder = QStringLiteral(":/images/");

// The resource the name stands for, or empty. Names are plain file names, so
// one with a folder in it cannot reach outside the images.
QString resourcePath(const QString& name)
{
    if (name.isEmpty() || name.contains('/'))
        return {};
    QStringList candidates{name};
    if (QFileInfo(name).suffix().isEmpty())
        candidates = {name + ".png", name + ".tiff"};
    for (const QString& candidate : candidates) {
        if (QFileInfo::exists(imageFolder + candidate))
            return imageFolder + candidate;
    }
    return {};
}

// The "@2x" twin's path: "Pref_General.png" -> "Pref_General@2x.png". The
// reader marks what it reads from such a file as of twice the density, so the
// icon hands it out for dense screens and the single one everywhere else.
QString doubleDensityPath(const QString& path)
{
    const QFileInfo file(path);
    return file.path() + '/' + file.completeBaseName() + "@2x." + file.suffix();
}

// Adds every image in the file; false when not even the first can be read.
// Pages are counted before any is read: a TIFF reader asked for the next page
// only after reading one has lost its place in the file.
bool addEveryImage(QIcon& icon, const QString& path)
{
    QImageReader reader(path);
    const int count = std::max(reader.imageCount(), 1); // 0 from formats that do not count
    for (int index = 0; index < count; ++index) {
        if (index > 0 && !reader.jumpToImage(index))
            break;
        const QImage image = reader.read();
        if (image.isNull()) {
            logFormat("Image %s is unreadable: %s", qPrintable(path), qPrintable(reader.errorString()));
            return index > 0;
        }
        icon.addPixmap(QPixmap::fromImage(image));
    }
    return true;
}

} // namespace

QIcon imageNamed(const QString& name)
{
    const QString path = resourcePath(name);
    QIcon icon;
    if (path.isEmpty() || !addEveryImage(icon, path))
        return {};
    const QString twin = doubleDensityPath(path);
    if (QFileInfo::exists(twin))
        addEveryImage(icon, twin);
    return icon;
}

} // namespace quilo
