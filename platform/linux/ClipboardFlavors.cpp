#include "platform/linux/ClipboardFlavors.h"

#include <array>

namespace quilo {
namespace {

struct KnownFlavor {
    ScrapFlavorType flavorType;
    const char* mimeType;
};

// 'icns' is the one Quilo puts; the rest name what other programs offer with
// the codes a Mac's clipboard gives the same data.
const std::array<KnownFlavor, 9> kKnownFlavors{{
    {fourCharCode("icns"), "image/x-icns"}, // the freedesktop type of .icns files
    {fourCharCode("TEXT"), "text/plain"},
    {fourCharCode("utf8"), "text/plain;charset=utf-8"},
    {fourCharCode("HTML"), "text/html"},
    {fourCharCode("furl"), "text/uri-list"},
    {fourCharCode("PNGf"), "image/png"},
    {fourCharCode("JPEG"), "image/jpeg"},
    {fourCharCode("TIFF"), "image/tiff"},
    {fourCharCode("GIFf"), "image/gif"},
}};

const QString kOtherFlavorPrefix = QStringLiteral("application/x-quilo-flavor-");

// Codes of other MIME types have the top bit set, so they never meet a
// known flavour (whose codes are printable ASCII).
ScrapFlavorType codeFromName(const QString& mimeType)
{
    std::uint32_t hash = 2166136261u; // FNV-1a: stable from run to run, unlike qHash
    for (const char byte : mimeType.toUtf8()) {
        hash ^= std::uint8_t(byte);
        hash *= 16777619u;
    }
    return hash | 0x80000000u;
}

} // namespace

QString mimeTypeForFlavor(ScrapFlavorType flavorType)
{
    for (const KnownFlavor& known : kKnownFlavors)
        if (known.flavorType == flavorType)
            return QString::fromLatin1(known.mimeType);
    return kOtherFlavorPrefix + QStringLiteral("%1").arg(flavorType, 8, 16, QLatin1Char('0'));
}

ScrapFlavorType flavorForMimeType(const QString& mimeType)
{
    for (const KnownFlavor& known : kKnownFlavors)
        if (mimeType == QLatin1String(known.mimeType))
            return known.flavorType;
    if (mimeType.startsWith(kOtherFlavorPrefix)) {
        const QString digits = mimeType.mid(kOtherFlavorPrefix.size());
        bool ok = false;
        const uint code = digits.toUInt(&ok, 16);
        if (ok && digits.size() == 8)
            return code;
    }
    return codeFromName(mimeType);
}

} // namespace quilo
