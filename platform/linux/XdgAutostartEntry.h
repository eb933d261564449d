#pragma once

#include "prefs/AutostartStore.h"

#include <QByteArray>

#include <optional>

// How a login item and a desktop file in the XDG autostart folder stand for
// one another.
//
// In a desktop entry "Path" is the program's working folder and "Hidden=true"
// means the entry is deleted, so a login item's own values are kept under
// keys no session reads: "X-Quilo-Path", "X-Quilo-Hide" (true or false) and
// "X-Quilo-AliasData" (base64). The other keys of the "Desktop Entry" group go
// into the item under "Desktop Entry", as a list of [key, value as written]
// pairs in file order, so that an item can be written back as it was read.
//
// An item read from a file without "X-Quilo-Path" (another program's) has as
// its "Path" the program of its Exec line: the first word, unquoted; should
// such an item ever be written back changed, its file gains "X-Quilo-Path".
namespace quilo {

namespace AutostartKey {
inline const QString DesktopEntry = QStringLiteral("Desktop Entry");
// The name of the file an item was read from, so that it is written back to
// the same file. Not part of the file's text.
inline const QString DesktopFile = QStringLiteral("Desktop File");
} // namespace AutostartKey

// The item a desktop file stands for; whatever the text, a dictionary.
AutostartEntry autostartEntryFromDesktopFile(const QByteArray& fileText);

// The desktop file for an item. An item without "Desktop Entry" keys (a new
// one) gets those of an entry that starts its "Path" (or `launchPath`, when
// given, a link to it): Type, Name, Comment, Exec, Icon, Terminal. Nullopt
// for an item with neither those keys nor a path, which no file can stand for.
std::optional<QByteArray> desktopFileFromAutostartEntry(const AutostartEntry& entry, const QString& launchPath = {});

// Whether the item's file is made anew from its "Path" when written.
bool isNewAutostartEntry(const AutostartEntry& entry);

} // namespace quilo
