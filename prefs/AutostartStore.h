#pragma once

#include <QList>
#include <QVariantMap>

#include <memory>

namespace quilo {

// One program that the session starts when the user logs in, as a dictionary.
// The keys the login-item helper reads and writes:
//   "Path"      QString     the program's full path
//   "Hide"      bool        whether it is to start hidden
//   "AliasData" QByteArray  an alias record of the program
// A store may add keys of its own to carry an entry over unchanged. What it
// reads may also hold
//   "Disabled"  bool        true for an entry that the session does not start
//                           (switched off by the desktop's startup settings);
//                           writing an entry never switches it off.
using AutostartEntry = QVariantMap;

namespace AutostartKey {
inline const QString Path = QStringLiteral("Path");
inline const QString Hide = QStringLiteral("Hide");
inline const QString AliasData = QStringLiteral("AliasData");
inline const QString Disabled = QStringLiteral("Disabled");
} // namespace AutostartKey

// The user's list of programs started at login, read whole and written back
// whole. Writing leaves an entry that comes back equal to what was read as
// it is, removes the entries that no longer come back, and writes the new or
// changed ones. Nothing guards against another process changing the list
// between a read and a write: the last writer wins. Main thread only.
class AutostartStore {
public:
    virtual ~AutostartStore() = default;

    // In the store's order; empty when there is no list at all.
    virtual QList<AutostartEntry> readEntries() = 0;
    // False, with a log line for each failure, when some change could not be
    // made; the others are made all the same.
    virtual bool writeEntries(const QList<AutostartEntry>& entries) = 0;
};

// The store of the session Quilo runs in.
std::unique_ptr<AutostartStore> makeAutostartStore();

} // namespace quilo
