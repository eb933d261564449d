#include "foundation/StringWithFormat.h"

namespace quilo {

QString stringWithFormat(const QString& format, const QStringList& objects)
{
    QString result;
    result.reserve(format.size());
    qsizetype next = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar c = format[i];
        const QChar following = i + 1 < format.size() ? format[i + 1] : QChar();
        if (c == '%' && following == '@') {
            if (next < objects.size())
                result += objects[next];
            ++next;
            ++i;
        } else if (c == '%' && following == '%') {
            result += '%';
            ++i;
        } else {
            result += c;
        }
    }
    return result;
}

} // namespace quilo
