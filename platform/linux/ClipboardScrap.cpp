#include "platform/linux/ClipboardScrap.h"

#include "platform/linux/ClipboardFlavors.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <algorithm>

namespace quilo {

QClipboard* ClipboardScrap::clipboard()
{
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) ? QGuiApplication::clipboard() : nullptr;
}

OSErr ClipboardScrap::clear()
{
    QClipboard* board = clipboard();
    if (!board)
        return noScrapErr;
    put_.clear();
    board->clear();
    return noErr;
}

std::vector<ScrapFlavorInfo> ClipboardScrap::flavorInfoList()
{
    std::vector<ScrapFlavorInfo> flavors;
    QClipboard* board = clipboard();
    const QMimeData* data = board ? board->mimeData() : nullptr;
    if (!data)
        return flavors;
    for (const QString& format : data->formats()) {
        const ScrapFlavorType type = flavorForMimeType(format);
        const auto same = [type](const ScrapFlavorInfo& flavor) { return flavor.flavorType == type; };
        if (std::none_of(flavors.begin(), flavors.end(), same))
            flavors.push_back({type, kScrapFlavorMaskNone});
    }
    return flavors;
}

// The first format that carries the flavour; an empty one counts as missing,
// since X11 gives an empty answer for a target its owner cannot convert.
OSErr ClipboardScrap::readFlavor(ScrapFlavorType flavorType, QByteArray& bytes)
{
    QClipboard* board = clipboard();
    const QMimeData* data = board ? board->mimeData() : nullptr;
    if (!data)
        return noScrapErr;
    for (const QString& format : data->formats()) {
        if (flavorForMimeType(format) != flavorType)
            continue;
        bytes = data->data(format);
        if (!bytes.isEmpty())
            return noErr;
    }
    return noTypeErr;
}

OSErr ClipboardScrap::flavorData(ScrapFlavorType flavorType, std::vector<std::uint8_t>& data)
{
    QByteArray bytes;
    const OSErr error = readFlavor(flavorType, bytes);
    if (error == noErr)
        data.assign(bytes.begin(), bytes.end());
    return error;
}

OSErr ClipboardScrap::putFlavor(ScrapFlavorType flavorType, ScrapFlavorFlags, std::span<const std::uint8_t> data)
{
    QClipboard* board = clipboard();
    if (!board)
        return noScrapErr;
    if (!board->ownsClipboard())
        put_.clear(); // another program took the clipboard since
    put_[flavorType] = QByteArray(reinterpret_cast<const char*>(data.data()), qsizetype(data.size()));
    auto* formats = new QMimeData; // the clipboard takes it over
    for (const auto& [type, bytes] : put_)
        formats->setData(mimeTypeForFlavor(type), bytes);
    board->setMimeData(formats);
    return noErr;
}

// The engine's clipboard on this platform.
Scrap& platformScrap()
{
    static ClipboardScrap scrap;
    return scrap;
}

} // namespace quilo
