#include "foundation/LocalizedStrings.h"

#include "foundation/PropertyList.h"

#include <QHash>
#include <QMutex>
#include <QVariantMap>

namespace quilo {
namespace {

// Tables are read once and kept; a missing table is an empty one.
const QVariantMap& table(const QString& name)
{
    static QMutex mutex;
    static QHash<QString, QVariantMap> tables;
    QMutexLocker lock(&mutex);
    auto found = tables.find(name);
    if (found == tables.end()) {
        const auto entries = dictionaryWithContentsOfFile(":/strings/" + name + ".plist");
        found = tables.insert(name, entries.value_or(QVariantMap()));
    }
    return *found;
}

} // namespace

QString localizedString(const QString& key, const QString& value, const QString& tableName)
{
    const QVariant text = table(tableName).value(key);
    if (text.isValid())
        return text.toString();
    return value.isEmpty() ? key : value;
}

} // namespace quilo
