#pragma once

#include <QString>
#include <QStringList>

namespace quilo {

// Fills a format in the style of the string tables: each "%@" takes the next
// of `objects`, left to right, and "%%" is a percent sign. A "%@" beyond the
// objects becomes nothing and objects beyond the "%@"s are left out, so a
// translated text with the wrong count still reads, never crashes.
QString stringWithFormat(const QString& format, const QStringList& objects);

} // namespace quilo
