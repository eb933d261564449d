#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace quilo {

// Limits on a property list from outside (an update document from the
// network): its size in bytes and how deep its containers nest.
struct PropertyListLimits {
    qsizetype maximumBytes = 1 << 20;
    int maximumDepth = 32;
};

// Reads an XML property list: dict → QVariantMap, array → QVariantList,
// string → QString, integer → qint64, real → double, true/false → bool,
// date → QDateTime (UTC), data → QByteArray. A document type declaration
// that declares entities, or any entity reference beyond XML's five, is
// refused rather than expanded. Nullopt, with the reason in `error`, for
// anything that is not a whole, well-formed property list within the limits.
std::optional<QVariant> propertyListFromXml(const QByteArray& xml, QString* error = nullptr,
                                            const PropertyListLimits& limits = {});

// The dictionary at the root of a property-list file (Quilo's resources:
// ":/KeyCodes.plist"); nullopt when the file is missing or holds none.
std::optional<QVariantMap> dictionaryWithContentsOfFile(const QString& path);

} // namespace quilo
