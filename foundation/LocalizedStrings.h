#pragma once

#include <QString>

namespace quilo {

// The text for `key` from a string table shipped with Quilo (":/strings/
// TABLE.plist", a dictionary of texts by key). With no such entry: `value`
// when it is not empty, else the key itself.
QString localizedString(const QString& key, const QString& value = {}, const QString& table = "Localizable");

} // namespace quilo
