#pragma once
#include <QObject>
#include <QTimer>

class QDBusServiceWatcher;

namespace quilo {

// Tells when the desktop offers a place for tray items: a StatusNotifierItem
// host over D-Bus, or an XEmbed tray on X11. At login Quilo may start before
// the panel does, and Qt decides once, at the first tray icon, which kind it
// uses; so the icon is made only when a host is there.
class TrayHostWatcher final : public QObject {
    Q_OBJECT
public:
    explicit TrayHostWatcher(QObject* parent = nullptr);

    static bool trayHostAvailable();
    // Emits hostAvailable once, now (queued) or when a host appears; false
    // when there is none yet.
    bool waitForHost();

signals:
    void hostAvailable();

private:
    void checkAgain();
    static bool statusNotifierHostRegistered();
    static bool xembedTrayPresent();

    QDBusServiceWatcher* watcher_ = nullptr;
    // An XEmbed tray announces itself only to clients that listen on the root
    // window, which Qt's connection does not; so it is looked for now and then.
    QTimer xembedPoll_;
    bool announced_ = false;
};

} // namespace quilo
