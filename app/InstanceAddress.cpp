#include "app/InstanceAddress.h"

#include "foundation/Log.h"

#include <QCryptographicHash>
#include <QDir>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace quilo {
namespace {

// A session name longer than this becomes a digest, which keeps the socket's
// path within what a local socket address holds.
constexpr qsizetype kMaxSessionKey = 40;

QString environment(const char* name) { return qEnvironmentVariable(name); }

QString escaped(const QString& value)
{
    QString key;
    for (const char byte : value.toUtf8()) {
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9')
            || byte == '.' || byte == '_' || byte == ':' || byte == '-';
        key += plain ? QString(QChar(byte)) : QStringLiteral("%%1").arg(std::uint8_t(byte), 2, 16, QChar('0'));
    }
    return key;
}

// Only the user may enter it: theirs, a real folder, no access for others.
bool isPrivateFolder(const QString& path)
{
    struct stat status {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        return false;
    return S_ISDIR(status.st_mode) && status.st_uid == ::getuid() && (status.st_mode & 077) == 0;
}

bool fitsASocketAddress(const QString& path)
{
    return QFile::encodeName(path).size() < qsizetype(sizeof(sockaddr_un::sun_path));
}

// The user's cache folder: under their home, where no other user can take a
// name first, as anyone can in a shared temporary folder.
QString cacheFolder()
{
    const QString cache = environment("XDG_CACHE_HOME");
    return cache.startsWith('/') ? cache : QDir::homePath() + QStringLiteral("/.cache");
}

bool makeFolder(const QString& path)
{
    if (::mkdir(QFile::encodeName(path).constData(), 0700) == 0 || errno == EEXIST)
        return true;
    logFormat("Cannot make the folder %s for Quilo's socket: %s", QFile::encodeName(path).constData(),
              std::strerror(errno));
    return false;
}

// "quilo" in the cache folder, made if missing. One that is there already is
// used only if it is the user's own and private.
std::optional<QString> privateCacheFolder()
{
    const QString path = cacheFolder() + QStringLiteral("/quilo");
    if (!makeFolder(cacheFolder()) || !makeFolder(path))
        return std::nullopt;
    if (!isPrivateFolder(path)) {
        logFormat("Not using %s for Quilo's socket: it is not a private folder of this user",
                  QFile::encodeName(path).constData());
        return std::nullopt;
    }
    return path;
}

} // namespace

QString sessionKey()
{
    QString key;
    if (const QString session = environment("XDG_SESSION_ID"); !session.isEmpty())
        key = QStringLiteral("session-") + escaped(session);
    else if (const QString display = environment("DISPLAY"); !display.isEmpty())
        key = QStringLiteral("display-") + escaped(display);
    else if (const QString wayland = environment("WAYLAND_DISPLAY"); !wayland.isEmpty())
        key = QStringLiteral("wayland-") + escaped(wayland);
    else
        return QStringLiteral("nosession");
    if (key.size() <= kMaxSessionKey)
        return key;
    const QByteArray digest = QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha256).toHex().left(32);
    // '=' is escaped in any plain key, so a digest never names another session.
    return key.section('-', 0, 0) + QStringLiteral("=") + QString::fromLatin1(digest);
}

std::optional<InstanceAddress> InstanceAddress::forThisSession()
{
    const QString name = QStringLiteral("quilo-%1-%2").arg(::getuid()).arg(sessionKey());
    const QString runtime = environment("XDG_RUNTIME_DIR");
    if (runtime.startsWith('/') && isPrivateFolder(runtime) && fitsASocketAddress(runtime + '/' + name))
        return InstanceAddress{runtime, name};
    const auto folder = privateCacheFolder();
    if (!folder)
        return std::nullopt;
    if (!fitsASocketAddress(*folder + '/' + name)) {
        logFormat("No room for Quilo's socket in %s: the path is too long", QFile::encodeName(*folder).constData());
        return std::nullopt;
    }
    return InstanceAddress{*folder, name};
}

} // namespace quilo
