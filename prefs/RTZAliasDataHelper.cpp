#include "prefs/RTZAliasDataHelper.h"

#include "foundation/Log.h"
#include "prefs/AliasRecord.h"

#include <QFile>

namespace quilo {

QByteArray RTZAliasDataHelper::aliasDataFromFilePath(const QString& path)
{
    const std::optional<FSRef> ref = posixStringToFSRef(path, false);
    if (!ref)
        return {};
    const std::optional<AliasRecord> record = aliasRecordOfItem(ref->path);
    return record ? encodedAliasRecord(*record) : QByteArray();
}

QString RTZAliasDataHelper::filePathFromAliasData(const QByteArray& aliasData)
{
    const std::optional<AliasRecord> record = decodedAliasRecord(aliasData);
    std::filesystem::path resolved;
    const OSErr error = record ? resolveAliasRecord(*record, resolved) : paramErr;
    if (error != noErr) {
        logFormat("VXAliasDataHelper: Could not resolve alias date. Error = %i", int(error));
        return {};
    }
    return QFile::decodeName(resolved.c_str());
}

std::optional<FSRef> posixStringToFSRef(const QString& path, bool isDirectory)
{
    // Where the Mac makes a file URL first: there is none of an empty path,
    // nor of one that a C string cannot carry.
    if (path.isEmpty() || path.contains(QChar(0))) {
        logLine("VXAliasDataHelper: Can't get URL");
        return std::nullopt;
    }
    std::string name = QFile::encodeName(path).toStdString();
    if (isDirectory && !name.ends_with('/'))
        name += '/';
    std::error_code error;
    std::filesystem::path resolved = std::filesystem::canonical(name, error);
    if (error) {
        logLine("VXAliasDataHelper: Can't get FSRef");
        return std::nullopt;
    }
    return FSRef{std::move(resolved)};
}

} // namespace quilo
