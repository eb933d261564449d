#pragma once

#include <QString>

#include <optional>

namespace quilo {

// Where the one Quilo of a user's session listens: a local socket and the
// lock file beside it, named "quilo-UID-SESSION", in a folder that only the
// user can enter.
struct InstanceAddress {
    QString directory;
    QString name;

    QString socketPath() const { return directory + '/' + name; }
    QString lockPath() const { return socketPath() + QStringLiteral(".lock"); }

    // The folder is $XDG_RUNTIME_DIR, else "quilo" in the user's cache
    // folder ($XDG_CACHE_HOME, else ~/.cache), made with mode 0700; a folder that another user owns, that is
    // a symbolic link or that others may enter is passed over. The session
    // is $XDG_SESSION_ID, else the X display, else the Wayland display.
    // Nullopt, with a log line, when there is no safe folder.
    static std::optional<InstanceAddress> forThisSession();
};

// The session part of the name: "session-ID", "display-NAME",
// "wayland-NAME" or "nosession", with characters outside [A-Za-z0-9._:-]
// escaped as %XX and a long one shortened to a digest ("display=HEX"), so
// that any value gives one short file name of its own.
QString sessionKey();

} // namespace quilo
