#pragma once

#include "iconfamily/FileReference.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace quilo {

// Alias data: an opaque record of a file that finds it again after a rename
// or a move within its file system. Login items carry one of the program.
class RTZAliasDataHelper {
public:
    // The alias data of the item at `path`; empty, with the log line of
    // posixStringToFSRef, when there is no such item.
    static QByteArray aliasDataFromFilePath(const QString& path);
    // The path where the alias data's item is now; "" with a log line when
    // the data is no alias record (paramErr) or its item is not found (fnfErr).
    static QString filePathFromAliasData(const QByteArray& aliasData);
};

// The reference of the item at `path` (relative paths from the working
// folder). `isDirectory` names a folder as its path with a trailing slash
// does, so a file given as a folder is not found. Nullopt, with a log line,
// for a path that names nothing.
std::optional<FSRef> posixStringToFSRef(const QString& path, bool isDirectory);

} // namespace quilo
