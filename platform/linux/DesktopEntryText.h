#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

// The syntax of desktop entry files (freedesktop.org's Desktop Entry rules):
// groups of key=value lines, the escapes of string values, and the quoting of
// Exec arguments.
namespace quilo {

using DesktopKeyValues = QList<QPair<QString, QString>>;

// The keys of the "Desktop Entry" group in file order, values as written
// (escapes not yet undone). A key given twice keeps its last value. Empty for
// text that has no such group.
DesktopKeyValues desktopEntryGroup(const QByteArray& fileText);

// Undoes the escapes \s \n \t \r \\ of a string value; other backslashes stay.
QString unescapedDesktopValue(const QString& value);
// The escaped form of `text`, so that it reads back unchanged: backslashes,
// line breaks, tabs and a leading space are escaped.
QString escapedDesktopValue(const QString& text);

// One Exec argument in double quotes: inside them ", `, $ and \ take a
// backslash, and % is doubled so that it is no field code. The result still
// needs escapedDesktopValue to go into a file.
QString quotedExecArgument(const QString& argument);
// The program of an Exec line whose value escapes are already undone: its
// first word, unquoted. Empty when the line holds none.
QString execProgram(const QString& exec);

} // namespace quilo
