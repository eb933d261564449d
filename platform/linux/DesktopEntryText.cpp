#include "platform/linux/DesktopEntryText.h"

#include <QRegularExpression>

namespace quilo {
namespace {

const QString kDesktopEntryGroup = QStringLiteral("Desktop Entry");

// What a backslash and `c` stand for in a value; null for no escape.
QChar unescaped(QChar c)
{
    switch (c.unicode()) {
    case 's': return ' ';
    case 'n': return '\n';
    case 't': return '\t';
    case 'r': return '\r';
    case '\\': return '\\';
    default: return {};
    }
}

// A key as the Desktop Entry rules allow it: letters, digits and dashes, with
// an optional [locale]. Anything else is no key a launcher reads, and written
// back it might read as something else (a group header, say).
bool isValidKey(const QString& key)
{
    static const QRegularExpression valid(QStringLiteral("^[A-Za-z0-9-]+(\\[[^\\]\\[=]+\\])?$"));
    return valid.match(key).hasMatch();
}

bool isExecEscaped(QChar c) { return c == '"' || c == '`' || c == '$' || c == '\\'; }

void setValue(DesktopKeyValues& group, const QString& key, const QString& value)
{
    for (auto& [existingKey, existingValue] : group) {
        if (existingKey == key) {
            existingValue = value;
            return;
        }
    }
    group.append({key, value});
}

// The argument that begins at `at`, a quote: up to the closing quote, with
// the backslash escapes undone.
QString quotedArgument(const QString& exec, qsizetype at)
{
    QString argument;
    for (++at; at < exec.size() && exec[at] != '"'; ++at) {
        if (exec[at] == '\\' && at + 1 < exec.size())
            ++at;
        argument += exec[at];
    }
    return argument;
}

} // namespace

DesktopKeyValues desktopEntryGroup(const QByteArray& fileText)
{
    DesktopKeyValues group;
    bool inGroup = false;
    for (QString line : QString::fromUtf8(fileText).split('\n')) {
        // Carriage returns ending a line are line ends, however many: a value
        // kept as written must not end in one, or it would not read back.
        while (line.endsWith('\r'))
            line.chop(1);
        if (line.startsWith('[')) {
            inGroup = line.trimmed() == '[' + kDesktopEntryGroup + ']';
            continue;
        }
        const qsizetype equals = line.indexOf('=');
        if (!inGroup || line.startsWith('#') || equals <= 0)
            continue;
        const QString key = line.left(equals).trimmed();
        QString value = line.mid(equals + 1);
        while (value.startsWith(' ') || value.startsWith('\t'))
            value.remove(0, 1);
        if (isValidKey(key))
            setValue(group, key, value);
    }
    return group;
}

QString unescapedDesktopValue(const QString& value)
{
    QString text;
    for (qsizetype at = 0; at < value.size(); ++at) {
        const QChar escaped = value[at] == '\\' && at + 1 < value.size() ? unescaped(value[at + 1]) : QChar();
        if (escaped.isNull()) {
            text += value[at];
        } else {
            text += escaped;
            ++at;
        }
    }
    return text;
}

QString escapedDesktopValue(const QString& text)
{
    QString value;
    for (QChar c : text) {
        if (c == '\\')
            value += QStringLiteral("\\\\");
        else if (c == '\n')
            value += QStringLiteral("\\n");
        else if (c == '\t')
            value += QStringLiteral("\\t");
        else if (c == '\r')
            value += QStringLiteral("\\r");
        else
            value += c;
    }
    // Readers drop the spaces after '=', so a leading one must be spelled out.
    if (value.startsWith(' '))
        value.replace(0, 1, QStringLiteral("\\s"));
    return value;
}

QString quotedExecArgument(const QString& argument)
{
    QString quoted = QStringLiteral("\"");
    for (QChar c : argument) {
        if (isExecEscaped(c))
            quoted += '\\';
        quoted += c;
        if (c == '%')
            quoted += '%';
    }
    return quoted + '"';
}

QString execProgram(const QString& exec)
{
    qsizetype start = 0;
    while (start < exec.size() && (exec[start] == ' ' || exec[start] == '\t'))
        ++start;
    QString program;
    if (start < exec.size() && exec[start] == '"') {
        program = quotedArgument(exec, start);
    } else {
        qsizetype end = start;
        while (end < exec.size() && exec[end] != ' ' && exec[end] != '\t')
            ++end;
        program = exec.mid(start, end - start);
    }
    return program.replace(QStringLiteral("%%"), QStringLiteral("%"));
}

} // namespace quilo
